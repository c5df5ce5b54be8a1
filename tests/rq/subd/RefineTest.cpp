#include <gtest/gtest.h>

#include <limits>
#include <random>

#include <host/bas/Parallel.h>
#include <rq/data/DAIndexedText.h>
#include <rq/subd/SubdLimit.h>
#include <tests/rq/subd/SlowRefiner.h>
#include <tests/rq/surface/Fixture.h>

using namespace tests;

namespace
{
RQ_DataArrayHandle reals(const std::vector<float> &values, int64_t tuple = 1) { return makeArray(values, tuple); }

struct Sharp
{
    std::vector<int> elements;
    std::vector<float> values;
};

RQ_SubdivisionMeshHandle makeCage(const MeshShape &shape, const Sharp &creases = {}, const Sharp &corners = {},
                                  RQ_Scheme scheme = RQ_SCHEME_CATMULL_CLARK)
{
    const RQ_SubdivisionMeshHandle mesh(new RQ_PrimSubdivisionMesh(*makeMesh(shape), scheme));
    for (const auto &[name, tag] : {std::pair("crease", &creases), {"corner", &corners}})
        if (!tag->values.empty())
        {
            mesh->appendIntTag(name, integers(tag->elements));
            mesh->appendRealTag(name, reals(tag->values));
        }
    return mesh;
}

SlowMesh slowMesh(const MeshShape &shape, const Sharp &creases, const Sharp &corners)
{
    SlowMesh mesh;
    for (int point = 0; point < shape.pointCount(); ++point)
        mesh.points.push_back(pointOf(shape, point));
    size_t corner = 0;
    for (const int count : shape.counts)
    {
        mesh.faces.emplace_back(shape.indices.begin() + int(corner), shape.indices.begin() + int(corner) + count);
        corner += size_t(count);
    }
    for (size_t i = 0; i < creases.values.size(); ++i)
        mesh.creases[SlowMesh::edgeOf(creases.elements[2 * i], creases.elements[2 * i + 1])] = creases.values[i];
    for (size_t i = 0; i < corners.values.size(); ++i)
        mesh.corners[corners.elements[i]] = corners.values[i];
    return mesh;
}

RQ_PolygonMeshHandle refined(const RQ_PrimSubdivisionMesh &mesh, int level)
{
    const RQ_SubdTopologyHandle topology = RQ_SubdTopology::create(mesh);
    return topology ? topology->refine(mesh, level) : nullptr;
}

// None of a mesh that is all holes.
std::vector<double> pointsOf(const RQ_PrimPolygonMesh &mesh)
{
    return valuesOf(mesh.getShared() ? mesh.getShared()->get("P") : nullptr);
}

// A grid of quads, each of which begins at another corner than its neighbours.
MeshShape tent(int cells = 3)
{
    MeshShape shape;
    const int side = cells + 1;
    for (int i = 0; i < side * side; ++i)
        shape.addPoint(float(i % side), float(i / side), i % side == 1 ? 1.0f : 0.3f * float(i % 3));
    for (int y = 0; y < cells; ++y)
        for (int x = 0; x < cells; ++x)
        {
            const int first = side * y + x;
            std::vector<int> face{first, first + 1, first + side + 1, first + side};
            std::rotate(face.begin(), face.begin() + (x + 2 * y) % 4, face.end());
            shape.addFace(face);
        }
    return shape;
}

// As many corners as two quads have.
MeshShape triangleAndPentagon()
{
    MeshShape shape = faceShape("", {{0, 0}, {2, 0}, {1, 2}});
    for (const BAS_Vec3d &point : {BAS_Vec3d(3, 3, 0.5), BAS_Vec3d(4, 1, 1), BAS_Vec3d(3, -1, 0)})
        shape.addPoint(float(point.x), float(point.y), float(point.z));
    shape.addFace({2, 1, 5, 4, 3});
    return shape;
}

MeshShape prism(int sides)
{
    MeshShape shape;
    std::vector<int> bottom, top;
    for (int i = 0; i < sides; ++i)
    {
        const double turn = 2 * M_PI * i / sides;
        bottom.insert(bottom.begin(), shape.addPoint(float(std::cos(turn)), float(std::sin(turn)), 0.0f));
        top.push_back(shape.addPoint(float(std::cos(turn)), float(std::sin(turn)), 1.0f));
    }
    shape.addFace(bottom);
    shape.addFace(top);
    for (int i = 0; i < sides; ++i)
        shape.addFace({2 * i, 2 * ((i + 1) % sides), 2 * ((i + 1) % sides) + 1, 2 * i + 1});
    return shape;
}
}  // namespace

TEST(SubdRefine, AgreesWithTheSlowRefiner)
{
    const struct
    {
        const char *what;
        MeshShape shape;
        Sharp creases, corners;
        int level = 3;
    } cases[] = {
        {"mostly regular, one step", tent(12), {{84, 85, 85, 86}, {2.5f, 1}}, {{134}, {1.5f}}, 1},
        {"mostly regular, two steps", tent(12), {{84, 85, 85, 86}, {2.5f, 1}}, {{134}, {1.5f}}, 2},
        {"mostly regular, three steps", tent(12), {{84, 85, 85, 86}, {2.5f, 1}}, {{134}, {1.5f}}, 3},
        {"mostly regular, four steps", tent(12), {{84, 85, 85, 86}, {2.5f, 1}}, {{134}, {1.5f}}, 4},
        {"cube", cubeShape(), {}, {}},
        {"open, its corners kept", tent(), {}, {}},
        {"triangles", prism(3), {}, {}},
        {"pentagons", prism(5), {}, {}},
        {"a triangle and a pentagon", triangleAndPentagon(), {}, {}},
        {"crease without end", cubeShape(), {{4, 5, 5, 7, 7, 6, 6, 4}, {10, 10, 10, 11}}, {}},
        {"creases that wear off", cubeShape(), {{0, 1, 1, 3, 3, 2, 2, 0, 4, 5}, {0.4f, 1.5f, 2, 2.6f, 1}}, {}},
        {"three creases at a point", prism(5), {{0, 1, 1, 3, 1, 9}, {2, 1.25f, 0.75f}}, {}},
        {"corners", cubeShape(), {}, {{0, 3, 5}, {0.5f, 1.75f, 20}}},
        {"creases and corners", tent(), {{5, 6, 6, 10, 10, 9}, {3, 1.2f, 0.3f}}, {{5, 10}, {1.5f, 2}}},
    };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        const RQ_SubdivisionMeshHandle cage = makeCage(c.shape, c.creases, c.corners);
        const RQ_SubdTopologyHandle topology = RQ_SubdTopology::create(*cage);
        ASSERT_TRUE(topology);
        const RQ_PolygonMeshHandle mesh = topology->refine(*cage, c.level);
        ASSERT_TRUE(mesh && mesh->validate());
        SlowMesh slow = slowMesh(c.shape, c.creases, c.corners);
        for (int step = 0; step < c.level; ++step)
            slow = slow.refined();
        ASSERT_EQ(mesh->getFaceCount(), int64_t(slow.faces.size()));
        EXPECT_EQ(mesh->getPointCount(), int64_t(slow.points.size()));
        double worst = 0;
        for (size_t face = 0; face < slow.faces.size(); ++face)
            for (size_t i = 0; i < 4; ++i)
                worst = std::max(worst, (vectorOf(*mesh->getShared()->get("P"), mesh->getPoint(int64_t(face), int64_t(i))) -
                                         slow.points[size_t(slow.faces[face][i])])
                                            .length());
        EXPECT_LT(worst, 1e-5);

        // Four components of doubles, on the same topology, and on one thread.
        const BAS_Threads::Limit one(1);
        const BAS_IntrusivePtr<RQ_DANumeric<double>> rows(new RQ_DANumeric<double>(c.shape.pointCount(), 4));
        for (int point = 0; point < c.shape.pointCount(); ++point)
            for (int i = 0; i < 4; ++i)
                rows->set(point, cage->getShared()->get("P")->getF64(point, i % 3), i);
        const RQ_SubdivisionMeshHandle wideCage(new RQ_PrimSubdivisionMesh(
            *cage, cage->getShared()->addAttribute("rows", rows, false), nullptr, nullptr, nullptr));
        const RQ_PolygonMeshHandle wide = topology->refine(*wideCage, c.level);
        ASSERT_TRUE(wide);
        EXPECT_EQ(pointsOf(*wide), pointsOf(*mesh));
        for (int64_t point = 0; point < mesh->getPointCount(); ++point)
            for (int i = 0; i < 4; ++i)
                ASSERT_NEAR(wide->getShared()->get("rows")->getF64(point, i),
                            mesh->getShared()->get("P")->getF64(point, i % 3), 1e-5);
    }
}

TEST(SubdRefine, LoopAndBilinearFollowTheirRules)
{
    // A triangle alone: boundary edges halve, boundary points take 3/4 and two eighths, but corners stay.
    const MeshShape triangle = faceShape("triangle", {{0, 0}, {8, 0}, {0, 8}});
    for (const RQ_Scheme scheme : {RQ_SCHEME_LOOP, RQ_SCHEME_BILINEAR})
    {
        const RQ_PolygonMeshHandle mesh = refined(*makeCage(triangle, {}, {}, scheme), 1);
        const bool loop = scheme == RQ_SCHEME_LOOP;
        EXPECT_EQ(mesh->getFaceCount(), loop ? 4 : 3);
        EXPECT_EQ(mesh->getPointCount(), loop ? 6 : 7);
        EXPECT_NEAR(mesh->computeSurfaceArea(0), 32, 1e-5);
    }
    // A tetrahedron: points of valence 3 take 7/16 and three times 3/16, edges 3/8 of their ends and 1/8 of the others.
    MeshShape tetrahedron = faceShape("", {{1, 1, 1}, {-1, -1, 1}, {-1, 1, -1}});
    tetrahedron.addPoint(1, -1, -1);
    for (const std::vector<int> &face : {std::vector<int>{0, 3, 1}, {0, 2, 3}, {1, 3, 2}})
        tetrahedron.addFace(face);
    const RQ_PolygonMeshHandle mesh = refined(*makeCage(tetrahedron, {}, {}, RQ_SCHEME_LOOP), 1);
    const RQ_DataArrayHandle p = mesh->getShared()->get("P");
    EXPECT_LT((vectorOf(*p, 0) - BAS_Vec3d(0.25)).length(), 1e-6);
    EXPECT_LT((vectorOf(*p, mesh->getPoint(0, 1)) - BAS_Vec3d(0, 0, 0.5)).length(), 1e-6);
}

TEST(SubdRefine, AttributesFaceSetsHolesAndSegmentsFollow)
{
    // Two quads side by side and a point of no face in front; the second quad is a hole, "seam" differs across the edge.
    MeshShape shape = stripShape(2);
    const RQ_DataArrayHandle p = positions(shape.positions), moved = positions(std::vector<float>(18, 1.0f));
    const RQ_DataArrayHandle both[] = {p, moved};
    const BAS_StringHolder words[] = {"a", "b", "c", "d", "e", "f"};
    const RQ_AttributeListHandle shared =
        oneAttribute("name", RQ_DAIndexedString::createIndexed(words, 6))->addAttribute("P", both, 2, false);
    const RQ_AttributeListHandle vertex = oneAttribute("seam", reals({0, 0, 0, 0, 4, 4, 4, 4}))
                                              ->addAttribute("smooth", reals({0, 1, 1, 0, 1, 2, 2, 1}), false)
                                              ->addAttribute("corner", integers({0, 1, 2, 3, 4, 5, 6, 7}), false);
    const RQ_SubdivisionMeshHandle mesh(new RQ_PrimSubdivisionMesh(integers(shape.counts), integers(shape.indices), shared,
                                                                   vertex, oneAttribute("face", integers({10, 11}))));
    const RQ_FaceSetHandle set(new RQ_FaceSet);
    set->addFace(0);
    mesh->addFaceSet("first", set);
    const RQ_PolygonMeshHandle whole = refined(*mesh, 2);
    ASSERT_TRUE(whole && whole->validate());
    EXPECT_EQ(whole->getFaceCount(), 32);
    EXPECT_EQ(whole->faceSetMap()->find("first")->entries(), 16);
    EXPECT_EQ(whole->getUniform()->get("face")->getI32(16), 11);
    EXPECT_EQ(whole->getShared()->get("P", 1)->getF32(20, 2), 1.0f);
    EXPECT_EQ(whole->getShared()->get("name")->getS(3), BAS_StringHolder("d"));
    for (int64_t corner = 0; corner < 128; ++corner)
    {
        const bool second = corner >= 64;
        EXPECT_EQ(whole->getVertex()->get("seam")->getF32(corner), second ? 4.0f : 0.0f) << corner;
        EXPECT_EQ(whole->getVertex()->get("corner")->getI32(corner) >= 4, second) << corner;
        // What is smooth follows the points that run the same way; x is 0, 1 and 2.
        EXPECT_NEAR(whole->getVertex()->get("smooth")->getF32(corner),
                    whole->getShared()->get("P")->getF32(whole->getVertexList()->getI64(corner), 0), 1e-6)
            << corner;
    }
    mesh->appendIntTag("hole", integers({1}));
    mesh->appendIntTag("facevaryinginterpolateboundary", integers({0}));
    const RQ_PolygonMeshHandle left = refined(*mesh, 2);
    ASSERT_TRUE(left && left->validate());
    EXPECT_EQ(left->getFaceCount(), 16);
    EXPECT_EQ(left->getPointCount(), 25);
    EXPECT_EQ(left->getUniform()->get("face")->getI32(15), 10);
    EXPECT_NEAR(left->getVertex()->get("smooth")->getF32(0), 0, 1e-6);
}

TEST(SubdRefine, FaultsAreNamedAndBoundTo)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    MeshShape dirty = cubeShape();
    dirty.addFace({0, 1});
    MeshShape wrong = cubeShape();
    wrong.indices[5] = 99;
    const auto withTag = [](const char *name, const std::vector<int> &ints, const std::vector<float> &values) {
        const RQ_SubdivisionMeshHandle mesh = makeCage(cubeShape());
        mesh->appendIntTag(name, integers(ints));
        if (!values.empty())
            mesh->appendRealTag(name, reals(values));
        return mesh;
    };
    const struct
    {
        RQ_SubdivisionMeshHandle mesh;
        RQ_SubdFaultCode code;
        int64_t element, count;
    } cases[] = {
        {makeCage(wrong), RQ_SUBD_MESH, 0, 1},
        {makeCage(cubeShape(), {}, {}, RQ_SCHEME_INVALID), RQ_SUBD_SCHEME, 0, 1},
        {makeCage(dirty), RQ_SUBD_FACE_CORNERS, 6, 1},
        {makeCage(cubeShape(), {}, {}, RQ_SCHEME_LOOP), RQ_SUBD_LOOP_FACE, 0, 6},
        {withTag("crease", {1, 2, 0, 7, 0, 1}, {1, 1, 1}), RQ_SUBD_CREASE_EDGE, 1, 2},
        {withTag("crease", {0, 1, 1}, {1}), RQ_SUBD_TAG_LENGTH, 0, 1},
        {withTag("corner", {0, 8, -1}, {1, 1, 1}), RQ_SUBD_CORNER_POINT, 8, 2},
        {withTag("corner", {3, 4}, {1, nan}), RQ_SUBD_SHARPNESS, 4, 1},
        {withTag("hole", {2, 6}, {}), RQ_SUBD_HOLE_FACE, 6, 1},
        {withTag("osd_creasingmethod", {7}, {}), RQ_SUBD_METHOD, 0, 1},
    };
    for (const auto &c : cases)
    {
        RQ_SubdFaults faults;
        const RQ_SubdTopologyHandle topology = RQ_SubdTopology::create(*c.mesh, &faults);
        ASSERT_EQ(faults.size(), 1u) << c.code;
        EXPECT_EQ(faults[0].code, c.code);
        EXPECT_EQ(faults[0].element, c.element) << faults[0].message;
        EXPECT_EQ(faults[0].count, c.count) << faults[0].message;
        EXPECT_EQ(topology == nullptr, faults[0].isFatal()) << faults[0].message;
    }
    std::string why;
    const RQ_SubdivisionMeshHandle cube = makeCage(cubeShape());
    const RQ_SubdTopologyHandle topology = RQ_SubdTopology::create(*cube);
    EXPECT_FALSE(topology->refine(*makeCage(tent()), 1, &why));
    EXPECT_EQ(why, "the mesh is not of this topology");
    EXPECT_FALSE(topology->refine(*cube, 11, &why));
    EXPECT_EQ(why, "level 11 is not 0 to 10");
}

TEST(SubdRefine, SurvivesAnySoupWithTheSameBitsOnAnyThreads)
{
    for (unsigned seed = 0; seed < 80; ++seed)
    {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto upTo = [&](int n) { return int(random() % unsigned(n)); };
        const RQ_Scheme scheme = RQ_Scheme(upTo(3));
        MeshShape shape;
        const int points = 3 + upTo(12);
        for (int i = 0; i < points; ++i)
            shape.addPoint(float(upTo(100)), float(upTo(100)), float(upTo(100)));
        for (int face = upTo(30); face >= 0; --face)
        {
            std::vector<int> corners(size_t(scheme == RQ_SCHEME_LOOP ? 3 : 3 + upTo(4)));
            for (int &corner : corners)
                corner = upTo(points);
            shape.addFace(corners);
        }
        Sharp creases, corners;
        for (int i = upTo(20); i > 0; --i)
        {
            creases.elements.insert(creases.elements.end(), {upTo(points), upTo(points)});
            creases.values.push_back(float(upTo(130)) * 0.1f);
            corners.elements.push_back(upTo(points));
            corners.values.push_back(float(upTo(50)) * 0.1f);
        }
        const RQ_SubdivisionMeshHandle cage = makeCage(shape, creases, corners, scheme);
        cage->appendIntTag("osd_vtxboundaryinterpolation", integers({upTo(3)}));
        cage->appendIntTag("osd_creasingmethod", integers({upTo(2)}));
        cage->appendIntTag("osd_fvarlinearinterpolation", integers({upTo(6)}));
        cage->appendIntTag("hole", integers({upTo(9)}));
        const RQ_SubdTopologyHandle topology = RQ_SubdTopology::create(*cage);
        ASSERT_TRUE(topology);
        const RQ_PolygonMeshHandle mesh = topology->refine(*cage, 2);
        ASSERT_TRUE(mesh && mesh->validate());
        for (const double value : pointsOf(*mesh))
            ASSERT_TRUE(value > -1 && value < 100) << value;

        const RQ_SubdLimitHandle limit = RQ_SubdLimit::create(topology, cage->getShared()->get("P"));
        ASSERT_TRUE(limit);
        std::vector<RQ_SubdSample> samples;
        for (int i = 0; i < 100; ++i)
            samples.push_back({upTo(32) - 1, upTo(6), float(upTo(5)) * 0.25f, float(upTo(5)) * 0.25f});
        std::vector<float> p(300), du(300), dv(300), n(300);
        limit->evaluate(samples.data(), 100, {p.data(), du.data(), dv.data(), n.data()});
        for (size_t i = 0; i < 300; ++i)
            ASSERT_TRUE(std::isfinite(p[i] + du[i] + dv[i] + n[i])) << i;

        std::vector<float> seams;
        for (size_t corner = 0; corner < shape.indices.size(); ++corner)
            seams.push_back(float(upTo(2)));
        const RQ_SubdLimitHandle varying = RQ_SubdLimit::createFaceVarying(topology, reals(seams));
        ASSERT_TRUE(varying);
        varying->evaluate(samples.data(), 100, {p.data(), du.data(), dv.data()});
        for (size_t i = 0; i < 100; ++i)
            ASSERT_TRUE(std::isfinite(p[i] + du[i] + dv[i])) << i;

        if (seed % 16 == 0)
        {
            const BAS_Threads::Limit one(1);
            EXPECT_EQ(pointsOf(*RQ_SubdTopology::create(*cage)->refine(*cage, 2)), pointsOf(*mesh));
        }
    }
}
