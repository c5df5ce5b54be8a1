#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numbers>

#include <host/bas/Parallel.h>
#include <tests/rq/surface/Fixture.h>

using namespace tests;

namespace
{
/// The oracle: every sum over every face, straight from the definition, in 64 bits.
class BruteForce
{
public:
    explicit BruteForce(const MeshShape &shape) : shape_(shape)
    {
        size_t begin = 0;
        for (size_t face = 0; face < shape.counts.size(); ++face)
        {
            for (int i = 0; i < shape.counts[face]; ++i)
                corners_.push_back({face, begin, i});
            BAS_Vec3d sum(0.0);
            for (int i = 0; i < shape.counts[face]; ++i)
                sum += at(begin, i) % at(begin, (i + 1) % shape.counts[face]);
            const double length = shape.counts[face] < 3 ? 0.0 : sum.length();
            faces_.push_back(length > 0.0 ? sum / length : BAS_Vec3d(0.0));
            begin += size_t(shape.counts[face]);
        }
    }

    BAS_Vec3d pointNormal(int point) const
    {
        return normal(point, [](const BAS_Vec3d &) { return true; });
    }

    BAS_Vec3d cornerNormal(size_t corner, double cosine) const
    {
        const BAS_Vec3d own = faces_[corners_[corner].face];
        return normal(shape_.indices[corner], [&](const BAS_Vec3d &other) { return own.dot(other) >= cosine - 1e-6; });
    }

private:
    struct Corner
    {
        size_t face, begin;
        int place;
    };

    BAS_Vec3d at(size_t begin, int i) const { return pointOf(shape_, shape_.indices[begin + size_t(i)]); }

    // To the nearest corner on one side that lies elsewhere.
    BAS_Vec3d edge(size_t begin, int place, int count, int step) const
    {
        for (int i = 1; i < count; ++i)
            if (const BAS_Vec3d e = at(begin, (place + i * (count + step)) % count) - at(begin, place); e.length() > 0.0)
                return e;
        return BAS_Vec3d(0.0);
    }

    template <class Keep> BAS_Vec3d normal(int point, Keep &&keep) const
    {
        BAS_Vec3d sum(0.0);
        for (size_t c = 0; c < corners_.size(); ++c)
        {
            const auto &[face, begin, place] = corners_[c];
            if (shape_.indices[c] != point || !keep(faces_[face]) || shape_.counts[face] < 3)
                continue;
            const BAS_Vec3d a = edge(begin, place, shape_.counts[face], -1), b = edge(begin, place, shape_.counts[face], 1);
            const double lengths = a.length() * b.length();
            if (lengths > 0.0)
                sum += faces_[face] * std::acos(std::clamp(a.dot(b) / lengths, -1.0, 1.0));
        }
        return sum.length() > 1e-12 ? sum / sum.length() : BAS_Vec3d(0.0);
    }

    const MeshShape &shape_;
    std::vector<Corner> corners_;
    std::vector<BAS_Vec3d> faces_;
};

// The oracle multiplies where the library subtracts first, so extreme scales and not-a-numbers are beyond it.
bool oracleCanRead(const MeshShape &shape)
{
    return shape.name != "not a number" && shape.name != "huge cube" && shape.name != "tiny cube";
}

// Of the fan not all are asked: the oracle has no patience.
int64_t stepThrough(const RQ_DataArray &normals) { return 1 + normals.entries() / 300; }
}  // namespace

TEST(Normals, AgreeWithBruteForceOnEveryShape)
{
    for (const MeshShape &shape : meshShapes())
    {
        if (!oracleCanRead(shape))
            continue;
        SCOPED_TRACE(shape.name);
        const RQ_PolygonMeshHandle mesh = makeMesh(shape);
        const BruteForce expected(shape);
        const RQ_DataArrayHandle points = mesh->createPointNormals(0, "P", true, nullptr, RQ_STORAGE_REAL64);
        for (int64_t p = 0; p < points->entries(); p += stepThrough(*points))
            ASSERT_LT((vectorOf(*points, p) - expected.pointNormal(int(p))).length(), 1e-6) << "point " << p;
        for (const double cusp : {1.0, 60.0, 90.0, 179.0})
        {
            const RQ_DataArrayHandle corners = mesh->createVertexNormals(0, "P", cusp, true, RQ_STORAGE_REAL64);
            const double cosine = std::cos(cusp * std::numbers::pi / 180.0);
            for (int64_t c = 0; c < corners->entries(); c += stepThrough(*corners))
                ASSERT_LT((vectorOf(*corners, c) - expected.cornerNormal(size_t(c), cosine)).length(), 1e-6)
                    << "corner " << c << " cusp " << cusp;
        }
    }
}

TEST(Normals, PointOutwardOnTinyAndHugeCubes)
{
    const double third = 1.0 / std::sqrt(3.0);
    for (const char *name : {"tiny cube", "huge cube"})
    {
        SCOPED_TRACE(name);
        const MeshShape &shape = meshShape(name);
        const RQ_DataArrayHandle normals = makeMesh(shape)->createPointNormals(0, "P", true, nullptr, RQ_STORAGE_REAL32);
        for (int64_t p = 0; p < 8; ++p)
            for (int axis = 0; axis < 3; ++axis)
                EXPECT_NEAR(normals->getF64(p, axis), std::copysign(third, shape.positions[size_t(3 * p + axis)]), 1e-7);
    }
}

TEST(Normals, AreAsSymmetricAsTheMesh)
{
    const auto pointNormals = [](const MeshShape &shape, RQ_NormalWeights weights) {
        std::vector<BAS_Vec3d> normals(size_t(shape.pointCount()));
        EXPECT_TRUE(makeMesh(shape)->pointNormals(normals.data(), 0, "P", true, weights));
        return normals;
    };
    for (const RQ_NormalWeights weights : {RQ_NORMAL_WEIGHTS_ANGLE, RQ_NORMAL_WEIGHTS_EQUAL, RQ_NORMAL_WEIGHTS_AREA})
    {
        const std::vector<BAS_Vec3d> corners = pointNormals(cubeShape(), weights);
        for (size_t p = 0; p < 8; ++p)
            for (int axis = 0; axis < 3; ++axis)
                EXPECT_EQ(corners[p][axis], std::copysign(corners[7].x, cubeShape().positions[3 * p + size_t(axis)]));

        // In the mirror the corners count the other way round: seen from the same side the normals point to the back.
        for (const MeshShape &shape : meshShapes())
        {
            SCOPED_TRACE(shape.name);
            const std::vector<BAS_Vec3d> here = pointNormals(shape, weights);
            const std::vector<BAS_Vec3d> there = pointNormals(shape.scaled("mirrored", -1.0f, 1.0f, 1.0f), weights);
            for (size_t p = 0; p < here.size(); ++p)
                ASSERT_EQ(there[p], BAS_Vec3d(here[p].x, -here[p].y, -here[p].z)) << "point " << p;
        }
    }
}

// A strip of quads of which each is folded against the one before by 5 degrees more.
MeshShape foldedStrip()
{
    MeshShape shape;
    double x = 0.0, z = 0.0, slope = 0.0;
    for (int fold = 0; fold <= 36; ++fold)
    {
        shape.addPoint(float(x), 0.0f, float(z));
        shape.addPoint(float(x), 1.0f, float(z));
        slope += (fold % 2 ? 5.0 : -5.0) * fold * std::numbers::pi / 180.0;
        x += std::cos(slope);
        z += std::sin(slope);
    }
    for (int i = 0; i < 36; ++i)
        shape.addFace({2 * i, 2 * i + 2, 2 * i + 3, 2 * i + 1});
    return shape;
}

TEST(Normals, KeepExactlyTheEdgesThatAreSharperThanTheCusp)
{
    const RQ_PolygonMeshHandle mesh = makeMesh(foldedStrip());
    for (int cusp = 0; cusp < 36; ++cusp)
    {
        const RQ_DataArrayHandle normals = mesh->createVertexNormals(0, "P", 5.0 * cusp + 2.5, true, RQ_STORAGE_REAL32);
        int hard = 0;
        for (int fold = 1; fold < 36; ++fold)
            hard += vectorOf(*normals, 4 * fold - 3) != vectorOf(*normals, 4 * fold);
        EXPECT_EQ(hard, 35 - cusp) << "cusp " << 5.0 * cusp + 2.5;
    }
}

TEST(Normals, AreFacetedAtZeroAndSharedAtOneHundredAndEighty)
{
    const RQ_PolygonMeshHandle mesh = makeMesh(cubeShape());
    const RQ_DataArrayHandle faces = mesh->faceNormals();
    const RQ_DataArrayHandle points = mesh->createPointNormals(0, "P", true, nullptr, RQ_STORAGE_REAL32);
    const RQ_DataArrayHandle faceted = mesh->createVertexNormals(0, "P", 0.0, true, RQ_STORAGE_REAL32);
    const RQ_DataArrayHandle smooth = mesh->createVertexNormals(0, "P", 180.0, true, RQ_STORAGE_REAL32);
    EXPECT_STREQ(smooth->className(), "RQ_DAIndirect");  // no array as long as the vertex list
    for (int64_t corner = 0; corner < mesh->getVertexCount(); ++corner)
    {
        EXPECT_EQ(vectorOf(*faceted, corner), vectorOf(*faces, corner / 4));
        EXPECT_EQ(vectorOf(*smooth, corner), vectorOf(*points, mesh->getVertexList()->getI64(corner)));
    }
}

TEST(Normals, AreZeroWithoutAreaAndSpoiltByNoNeighbour)
{
    MeshShape shape = faceShape("quad beside a broken triangle", {{0, 0}, {1, 0}, {1, 1}, {0, 1}});
    shape.addFace({2, 1, shape.addPoint(std::numeric_limits<float>::quiet_NaN(), 2.0f, 0.0f)});
    const RQ_DataArrayHandle normals = makeMesh(shape)->createPointNormals(0, "P", true, nullptr, RQ_STORAGE_REAL32);
    for (int64_t p = 0; p < 4; ++p)
        EXPECT_EQ(vectorOf(*normals, p), BAS_Vec3d(0, 0, 1)) << "point " << p;
    EXPECT_EQ(vectorOf(*normals, 4), BAS_Vec3d(0.0));
}

// A terraced field of quads, whose neighbours may lie far apart in the list of faces.
MeshShape terraces(bool scattered)
{
    constexpr int kSize = 200, kFaces = kSize * kSize, kStride = 7919;
    MeshShape shape;
    for (int j = 0; j <= kSize; ++j)
        for (int i = 0; i <= kSize; ++i)
            shape.addPoint(float(i), float(j), float(i / 20 % 3) + 0.1f * std::sin(0.7f * float(i + 2 * j)));
    for (int k = 0; k < kFaces; ++k)
    {
        const int face = scattered ? int(int64_t(k) * kStride % kFaces) : k;
        const int a = face / kSize * (kSize + 1) + face % kSize;
        shape.addFace({a, a + 1, a + kSize + 2, a + kSize + 1});
    }
    return shape;
}

// All kinds of normals, one after the other.
std::vector<double> allNormals(const RQ_PrimPolygonMesh &mesh)
{
    std::vector<double> all = valuesOf(mesh.faceNormals(0, "P", RQ_STORAGE_REAL64));
    for (const RQ_NormalWeights weights : {RQ_NORMAL_WEIGHTS_ANGLE, RQ_NORMAL_WEIGHTS_EQUAL, RQ_NORMAL_WEIGHTS_AREA})
    {
        std::vector<BAS_Vec3d> normals(size_t(mesh.getPointCount() + mesh.getVertexCount()));
        EXPECT_TRUE(mesh.pointNormals(normals.data(), 0, "P", true, weights));
        EXPECT_TRUE(mesh.vertexNormals(normals.data() + mesh.getPointCount(), 0, "P", 60.0, true, weights));
        for (const BAS_Vec3d &normal : normals)
            all.insert(all.end(), {normal.x, normal.y, normal.z});
    }
    return all;
}

class NormalsOfThreads : public testing::TestWithParam<const char *>
{};

TEST_P(NormalsOfThreads, HaveTheSameBits)
{
    const std::string name = GetParam();
    const MeshShape shape = name == "fan" ? meshShape("fan") : terraces(name == "scattered");
    std::vector<double> expected;
    for (const int workers : {1, 2, 3, 8, 64})
    {
        const BAS_Threads::Limit limit(workers);
        const std::vector<double> all = allNormals(*makeMesh(shape));
        if (workers == 1)
            expected = all;
        EXPECT_EQ(all, expected) << workers << " workers";
    }
}
INSTANTIATE_TEST_SUITE_P(Normals, NormalsOfThreads, testing::Values("fan", "terraces", "scattered"));

// Packed 32-bit positions are read several faces at a time, all others face by face.
TEST(Normals, HaveTheSameBitsHoweverPositionsAndIndicesAreStored)
{
    std::vector<MeshShape> shapes = meshShapes();
    shapes.push_back(terraces(false).scaled("terraces", 1.0f, 1.0f, 1.0f));
    shapes.push_back(terraces(false).scaled("tiny terraces", 0.03f, 0.03f, 0.03f));
    MeshShape triangles{"triangles", shapes.back().positions, {}, {}};
    for (int i = 0; i + 203 < triangles.pointCount(); i += 3)
        triangles.addFace({i, i + 1 + i % 2, i + 202});
    shapes.push_back(triangles);
    for (const MeshShape &shape : shapes)
    {
        SCOPED_TRACE(shape.name);
        const std::vector<double> expected = allNormals(*makeMesh(shape));
        const std::vector<double> wide(shape.positions.begin(), shape.positions.end());
        const std::vector<int64_t> list(shape.indices.begin(), shape.indices.end());
        for (const auto &[points, indices] : {std::pair{makeArray(wide, 3, RQ_TYPE_POINT), integers(shape.indices)},
                                              std::pair{positions(shape.positions), makeArray(list)}})
        {
            const RQ_PolygonMeshHandle mesh(
                new RQ_PrimPolygonMesh(integers(shape.counts), indices, oneAttribute("P", points)));
            // Compared as bits: what is not a number must be so in both.
            const std::vector<double> all = allNormals(*mesh);
            ASSERT_EQ(all.size(), expected.size());
            EXPECT_TRUE(all.empty() || std::memcmp(all.data(), expected.data(), all.size() * sizeof(double)) == 0);
        }
    }
}

/// The same faces around each point in the same order, but neighbouring points lie far apart, and no run of 64 faces is of
/// one size.
struct Disguise
{
    MeshShape shape;
    std::vector<size_t> points, corners;  // of the original, where they are now

    explicit Disguise(const MeshShape &original)
    {
        const size_t count = size_t(original.pointCount()), stride = 7919;
        shape.positions.resize(original.positions.size());
        for (size_t p = 0; p < count; ++p)
        {
            points.push_back(p * stride % count);
            std::copy_n(original.positions.begin() + int64_t(3 * p), 3, shape.positions.begin() + int64_t(3 * points[p]));
        }
        size_t corner = 0;
        for (size_t face = 0; face < original.counts.size(); ++face)
        {
            std::vector<int> around;
            for (int i = 0; i < original.counts[face]; ++i)
            {
                around.push_back(int(points[size_t(original.indices[corner++])]));
                corners.push_back(shape.indices.size() + size_t(i));
            }
            shape.addFace(around);
            if (face % 40 == 0)
            {
                around.clear();
                for (int i = 0; i < 5; ++i)
                    around.push_back(shape.addPoint(float(i % 3), float(i / 3), float(i)));
                shape.addFace(around);
            }
        }
    }
};

// Most meshes are worked on a window of points and many faces at a time, others point by point and face by face.
TEST(Normals, HaveTheSameBitsWhereverPointsLie)
{
    const BAS_Threads::Limit limit(2);
    MeshShape quads = terraces(false), triangles{"triangles", quads.positions, {}, {}};
    // Two corners in one place, or more, now and then and in whole rows of faces.
    for (size_t face = 0; face < quads.counts.size(); ++face)
        if (const size_t k = face / 40 % 3; face % 11 == 0 || face / 40 % 5 == 0)
            quads.indices[4 * face + 1 + k] = quads.indices[4 * face + k];
    for (int i = 0; i + 203 < triangles.pointCount(); ++i)
        triangles.addFace({i, i + 1 + (i / 60 % 2 ? i % 2 : 0), i + (i % 13 || i / 90 % 2 ? 202 : 0)});
    for (const MeshShape &shape : {quads, triangles})
    {
        const Disguise disguise(shape);
        const RQ_PolygonMeshHandle mesh = makeMesh(shape), other = makeMesh(disguise.shape);
        for (const RQ_NormalWeights weights : {RQ_NORMAL_WEIGHTS_ANGLE, RQ_NORMAL_WEIGHTS_EQUAL, RQ_NORMAL_WEIGHTS_AREA})
            for (const bool ofPoints : {true, false})
            {
                const auto normalsOf = [&](const RQ_PrimPolygonMesh &from) {
                    std::vector<BAS_Vec3f> normals(size_t(ofPoints ? from.getPointCount() : from.getVertexCount()));
                    EXPECT_TRUE(ofPoints ? from.pointNormals(normals.data(), 0, "P", true, weights)
                                         : from.vertexNormals(normals.data(), 0, "P", 60.0, true, weights));
                    return normals;
                };
                const std::vector<BAS_Vec3f> expected = normalsOf(*mesh), normals = normalsOf(*other);
                for (size_t i = 0; i < expected.size(); ++i)
                    ASSERT_EQ(normals[ofPoints ? disguise.points[i] : disguise.corners[i]], expected[i])
                        << (ofPoints ? "point " : "corner ") << i << " weights " << weights;
            }
    }
}

// So many leave the caches before they are used, and are written past them.
TEST(Normals, OfAHugeMeshAreThoseOfItsParts)
{
    const MeshShape part = terraces(false);
    MeshShape whole{"terraces", {}, {}, {}};
    while (whole.indices.size() * sizeof(BAS_Vec3f) < size_t(17) << 20)
    {
        const int first = whole.pointCount();
        whole.positions.insert(whole.positions.end(), part.positions.begin(), part.positions.end());
        whole.counts.insert(whole.counts.end(), part.counts.begin(), part.counts.end());
        for (const int point : part.indices)
            whole.indices.push_back(first + point);
    }
    const auto normalsOf = [](const MeshShape &shape) {
        std::vector<BAS_Vec3f> normals(shape.indices.size());
        EXPECT_TRUE(makeMesh(shape)->vertexNormals(normals.data(), 0, "P", 60.0));
        return normals;
    };
    const std::vector<BAS_Vec3f> normals = normalsOf(whole), expected = normalsOf(part);
    for (auto copy = normals.begin(); copy != normals.end(); copy += int64_t(expected.size()))
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), copy)) << "from corner " << copy - normals.begin();
}

TEST(Normals, AreTheSameInTheCallersMemoryAndFollowTheWeights)
{
    for (const MeshShape &shape : meshShapes())
    {
        SCOPED_TRACE(shape.name);
        const RQ_PolygonMeshHandle mesh = makeMesh(shape);
        for (const double cusp : {0.0, 60.0, 180.0})
        {
            std::vector<BAS_Vec3d> normals(static_cast<size_t>(mesh->getVertexCount()));
            std::vector<Imath::Vec3<PLT_Half>> halves(normals.size());
            ASSERT_TRUE(mesh->vertexNormals(normals.data(), 0, "P", cusp));
            ASSERT_TRUE(mesh->vertexNormals(halves.data(), 0, "P", cusp));
            const RQ_DataArrayHandle expected = mesh->createVertexNormals(0, "P", cusp, true, RQ_STORAGE_REAL64);
            const RQ_DataArrayHandle narrow = mesh->createVertexNormals(0, "P", cusp, true, RQ_STORAGE_REAL16);
            for (size_t c = 0; c < normals.size(); ++c)
            {
                ASSERT_EQ(normals[c], vectorOf(*expected, int64_t(c)));
                ASSERT_EQ(BAS_Vec3d(halves[c]), vectorOf(*narrow, int64_t(c)));
            }
        }
    }

    // At the apex of a wedge of one large and two small upright faces the weights make all the difference.
    MeshShape wedge{"wedge", {0, 0, 0, 4, 0, 0, 0, 4, 0, 0, 0, 1, 0, 4, 1}, {}, {}};
    wedge.addFace({0, 1, 2});
    wedge.addFace({0, 2, 4});
    wedge.addFace({0, 4, 3});
    const RQ_PolygonMeshHandle mesh = makeMesh(wedge);
    struct Case
    {
        RQ_NormalWeights weights;
        double up, side;
    };
    const double angle = std::numbers::pi / 2.0;
    for (const Case &c : {Case{RQ_NORMAL_WEIGHTS_ANGLE, angle, angle}, Case{RQ_NORMAL_WEIGHTS_EQUAL, 1.0, 2.0},
                          Case{RQ_NORMAL_WEIGHTS_AREA, 8.0, 4.0}})
    {
        std::vector<BAS_Vec3d> normals(5);
        ASSERT_TRUE(mesh->pointNormals(normals.data(), 0, "P", false, c.weights));
        EXPECT_LT((normals[0] - BAS_Vec3d(c.side, 0.0, c.up)).length(), 1e-9) << c.weights;
    }
    std::vector<BAS_Vec3d> none(5);
    EXPECT_FALSE(mesh->pointNormals(none.data(), 0, "rest"));
}

TEST(Normals, OfEverySegmentAreThoseOfItsPositions)
{
    const MeshShape still = terraces(false), moved = still.scaled("moved", 1.0f, 1.0f, 2.0f);
    const RQ_AttributeListHandle one = oneAttribute("P", positions(still.positions));
    const RQ_AttributeListHandle two(new RQ_AttributeList(one->getMap(), 2));
    two->set(0, one->get(0, 0), 0);
    two->set(0, positions(moved.positions), 1);
    const RQ_PolygonMeshHandle mesh(new RQ_PrimPolygonMesh(integers(still.counts), integers(still.indices), two));
    EXPECT_EQ(mesh->getMotionSegments(), 2);
    // Added ones are made once for segments of the same positions, and repeated where there are none.
    const RQ_AttributeListHandle holey(new RQ_AttributeList(*two));
    holey->set(0, nullptr, 1);
    const BAS_Mat4d matrices[2];
    const RQ_PolygonMeshHandle placed = makeMesh(still), broken(new RQ_PrimPolygonMesh(*mesh, holey, {}, {}, {}));
    placed->setPrimitiveTransform(new RQ_Transform(matrices, 2));
    for (const RQ_PolygonMeshHandle &some : {mesh, placed, broken})
    {
        bool changed = false;
        const RQ_AttributeListHandle with = some->createPointNormalsIfMissing("P", true, changed)->getShared();
        EXPECT_TRUE(changed && with->getSegments() == 2 && with->get("N", 1));
        EXPECT_EQ(with->get("N", 0) == with->get("N", 1), some != mesh);
    }
    for (const int segment : {0, 1})
    {
        const RQ_PolygonMeshHandle alone = makeMesh(segment == 0 ? still : moved);
        EXPECT_EQ(valuesOf(mesh->faceNormals(segment)), valuesOf(alone->faceNormals()));
        EXPECT_EQ(valuesOf(mesh->createPointNormals(segment, "P", true, nullptr, RQ_STORAGE_REAL32)),
                  valuesOf(alone->createPointNormals(0, "P", true, nullptr, RQ_STORAGE_REAL32)));
        EXPECT_EQ(valuesOf(mesh->createVertexNormals(segment, "P", 60.0, true, RQ_STORAGE_REAL32)),
                  valuesOf(alone->createVertexNormals(0, "P", 60.0, true, RQ_STORAGE_REAL32)));
    }
}

TEST(Normals, AreAddedOnlyWhereMissingAndFailWithoutPositions)
{
    const RQ_PolygonMeshHandle mesh = makeMesh(cubeShape());
    bool changed = false;
    const RQ_PolygonMeshHandle with = mesh->createPointNormalsIfMissing("P", true, changed);
    EXPECT_TRUE(changed);
    ASSERT_TRUE(with->getShared()->get("N", 0));
    EXPECT_EQ(with->getShared()->get("N", 0)->getTypeInfo(), RQ_TYPE_NORMAL);
    EXPECT_EQ(with->getShared()->get("P", 0), mesh->getShared()->get("P", 0));
    EXPECT_EQ(with->createVertexNormalsIfMissing("P", 60.0, true, changed), with);
    EXPECT_FALSE(changed);

    EXPECT_FALSE(mesh->createPointNormals(0, "rest", true, nullptr, RQ_STORAGE_REAL32));
    EXPECT_FALSE(mesh->createVertexNormals(0, "P", 60.0, true, RQ_STORAGE_INT32));
    EXPECT_EQ(mesh->createPointNormalsIfMissing("rest", true, changed), mesh);
    EXPECT_FALSE(changed);
}
