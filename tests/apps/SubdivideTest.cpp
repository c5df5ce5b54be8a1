#include <cmath>

#include <fmt/format.h>

#include <tests/apps/Program.h>

using namespace tests;

TEST_F(Program, SubdividesMeshesByTheirTags)
{
    // Two quads side by side, the second a hole, and a face that no surface has.
    const std::string quads = "v 0 0 0\nv 1 0 0\nv 2 0 0\nv 0 1 0\nv 1 1 0\nv 2 1 0\nf 1 2 5 4\nf 2 3 6 5\n";
    std::ofstream(testFolder() + "hole.obj") << quads << "t hole 1/0/0 1\n";
    std::ofstream(testFolder() + "torn.obj") << quads << "f 1 2\n";
    std::ofstream(testFolder() + "odd.obj") << quads << "t hole 2/0/0 1\n";

    const Outcome whole("info --json --subdivide 2 @hole.obj");
    EXPECT_EQ(whole.code, 0);
    EXPECT_NE(whole.out.find("\"faces\": 16"), std::string::npos) << whole.out;
    EXPECT_EQ(whole.error, "");
    const Outcome torn("info --json --subdivide 2 @torn.obj");
    EXPECT_EQ(torn.code, 0);
    EXPECT_NE(torn.out.find("\"faces\": 3"), std::string::npos) << torn.out;
    EXPECT_NE(torn.error.find("torn.obj: warning: face 2 has 2 corners"), std::string::npos) << torn.error;
    const Outcome odd("info -p polys_as_subdivision=1 @odd.obj");
    EXPECT_NE(odd.out.find("SubdivisionMesh"), std::string::npos) << odd.out;
    EXPECT_NE(odd.error.find("odd.obj:9:"), std::string::npos) << odd.error;
    EXPECT_EQ(Outcome("info --subdivide 11 @hole.obj").code, 1);
    EXPECT_EQ(Outcome("info --subdivide 1 --scheme smooth @hole.obj").code, 1);
}

TEST_F(Program, WritesSubdividedMeshesWithAllThatBelongsToThem)
{
    // Two quads with a crease between them, the second one hidden, and a line and a point beside.
    std::ofstream(testFolder() + "cage.obj")
        << "v 0 0 0\nv 1 0 0\nv 2 0 0\nv 0 1 0\nv 1 1 0\nv 2 1 0\nv 5 5 5\nv 6 6 6\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
           "vn 0 0 1\nusemtl red\ng left\nf 1/1/1 2/2/1 5/3/1 4/4/1\nusemtl blue\ng __hidden\nf 2/1/1 3/2/1 6/3/1 5/4/1\n"
           "l 1 7 8\np 8\nt crease 2/1/0 1 4 10.0\n";
    const struct
    {
        const char *options, *points, *faces;  // the latter as many as are seen
        std::vector<const char *> records;
    } kCases[] = {
        {"--subdivide 1",
         "18",
         "4",
         {"usemtl red\ng left\nf ", "usemtl blue\ng __hidden\nf ", "\nv 0.5 0.5 0\n", "\nl 1 2 3\np 3\n"}},
        {"--subdivide 1 --scheme bilinear", "18", "4", {"\nv 0.5 0.5 0\n", "\nv 2 1 0\n", "\nvt 0.5 0.5\n"}},
        {"--convex 3", "9", "2", {"\nvn 0 0 1\n", "\nv 2 1 0\n"}},
    };
    for (const auto &c : kCases)
    {
        SCOPED_TRACE(c.options);
        const Outcome run(std::string("convert @cage.obj @out.obj ") + c.options);
        EXPECT_EQ(run.code, 0) << run.error;
        const std::string text = contentOf(testFolder() + "out.obj");
        for (const char *record : c.records)
            EXPECT_NE(text.find(record), std::string::npos) << record << " in\n" << text;
        const std::string info = Outcome("info --json @out.obj").out;
        for (const auto &[key, value] : {std::pair("points", c.points), std::pair("faces", c.faces)})
            EXPECT_NE(info.find(fmt::format("\"{}\": {}", key, value)), std::string::npos) << info;
    }
}

TEST_F(Program, SubdividesByTheSchemeThatIsAskedFor)
{
    // Of a tetrahedron; the bilinear scheme leaves it as it is.
    std::ofstream(testFolder() + "tet.obj") << "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\nf 1 3 2\nf 1 2 4\nf 1 4 3\nf 2 3 4\n";
    const auto volumeBy = [](const std::string &scheme) {
        const std::string info = Outcome("info --json --subdivide 3 --scheme " + scheme + " @tet.obj").out;
        return std::stod(info.substr(info.find("\"volume\": ") + 10));
    };
    EXPECT_NEAR(volumeBy("bilinear"), 1.0 / 6.0, 1e-6);
    EXPECT_LT(volumeBy("catmull-clark"), 0.9 / 6.0);
    EXPECT_GT(std::abs(volumeBy("loop") - volumeBy("catmull-clark")), 0.01);
}

TEST_F(Program, WritesShapesAsPolygonsWithAllThatBelongsToThem)
{
    // How the first piece begins in an OBJ file; null for a metaball, which melts, so that its faces are in no group.
    const struct
    {
        const char *shape, *piece;
        int hot = 0;  // points at the least that have what the shape's point has
    } kCases[] = {
        {R"({"type": "triangle_strip", "points": [1, 2, 3, 4]})", "f "},
        {R"({"type": "tetrahedron", "points": [1, 2, 3, 0]})", "f "},
        {R"({"type": "sphere", "points": [0]})", "f ", 2},
        {R"({"type": "tube", "points": [0], "payload": {"taper": 0.5, "caps": true}})", "f ", 2},
        {R"({"type": "blob_ellipsoid", "points": [0]})", nullptr, 2},
        {R"({"type": "nurbs_curve", "points": [0, 1, 2, 3], "payload": {"order": 4}})", "l 5 6 7 "},
        {R"({"type": "nurbs_curve", "points": [0, 1, 2, 3], "payload": {"order": 4, "wraps": true}})", "l 5 6 7 "},
    };
    for (const auto &c : kCases)
    {
        SCOPED_TRACE(c.shape);
        std::ofstream(testFolder() + "shape.rqg.json")
            << R"({"rqg": 1, "primitives": [{"type": "polygon", "points": [1, 2, 5]}, )" << c.shape
            << R"(], "attributes": {"point": [{"name": "P", "storage": "real32", "size": 3,)"
            << R"( "values": [0, 0, 5, 0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0, 0, 0, 9]},)"
            << R"({"name": "hot", "storage": "real32", "values": [7, 0, 0, 0, 0, 0]}],)"
            << R"("primitive": [{"name": "heat", "storage": "real32", "values": [1.5, 2.5]}]},)"
            << R"("groups": {"primitive": [{"name": "shapes", "members": [1]}]}})";
        const Outcome obj("convert @shape.rqg.json - --to obj");
        EXPECT_EQ(obj.error, "<stdout>: warning: attribute \"hot\" of points is left out\n"
                             "<stdout>: warning: attribute \"heat\" of primitives is left out\n");
        EXPECT_EQ(obj.out.find(std::string("g shapes\n") + (c.piece ? c.piece : "f ")) != std::string::npos,
                  c.piece != nullptr)
            << obj.out;

        const Outcome ply("convert @shape.rqg.json - --to ply --ascii");
        const bool isCurve = c.piece && *c.piece == 'l';
        EXPECT_EQ(ply.error, std::string("<stdout>: warning: group \"shapes\" of primitives is left out\n") +
                                 (isCurve ? "<stdout>: warning: 1 primitive is left out: NURBS Curve\n" : ""));
        EXPECT_NE(ply.out.find(" 1.5\n"), std::string::npos) << ply.out;
        EXPECT_EQ(ply.out.find(" 2.5\n") != std::string::npos, !isCurve) << ply.out;
        int hot = 0;
        for (size_t at = 0; (at = ply.out.find(" 7\n", at)) != std::string::npos; ++at)
            ++hot;
        EXPECT_GE(hot, c.hot) << ply.out;
    }

    std::ofstream(testFolder() + "faint.rqg.json")
        << R"({"rqg": 1, "primitives": [{"type": "blob_ellipsoid", "points": [0], "payload": {"weight": 0.3}}],)"
        << R"( "attributes": {"point": [{"name": "P", "storage": "real32", "size": 3, "values": [0, 0, 0]}]}})";
    const Outcome faint("convert @faint.rqg.json - --to obj");
    EXPECT_NE(faint.error.find("warning: 1 primitive stands for no face or line and is left out"), std::string::npos)
        << faint.error;
}
