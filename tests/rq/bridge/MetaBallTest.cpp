#include <cmath>
#include <limits>
#include <map>

#include <host/bas/Parallel.h>
#include <host/msh/Meta.h>
#include <rq/bridge/MSHPrimMetaBall.h>
#include <rq/data/Values.h>
#include <tests/rq/bridge/Fixture.h>

using namespace tests;

namespace
{
constexpr double kPi = 3.14159265358979323846;

// Where the field of a ball of weight 1 and radius 1 is one half.
const double kRadius = std::sqrt(1.0 - std::cbrt(0.5));

/// A detail that blobs are put into one by one.
class Blobs
{
public:
    int add(const BAS_Vec3d &at, const MSH_BlobData &blob = {}, ELM_PrimitiveTypeId type = ELM_PRIMITIVE_BLOB_ELLIPSOID,
            const BAS_Mat3d &matrix = BAS_Mat3d())
    {
        MOD_Edit edit(geometry_);
        const int point = int(edit.pointCount());
        EXPECT_TRUE(edit.appendPoints(1));
        EXPECT_TRUE(edit.appendBlobs(type, blob, std::vector<int32_t>{point}, std::vector<BAS_Mat3d>{matrix}))
            << edit.message();
        const BAS_Vec3f p(at);
        EXPECT_TRUE(edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->write(point, 1, &p.x));
        edit.commit();
        return int(geometry_.read().readLock()->primitiveCount()) - 1;
    }
    int combine(MSH_BlobOperation operation, std::vector<ELM_Offset> children)
    {
        MOD_Edit edit(geometry_);
        MSH_BlobExpressionData expression;
        expression.operation = operation;
        expression.children.offsets = std::move(children);
        EXPECT_TRUE(edit.appendBlobExpression(expression)) << edit.message();
        edit.commit();
        return int(geometry_.read().readLock()->primitiveCount()) - 1;
    }
    const MOD_DetailHandle &geometry() const { return geometry_; }
    MOD_ConstDetailHandle read() const { return geometry_.read(); }

private:
    MOD_DetailHandle geometry_;
};

/// The mesh that the one metaball primitive of a detail refines to; null when there is no surface.
RQ_PolygonMeshHandle surfaceOf(const MOD_ConstDetailHandle &detail, double density = 30.0, int64_t divisions = 4096)
{
    RQ_RefineParms parms;
    parms.setMetaDensity(density);
    parms.setMetaMaxDivs(divisions);
    const std::vector<RQ_PrimitiveHandle> all = refine(detail, &parms);
    const auto *metaballs = all.empty() ? nullptr : as<RQ_MSHPrimMetaBall>(all.back());
    EXPECT_TRUE(metaballs && all.size() == 1);
    RQ_RefineList list;
    EXPECT_TRUE(metaballs && list.refine(metaballs, &parms));
    return list.entries() > 0 ? boost::dynamic_pointer_cast<RQ_PrimPolygonMesh>(list.getPrimitive(0)) : nullptr;
}

/// Points less edges plus faces.  Fails unless every edge has two faces, which go along it in opposite directions.
int64_t eulerNumber(const RQ_PrimPolygonMesh &mesh)
{
    std::string why;
    EXPECT_TRUE(mesh.validate(&why)) << why;
    std::map<std::pair<int64_t, int64_t>, int> edges;
    for (int64_t face = 0; face < mesh.getFaceCount(); ++face)
        for (int64_t edge = 0; edge < mesh.getFaceCountArray().getCount(face); ++edge)
        {
            int64_t a, b;
            mesh.getEdgePoints(face, edge, a, b);
            ++edges[{a, b}];
        }
    for (const auto &[ends, faces] : edges)
        if (faces != 1 || !edges.count({ends.second, ends.first}))
        {
            ADD_FAILURE() << "the edge from " << ends.first << " to " << ends.second << " is open";
            break;
        }
    return mesh.getPointCount() - int64_t(edges.size()) / 2 + mesh.getFaceCount();
}

double volumeOf(const RQ_PrimPolygonMesh &mesh) { return mesh.computeVolume(BAS_Vec3f(0.0f), 0); }

struct ShapeCase
{
    const char *what;
    ELM_PrimitiveTypeId type;
    MSH_BlobData blob;
    double volume;  // of the shape that is half as much field, in units of the shape's scale
};

MSH_BlobData blobWith(double MSH_BlobData::*member, double value)
{
    MSH_BlobData blob;
    blob.*member = value;
    return blob;
}

double roundedBox(double r)
{
    const double core = 2.0 * (1.0 - r);
    return core * core * core + 6.0 * core * core * r + 3.0 * core * kPi * r * r + 4.0 / 3.0 * kPi * r * r * r;
}

TEST(MetaBalls, ShapesAreClosedAndHaveTheirVolumes)
{
    const double ball = 4.0 / 3.0 * kPi, cube = kRadius * kRadius * kRadius;
    MSH_BlobData octahedron;
    octahedron.exponentXY = octahedron.exponentZ = 2.0;
    MSH_BlobData quadratic;
    quadratic.kernel = MSH_KERNEL_QUADRATIC;
    const ShapeCase cases[] = {
        {"ball", ELM_PRIMITIVE_BLOB_ELLIPSOID, {}, ball * cube},
        {"heavier ball", ELM_PRIMITIVE_BLOB_ELLIPSOID, blobWith(&MSH_BlobData::weight, 4.0), ball * std::pow(0.5, 1.5)},
        {"quadratic kernel", ELM_PRIMITIVE_BLOB_ELLIPSOID, quadratic, ball * std::pow(1.0 - std::sqrt(0.5), 1.5)},
        {"round super-quadric", ELM_PRIMITIVE_BLOB_QUADRIC, {}, ball * cube},
        {"octahedron", ELM_PRIMITIVE_BLOB_QUADRIC, octahedron, 4.0 / 3.0 * cube},
        {"capsule", ELM_PRIMITIVE_BLOB_CAPSULE, blobWith(&MSH_BlobData::length, 3.0),
         ball * cube + 3.0 * kPi * kRadius * kRadius},
        {"rounded box", ELM_PRIMITIVE_BLOB_BOX, {}, roundedBox(0.5) * cube},
        {"box that is a ball", ELM_PRIMITIVE_BLOB_BOX, blobWith(&MSH_BlobData::rounding, 1.0), ball * cube},
        {"box", ELM_PRIMITIVE_BLOB_BOX, blobWith(&MSH_BlobData::rounding, 0.1), roundedBox(0.1) * cube},
    };
    const BAS_Mat3d still, sheared(2.0, 0.3, 0.0, 0.0, 1.5, 0.7, 0.2, 0.0, -1.0);  // and mirrored
    for (const ShapeCase &c : cases)
        for (const BAS_Mat3d &matrix : {still, sheared})
        {
            SCOPED_TRACE(c.what);
            Blobs blobs;
            blobs.add({1000.0, -20.0, 3.0}, c.blob, c.type, matrix);
            const RQ_PolygonMeshHandle mesh = surfaceOf(blobs.read(), 40.0);
            ASSERT_TRUE(mesh);
            EXPECT_EQ(eulerNumber(*mesh), 2);
            const double expected = c.volume * std::abs(matrix.determinant());
            EXPECT_NEAR(mesh->computeVolume(BAS_Vec3f(1000.0f, -20.0f, 3.0f), 0), expected, 0.03 * expected);
            BAS_BoundingBox surface, shapes;
            mesh->enlargeBounds(&surface, 1);
            RQ_MSHDetail::makeDetail(blobs.read())->enlargeBounds(&shapes, 1);
            BAS_BoundingBox both = shapes;
            both.enlarge(surface);
            EXPECT_EQ(both, shapes);
        }
}

TEST(MetaBalls, SurfaceAndNormalsOfABallAreExactUpToTheCells)
{
    Blobs blobs;
    blobs.add({0.0, 0.0, 0.0});
    for (const double density : {10.0, 40.0})
    {
        const RQ_PolygonMeshHandle mesh = surfaceOf(blobs.read(), density);
        const double cell = 2.0 / density;
        const rq::Values<float> p(mesh->getShared()->get("P")), n(mesh->getShared()->get("N"));
        double farthest = 0.0, steepest = 0.0;
        for (int64_t i = 0; i < mesh->getPointCount(); ++i)
        {
            const BAS_Vec3d point(p[3 * i], p[3 * i + 1], p[3 * i + 2]), normal(n[3 * i], n[3 * i + 1], n[3 * i + 2]);
            farthest = std::max(farthest, std::abs(point.length() - kRadius));
            steepest = std::max(steepest, (normal - point.normalized()).length());
        }
        EXPECT_LT(farthest, 2.0 * cell * cell * cell * cell + 1e-6);
        EXPECT_LT(steepest, 1e-3);
        EXPECT_EQ(eulerNumber(*mesh), 2);
    }
    EXPECT_LE(surfaceOf(blobs.read(), 1e9, 16)->getFaceCount(), 6 * 16 * 16);
}

struct ExpressionCase
{
    const char *what;
    MSH_BlobOperation operation;
    double apart;
    double weight;  // of the second ball
    int64_t euler;  // of all that is left; 0 for nothing
    double volume;  // in volumes of one ball, -1: unknown
};

TEST(MetaBalls, ExpressionsStandInForTheirChildren)
{
    const ExpressionCase cases[] = {
        {"sum of two that are far apart", MSH_BLOB_SUM, 3.0, 1.0, 4, 2.0},
        {"sum of two that melt together", MSH_BLOB_SUM, 1.0, 1.0, 2, -1.0},
        {"sum of two in one place", MSH_BLOB_SUM, 0.0, 3.0, 2, std::pow(0.5, 1.5) / std::pow(kRadius, 3)},
        {"maximum of two in one place", MSH_BLOB_MAXIMUM, 0.0, 1.0, 2, 1.0},
        {"maximum of two far apart", MSH_BLOB_MAXIMUM, 3.0, 1.0, 4, 2.0},
        {"minimum of two in one place", MSH_BLOB_MINIMUM, 0.0, 4.0, 2, 1.0},
        {"minimum of two far apart", MSH_BLOB_MINIMUM, 3.0, 1.0, 0, 0.0},
        {"one taken away by the other", MSH_BLOB_SUM, 0.0, -1.0, 0, 0.0},
        {"one that the other does not reach", MSH_BLOB_SUM, 3.0, -1.0, 2, 1.0},
    };
    for (const ExpressionCase &c : cases)
    {
        SCOPED_TRACE(c.what);
        Blobs blobs;
        blobs.add({0.0, 0.0, 0.0});
        blobs.add({c.apart, 0.0, 0.0}, blobWith(&MSH_BlobData::weight, c.weight));
        int last = blobs.combine(c.operation, {0, 1});
        for (int i = 0; i < 50; ++i)
            last = blobs.combine(MSH_BLOB_MAXIMUM, {last});  // which has no other child
        const RQ_PolygonMeshHandle mesh = surfaceOf(blobs.read(), 60.0);
        EXPECT_EQ(mesh ? eulerNumber(*mesh) : 0, c.euler);
        const double ball = 4.0 / 3.0 * kPi * kRadius * kRadius * kRadius;
        if (c.volume >= 0.0)
        {
            EXPECT_NEAR(mesh ? volumeOf(*mesh) : 0.0, c.volume * ball, 0.02 * ball);
        }
    }

    // What is hidden takes no part: without its expression a blob stands for itself.
    Blobs blobs;
    blobs.add({0.0, 0.0, 0.0});
    blobs.add({3.0, 0.0, 0.0});
    const int least = blobs.combine(MSH_BLOB_MINIMUM, {0, 1});
    EXPECT_FALSE(surfaceOf(blobs.read()));
    const auto hide = [&](int primitive, bool isHidden = true) {
        MOD_Edit edit(blobs.geometry());
        edit.group(ELM_OWNER_PRIMITIVE, "__hidden")->set(primitive, isHidden);
        edit.commit();
    };
    hide(0);
    EXPECT_EQ(eulerNumber(*surfaceOf(blobs.read())), 2);
    hide(1);
    EXPECT_FALSE(surfaceOf(blobs.read()));
    hide(0, false);
    hide(1, false);
    hide(least);
    EXPECT_EQ(eulerNumber(*surfaceOf(blobs.read())), 4);
}

/// Many blobs of all kinds in a heap.
Blobs makeHeap(int count)
{
    Blobs blobs;
    for (int i = 0; i < count; ++i)
    {
        const double turn = 0.7 * i;
        const BAS_Mat3d matrix(1.0 + 0.3 * std::sin(turn), 0.2, 0.0, -0.4, 0.8, 0.1 * i / count, 0.0, 0.3, 1.1);
        MSH_BlobData blob;
        blob.kernel = i % 3;
        blob.weight = i % 7 == 6 ? -0.8 : 1.0 + 0.1 * (i % 5);
        blob.exponentXY = 0.5 + 0.7 * (i % 4);
        blobs.add({0.12 * i * std::cos(turn), 0.12 * i * std::sin(turn), 0.3 * std::sin(1.9 * i)}, blob,
                  ELM_PRIMITIVE_BLOB_ELLIPSOID + i % 4, matrix);
        if (i % 10 == 9)
            blobs.combine(MSH_BlobOperation(i / 10 % 3), {ELM_Offset(11 * (i / 10)), ELM_Offset(11 * (i / 10) + 1)});
    }
    return blobs;
}

TEST(MetaBalls, HaveTheSameBitsForAnyNumberOfThreads)
{
    const MOD_ConstDetailHandle detail = makeHeap(30).read();
    std::string expected;
    for (const int threads : {1, 2, 8})
    {
        const BAS_Threads::Limit limit(threads);
        const RQ_PolygonMeshHandle mesh = surfaceOf(detail);
        ASSERT_TRUE(mesh);
        const std::string text = textOf(*mesh);
        if (expected.empty())
        {
            expected = text;
            eulerNumber(*mesh);
            EXPECT_GT(volumeOf(*mesh), 1.0);
        }
        EXPECT_TRUE(text == expected) << threads << " threads";
    }
}

TEST(MetaBalls, UglyInputGivesNothingOrWhatIsLeft)
{
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN(), kHuge = std::numeric_limits<double>::infinity();
    const BAS_Mat3d flat(1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.0), nothing(0.0), unknown(kNone), endless(kHuge),
        enormous(1e300), tiny(1e-300, 0.0, 0.0, 0.0, 1e-300, 0.0, 0.0, 0.0, 1e-300),
        needle(1e6, 0.0, 0.0, 0.0, 1e-3, 0.0, 0.0, 0.0, 1e-3);
    MSH_BlobData square, spiky, heavy = blobWith(&MSH_BlobData::weight, std::numeric_limits<double>::max());
    square.exponentXY = square.exponentZ = 1e-300;
    spiky.exponentXY = spiky.exponentZ = 1e300;
    Blobs blobs;
    blobs.combine(MSH_BLOB_MINIMUM, {});
    EXPECT_FALSE(surfaceOf(blobs.read()));
    for (const BAS_Mat3d &matrix : {flat, nothing, unknown, endless, enormous, needle})
        blobs.add({0.0, 0.0, 0.0}, {}, ELM_PRIMITIVE_BLOB_BOX, matrix);
    blobs.add({kNone, 0.0, 0.0});
    blobs.add({0.0, kHuge, 0.0});
    blobs.add({0.0, 0.0, 0.0}, blobWith(&MSH_BlobData::weight, 0.0));
    EXPECT_FALSE(surfaceOf(blobs.read()));
    BAS_BoundingBox none;
    refine(blobs.read()).back()->enlargeBounds(&none, 1);
    EXPECT_TRUE(none.isEmpty());

    blobs.add({5.0, 0.0, 0.0});
    EXPECT_EQ(eulerNumber(*surfaceOf(blobs.read())), 2);
    blobs.add({-5.0, 0.0, 0.0}, {}, ELM_PRIMITIVE_BLOB_ELLIPSOID, tiny);
    blobs.add({0.0, 5.0, 0.0}, square, ELM_PRIMITIVE_BLOB_QUADRIC);
    blobs.add({0.0, -5.0, 0.0}, spiky, ELM_PRIMITIVE_BLOB_QUADRIC);
    blobs.add({0.0, 0.0, 5.0}, heavy);
    blobs.add({0.0, 0.0, 5.0}, heavy);
    for (const double density : {kNone, -1.0, 0.0, 1e300})
        if (const RQ_PolygonMeshHandle mesh = surfaceOf(blobs.read(), density, density > 1.0 ? 40 : 4096))
            eulerNumber(*mesh);

    // A thousand in one place: more parts than blocks.
    Blobs many;
    for (int i = 0; i < 1000; ++i)
        many.add({0.0, 0.0, 0.0}, blobWith(&MSH_BlobData::weight, 0.001));
    EXPECT_EQ(eulerNumber(*surfaceOf(many.read())), 2);
}

TEST(MetaBalls, AttributesOfBlobsMelt)
{
    Blobs blobs;
    blobs.add({0.0, 0.0, 0.0});
    blobs.add({1.0, 0.0, 0.0});
    blobs.add({0.5, 0.0, 0.3}, blobWith(&MSH_BlobData::weight, -0.1));
    blobs.combine(MSH_BLOB_SUM, {0, 1, 2});
    MOD_Edit edit(blobs.geometry());
    double *ramp = edit.attribute(ELM_OWNER_POINT, "ramp", ELM_STORAGE_REAL64)->writeAll<double>();
    ramp[0] = 0.0, ramp[1] = 1.0, ramp[2] = 100.0;
    edit.attribute(ELM_OWNER_POINT, "id", ELM_STORAGE_INT32);
    edit.commit();
    const RQ_PolygonMeshHandle mesh = surfaceOf(blobs.read());
    const rq::Values<float> p(mesh->getShared()->get("P")), melted(mesh->getShared()->get("ramp"));
    EXPECT_FALSE(mesh->getShared()->get("id"));
    for (int64_t i = 0; i < mesh->getPointCount(); ++i)
    {
        const auto field = [&](float x) {
            const double q = std::pow(p[3 * i] - x, 2) + std::pow(p[3 * i + 1], 2) + std::pow(p[3 * i + 2], 2);
            return std::pow(std::max(1.0 - q, 0.0), 3);
        };
        ASSERT_NEAR(melted[i], field(1.0f) / (field(0.0f) + field(1.0f)), 1e-4);
    }
}

TEST(MetaBalls, TakeTheirSurfaceAlong)
{
    // Two that do not touch, and a flat one: the first stays, the second turns around its middle and moves.
    Blobs blobs;
    blobs.add({-2.0, 0.0, 0.0});
    blobs.add({2.0, 0.0, 0.0});
    blobs.add({0.0, 0.0, 0.0}, {}, ELM_PRIMITIVE_BLOB_ELLIPSOID, BAS_Mat3d(0.0));
    const MOD_ConstDetailHandle before = blobs.read();
    MOD_Edit edit(blobs.geometry());
    edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->modifyAll<float>()[5] = 7.0f;
    const double quarter[] = {0, 1, 0, -1, 0, 0, 0, 0, 1};
    const ELM_Attribute &turns = *before.readLock()->find(ELM_OWNER_PRIMITIVE, ELM_SCOPE_PRIVATE, ELM_TRANSFORM_NAME);
    ASSERT_EQ(turns.storage(), ELM_STORAGE_REAL64);
    ASSERT_TRUE(
        edit.attribute(ELM_OWNER_PRIMITIVE, ELM_TRANSFORM_NAME, ELM_STORAGE_REAL64, 9, ELM_TYPE_MATRIX, ELM_SCOPE_PRIVATE)
            ->write(1, 1, quarter));
    RQ_RefineList list;
    ASSERT_TRUE(list.refine(RQ_PrimitiveHandle(new RQ_MSHDetail({before, edit.commit()})).get(), nullptr));
    const RQ_PolygonMeshHandle mesh = as<RQ_MSHPrimMetaBall>(list.getPrimitive(0))->refineToPolygonMesh(nullptr);
    ASSERT_EQ(mesh->getMotionSegments(), 2);
    const rq::Values<float> p(mesh->getShared()->get("P", 0)), q(mesh->getShared()->get("P", 1));
    for (int64_t i = 0; i < 3 * mesh->getPointCount(); i += 3)
    {
        const bool moves = p[i] > 0.0f;
        EXPECT_NEAR(q[i], moves ? 2.0f - p[i + 1] : p[i], 2e-6);
        EXPECT_NEAR(q[i + 1], moves ? p[i] - 2.0f : p[i + 1], 2e-6);
        EXPECT_NEAR(q[i + 2], moves ? p[i + 2] + 7.0f : p[i + 2], 2e-6);
    }
}

TEST(MetaBalls, MoveHardenAndSave)
{
    const Blobs blobs = makeHeap(20);
    const MOD_ConstDetailHandle before = blobs.read();
    MOD_Edit edit(blobs.geometry());
    for (float &p :
         std::span(edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->modifyAll<float>(), 60))
        p += 4.0f;
    const MOD_ConstDetailHandle after = edit.commit();

    RQ_RefineList list;
    ASSERT_TRUE(list.refine(RQ_PrimitiveHandle(new RQ_MSHDetail({before, after})).get(), nullptr));
    const RQ_PrimitiveHandle moving = list.getPrimitive(0);
    EXPECT_EQ(moving->getMotionSegments(), 2);
    BAS_BoundingBox boxes[2];
    moving->enlargeBounds(boxes, 2);
    for (int axis = 0; axis < 3; ++axis)
        EXPECT_NEAR(boxes[1].minimum()[axis] - boxes[0].minimum()[axis], 4.0f, 1e-4f);

    const BAS_Mat4d place = BAS_Mat4d().setTranslation(BAS_Vec3d(0.0, 0.0, 7.0));
    const RQ_PrimitiveHandle placed = moving->copyTransformed(new RQ_Transform(&place, 1));
    BAS_BoundingBox there, mesh;
    placed->enlargeBounds(&there, 1);
    EXPECT_FLOAT_EQ(there.minimum().z, boxes[0].minimum().z + 7.0f);
    RQ_RefineList meshes;
    ASSERT_TRUE(meshes.refine(placed.get(), nullptr));
    meshes.getPrimitive(0)->enlargeBounds(&mesh, 1);
    EXPECT_GT(mesh.minimum().z, there.minimum().z);

    EXPECT_EQ(as<RQ_MSHPrimMetaBall>(moving)->getBlobCount(), 20);
    EXPECT_EQ(textOf(*moving->clone()), textOf(*moving));
    EXPECT_NE(textOf(*moving).find("\"MetaballExpression\""), std::string::npos);
    const RQ_PrimitiveHandle own = moving->harden();
    EXPECT_EQ(own->computeSurfaceArea(0), moving->computeSurfaceArea(0));
    EXPECT_GT(own->getMemoryUsage(), 20 * 16);
}
}  // namespace
