#include <gtest/gtest.h>

#include <host/bas/Parallel.h>
#include <io/RQGReader.h>
#include <io/RQGWriter.h>
#include <io/detail/checksum.h>
#include <io/detail/compacted.h>
#include <tests/io/anyDetail.h>
#include <tests/io/difference.h>

using namespace rq::io;
using namespace tests;

namespace
{
std::string written(const MOD_ConstDetailHandle &detail, RQGForm form)
{
    std::string bytes;
    Messages messages;
    EXPECT_TRUE(writeRQG(detail, form, "x", bytes, messages)) << messages.toString();
    return bytes;
}

struct Loaded
{
    explicit Loaded(std::string_view bytes, const std::shared_ptr<const void> &owner = {})
    {
        MOD_DetailHandle handle;
        good = readRQG(bytes, "x", handle, messages, owner);
        detail = handle.read();
        EXPECT_EQ(messages.errors(), good ? 0 : 1) << messages.toString();
    }

    bool good;
    Messages messages;
    MOD_ConstDetailHandle detail;
};

constexpr RQGForm kForms[] = {RQGForm::Text, RQGForm::Binary};

TEST(RQG, BothFormsHoldEverything)
{
    for (uint32_t seed = 0; seed < 60; ++seed)
    {
        SCOPED_TRACE(seed);
        const MOD_ConstDetailHandle detail = AnyDetail(seed).make(), whole = compacted(detail);
        const std::string text = written(detail, RQGForm::Text);
        for (const RQGForm form : kForms)
        {
            const auto bytes = std::make_shared<const std::string>(written(detail, form));
            for (const bool inPlace : {false, true})
            {
                const Loaded loaded(*bytes, inPlace ? bytes : nullptr);
                ASSERT_TRUE(loaded.good) << loaded.messages.toString() << text;
                EXPECT_EQ(loaded.messages.warnings(), 0) << loaded.messages.toString();
                ASSERT_EQ(difference(*whole.readLock(), *loaded.detail.readLock()), "") << text;
                EXPECT_EQ(written(loaded.detail, form), *bytes);
                EXPECT_EQ(written(loaded.detail, RQGForm::Text), text);
            }
        }
    }
}

TEST(RQG, ColumnsAreReadWhereTheyLie)
{
    MOD_DetailHandle handle;
    MOD_Edit edit(handle);
    ASSERT_TRUE(edit.appendPoints(4) && edit.appendPolygons(4, std::vector<int32_t>{0, 1, 2, 3}, true));
    edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->writeAll<float>()[0] = 1.0f;
    auto bytes = std::make_shared<const std::string>(written(edit.commit(), RQGForm::Binary));
    const std::string_view memory = *bytes;
    const Loaded loaded(memory, bytes);
    const auto isInside = [memory](const void *at) { return at >= memory.data() && at < memory.data() + memory.size(); };
    EXPECT_TRUE(isInside(loaded.detail.readLock()->positions().contiguousData()));
    EXPECT_TRUE(isInside(loaded.detail.readLock()->vertexPoint().contiguous32()));
    EXPECT_EQ(bytes.use_count() > 1, true);
}

TEST(RQG, IsTheSameForAnyNumberOfThreads)
{
    MOD_DetailHandle handle;
    MOD_Edit edit(handle);
    ASSERT_TRUE(edit.appendPoints(200000));
    edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->modifyAll<float>()[500000] = 2.0f;
    const MOD_ConstDetailHandle detail = edit.commit();
    const std::string all = written(detail, RQGForm::Binary);
    const BAS_Threads::Limit limit(1);
    EXPECT_EQ(written(detail, RQGForm::Binary), all);
}

TEST(RQG, CutOffAndAlteredFilesAreRefused)
{
    const MOD_ConstDetailHandle detail = AnyDetail(7).make();
    for (const RQGForm form : kForms)
    {
        const std::string bytes = written(detail, form);
        for (size_t length = 0; length + 1 < bytes.size(); length += 1 + length / 300)
        {
            const std::string part = bytes.substr(0, length);
            ASSERT_FALSE(Loaded(part).good) << length;
        }
    }
    std::string bytes = written(detail, RQGForm::Binary);
    std::mt19937 random(1);
    for (size_t at = 0; at < bytes.size(); at += 1 + at / 300)
    {
        const char before = bytes[at];
        bytes[at] = char(before ^ (1 << random() % 8));
        const Loaded loaded(bytes);
        ASSERT_FALSE(loaded.good) << "byte " << at;
        EXPECT_TRUE(at == 0 || loaded.messages.all()[0].place.offset >= 0);
        bytes[at] = before;
    }
    EXPECT_TRUE(Loaded(bytes).good);
    bytes[8] = 2;
    EXPECT_EQ(Loaded(bytes).messages.toString(), "x:@8: error: expected version 1, found 2\n");
}

// Make the checksums of an altered file right again: what is behind them must not be trusted, either.
void seal(std::string &bytes)
{
    const auto word = [&](size_t at) -> uint64_t & { return reinterpret_cast<uint64_t &>(bytes[at]); };
    const auto sum = [&](size_t at, size_t size) { return checksum(std::string_view(bytes).substr(at, size)); };
    constexpr size_t kHeader = 64, kEntry = 24, kSizes[] = {1, 1, 2, 4, 8, 2, 4, 8};
    const auto padded = [](size_t size) { return (size + 63) / 64 * 64; };
    const size_t entries = word(32);
    size_t at = kHeader + padded(entries * kEntry);
    const size_t structure = at;
    at += padded(word(24));
    for (size_t i = 0; i < entries; ++i)
    {
        const size_t entry = kHeader + i * kEntry, size = padded(word(entry + 8) * kSizes[word(entry) & 7]);
        word(entry + 16) = sum(at, size);
        at += size;
    }
    word(40) = sum(structure, padded(word(24)));
    word(48) = sum(kHeader, padded(entries * kEntry));
    word(56) = sum(0, 56);
}

TEST(RQG, SurvivesMutants)
{
    for (const RQGForm form : kForms)
    {
        int failures = 0;
        for (uint32_t seed = 0; seed < 1500; ++seed)
        {
            SCOPED_TRACE(seed);
            std::mt19937 random(seed);
            static std::vector<std::string> wholes[2];
            std::vector<std::string> &whole = wholes[size_t(form)];
            if (whole.empty())
                for (const uint32_t of : {3u, 4u, 5u})
                    whole.push_back(written(AnyDetail(of).make(1), form));
            std::string bytes = whole[seed % 3];
            const size_t first =
                form == RQGForm::Binary ? 64 + (reinterpret_cast<uint64_t &>(bytes[32]) * 24 + 63) / 64 * 64 : 0;
            const std::string alphabet = std::string("0123456789-.\"[]{},:naeP") + '\xff' + '\0';
            for (uint32_t edits = 1 + random() % 2; edits > 0; --edits)
                bytes[first + random() % (bytes.size() - first)] = alphabet[random() % alphabet.size()];
            if (form == RQGForm::Binary)
                seal(bytes);
            const Loaded loaded(bytes);
            failures += !loaded.good;
            ASSERT_TRUE(!loaded.good || Loaded(written(loaded.detail, form)).good);
        }
        EXPECT_GT(failures, 200);
        EXPECT_LT(failures, 1450);
    }
}

/// A detail of a few points as people write it, with something more.
std::string file(const std::string &more, const std::string &points = "0,0,0, 1,0,0, 1,1,0, 0,1,0")
{
    return R"({"rqg": 1, "attributes": {"point": [{"name": "P", "storage": "real32", "size": 3, "values": [)" + points +
           "]}" + more + "}";
}
std::string attribute(const std::string &text) { return file(", {" + text + "}]}"); }
std::string primitive(const std::string &text) { return file("]}, \"primitives\": [{" + text + "}]"); }

TEST(RQG, SaysWhatIsWrongAndWhere)
{
    const std::pair<std::string, std::string> cases[] = {
        {"", "x:1:1: error: a value is missing"},
        {"{\n\"rqg\": 1,\n}", "x:3:1: error: the name of a member is missing"},
        {"[1]", "x:1:1: error: expected a map, found \"[1]\""},
        {"{}", "expected \"rqg\": 1, the version, found none"},
        {"{\"rqg\": 2}", "x:1:9: error: expected \"rqg\": 1, the version, found 2"},
        {"{\"rqg\": 1, \"points\": 3}", "expected positions of 3 points, found 0"},
        {file("]}", "0,0"), "expected 0 times 3 values of attribute \"P\", found 2"},
        {file("]}", "0,\n0,true"), "x:2:3: error: expected a number, found \"true]}]}}\""},
        {attribute(R"("name": "a", "storage": "real", "values": [])"), "expected \"uint8\", \"int8\", \"int16\""},
        {attribute(R"("name": "a", "values": [])"), "expected a storage of attribute \"a\", found none"},
        {attribute(R"("name": "a", "storage": "int8", "values": [1, 2, 3, 128])"), "a whole number from -128 to 127, found"},
        {attribute(R"("name": "a", "storage": "int8", "values": [1, 2])"), "4 times 1 values of attribute \"a\", found 2"},
        {attribute(R"("name": "a", "storage": "int8", "size": 2000000000, "values": [1])"), "4 times 2000000000 values"},
        {attribute(R"("name": "a", "storage": "string", "size": 2000000000, "value": [-1])"), "2000000000 is no size of"},
        {attribute(R"("name": "a", "storage": "int8", "size": 0, "values": [])"), "0 is no size of attribute \"a\""},
        {attribute(R"("name": "", "storage": "int8", "value": [0])"), "attribute \"\" needs a name"},
        {attribute(R"("name": "a", "storage": "int8", "value": {"column": 0})"), "of which the file has 0, found number 0"},
        {attribute(R"("name": "a", "storage": "string", "table": ["x"], "value": [1])"), "entries of a table of 1, found 1"},
        {attribute(R"("name": "a", "storage": "int8", "arrays": true, "size": 2, "values": [[1, 2], [], [3], []])"),
         "arrays of a multiple of 2 values, found one of 1"},
        {attribute(
             R"("name": "a", "storage": "int8", "arrays": true, "table": {"lengths": [9], "items": [1]}, "value": [0])"),
         "arrays of 1 values in all, found one of 9"},
        {primitive(R"("type": "square")"), "expected a known type of primitives, found \"square\""},
        {primitive(R"("type": "polygon", "points": [0, 1, 4])"), "vertex 2 refers to point 4, out of range [0, 4)"},
        {primitive(R"("type": "polygon", "corners": 3, "points": [0, 1, 2, 3])"), "4 points do not make 1 primitives of 3"},
        {primitive(R"("type": "polygon", "corners": [3, -3], "points": [])"), "-3 vertices are not what a primitive"},
        {primitive(R"("type": "grid", "points": [0, 1, 2, 3])"), "do not fill a grid of 0 rows"},
        {primitive(R"("type": "grid", "points": [0], "payload": {"rows": 1.5})"), "expected a whole number"},
        {primitive(R"("type": "sphere", "points": [0], "payload": {})"), "primitives of this type have no payload"},
        {primitive(R"("type": "PackedGeometry", "payload": {"detail": [0]})"),
         "one of the 0 details before this one, found 0"},
        {primitive(R"("type": "sparse_volume", "points": [0], "payload": {"grid": {"kind": "k"}})"),
         "\"k\" cannot be loaded"},
        {file(R"(]}, "groups": {"point": [{"name": "g", "members": [4]}]})"), "expected members from 0 to 3, found 4"},
        {file(R"(]}, "groups": {"point": [{"name": "g", "runs": [2, 9]}]})"), "expected members from 2 to 4, found 9"},
    };
    for (const auto &[text, message] : cases)
    {
        const Loaded loaded(text);
        EXPECT_FALSE(loaded.good) << text;
        EXPECT_NE(loaded.messages.toString().find(message), std::string::npos) << loaded.messages.toString() << message;
    }
}

TEST(RQG, TakesWhatPeopleLeaveOut)
{
    const std::pair<std::string, std::string> cases[] = {
        {primitive(R"("type": "polygon", "points": [0, 1, 2])"), R"("closed":true,"corners":3,"points":[0,1,2])"},
        {primitive(R"("type": "tube", "points": [0, 1], "payload": {"taper": 0.5})"),
         R"("corners":1,"points":[0,1],"payload":{"taper":0.5,"caps":false})"},
        {primitive(R"("type": "tube", "points": [0])"), R"("payload":{"taper":1,"caps":false})"},
        {attribute(R"("name": "a", "storage": "string", "values": ["x", null, "y", "x"])"),
         R"("table":["x","y"],"values":[0,-1,1,0])"},
        {attribute(R"("name": "a", "storage": "string", "value": ["x"])"), R"("table":["x"],"value":[0])"},
        {attribute(R"("name": "a", "storage": "int8", "arrays": true, "values": [[1, 2], [], [1, 2], [3]])"),
         R"("table":{"lengths":[2,1],"items":[1,2,3]},"values":[1,0,1,2])"},
        {attribute(
             R"("name": "a", "storage": "dict", "value": [0], "table": [{"float b": 1, "c": 1, "d": 1.5, "e": [1, 2]}])"),
         R"("table":[{"float b":1,"int c":1,"float d":1.5,"intarray e":[1,2]}],"value":[0])"},
        {attribute(R"("name": "a", "storage": "real16", "value": [1], "comment": "")"), R"("value":[1])"},
    };
    for (const auto &[text, expected] : cases)
    {
        const Loaded loaded(text);
        ASSERT_TRUE(loaded.good) << text << loaded.messages.toString();
        EXPECT_EQ(loaded.messages.warnings(), text.find("comment") != text.npos) << loaded.messages.toString();
        std::string found = written(loaded.detail, RQGForm::Text);
        for (const char *blanks : {"\n", " "})
            for (size_t at; (at = found.find(blanks)) != std::string::npos;)
                found.erase(at, 1);
        std::string wanted = expected;
        std::erase(wanted, ' ');
        EXPECT_NE(found.find(wanted), std::string::npos) << found;
    }
}
}  // namespace
