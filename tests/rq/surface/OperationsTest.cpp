#include <algorithm>
#include <bit>

#include <gtest/gtest.h>

#include <host/bas/Parallel.h>
#include <rq/prim/RefineList.h>
#include <tests/interrupter.h>
#include <tests/json.h>
#include <tests/rq/surface/Fixture.h>

using namespace tests;

namespace
{
/// Enough faces for several jobs, some of them large and concave, with points between them that nobody uses.
RQ_PolygonMeshHandle manyFaces()
{
    constexpr int kQuads = 2000;
    MeshShape shape = stripShape(kQuads);
    for (int i = 0; i < kQuads; i += 7)
        shape.addFace({2 * i, 2 * i + 2, 2 * i + 4, 2 * i + 5, 2 * i + 3, 2 * i + 1});
    for (int i = 0; i < 100; ++i)
        shape.addPoint(0.0f, float(i), 0.0f);
    const MeshShape star = starShape(12);
    const int first = shape.pointCount();
    shape.positions.insert(shape.positions.end(), star.positions.begin(), star.positions.end());
    std::vector<int> corners;
    for (int i = 0; i < star.pointCount(); ++i)
        corners.push_back(first + i);
    for (int i = 0; i < 40; ++i)
        shape.addFace(corners);
    return makeMesh(shape);
}

template <class Primitives> std::string textOf(const Primitives &primitives)
{
    std::string text;
    for (const RQ_PrimitiveHandle &primitive : primitives)
        text += jsonOf(*primitive) + "\n";
    return text;
}

struct Operation
{
    const char *what;
    std::string (*run)(const RQ_PrimPolygonMesh &mesh);
};

template <int limit, bool triangulate> std::string convexText(const RQ_PrimPolygonMesh &mesh)
{
    const RQ_PolygonMeshHandle cut = mesh.convex(limit, triangulate, true);
    return cut ? jsonOf(*cut) : "";
}

const Operation kConvexings[] = {
    {"pieces for another mesh",
     [](const RQ_PrimPolygonMesh &mesh) {
         RQ_ConvexArrays arrays;
         if (mesh.getConvexArrays(arrays, 3))
             return jsonOf(*mesh.adoptConvexing(arrays)) + jsonOf(*arrays.whole, true);
         return std::string(arrays.vertexList ? "half an array" : "");
     }},
    {"triangles", convexText<3, false>},
    {"pieces", convexText<5, false>},
    {"triangles of what is cut", convexText<100, true>},
    {"some faces",
     [](const RQ_PrimPolygonMesh &mesh) {
         RQ_FaceSet some;
         for (int64_t face = 0; face < mesh.getFaceCount(); face += 3)
             some.addFace(face);
         const RQ_PolygonMeshHandle cut = mesh.convex(3, false, false, true, &some);
         return cut ? jsonOf(*cut) : "";
     }},
};

const Operation kOthers[] = {
    {"split",
     [](const RQ_PrimPolygonMesh &mesh) {
         BAS_Array<RQ_PrimitiveHandle> pieces;
         mesh.splitMesh(700, pieces);
         return textOf(pieces);
     }},
    {"partition",
     [](const RQ_PrimPolygonMesh &mesh) {
         std::vector<int> materials;
         for (int64_t face = 0; face < mesh.getFaceCount(); ++face)
             materials.push_back(int(face * face % 17) - 2);
         BAS_Array<RQ_PrimitiveHandle> pieces;
         mesh.partitionByMaterial(integers(materials), pieces);
         return textOf(pieces);
     }},
    {"unused points",
     [](const RQ_PrimPolygonMesh &mesh) {
         RQ_DataArrayHandle rows;
         const std::string text = jsonOf(*mesh.removeUnusedPoints(&rows));
         return text + jsonOf(*rows, true);
     }},
    {"measures",
     [](const RQ_PrimPolygonMesh &mesh) {
         BAS_BoundingBox box;
         mesh.enlargeBounds(&box, 1);
         std::string text;
         for (const double value :
              {mesh.computePerimeter(0), mesh.computeSurfaceArea(0), mesh.computeVolume(BAS_Vec3f(1.0f), 0),
               double(box.maximum().x), double(box.maximum().z)})
             text += std::to_string(std::bit_cast<int64_t>(value)) + " ";
         return text;
     }},
    {"copies", [](const RQ_PrimPolygonMesh &mesh) { return jsonOf(*mesh.harden()); }},
    {"faces, which come in any order",
     [](const RQ_PrimPolygonMesh &mesh) {
         RQ_RefineList list;
         list.refine(&mesh, nullptr);
         std::vector<std::string> faces;
         for (int i = 0; i < list.entries(); ++i)
             faces.push_back(jsonOf(*list.getPrimitive(i)));
         std::sort(faces.begin(), faces.end());
         std::string text;
         for (const std::string &face : faces)
             text += face;
         return text;
     }},
};
}  // namespace

TEST(Operations, GiveTheSameForAnyNumberOfWorkers)
{
    const RQ_PolygonMeshHandle mesh = manyFaces();
    std::vector<Operation> operations(std::begin(kConvexings), std::end(kConvexings));
    operations.insert(operations.end(), std::begin(kOthers), std::end(kOthers));
    for (const Operation &operation : operations)
    {
        std::string expected;
        for (const int workers : {1, 2, 3, 8, 64})
        {
            const BAS_Threads::Limit limit(workers);
            const std::string text = operation.run(*mesh);
            EXPECT_FALSE(text.empty());
            if (workers == 1)
                expected = text;
            EXPECT_TRUE(text == expected) << operation.what << " with " << workers << " workers";
        }
    }
}

TEST(Operations, GiveNothingWhereverConvexingIsInterrupted)
{
    const RQ_PolygonMeshHandle mesh = manyFaces();
    const std::string before = jsonOf(*mesh);
    for (const Operation &operation : kConvexings)
    {
        const std::string whole = operation.run(*mesh);
        int polls = 0;
        for (bool isDone = false; !isDone; ++polls)
        {
            const Interrupter interrupter(polls, "Convexing display geometry");
            const std::string text = operation.run(*mesh);
            isDone = !interrupter.saidStop();
            EXPECT_EQ(text, isDone ? whole : "") << operation.what << ", poll " << polls;
        }
        EXPECT_GT(polls, 3);
    }
    EXPECT_EQ(jsonOf(*mesh), before);
}
