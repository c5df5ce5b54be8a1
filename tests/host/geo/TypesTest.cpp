#include <functional>
#include <numeric>

#include <gtest/gtest.h>

#include <host/mod/Edit.h>
#include <host/mod/PackedDisk.h>
#include <host/mod/PrimPacked.h>
#include <host/msh/Channel.h>
#include <host/msh/Curve.h>
#include <host/msh/Faces.h>
#include <host/msh/Hexa.h>
#include <host/msh/Meta.h>
#include <host/msh/Patch3.h>
#include <host/msh/Quadric.h>
#include <host/msh/SparseVolume.h>
#include <host/msh/Surface.h>
#include <host/msh/Tetra.h>
#include <host/msh/Volume.h>

namespace
{
/// Bytes as a sparse grid.
class ByteGrid final : public MSH_Opaque
{
public:
    explicit ByteGrid(std::vector<uint8_t> bytes) : bytes_(std::move(bytes)) {}
    const char *kind() const override { return "test_bytes"; }
    bool save(std::vector<uint8_t> &bytes) const override { return bytes = bytes_, true; }
    int64_t memoryUsage() const override { return int64_t(bytes_.size()); }

private:
    std::vector<uint8_t> bytes_;
};

/// What an application keeps with a primitive type of its own.
struct HairData
{
    double width = 0.0;
    std::vector<BAS_StringHolder> tags;

    template <class Self, class Visit> static void describe(Self &self, Visit &&visit)
    {
        visit("width", self.width);
        visit("tags", self.tags);
    }
    bool check(const MSH_PayloadUse &, std::string &why) const { return width >= 0.0 || (why = "hair of no width", false); }
};

ELM_PrimitiveTypeId hairType()
{
    static const ELM_PrimitiveTypeId id = [] {
        ELM_PrimitiveDefinition hair;
        hair.name = BAS_StringHolder("test_hair");
        hair.makePayload = &MSH_PayloadOf<HairData>::make;
        return ELM_PrimitiveFactory::add(hair);
    }();
    return id;
}

std::vector<int32_t> upTo(int count)
{
    std::vector<int32_t> numbers(static_cast<size_t>(count));
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

MSH_GridData gridOf(int32_t rows, int32_t columns)
{
    MSH_GridData grid;
    grid.rows = rows;
    grid.columns = columns;
    grid.wrapsU = true;
    return grid;
}

MSH_SoupData soupOf(std::vector<int32_t> sizes, std::vector<int32_t> corners) { return MSH_SoupData(sizes, corners); }

MSH_CurveData curveOf(int32_t order, std::vector<double> knots = {})
{
    MSH_CurveData curve;
    curve.order = order;
    curve.knots = std::move(knots);
    return curve;
}

MSH_SurfaceData surfaceOf(int32_t rows, int32_t columns, std::vector<double> trimPoints)
{
    MSH_SurfaceData surface;
    surface.rows = rows;
    surface.columns = columns;
    surface.trims = {{1}, {2}, {3}, {0, 0, 0.5, 1, 1}, std::move(trimPoints)};
    return surface;
}

MSH_VolumeData volumeOf(int32_t size)
{
    std::vector<float> dense(static_cast<size_t>(size * size * size), 7.0f);
    dense.back() = 3.0f;
    return MSH_VolumeData(size, size, size, dense.data());
}

MSH_ChannelData channelOf(std::vector<double> times)
{
    const std::vector<double> zeros(times.size());
    return {times, zeros, zeros, zeros, std::vector<int32_t>(times.size(), MSH_CHANNEL_CUBIC)};
}

MSH_BlobExpressionData expressionOf(std::vector<int64_t> children)
{
    return {MSH_BLOB_MAXIMUM, {ELM_OWNER_PRIMITIVE, std::move(children)}};
}

MSH_SparseVolumeData sparseOf(std::vector<uint8_t> bytes) { return {BAS_StringHolder("density"), new ByteGrid(bytes)}; }

const std::vector<double> kLoop = {0, 0, 1, 1, 0, 1, 0, 0, 1};

using Points = std::vector<int32_t>;
const std::vector<BAS_Mat3d> kTurned = {BAS_Mat3d(0, 1, 0, -1, 0, 0, 0, 0, 2)};

/// Every type: how it is added to points from 0 on, and what its view says about the first.
struct TypeCase
{
    ELM_PrimitiveTypeId type;
    int points;
    std::function<bool(MOD_Edit &, const Points &)> append;
    std::function<bool(const MSH_Primitive &)> isRight;
};

const std::vector<TypeCase> &typeCases()
{
    static const std::vector<TypeCase> cases = {
        {ELM_PRIMITIVE_POLYGON, 4, [](auto &e, auto &p) { return e.appendPolygons(4, p, true); },
         [](auto &p) { return p.vertexCount() == 4; }},
        {ELM_PRIMITIVE_NURBS_CURVE, 6,
         [](auto &e, auto &p) { return e.appendNURBSCurves(curveOf(4), std::vector<int32_t>{6}, p); },
         [](auto &p) { return MSH_Curve(p).knots() == std::vector<double>{0, 0, 0, 0, 1 / 3., 2 / 3., 1, 1, 1, 1}; }},
        {ELM_PRIMITIVE_BEZIER_CURVE, 7,
         [](auto &e, auto &p) {
             return e.appendBezierCurves(curveOf(4, {0, 5, 6}), std::vector<int32_t>{7}, p);
         },
         [](auto &p) { return MSH_Curve(p).knots()[1] == 5.0 && MSH_Curve(p).isBezier(); }},
        {ELM_PRIMITIVE_GRID, 6, [](auto &e, auto &p) { return e.appendGrids(gridOf(2, 3), p); },
         [](auto &p) {
             return MSH_Grid(p).cellsU() == 3 && MSH_Grid(p).cellsV() == 1 && MSH_Grid(p).vertexAt(1, 2) == p.vertex(5);
         }},
        {ELM_PRIMITIVE_NURBS_SURFACE, 20, [](auto &e, auto &p) { return e.appendNURBSSurface(surfaceOf(4, 5, kLoop), p); },
         [](auto &p) { return MSH_Surface(p).knotsU().size() == 9 && MSH_Surface(p).trims().points == kLoop; }},
        {ELM_PRIMITIVE_BEZIER_SURFACE, 28, [](auto &e, auto &p) { return e.appendBezierSurface(surfaceOf(4, 7, kLoop), p); },
         [](auto &p) { return MSH_Surface(p).knotsU().size() == 3 && MSH_Surface(p).knotsV().size() == 2; }},
        {ELM_PRIMITIVE_CIRCLE, 3, [](auto &e, auto &p) { return e.appendCircles(p); },
         [](auto &p) { return MSH_Quadric(p).transform() == BAS_Mat3d() && MSH_Quadric(p).position().x == p.point(0); }},
        {ELM_PRIMITIVE_SPHERE, 3, [](auto &e, auto &p) { return e.appendSpheres(p, kTurned); },
         [](auto &p) { return MSH_Quadric(p).transform() == kTurned[0]; }},
        {ELM_PRIMITIVE_TUBE, 2,
         [](auto &e, auto &p) {
             return e.appendTubes({0.5, true}, p, kTurned);
         },
         [](auto &p) { return MSH_Quadric(p).taper() == 0.5 && MSH_Quadric(p).hasCaps(); }},
        {ELM_PRIMITIVE_PARTICLES, 9, [](auto &e, auto &p) { return e.appendParticles(p); },
         [](auto &p) { return p.vertexCount() == 9; }},
        {ELM_PRIMITIVE_BLOB_BOX, 2, [](auto &e, auto &p) { return e.appendBlobs(ELM_PRIMITIVE_BLOB_BOX, {}, p, kTurned); },
         [](auto &p) { return MSH_Meta(p).blob().weight == 1.0 && MSH_Meta(p).placement()[2][2] == 2.0; }},
        {ELM_PRIMITIVE_TRIANGLE_FAN, 5, [](auto &e, auto &p) { return e.appendTriangleFans(std::vector<int32_t>{5}, p); },
         [](auto &p) { return MSH_Faces(p).isValid(); }},
        {ELM_PRIMITIVE_TRIANGLE_STRIP, 5,
         [](auto &e, auto &p) { return e.appendTriangleStrips(std::vector<int32_t>{5}, p); },
         [](auto &p) { return MSH_Faces(p).isValid(); }},
        {ELM_PRIMITIVE_TRIANGULAR_PATCH, 10, [](auto &e, auto &p) { return e.appendTriangularPatches({3}, p); },
         [](auto &p) { return MSH_Patch3(p).vertexAt(1, 2) == p.vertex(6) && MSH_Patch3(p).vertexAt(3, 0) == p.vertex(9); }},
        {ELM_PRIMITIVE_VOLUME, 1, [](auto &e, auto &p) { return e.appendVolumes(volumeOf(18), p); },
         [](auto &p) {
             const MSH_Volume v(p);
             return v.value(17, 17, 17) == 3.0f && v.value(16, 17, 17) == 7.0f && v.data().voxels.size() == 4096;
         }},
        {ELM_PRIMITIVE_TETRAHEDRON, 8, [](auto &e, auto &p) { return e.appendTetrahedra(p); },
         [](auto &p) { return MSH_Tetra(p).isValid() && p.vertexCount() == 4; }},
        {ELM_PRIMITIVE_SOUP, 4,
         [](auto &e, auto &p) {
             return e.appendSoup(soupOf({3, 4}, {0, 1, 2, 0, 1, 2, 3}), p);
         },
         [](auto &p) { return (*MSH_Faces(p).begin()).size() == 3; }},
        {ELM_PRIMITIVE_SPARSE_VOLUME, 1,
         [](auto &e, auto &p) {
             return e.appendSparseVolumes(sparseOf({1, 2}), p);
         },
         [](auto &p) { return MSH_SparseVolume(p).grid().memoryUsage() == 2; }},
        {ELM_PRIMITIVE_HEXAHEDRON, 8, [](auto &e, auto &p) { return e.appendHexahedra(p); },
         [](auto &p) { return MSH_Hexa(p).isValid(); }},
        {ELM_PRIMITIVE_CHANNEL, 2,
         [](auto &e, auto &p) {
             return e.appendChannel(channelOf({0.0, 1.0}), p);
         },
         [](auto &p) { return MSH_Channel(p).keys() == 2; }},
        {ELM_PRIMITIVE_PACKED_DISK, 2,
         [](auto &e, auto &p) {
             return e.appendPacked(new MOD_PackedDisk({BAS_StringHolder("a.geo")}), p, kTurned, {1, 2, 3}, 2);
         },
         [](auto &p) { return MOD_PrimPacked(p).viewportLOD() == 2 && MOD_PrimPacked(p).pivot().z == 3.0; }},
        {hairType(), 3,
         [](auto &e, auto &p) {
             const MSH_PayloadHandle hair(new MSH_PayloadOf<HairData>({0.25, {BAS_StringHolder("fine")}}));
             return e.append({hairType(), 1, {}, 3, p, false, {&hair, 1}, {}});
         },
         [](auto &p) { return MSHpayloadData<HairData>(*p.detail().payload(p.offset())).width == 0.25; }},
    };
    return cases;
}

/// Points 0 to 29, at (number, 0, 0).
void addPoints(MOD_Edit &edit)
{
    ASSERT_TRUE(edit.appendPoints(30));
    float *p = edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->modifyAll<float>();
    for (int i = 0; i < 30; ++i)
        p[3 * i] = float(i);
}

/// Load a payload as a file does: an empty one of the type's class, field after field.
MSH_PayloadHandle reloaded(ELM_PrimitiveTypeId type, const MSH_Payload &saved)
{
    const BAS_IntrusivePtr<MSH_Payload> loaded(ELM_PrimitiveFactory::find(type)->makePayload());
    const std::vector<MSH_ConstField> from = saved.fields();
    const std::vector<MSH_Field> to = loaded->writableFields();
    for (size_t i = 0; i < from.size(); ++i)
        std::visit([&](auto *slot) { *slot = *std::get<const std::remove_pointer_t<decltype(slot)> *>(from[i].value); },
                   to[i].value);
    return loaded;
}

TEST(PrimitiveTypes, AreAddedSeenKeptByOldSnapshotsAndLoadedFieldByField)
{
    for (const TypeCase &c : typeCases())
    {
        SCOPED_TRACE(ELM_PrimitiveFactory::find(c.type)->name.c_str());
        MOD_DetailHandle handle;
        MOD_Edit edit(handle);
        addPoints(edit);
        const Points points = upTo(c.points);
        ASSERT_TRUE(c.append(edit, points)) << edit.message();
        const MOD_ConstDetailHandle first = edit.commit();
        const MSH_Detail &detail = *first.readLock();
        const int64_t added = detail.primitiveCount(c.type);
        EXPECT_GT(added, 0);
        EXPECT_EQ(added, detail.primitiveCount());
        EXPECT_EQ(detail.vertexCount(), c.points);
        EXPECT_TRUE(c.isRight(MSH_Primitive(detail, 0)));

        MOD_Edit more(handle);
        ASSERT_TRUE(more.appendPolygons(3, upTo(3), true));
        ASSERT_TRUE(c.append(more, points)) << more.message();
        const MOD_ConstDetailHandle second = more.commit();
        const MSH_Detail &grown = *second.readLock();
        EXPECT_EQ(detail.primitiveCount(), added);
        EXPECT_TRUE(c.isRight(MSH_Primitive(detail, 0)));
        EXPECT_TRUE(c.isRight(MSH_Primitive(grown, 0)));
        EXPECT_EQ(grown.typeOf(added + 1), c.type);
        EXPECT_EQ(grown.payload(added), nullptr);

        if (const MSH_Payload *payload = grown.payload(added + 1))
        {
            const MSH_PayloadHandle loaded = reloaded(c.type, *payload);
            EXPECT_TRUE(loaded->isEqual(*payload));
            EXPECT_EQ(loaded->hash(), payload->hash());
            // Small ones are one, others are each primitive's own.
            EXPECT_EQ(grown.payload(0) == payload, grown.data().payloads.size() == 1);
        }
        else
            EXPECT_EQ(grown.data().payloads.size(), 0);

        MOD_Edit fewer(handle);
        ASSERT_TRUE(fewer.remove(ELM_Range(ELM_OWNER_PRIMITIVE, 0, added)) && fewer.compact()) << fewer.message();
        const MOD_ConstDetailHandle third = fewer.commit();
        const MSH_Detail &rest = *third.readLock();
        EXPECT_EQ(rest.primitiveCount(), added + 1);
        EXPECT_TRUE(c.isRight(MSH_Primitive(rest, 1)));
        EXPECT_TRUE(c.isRight(MSH_Primitive(grown, 0)));
        EXPECT_EQ(rest.data().payloads.size(), rest.payload(1) ? 1 : 0);
    }
}

TEST(PrimitiveTypes, RefuseWhatTheyCannotBeAndChangeNothing)
{
    using Step = std::function<bool(MOD_Edit &)>;
    const std::vector<int32_t> four = {4}, five = {5}, minus = {-1};
    const MSH_PayloadHandle grid(new MSH_PayloadOf<MSH_GridData>(gridOf(2, 2)));
    const std::vector<BAS_Mat3f> two(2);
    const struct
    {
        Step step;
        const char *message;
    } cases[] = {
        {[&](MOD_Edit &e) {
             return e.append({99, 1, {}, 1, upTo(1), false, {}, {}});
         },
         "99 is no type of primitives"},
        {[&](MOD_Edit &e) { return e.appendTetrahedra(upTo(6)); }, "6 points do not make primitives of 4 vertices"},
        {[&](MOD_Edit &e) {
             return e.append({ELM_PRIMITIVE_TETRAHEDRON, 1, {}, 3, upTo(3), false, {}, {}});
         },
         "3 vertices are not what a primitive of type tetrahedron has"},
        {[&](MOD_Edit &e) {
             return e.append({ELM_PRIMITIVE_GRID, 1, {}, 4, upTo(4), false, {}, {}});
         },
         "primitives of type grid need a payload of their own class"},
        {[&](MOD_Edit &e) {
             return e.append({ELM_PRIMITIVE_TUBE, 1, {}, 1, upTo(1), false, {&grid, 1}, {}});
         },
         "primitives of type tube need a payload of their own class"},
        {[&](MOD_Edit &e) {
             return e.append({ELM_PRIMITIVE_POLYGON, 1, {}, 4, upTo(4), false, {&grid, 1}, {}});
         },
         "primitives of type 1 have no payload"},
        {[&](MOD_Edit &e) { return e.appendSpheres(upTo(3), two); },
         "3 primitives of type sphere cannot have 0 payloads and 2 transforms"},
        {[&](MOD_Edit &e) { return e.appendSpheres(std::vector<int64_t>{30}); },
         "vertex 0 refers to point 30, out of range [0, 30)"},
        {[&](MOD_Edit &e) { return e.appendTriangleFans(minus, upTo(0)); },
         "-1 vertices are not what a primitive of type triangle_fan has"},
        {[&](MOD_Edit &e) {
             return e.append({ELM_PRIMITIVE_GRID, 1, {}, 5, upTo(5), false, {&grid, 1}, {}});
         },
         "5 vertices do not fill a grid of 2 rows and 2 columns"},
        {[&](MOD_Edit &e) { return e.appendGrids(gridOf(1 << 20, 1 << 20), upTo(4)); },
         "4 points do not make primitives of 2147483647 vertices"},
        {[&](MOD_Edit &e) { return e.appendNURBSCurves(curveOf(5), four, upTo(4)); },
         "4 control vertices make no NURBS curve of order 5"},
        {[&](MOD_Edit &e) { return e.appendBezierCurves(curveOf(4), five, upTo(5)); },
         "5 control vertices make no Bezier curve of order 4"},
        {[&](MOD_Edit &e) {
             return e.appendNURBSCurves(curveOf(2, {0, 1, 2}), four, upTo(4));
         },
         "4 control vertices of order 2 need 6 knots, not 3"},
        {[&](MOD_Edit &e) {
             return e.appendNURBSCurves(curveOf(2, {0, 1, 2, 1, 3, 4}), four, upTo(4));
         },
         "the knots fall"},
        {[&](MOD_Edit &e) { return e.appendNURBSCurves(curveOf(1 << 30), four, upTo(4)); },
         "order 1073741824 is out of range [2, 31]"},
        {[&](MOD_Edit &e) { return e.appendNURBSSurface(surfaceOf(4, 5, {1}), upTo(20)); },
         "trim curves of 5 knots and 3 points have 5 and 1 values"},
        {[&](MOD_Edit &e) {
             return e.appendSoup(soupOf({3}, {0, 1, 5}), upTo(4));
         },
         "corner 2 of a soup is vertex 5, out of range [0, 4)"},
        {[&](MOD_Edit &e) {
             return e.appendSoup(soupOf({3, 7}, {0, 1, 2, 3}), upTo(4));
         },
         "the faces of a soup do not take its 4 corners, one face after the other"},
        {[&](MOD_Edit &e) { return e.appendTriangularPatches({40}, upTo(2)); },
         "2 points do not make primitives of 861 vertices"},
        {[&](MOD_Edit &e) {
             return e.appendChannel(channelOf({1, 1}));
         },
         "the times of a channel do not rise"},
        {[&](MOD_Edit &e) { return e.appendBlobExpression(expressionOf({1})); },
         "child 1 of a blob expression does not come before it, in [0, 1)"},
        {[&](MOD_Edit &e) { return e.appendBlobExpression(expressionOf({0})); }, "child 0 of a blob expression is no blob"},
        {[&](MOD_Edit &e) { return e.appendSparseVolumes({}, upTo(1)); }, "a sparse volume needs a grid"},
    };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.message);
        MOD_DetailHandle handle;
        MOD_Edit edit(handle);
        addPoints(edit);
        ASSERT_TRUE(edit.appendPolygons(3, upTo(3), true));
        EXPECT_FALSE(c.step(edit));
        EXPECT_EQ(edit.message(), c.message);
        const MOD_ConstDetailHandle result = edit.commit();
        EXPECT_EQ(result.readLock()->primitiveCount(), 1);
        EXPECT_EQ(result.readLock()->vertexCount(), 3);
        EXPECT_EQ(result.readLock()->data().payload.size(), 1);
    }
}

TEST(PrimitiveTypes, FacesOfManyFacedPrimitives)
{
    using Faces = std::vector<std::vector<int64_t>>;
    const std::vector<int32_t> four = {4}, six = {6};
    const struct
    {
        const char *what;
        std::function<bool(MOD_Edit &)> append;
        Faces faces;
    } cases[] = {
        {"fan", [&](MOD_Edit &e) { return e.appendTriangleFans(four, upTo(4)); }, {{0, 1, 2}, {0, 2, 3}}},
        {"strip that is sewn together",
         [&](MOD_Edit &e) {
             return e.appendTriangleStrips(six, Points{0, 1, 2, 2, 3, 4});
         },
         {{0, 1, 2}, {3, 2, 4}}},
        {"soup",
         [&](MOD_Edit &e) {
             return e.appendSoup(soupOf({3, 0, 2}, {2, 1, 0, 1, 3}), upTo(4));
         },
         {{2, 1, 0}, {}, {1, 3}}},
        {"wrapping grid", [&](MOD_Edit &e) { return e.appendGrids(gridOf(2, 2), upTo(4)); }, {{0, 1, 3, 2}, {1, 0, 2, 3}}},
        {"one row", [&](MOD_Edit &e) { return e.appendGrids(gridOf(1, 3), upTo(3)); }, {}},
        {"polygon", [&](MOD_Edit &e) { return e.appendPolygons(3, upTo(3), true); }, {}},
    };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        MOD_DetailHandle handle;
        MOD_Edit edit(handle);
        addPoints(edit);
        ASSERT_TRUE(c.append(edit)) << edit.message();
        const MOD_ConstDetailHandle snapshot = edit.commit();
        Faces faces;
        for (const MSH_Faces::Face face : MSH_Faces(*snapshot.readLock(), 0))
        {
            faces.emplace_back();
            for (int64_t i = 0; i < face.size(); ++i)
                faces.back().push_back(face.point(i));
        }
        EXPECT_EQ(faces, c.faces);
    }
}

TEST(PrimitiveTypes, AMillionSpheresAreTwoColumns)
{
    constexpr int64_t kSpheres = 1000000;
    MOD_DetailHandle handle;
    MOD_Edit edit(handle);
    ASSERT_TRUE(edit.appendPoints(kSpheres));
    std::vector<int32_t> points(static_cast<size_t>(kSpheres));
    std::iota(points.begin(), points.end(), 0);
    const std::vector<BAS_Mat3f> transforms(points.size());
    ASSERT_TRUE(edit.appendSpheres(points, transforms));
    const MOD_ConstDetailHandle snapshot = edit.commit();
    // Position, matrix, vertex -> point and start, and the rest in pages that repeat one value.
    EXPECT_LT(snapshot.readLock()->memoryUsage(), kSpheres * (12 + 36 + 4 + 4) * 21 / 20);

    MOD_Edit wider(handle);
    ASSERT_TRUE(wider.appendSpheres(upTo(1), std::vector<BAS_Mat3d>{BAS_Mat3d() * 1e-12}));
    const MOD_ConstDetailHandle both = wider.commit();
    EXPECT_EQ(MSH_Quadric(*both.readLock(), 0).transform(), BAS_Mat3d());
    EXPECT_EQ(MSH_Quadric(*both.readLock(), kSpheres).transform(), BAS_Mat3d() * 1e-12);
}

TEST(PrimitiveTypes, ExpressionsFollowTheirBlobsWhenOthersGo)
{
    MOD_DetailHandle handle;
    MOD_Edit edit(handle);
    addPoints(edit);
    ASSERT_TRUE(edit.appendBlobs(ELM_PRIMITIVE_BLOB_ELLIPSOID, {}, upTo(3)));
    ASSERT_TRUE(edit.appendBlobExpression(expressionOf({0, 1, 2})));
    const MOD_ConstDetailHandle first = edit.commit();
    const auto childrenOf = [](const MOD_ConstDetailHandle &of) {
        const MSH_Detail &detail = *of.readLock();
        return MSH_Meta(detail, detail.capacity(ELM_OWNER_PRIMITIVE) - 1).expression().children.offsets;
    };
    MOD_Edit removing(handle);
    ASSERT_TRUE(removing.remove(ELM_Range(ELM_OWNER_PRIMITIVE, 1, 2)));
    const MOD_ConstDetailHandle second = removing.commit();
    MOD_Edit compacting(handle);
    ASSERT_TRUE(compacting.compact());
    const MOD_ConstDetailHandle third = compacting.commit();
    EXPECT_EQ(childrenOf(first), (std::vector<int64_t>{0, 1, 2}));
    EXPECT_EQ(childrenOf(second), (std::vector<int64_t>{0, 2}));
    EXPECT_EQ(childrenOf(third), (std::vector<int64_t>{0, 1}));
}
}  // namespace
