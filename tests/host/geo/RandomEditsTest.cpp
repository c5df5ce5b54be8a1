#include <atomic>
#include <map>
#include <numeric>
#include <random>
#include <thread>

#include <gtest/gtest.h>

#include <host/mod/Edit.h>
#include <host/msh/Polygon.h>

namespace
{
constexpr ELM_Owner kOwners[] = {ELM_OWNER_VERTEX, ELM_OWNER_POINT, ELM_OWNER_PRIMITIVE};

int64_t below(std::mt19937 &random, int64_t limit) { return std::uniform_int_distribution<int64_t>(0, limit - 1)(random); }

/// A kind of attribute.  What a row holds is told by one number; -1 is what rows hold that were never written.
struct Kind
{
    const char *name;
    ELM_Attribute *(*open)(MOD_Edit &edit, ELM_Owner owner);
    void (*write)(ELM_Attribute &attribute, int64_t row, int number);
    int (*read)(const ELM_Attribute &attribute, int64_t row);
    ELM_Scope scope = ELM_SCOPE_PUBLIC;
};

BAS_OptionsHolder dictOf(int number)
{
    BAS_Options options;
    options.set("number", int64_t(number));
    return BAS_OptionsHolder(options);
}

int numberOf(const BAS_OptionsHolder &dict) { return int(dict.options().get("number", int64_t(-1))); }

const Kind kKinds[] = {
    {"P",
     [](MOD_Edit &edit, ELM_Owner) { return edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT); },
     [](ELM_Attribute &a, int64_t row, int n) { a.pages<float>()->writableTuple(row)[2] = float(n + 1); },
     [](const ELM_Attribute &a, int64_t row) { return int(a.pages<float>()->value(row, 2)) - 1; }},
    {"id", [](MOD_Edit &edit, ELM_Owner owner) { return edit.attribute(owner, "id", ELM_STORAGE_INT64); },
     [](ELM_Attribute &a, int64_t row, int n) {
         const int64_t value = n + 1;
         a.write(row, 1, &value);
     },
     [](const ELM_Attribute &a, int64_t row) { return int(a.pages<int64_t>()->value(row)) - 1; }},
    {"name", [](MOD_Edit &edit, ELM_Owner owner) { return edit.stringAttribute(owner, "name"); },
     [](ELM_Attribute &a, int64_t row, int n) { a.strings()->set(row, std::to_string(n)); },
     [](const ELM_Attribute &a, int64_t row) {
         return a.strings()->index(row) < 0 ? -1 : std::stoi(a.strings()->get(row).c_str());
     }},
    {"options", [](MOD_Edit &edit, ELM_Owner owner) { return edit.dictAttribute(owner, "options"); },
     [](ELM_Attribute &a, int64_t row, int n) { a.dicts()->set(row, dictOf(n)); },
     [](const ELM_Attribute &a, int64_t row) { return numberOf(a.dicts()->get(row)); }},
    {"weights", [](MOD_Edit &edit, ELM_Owner owner) { return edit.arrayAttribute(owner, "weights", ELM_STORAGE_REAL16, 2); },
     [](ELM_Attribute &a, int64_t row, int n) {
         const std::vector<PLT_Half> values(size_t(2 * (n % 5 + 1)), PLT_Half(float(n)));
         EXPECT_TRUE(a.numericArrays()->as<PLT_Half>()->set(row, values));
     },
     [](const ELM_Attribute &a, int64_t row) {
         const std::span<const PLT_Half> values = a.numericArrays()->as<PLT_Half>()->get(row);
         return values.empty() ? -1 : int(values.size()) == 2 * (int(values.back()) % 5 + 1) ? int(values.back()) : -2;
     }},
    {"tags",
     [](MOD_Edit &edit, ELM_Owner owner) {
         return edit.arrayAttribute(owner, "tags", ELM_STORAGE_STRING, 1, ELM_TYPE_NONE, ELM_SCOPE_PRIVATE);
     },
     [](ELM_Attribute &a, int64_t row, int n) {
         const BAS_StringHolder both[] = {"n", std::to_string(n)};
         EXPECT_TRUE(a.stringArrays()->set(row, both));
     },
     [](const ELM_Attribute &a, int64_t row) {
         const std::span<const BAS_StringHolder> tags = a.stringArrays()->get(row);
         return tags.size() == 2 && tags[0].view() == "n" ? std::stoi(tags[1].c_str()) : -1;
     },
     ELM_SCOPE_PRIVATE},
    {"choices",
     [](MOD_Edit &edit, ELM_Owner owner) { return edit.arrayAttribute(owner, "choices", ELM_STORAGE_DICTIONARY); },
     [](ELM_Attribute &a, int64_t row, int n) {
         EXPECT_TRUE(a.dictArrays()->set(row, std::vector<BAS_OptionsHolder>(3, dictOf(n))));
     },
     [](const ELM_Attribute &a, int64_t row) {
         return a.dictArrays()->get(row).size() == 3 ? numberOf(a.dictArrays()->get(row)[2]) : -1;
     }},
};

/// A detail as plain vectors, and random edits that are made to it and to the real one alike.
struct DetailModel
{
    std::vector<bool> live[3];
    std::vector<int64_t> vertexPoints, starts, counts, types;
    std::vector<bool> closed;
    std::map<std::pair<ELM_Owner, const Kind *>, std::vector<int>> attributes;
    std::map<std::pair<ELM_Owner, std::string>, std::vector<bool>> groups;

    int64_t capacity(ELM_Owner owner) const { return int64_t(live[owner].size()); }
    int64_t count(ELM_Owner owner) const { return std::count(live[owner].begin(), live[owner].end(), true); }

    void resize(ELM_Owner owner, int64_t size);
    template <class Column> void keepLive(ELM_Owner owner, Column &column);
    void vacate(ELM_Owner owner, int64_t offset);

    void change(MOD_Edit &edit, std::mt19937 &random);
    void appendPoints(MOD_Edit &edit, std::mt19937 &random);
    void appendPrimitives(MOD_Edit &edit, std::mt19937 &random);
    void write(MOD_Edit &edit, std::mt19937 &random);
    void regroup(MOD_Edit &edit, std::mt19937 &random);
    void connect(MOD_Edit &edit, std::mt19937 &random);
    void remove(MOD_Edit &edit, std::mt19937 &random);
    void compact(MOD_Edit &edit);
    void reverse(MOD_Edit &edit, std::mt19937 &random);
};

void DetailModel::resize(ELM_Owner owner, int64_t size)
{
    live[owner].resize(size_t(size), true);
    for (auto &[key, rows] : attributes)
        if (key.first == owner)
            rows.resize(size_t(size), -1);
    for (auto &[key, members] : groups)
        if (key.first == owner)
            members.resize(size_t(size));
}

void DetailModel::vacate(ELM_Owner owner, int64_t offset)
{
    live[owner][size_t(offset)] = false;
    for (auto &[key, rows] : attributes)
        if (key.first == owner)
            rows[size_t(offset)] = -1;
    for (auto &[key, members] : groups)
        if (key.first == owner)
            members[size_t(offset)] = false;
}

void DetailModel::change(MOD_Edit &edit, std::mt19937 &random)
{
    const int64_t what = below(random, 14);
    if (what < 3 || count(ELM_OWNER_POINT) == 0)
        appendPoints(edit, random);
    else if (what < 6)
        appendPrimitives(edit, random);
    else if (what < 8)
        write(edit, random);
    else if (what < 10)
        regroup(edit, random);
    else if (what == 10)
        connect(edit, random);
    else if (what == 11)
        reverse(edit, random);
    else if (what == 12)
        remove(edit, random);
    else if (below(random, 3) == 0)
        compact(edit);
}

void DetailModel::appendPoints(MOD_Edit &edit, std::mt19937 &random)
{
    const int64_t count = below(random, below(random, 3) ? 20 : 2000);
    ASSERT_TRUE(edit.appendPoints(count));
    resize(ELM_OWNER_POINT, capacity(ELM_OWNER_POINT) + count);
}

void DetailModel::appendPrimitives(MOD_Edit &edit, std::mt19937 &random)
{
    const int64_t kind = below(random, 4);
    const bool isParticles = kind == 2, isClosed = below(random, 2);
    std::vector<int32_t> added(size_t(below(random, below(random, 4) ? 20 : 2000)), 3);
    if (kind == 0)
        std::generate(added.begin(), added.end(), [&] { return int32_t(below(random, 6)); });
    if (isParticles)
        added.assign(1, int32_t(below(random, 50)));
    std::vector<int64_t> wide(size_t(std::accumulate(added.begin(), added.end(), 0)));
    std::generate(wide.begin(), wide.end(), [&] {
        int64_t point = below(random, capacity(ELM_OWNER_POINT));
        while (!live[ELM_OWNER_POINT][size_t(point)])
            point = (point + 1) % capacity(ELM_OWNER_POINT);
        return point;
    });
    const std::vector<int32_t> narrow(wide.begin(), wide.end());
    const bool good = isParticles ? edit.appendParticles(narrow)
                      : kind == 1 ? edit.appendPolygons(3, narrow, isClosed)
                      : kind == 3 ? edit.appendPolygons(added, wide, isClosed)
                                  : edit.appendPolygons(added, narrow, isClosed);
    ASSERT_TRUE(good) << edit.message();

    int64_t start = int64_t(vertexPoints.size());
    for (const int32_t corners : added)
    {
        starts.push_back(start);
        counts.push_back(corners);
        start += corners;
    }
    types.resize(counts.size(), isParticles ? ELM_PRIMITIVE_PARTICLES : ELM_PRIMITIVE_POLYGON);
    closed.resize(counts.size(), isClosed && !isParticles);
    vertexPoints.insert(vertexPoints.end(), wide.begin(), wide.end());
    resize(ELM_OWNER_VERTEX, int64_t(vertexPoints.size()));
    resize(ELM_OWNER_PRIMITIVE, int64_t(counts.size()));
}

void DetailModel::write(MOD_Edit &edit, std::mt19937 &random)
{
    const Kind &kind = kKinds[below(random, std::size(kKinds))];
    const ELM_Owner owner = &kind == kKinds ? ELM_OWNER_POINT : kOwners[below(random, 3)];
    ELM_Attribute *attribute = kind.open(edit, owner);
    ASSERT_NE(attribute, nullptr);
    std::vector<int> &rows = attributes[{owner, &kind}];
    rows.resize(live[owner].size(), -1);
    for (int64_t times = capacity(owner) > 0 ? below(random, 200) : 0; times > 0; --times)
        if (const int64_t row = below(random, capacity(owner)); live[owner][size_t(row)])
            kind.write(*attribute, row, rows[size_t(row)] = int(below(random, 30)));
}

void DetailModel::regroup(MOD_Edit &edit, std::mt19937 &random)
{
    const ELM_Owner owner = kOwners[below(random, 3)];
    const std::string name(1, char('a' + below(random, 3)));
    std::vector<bool> &members = groups[{owner, name}];
    members.resize(live[owner].size());
    ELM_Group *group = edit.group(owner, name);
    const int64_t first = below(random, capacity(owner) + 1), count = below(random, capacity(owner) - first + 1);
    const ELM_Range range(owner, first, first + count);
    const int64_t operation = below(random, 6);
    operation == 0   ? group->setRange(first, count)
    : operation == 1 ? group->setRange(first, count, false)
    : operation == 2 ? void(group->unite(range))
    : operation == 3 ? void(group->intersect(range))
    : operation == 4 ? void(group->subtract(range))
                     : void(group->complement(range));
    for (int64_t i = 0; i < capacity(owner); ++i)
    {
        const bool is = members[size_t(i)], in = i >= first && i < first + count;
        const bool results[] = {is || in, is && !in, is || in, is && in, is && !in, in && !is};
        members[size_t(i)] = results[operation] && live[owner][size_t(i)];
    }
    // Vacant offsets leave the group when the edit is committed; here they are told so at once.
    for (int64_t i = 0; i < capacity(owner); ++i)
        if (!live[owner][size_t(i)])
            group->set(i, false);
}

void DetailModel::connect(MOD_Edit &edit, std::mt19937 &random)
{
    if (vertexPoints.empty())
        return;
    const int64_t vertex = below(random, int64_t(vertexPoints.size())),
                  point = below(random, capacity(ELM_OWNER_POINT) + 1) - 1;
    const bool good = live[ELM_OWNER_VERTEX][size_t(vertex)] && (point < 0 || live[ELM_OWNER_POINT][size_t(point)]);
    EXPECT_EQ(edit.setVertexPoint(vertex, point), good) << edit.message();
    if (good)
        vertexPoints[size_t(vertex)] = point;
}

void DetailModel::remove(MOD_Edit &edit, std::mt19937 &random)
{
    const ELM_Owner owner = below(random, 2) ? ELM_OWNER_POINT : ELM_OWNER_PRIMITIVE;
    ELM_OffsetList offsets;
    if (below(random, 2))
    {
        const int64_t first = below(random, capacity(owner) + 1);
        offsets = ELM_OffsetList(first, below(random, std::min<int64_t>(1500, capacity(owner) - first) + 1));
        ASSERT_TRUE(edit.remove(ELM_Range(owner, first, first + offsets.size()))) << edit.message();
    }
    else
    {
        for (int64_t i = below(random, 10); i > 0 && capacity(owner) > 0; --i)
            offsets.append(below(random, capacity(owner)));
        ASSERT_TRUE(edit.remove(owner, offsets)) << edit.message();
    }
    for (int64_t i = 0; i < offsets.size(); ++i)
    {
        const size_t offset = size_t(offsets[i]);
        vacate(owner, offsets[i]);
        if (owner == ELM_OWNER_POINT)
            std::replace(vertexPoints.begin(), vertexPoints.end(), offsets[i], int64_t(-1));
        else
        {
            for (int64_t vertex = starts[offset]; vertex < starts[offset] + counts[offset]; ++vertex)
            {
                vacate(ELM_OWNER_VERTEX, vertex);
                vertexPoints[size_t(vertex)] = -1;
            }
            counts[offset] = types[offset] = 0;
            closed[offset] = false;
        }
    }
}

template <class Column> void DetailModel::keepLive(ELM_Owner owner, Column &column)
{
    Column kept;
    for (size_t i = 0; i < column.size(); ++i)
        if (live[owner][i])
            kept.push_back(column[i]);
    column = kept;
}

void DetailModel::compact(MOD_Edit &edit)
{
    ASSERT_TRUE(edit.compact());
    const auto place = [this](ELM_Owner owner, int64_t offset) {
        return std::count(live[owner].begin(), live[owner].begin() + offset, true);
    };
    for (int64_t &point : vertexPoints)
        point = point < 0 ? point : place(ELM_OWNER_POINT, point);
    for (int64_t &start : starts)
        start = place(ELM_OWNER_VERTEX, start);
    keepLive(ELM_OWNER_VERTEX, vertexPoints);
    for (std::vector<int64_t> *column : {&starts, &counts, &types})
        keepLive(ELM_OWNER_PRIMITIVE, *column);
    keepLive(ELM_OWNER_PRIMITIVE, closed);
    for (auto &[key, rows] : attributes)
        keepLive(key.first, rows);
    for (auto &[key, members] : groups)
        keepLive(key.first, members);
    for (const ELM_Owner owner : kOwners)
        live[owner].assign(size_t(count(owner)), true);
}

void DetailModel::reverse(MOD_Edit &edit, std::mt19937 &random)
{
    const int64_t first = below(random, capacity(ELM_OWNER_PRIMITIVE) + 1);
    const int64_t end = first + below(random, capacity(ELM_OWNER_PRIMITIVE) - first + 1);
    const bool good = std::find(types.begin() + first, types.begin() + end, ELM_PRIMITIVE_PARTICLES) == types.begin() + end;
    ASSERT_EQ(edit.reverse(ELM_Range(ELM_OWNER_PRIMITIVE, first, end)), good);
    for (int64_t i = first; good && i < end; ++i)
    {
        const auto turn = [from = starts[size_t(i)], count = counts[size_t(i)]](auto &column) {
            std::reverse(column.begin() + from, column.begin() + from + count);
        };
        turn(vertexPoints);
        for (auto &[key, rows] : attributes)
            if (key.first == ELM_OWNER_VERTEX)
                turn(rows);
        for (auto &[key, members] : groups)
            if (key.first == ELM_OWNER_VERTEX)
                turn(members);
    }
}

template <class T> void expectSame(const std::string &what, const std::vector<T> &is, const std::vector<T> &expected)
{
    const auto differs = std::mismatch(is.begin(), is.end(), expected.begin(), expected.end()).first;
    EXPECT_TRUE(is == expected) << what << " of " << is.size() << " from " << differs - is.begin() << " on";
}

void expectElements(const MSH_Detail &detail, const DetailModel &model)
{
    for (const ELM_Owner owner : kOwners)
    {
        SCOPED_TRACE(owner);
        EXPECT_EQ(detail.count(owner), model.count(owner));
        ASSERT_EQ(detail.capacity(owner), model.capacity(owner));
        const ELM_OffsetList offsets = detail.offsets(owner);
        std::vector<bool> listed(model.live[owner].size()), inRange(listed), isLive(listed);
        for (int64_t i = 0; i < offsets.size(); ++i)
            listed[size_t(offsets[i])] = i == 0 || offsets[i] > offsets[i - 1];
        for (const auto [begin, end] : detail.range(owner).blocks())
            std::fill(inRange.begin() + begin, inRange.begin() + end, true);
        for (size_t i = 0; i < isLive.size(); ++i)
            isLive[i] = detail.isLive(owner, int64_t(i));
        expectSame("offsets", listed, model.live[owner]);
        expectSame("range", inRange, model.live[owner]);
        expectSame("live", isLive, model.live[owner]);
    }
    EXPECT_EQ(detail.sequentialVertices(), !detail.hasVacantOffsets(ELM_OWNER_VERTEX));
}

void expectTopology(const MSH_Detail &detail, const DetailModel &model)
{
    DetailModel is;
    std::vector<int64_t> owners, expectedOwners(model.vertexPoints.size(), -1);
    for (int64_t i = 0; i < detail.capacity(ELM_OWNER_PRIMITIVE); ++i)
    {
        const MSH_Detail::VertexRun run = detail.vertexRun(i);
        is.starts.push_back(run.start);
        is.counts.push_back(run.count);
        is.types.push_back(detail.typeOf(i));
        is.closed.push_back(detail.isClosed(i));
        std::fill_n(expectedOwners.begin() + model.starts[size_t(i)], model.counts[size_t(i)], i);
    }
    std::vector<bool> used, expectedUsed(model.live[ELM_OWNER_POINT].size());
    bool isValid = true;
    for (int64_t i = 0; i < detail.capacity(ELM_OWNER_VERTEX); ++i)
    {
        is.vertexPoints.push_back(detail.vertexPoint(i));
        owners.push_back(detail.vertexPrimitive().value(i));
        if (const int64_t point = model.vertexPoints[size_t(i)]; point >= 0)
            expectedUsed[size_t(point)] = true;
        else if (model.live[ELM_OWNER_VERTEX][size_t(i)])
            isValid = false;
    }
    for (int64_t i = 0; i < detail.capacity(ELM_OWNER_POINT); ++i)
        used.push_back(detail.usedPoints().get(i));
    expectSame("starts", is.starts, model.starts);
    expectSame("counts", is.counts, model.counts);
    expectSame("types", is.types, model.types);
    expectSame("closed", is.closed, model.closed);
    expectSame("points of vertices", is.vertexPoints, model.vertexPoints);
    expectSame("primitives of vertices", owners, expectedOwners);
    expectSame("used points", used, expectedUsed);
    EXPECT_EQ(detail.topologyIsValid(), isValid);
    EXPECT_EQ(detail.hasUnusedPoints(), std::count(used.begin(), used.end(), true) < model.count(ELM_OWNER_POINT));
    for (const int type : {ELM_PRIMITIVE_POLYGON, ELM_PRIMITIVE_PARTICLES})
        EXPECT_EQ(detail.primitiveCount(type), std::count(model.types.begin(), model.types.end(), type)) << type;
}

void expectEqual(const MSH_Detail &detail, const DetailModel &model)
{
    expectElements(detail, model);
    if (testing::Test::HasFatalFailure())
        return;
    expectTopology(detail, model);
    for (const auto &[key, rows] : model.attributes)
    {
        const ELM_Attribute *attribute = detail.find(key.first, key.second->scope, key.second->name);
        ASSERT_NE(attribute, nullptr) << key.second->name;
        ASSERT_EQ(attribute->size(), int64_t(rows.size()));
        std::vector<int> is;
        for (int64_t row = 0; row < attribute->size(); ++row)
            is.push_back(key.second->read(*attribute, row));
        expectSame(key.second->name, is, rows);
    }
    for (const auto &[key, members] : model.groups)
    {
        const ELM_Group *group = detail.group(key.first, key.second);
        ASSERT_NE(group, nullptr) << key.second;
        std::vector<bool> is(members.size()), walked(members.size());
        for (size_t i = 0; i < is.size(); ++i)
            is[i] = group->contains(int64_t(i));
        for (const auto [begin, end] : group->range().blocks())
            std::fill(walked.begin() + begin, walked.begin() + end, true);
        expectSame("group " + key.second, is, members);
        expectSame("range of group " + key.second, walked, members);
    }
}

TEST(Detail, RandomEditsMatchAModelAndOldSnapshotsStayAsTheyWere)
{
    for (unsigned seed = 0; seed < 40 && !testing::Test::HasFailure(); ++seed)
    {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        MOD_DetailHandle detail;
        DetailModel model;
        std::vector<std::pair<MOD_ConstDetailHandle, DetailModel>> snapshots;

        // Readers look at what is built on first use while the edits go on.
        std::atomic<bool> done{false};
        const auto read = [&] {
            while (!done)
            {
                const MOD_ConstDetailHandle handle = detail.read();
                const MSH_Detail &state = *handle.readLock();
                ASSERT_EQ(state.offsets(ELM_OWNER_POINT).size(), state.pointCount());
                ASSERT_LE(state.usedPoints().count(), state.pointCount());
                ASSERT_EQ(state.vertexPrimitive().size(), state.capacity(ELM_OWNER_VERTEX));
            }
        };
        std::thread readers[] = {std::thread(read), std::thread(read)};
        for (int commit = 0; commit < 10 && !testing::Test::HasFailure(); ++commit)
        {
            MOD_Edit edit(detail);
            DetailModel edited = model;
            for (unsigned change = random() % 8; change > 0; --change)
                edited.change(edit, random);
            if (random() % 5 == 0)
                edit.abort();
            else
            {
                snapshots.emplace_back(edit.commit(), model = edited);
                EXPECT_EQ(snapshots.back().first, detail.read());
            }
            expectEqual(*detail.read().readLock(), model);
        }
        done = true;
        for (std::thread &reader : readers)
            reader.join();
        for (const auto &[snapshot, was] : snapshots)
            expectEqual(*snapshot.readLock(), was);
    }
}
}  // namespace
