#pragma once

#include <random>

#include <gtest/gtest.h>

#include <host/elm/PrimitiveFactory.h>
#include <host/mod/Edit.h>
#include <host/mod/PackedAgent.h>
#include <host/mod/PackedDisk.h>
#include <host/mod/PackedGeometry.h>
#include <host/msh/Channel.h>
#include <host/msh/Curve.h>
#include <host/msh/Faces.h>
#include <host/msh/Meta.h>
#include <host/msh/Patch3.h>
#include <host/msh/Quadric.h>
#include <host/msh/SparseVolume.h>
#include <host/msh/Surface.h>
#include <host/msh/Volume.h>
#include <io/detail/visitValues.h>

namespace tests
{
/// Bytes as an object that only its kind can load.
class Bytes final : public MSH_Opaque
{
public:
    explicit Bytes(std::vector<uint8_t> bytes) : bytes_(std::move(bytes)) {}
    const char *kind() const override { return "test_io_bytes"; }
    bool save(std::vector<uint8_t> &bytes) const override { return bytes = bytes_, !bytes_.empty(); }
    int64_t memoryUsage() const override { return 0; }

private:
    std::vector<uint8_t> bytes_;
};

/// The fields that no payload of the host has.
struct OddData
{
    int64_t wide = int64_t(1) << 60;
    std::vector<uint8_t> bytes = {0, 255};
    std::vector<int64_t> wides = {-1};
    BAS_OptionsHolder dict;
    MSH_ElementRefs points{ELM_OWNER_POINT, {0}};

    template <class Self, class Visit> static void describe(Self &self, Visit &&visit)
    {
        visit("wide", self.wide);
        visit("bytes", self.bytes);
        visit("wides", self.wides);
        visit("dict", self.dict);
        visit("points", self.points);
    }
    bool check(const MSH_PayloadUse &, std::string &) const { return true; }
};

inline ELM_PrimitiveTypeId oddType()
{
    static const ELM_PrimitiveTypeId id = [] {
        MSH_Opaque::registerKind("test_io_bytes", [](std::span<const uint8_t> bytes, std::string &why) {
            why = "there are no bytes";
            return bytes.empty() ? nullptr : MSH_OpaqueHandle(new Bytes({bytes.begin(), bytes.end()}));
        });
        ELM_PrimitiveDefinition odd;
        odd.name = BAS_StringHolder("test_io_odd");
        odd.makePayload = &MSH_PayloadOf<OddData>::make;
        return ELM_PrimitiveFactory::add(odd);
    }();
    return id;
}

template <class Data> MSH_PayloadHandle payloadOf(Data data) { return new MSH_PayloadOf<Data>(std::move(data)); }

/// Makes details of anything that one can hold, and of everything in the long run.
class AnyDetail
{
public:
    explicit AnyDetail(uint32_t seed) : random_(seed) {}

    MOD_ConstDetailHandle make(int depth = 0)
    {
        MOD_DetailHandle handle;
        MOD_Edit edit(handle);
        addAttributes(edit);
        EXPECT_TRUE(edit.appendPoints(30));
        addPrimitives(edit, depth);
        addAttributes(edit);
        for (int owner = 0; owner < ELM_ELEMENT_OWNERS; ++owner)
            for (uint32_t i = below(4); i > 0; --i)
                if (ELM_Group *group = edit.group(ELM_Owner(owner), nameOf(int(i))); one(2))
                    group->setRange(below(20), below(5));
                else
                    for (const int64_t member : {3, 5, 6, 11})
                        group->set(member);
        const uint32_t points = one(3) ? below(31) : 0, primitives = one(3) ? below(4) : 0;
        EXPECT_TRUE(edit.remove(ELM_Range(ELM_OWNER_POINT, below(10), points))) << edit.message();
        EXPECT_TRUE(edit.remove(ELM_Range(ELM_OWNER_PRIMITIVE, below(4), primitives))) << edit.message();
        return edit.commit();
    }

private:
    uint32_t below(uint32_t end) { return uint32_t(random_()) % end; }
    bool one(uint32_t of) { return below(of) == 0; }

    BAS_StringHolder text()
    {
        const char *texts[] = {"",     "a", "\xff\x80z", "\xee\xbe\x80", "\"\\\n\t\x01", "\xf0\x9f\x8d\x93 \xe2\x82\xac",
                               "int x"};
        return texts[below(uint32_t(std::size(texts)))];
    }
    std::string nameOf(int number) { return std::string(text().view()) + std::to_string(number); }

    template <class T> T value()
    {
        const double reals[] = {0.0,
                                -0.0,
                                1.0,
                                1e-7,
                                1.0 / 3.0,
                                1e30,
                                std::numeric_limits<double>::quiet_NaN(),
                                -std::numeric_limits<double>::infinity()};
        if constexpr (std::is_same_v<T, BAS_StringHolder>)
            return text();
        else if constexpr (std::is_same_v<T, BAS_OptionsHolder>)
            return dict();
        else if constexpr (std::is_integral_v<T>)
            return one(4) ? std::numeric_limits<T>::min() : one(3) ? std::numeric_limits<T>::max() : T(below(5));
        else
            return T(reals[below(uint32_t(std::size(reals)))]);
    }
    template <class T> std::vector<T> row(size_t size)
    {
        std::vector<T> values;
        while (values.size() < size)
            values.push_back(value<T>());
        return values;
    }
    BAS_OptionsHolder dict()
    {
        BAS_Options options;
        const BAS_Options::Value values[] = {true,   int64_t(below(3)),      value<double>(),
                                             text(), row<int64_t>(below(3)), row<double>(below(3))};
        for (const BAS_Options::Value &value : values)
            if (one(2))
                options.set(BAS_StringHolder(nameOf(int(below(2)))), value);
        return BAS_OptionsHolder(options);
    }

    void addAttributes(MOD_Edit &edit)
    {
        edit.attribute(ELM_OWNER_POINT, "P", ELM_Storage(ELM_STORAGE_REAL16 + below(3)), 3,
                       ELM_TypeInfo(int(below(13)) - 1));
        for (int i = 0; i < 12; ++i)
        {
            const ELM_Owner owner = ELM_Owner(below(4));
            const ELM_Storage storage = ELM_Storage(below(10));
            const ELM_TypeInfo type = ELM_TypeInfo(int(below(12)) - 1);
            const ELM_Scope scope = ELM_Scope(below(3));
            const int size = 1 + int(below(3));
            ELM_Attribute *made = one(3) ? edit.arrayAttribute(owner, nameOf(i), storage, size, type, scope)
                                  : storage == ELM_STORAGE_STRING ? edit.stringAttribute(owner, nameOf(i), size, scope)
                                  : storage == ELM_STORAGE_DICTIONARY
                                      ? edit.dictAttribute(owner, nameOf(i), size, scope)
                                      : edit.attribute(owner, nameOf(i), storage, size, type, scope);
            if (!one(4))
                rq::io::visitValues(*made, [this](auto &values) { fill(values); });
        }
    }

    template <class T> void fill(ELM_PageArray<T> &pages)
    {
        const bool same = one(4);
        std::vector<T> tuple = row<T>(size_t(pages.tupleSize()));
        for (int64_t i = 0; i < pages.size(); ++i, tuple = same ? tuple : row<T>(tuple.size()))
            pages.write(i, 1, tuple.data());
    }
    template <class Item> void fill(ELM_IndexedTuple<Item> &tuples)
    {
        for (const Item &item : row<Item>(3))
            if constexpr (std::is_same_v<Item, BAS_StringHolder>)
                tuples.add(item.view());
            else
                tuples.add(item);
        std::vector<int32_t> places;
        for (int64_t i = 0; i < tuples.size() * tuples.tupleSize(); ++i)
            places.push_back(int32_t(below(uint32_t(tuples.table().size()) + 1)) - 1);
        EXPECT_TRUE(tuples.writeIndices(0, tuples.size(), places.data()));
    }
    template <class Item> void fill(ELM_ArrayTuple<Item> &arrays)
    {
        for (int64_t i = 0; i < arrays.size(); ++i)
            arrays.set(i, row<Item>(size_t(arrays.tupleSize()) * below(3)));
    }

    struct Kind
    {
        ELM_PrimitiveTypeId type;
        int32_t points;
        MSH_PayloadHandle payload = nullptr;
    };

    Kind packed(BAS_IntrusivePtr<const MOD_PackedImpl> impl)
    {
        const ELM_PrimitiveTypeId type = impl->type();
        return {type, int32_t(below(2)), new MOD_PackedPayload(std::move(impl), {1, 2, 3}, int32_t(below(5)))};
    }

    std::vector<Kind> kinds(int depth)
    {
        const MSH_TrimLoops trims = {{1}, {2}, {3}, {0, 0, 0.5, 1, 1}, {0, 0, 1, 1, 0, 1, 0, 0, 1}};
        std::vector<float> dense(18 * 18 * 18, 7.0f);
        dense.back() = 3.0f;
        std::vector<Kind> all = {
            {ELM_PRIMITIVE_POLYGON, int32_t(below(6))},
            {ELM_PRIMITIVE_NURBS_CURVE, 4, payloadOf<MSH_CurveData>({2, {0, 0, 1, 2, 3, 3}, true, false})},
            {ELM_PRIMITIVE_BEZIER_CURVE, 6, payloadOf<MSH_CurveData>({4, {}, false, true})},
            {ELM_PRIMITIVE_GRID, 6, payloadOf<MSH_GridData>({2 + int(below(2)), 3, true, false})},
            {ELM_PRIMITIVE_NURBS_SURFACE, 16, payloadOf<MSH_SurfaceData>({4, 4, 4, 3, {}, {}, false, false, true, trims})},
            {ELM_PRIMITIVE_RESERVED, 2},
            {ELM_PRIMITIVE_SPHERE, 1},
            {ELM_PRIMITIVE_TUBE, 1, payloadOf<MSH_TubeData>({0.1, true})},
            {ELM_PRIMITIVE_PARTICLES, 9},
            {ELM_PRIMITIVE_BLOB_BOX, 1, payloadOf<MSH_BlobData>({MSH_KERNEL_QUARTIC, -2.0, 1.0, 0.5, 3.0, 0.25})},
            {ELM_PRIMITIVE_BLOB_EXPRESSION, 0, payloadOf<MSH_BlobExpressionData>({MSH_BLOB_SUM, {}})},
            {ELM_PRIMITIVE_TRIANGLE_STRIP, 5},
            {ELM_PRIMITIVE_TRIANGULAR_PATCH, 10, payloadOf<MSH_Patch3Data>({3})},
            {ELM_PRIMITIVE_VOLUME, 1, payloadOf(MSH_VolumeData(18, 18, 18, dense.data()))},
            {ELM_PRIMITIVE_TETRAHEDRON, 4},
            {ELM_PRIMITIVE_SOUP, 4,
             payloadOf(MSH_SoupData(std::vector<int32_t>{3, 4}, std::vector<int32_t>{0, 1, 2, 0, 1, 2, 3}))},
            {ELM_PRIMITIVE_SPARSE_VOLUME, 1, payloadOf<MSH_SparseVolumeData>({text(), new Bytes({1, uint8_t(below(200))})})},
            {ELM_PRIMITIVE_CHANNEL, 0, payloadOf<MSH_ChannelData>({{0, 0.1}, {1, 2}, {0, 0}, {0, 1}, {0, 2}})},
            {oddType(), 1},
            {oddType(), 2, payloadOf<OddData>({.dict = dict()})},
            packed(new MOD_PackedDisk({text()})),
            packed(new MOD_PackedDiskSequence({{text(), text()}, 1.5, true, MOD_SEQUENCE_MIRROR})),
        };
        all[3].points = 3 * MSHpayloadData<MSH_GridData>(*all[3].payload).rows;
        if (depth > 1)
            return all;
        const MOD_ConstDetailHandle inner = make(depth + 1), other = make(depth + 2);
        std::string why;
        const MOD_ConstDetailHandle agent =
            MOD_AgentDefinition{{{"hip", -1, {}}, {"knee", 0, {}}}, {{"leg", inner, 1}, {"skin", other, -1}}}.make(why);
        all.push_back(packed(new MOD_PackedGeometry({{inner.readLock()}})));
        all.push_back(packed(new MOD_PackedFragment({{inner.readLock()}, "name", text()})));
        all.push_back(packed(new MOD_PackedAgent({{agent.readLock()}, std::vector<double>(32, 0.5)})));
        return all;
    }

    void addPrimitives(MOD_Edit &edit, int depth)
    {
        const std::vector<Kind> all = kinds(depth);
        for (int i = 0; i < (depth > 0 ? 3 : 16); ++i)
        {
            const Kind &kind = all[below(uint32_t(all.size()))];
            const int32_t count = 1 + int32_t(below(3));
            std::vector<int32_t> points;
            for (int32_t p = 0; p < count * kind.points; ++p)
                points.push_back(int32_t(below(30)));
            const std::vector<int32_t> corners(size_t(count), kind.points);
            const std::span payload(&kind.payload, size_t(kind.payload ? 1 : 0));
            EXPECT_TRUE(edit.append({kind.type, count, corners, 0, points, one(2), payload, {}})) << edit.message();
        }
        if (one(3) && edit.vertexCount() > 0)
        {
            EXPECT_TRUE(edit.setVertexPoint(below(uint32_t(edit.vertexCount())), -1));
        }
    }

    std::mt19937 random_;
};
}  // namespace tests
