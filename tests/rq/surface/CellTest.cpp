#include <algorithm>
#include <fstream>
#include <map>
#include <numeric>
#include <random>
#include <set>
#include <sstream>

#include <host/bas/Parallel.h>
#include <host/bas/StringMMPattern.h>
#include <rq/prim/RefineList.h>
#include <rq/prim/RefineParms.h>
#include <rq/surface/PrimHexMesh.h>
#include <rq/surface/PrimTetMesh.h>
#include <tests/json.h>
#include <tests/rq/surface/Fixture.h>

using namespace tests;

namespace
{
/// Cells of four corners or of eight.
struct CellShape
{
    std::vector<float> positions;
    std::vector<int> corners;
    int each = 8;

    int64_t count() const { return int64_t(corners.size()) / each; }
};

template <class Index = int> RQ_CellMeshHandle makeCells(const CellShape &shape)
{
    RQ_CellMeshHandle mesh;
    if (shape.each == 4)
        mesh = new RQ_PrimTetMesh;
    else
        mesh = new RQ_PrimHexMesh;
    std::vector<int> numbers(shape.corners.size());
    std::iota(numbers.begin(), numbers.end(), 0);
    const std::vector<int> cells(numbers.begin(), numbers.begin() + shape.count());
    mesh->init(makeArray(std::vector<Index>(shape.corners.begin(), shape.corners.end())),
               oneAttribute("P", positions(shape.positions)), oneAttribute("corner", integers(numbers)),
               oneAttribute("cell", integers(cells)), oneAttribute("whole", integers({7})));
    return mesh;
}

/// A block of n x n x n cubes, each cut into six tetrahedra for cells of four corners; in any order, and some of them with
/// their corners the wrong way round.
CellShape block(int n, int each, bool shuffled)
{
    CellShape shape{{}, {}, each};
    std::mt19937 random(1);
    const int side = n + 1;
    std::vector<int> number(size_t(side * side * side));
    std::iota(number.begin(), number.end(), 0);
    if (shuffled)
        std::shuffle(number.begin(), number.end(), random);
    shape.positions.resize(3 * number.size());
    for (size_t i = 0; i < number.size(); ++i)
        for (int axis = 0, rest = int(i); axis < 3; ++axis, rest /= side)
            shape.positions[size_t(3 * number[i] + axis)] = float(rest % side);
    std::vector<std::vector<int>> cells;
    for (int cube = 0; cube < n * n * n; ++cube)
    {
        const auto at = [&](int x, int y, int z) {
            return number[size_t(cube % n + x + side * (cube / n % n + y + side * (cube / n / n + z)))];
        };
        std::array<int, 3> axes{0, 1, 2};
        if (each == 8)
            cells.push_back(
                {at(0, 0, 0), at(1, 0, 0), at(1, 1, 0), at(0, 1, 0), at(0, 0, 1), at(1, 0, 1), at(1, 1, 1), at(0, 1, 1)});
        else
            do
            {
                // From one end of the diagonal to the other, an axis at a time: three of six go the wrong way round.
                std::array<int, 3> to{};
                std::vector<int> &cell = cells.emplace_back(1, at(0, 0, 0));
                for (const int axis : axes)
                {
                    to[size_t(axis)] = 1;
                    cell.push_back(at(to[0], to[1], to[2]));
                }
            } while (std::next_permutation(axes.begin(), axes.end()));
    }
    if (shuffled)
        std::shuffle(cells.begin(), cells.end(), random);
    for (std::vector<int> &cell : cells)
    {
        if (shuffled && each == 8 && random() % 2)
            std::rotate(cell.begin(), cell.begin() + 4, cell.end());
        shape.corners.insert(shape.corners.end(), cell.begin(), cell.end());
    }
    return shape;
}

struct SmallCase
{
    const char *what;
    CellShape cells;
    int64_t faces;
    double area, volume;
};

// Corners of a row of two unit cubes: 0 to 3 and 4 to 7 around the first's bottom and top, 8 to 11 of the second's far side.
const std::vector<float> kRow{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0, 1, 1, 0, 1,
                              1, 1, 1, 0, 1, 1, 2, 0, 0, 2, 1, 0, 2, 0, 1, 2, 1, 1};
const double kRoot2 = std::sqrt(2.0), kRoot3 = std::sqrt(3.0);

const SmallCase kSmallCases[] = {
    {"nothing", {kRow, {}, 4}, 0, 0.0, 0.0},
    {"fewer corners than a cell has", {kRow, {0, 1, 2}, 4}, 0, 0.0, 0.0},
    {"a tetrahedron", {kRow, {0, 1, 3, 4}, 4}, 4, 1.5 + kRoot3 / 2.0, 1.0 / 6.0},
    {"the wrong way round", {kRow, {0, 3, 1, 4}, 4}, 4, 1.5 + kRoot3 / 2.0, 1.0 / 6.0},
    {"twice", {kRow, {0, 1, 3, 4, 3, 1, 0, 4}, 4}, 4, 1.5 + kRoot3 / 2.0, 1.0 / 6.0},
    {"twice beside another", {kRow, {0, 1, 3, 4, 3, 1, 0, 4, 1, 2, 3, 4}, 4}, 6, 2.0 + kRoot2, 1.0 / 3.0},
    {"three on one face", {kRow, {0, 1, 3, 4, 0, 1, 3, 5, 0, 1, 3, 7}, 4}, 9, NAN, NAN},
    {"collapsed to a face", {kRow, {0, 1, 3, 3}, 4}, 0, 0.0, 0.0},
    {"collapsed to a point", {kRow, {5, 5, 5, 5}, 4}, 0, 0.0, 0.0},
    {"a cube", {kRow, {0, 1, 2, 3, 4, 5, 6, 7}}, 6, 6.0, 1.0},
    {"a row", {kRow, {0, 1, 2, 3, 4, 5, 6, 7, 1, 8, 9, 2, 5, 10, 11, 6}}, 10, 10.0, 2.0},
    {"a row, one upside down", {kRow, {4, 5, 6, 7, 0, 1, 2, 3, 1, 8, 9, 2, 5, 10, 11, 6}}, 10, 10.0, 2.0},
    {"wedges that write their end differently", {kRow, {0, 1, 2, 2, 4, 5, 6, 6, 0, 0, 2, 3, 4, 4, 6, 7}}, 8, 6.0, 1.0},
    {"a wedge written twice", {kRow, {0, 1, 2, 2, 4, 5, 6, 6, 0, 0, 1, 2, 4, 4, 5, 6}}, 5, 3.0 + kRoot2, 0.5},
    {"a wedge and a cube", {kRow, {0, 1, 2, 3, 4, 5, 6, 7, 1, 8, 2, 2, 5, 10, 6, 6}}, 9, 7.0 + kRoot2, 1.5},
    {"a pyramid", {kRow, {0, 1, 2, 3, 4, 4, 4, 4}}, 5, 2.0 + kRoot2, 1.0 / 3.0},
    {"a cube without thickness", {kRow, {0, 1, 2, 3, 0, 1, 2, 3}}, 0, 0.0, 0.0},
    {"one without thickness beside it", {kRow, {0, 1, 2, 3, 4, 5, 6, 7, 1, 1, 2, 2, 5, 5, 6, 6}}, 6, 6.0, 1.0},
    {"a face folded on itself", {kRow, {0, 1, 0, 3, 4, 5, 6, 7}}, 5, NAN, NAN},
};

TEST(Cells, HaveTheFacesOfOneCellOutside)
{
    for (const SmallCase &c : kSmallCases)
    {
        SCOPED_TRACE(c.what);
        for (const RQ_CellMeshHandle &mesh : {makeCells(c.cells), makeCells<int64_t>(c.cells)})
        {
            RQ_RefineList list;
            EXPECT_EQ(list.refine(mesh.get(), nullptr), c.cells.count() > 0);
            EXPECT_EQ(list.entries(), c.faces > 0 ? 1 : 0);
            const RQ_PolygonMeshHandle outer = mesh->getOuterFaces();
            EXPECT_EQ(outer ? outer->getFaceCount() : 0, c.faces);
            EXPECT_TRUE(!outer || outer->validate());
            if (!std::isnan(c.area))
            {
                EXPECT_NEAR(mesh->computeSurfaceArea(0), c.area, 1e-6);
                EXPECT_NEAR(mesh->computeVolume(BAS_Vec3f(5.0f), 0), c.volume, 1e-6);
            }
        }
    }
}

/// The corner numbers of the outer faces by the definition, for cells that are not collapsed.
std::multiset<std::set<int64_t>> plainOuterFaces(const CellShape &shape)
{
    static const std::vector<std::vector<int>> kTet{{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}},
        kHex{{0, 3, 2, 1}, {4, 5, 6, 7}, {0, 1, 5, 4}, {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7}};
    std::map<std::set<int>, std::vector<std::set<int64_t>>> users;
    for (int64_t cell = 0; cell < shape.count(); ++cell)
        for (const std::vector<int> &face : shape.each == 4 ? kTet : kHex)
        {
            std::set<int> points;
            std::set<int64_t> corners;
            for (const int corner : face)
            {
                corners.insert(cell * shape.each + corner);
                points.insert(shape.corners[size_t(cell * shape.each + corner)]);
            }
            users[points].push_back(corners);
        }
    std::multiset<std::set<int64_t>> outer;
    for (const auto &[points, faces] : users)
        if (faces.size() == 1)
            outer.insert(faces[0]);
    return outer;
}

TEST(Cells, OfLargeBlocksHaveTheirSurface)
{
    constexpr int n = 18;
    for (const int each : {4, 8})
        for (const bool shuffled : {false, true})
        {
            SCOPED_TRACE(testing::Message() << each << " corners" << (shuffled ? ", shuffled" : ""));
            const CellShape shape = block(n, each, shuffled);
            std::string first;
            for (const int threads : {1, 2, 8})
            {
                const BAS_Threads::Limit limit(threads);
                const std::string text = jsonOf(*makeCells(shape)->getOuterFaces());
                first = first.empty() ? text : first;
                EXPECT_EQ(text, first) << threads << " threads";
            }
            EXPECT_EQ(jsonOf(*makeCells<int64_t>(shape)->getOuterFaces()), first);

            const RQ_PolygonMeshHandle outer = makeCells(shape)->getOuterFaces();
            EXPECT_NEAR(outer->computeSurfaceArea(0), 6.0 * n * n, 1e-6);
            EXPECT_NEAR(outer->computeVolume(BAS_Vec3f(0.0f), 0), 1.0 * n * n * n, 1e-6);
            std::multiset<std::set<int64_t>> corners;
            int64_t before = -1;
            for (int64_t face = 0; face < outer->getFaceCount(); ++face)
            {
                std::set<int64_t> made;
                for (int64_t i = 0; i < outer->getFaceCountArray().getCount(face); ++i)
                {
                    const int64_t corner = outer->getVertex()->get("corner")->getI64(outer->getVertex(face, i));
                    EXPECT_EQ(outer->getPoint(face, i), shape.corners[size_t(corner)]);
                    made.insert(corner);
                }
                corners.insert(made);
                const int64_t cell = outer->getUniform()->get("cell")->getI64(face);
                EXPECT_TRUE(cell >= before && cell == *made.begin() / each);
                before = cell;
            }
            EXPECT_EQ(corners, plainOuterFaces(shape));
        }
}

TEST(Cells, BehaveAsOtherPrimitives)
{
    const RQ_CellMeshHandle cells = makeCells(block(2, 8, false));
    const RQ_PolygonMeshHandle outer = cells->getOuterFaces();
    EXPECT_EQ(outer->getShared(), cells->getPointAttributes());
    EXPECT_EQ(outer->getDetail(), cells->getDetailAttributes());
    EXPECT_STREQ(outer->getVertex()->get("corner")->className(), "RQ_DAIndirect");
    EXPECT_STREQ(outer->getUniform()->get("cell")->className(), "RQ_DAIndirect");

    // Made again of the same cells it is known again, with other attributes it is not found again.
    const RQ_CellMeshHandle again(new RQ_PrimHexMesh);
    again->init(cells->getVertexList(), cells->getPointAttributes(), cells->getVertexAttributes());
    const RQ_CellMeshHandle bare = cells->withAttributes(cells->getPointAttributes(), {}, {}, {});
    EXPECT_EQ(again->getOuterFaces()->getVertexList()->getDataId(), outer->getVertexList()->getDataId());
    EXPECT_EQ(bare->getOuterFaces()->getVertexList(), outer->getVertexList());

    const BAS_Mat4d matrix(0, 2, 0, 0, 2, 0, 0, 0, 0, 0, 2, 0, 10, 0, 0, 1);
    const RQ_PrimitiveHandle moved = cells->copyTransformed(new RQ_Transform(&matrix, 1));
    BAS_BoundingBox box, outerBox;
    moved->enlargeBounds(&box, 1);
    static_cast<const RQ_PrimCellMesh &>(*moved).getOuterFaces()->enlargeBounds(&outerBox, 1);
    EXPECT_EQ(box, BAS_BoundingBox(BAS_Vec3f(10, 0, 0), BAS_Vec3f(14, 4, 4)));
    EXPECT_EQ(box, outerBox);

    const RQ_PrimitiveHandle hard = cells->harden();
    EXPECT_EQ(jsonOf(*hard), jsonOf(*cells));
    EXPECT_NE(hard->getPointAttributes()->get("P"), cells->getPointAttributes()->get("P"));
    EXPECT_EQ(jsonOf(*cells).substr(0, 20), "[\"RQ_PrimHexMesh\",[0");
    EXPECT_EQ(jsonOf(*makeCells(block(1, 4, false))).substr(0, 13), "[\"TetMesh\",[0");

    RQ_RefineParms parms;
    parms.setAddVertexNormals(true);
    parms.setMaxPolyMeshSize(10);
    RQ_RefineList pieces;
    EXPECT_TRUE(pieces.refine(cells.get(), &parms));
    ASSERT_EQ(pieces.entries(), 3);  // of 24 faces
    EXPECT_TRUE(pieces.getPrimitive(2)->getVertexAttributes()->get("N"));

    const BAS_StringMMPattern all("*");
    const RQ_PrimitiveHandle merged = bare->attributeMerge(*cells, &all, nullptr, &all, nullptr);
    EXPECT_EQ(merged->getUniformAttributes()->get("cell"), cells->getUniformAttributes()->get("cell"));
    EXPECT_FALSE(merged->getDetailAttributes());
    EXPECT_EQ(bare->attributeMerge(*cells, nullptr, nullptr, nullptr, nullptr), bare);
}

TEST(Cells, TellWhatDoesNotHoldTogether)
{
    const CellShape cube{kRow, {0, 1, 2, 3, 4, 5, 6, 7}};
    const RQ_CellMeshHandle mesh = makeCells(cube), kept = mesh->removeUnusedPoints();
    EXPECT_EQ(kept->getPointCount(), 8);
    EXPECT_EQ(kept->removeUnusedPoints(), kept);
    EXPECT_EQ(kept->computeVolume(BAS_Vec3f(0.0f), 0), 1.0);
    const std::pair<std::vector<int>, const char *> cases[] = {
        {{0, 1, 2, 3, 4, 5, 6, 7}, ""},
        {{0, 1, 2, 3, 4, 5, 6, 7, 8}, "vertex list has 9 entries, cells have 8 corners"},
        {{0, 1, 2, 3, 4, 5, 6, 12}, "corner 7 uses point 12, there are 12"},
        {{0, 1, 2, 3, -1, 5, 6, 7}, "corner 4 uses point -1, there are 12"},
    };
    for (const auto &[corners, fault] : cases)
    {
        std::string why;
        mesh->init(integers(corners), mesh->getPointAttributes());
        EXPECT_EQ(mesh->validate(&why), *fault == 0);
        EXPECT_EQ(why, fault);
        EXPECT_TRUE(mesh->getOuterFaces());
    }
    mesh->init(integers(cube.corners), mesh->getPointAttributes(), {}, oneAttribute("two", integers({1, 2})));
    EXPECT_FALSE(mesh->validate());
}

/// The tetrahedra and the hexahedra of a model.
std::vector<CellShape> readModel(const std::string &path)
{
    std::ifstream file(path);
    CellShape tets{{}, {}, 4}, hexes;
    std::vector<float> positions;
    int64_t count = 0, size = 0;
    const auto readPoints = [&](int perPoint) {
        for (int64_t i = 0, used = 0; i < count * perPoint; ++i, used = i % perPoint)
        {
            double value = 0;
            file >> value;
            if (used < 3)
                positions.push_back(float(value));
        }
    };
    const auto readCell = [&](int64_t each, int from, int references) {
        CellShape other, &into = each == 4 ? tets : each == 8 ? hexes : other;
        for (int64_t i = 0, point = 0; i < each + references && file >> point; ++i)
            if (i < each)
                into.corners.push_back(int(point) - from);
    };
    for (std::string word; file >> word;)
        if (word == "POINTS" && file >> count >> word)
            readPoints(3);
        else if (word == "Vertices" && file >> count)
            readPoints(4);
        else if (word == "CELLS" && file >> count >> size)
            while (count-- > 0 && file >> size)
                readCell(size, 0, 0);
        else if ((word == "Tetrahedra" || word == "Hexahedra") && file >> count)
            while (count-- > 0)
                readCell(word == "Tetrahedra" ? 4 : 8, 1, 1);
    tets.positions = hexes.positions = positions;
    return {tets, hexes};
}

/// The volume of a cell whichever way round it is, cut by the faces of its shape; faces of hexahedra may be bent.
double plainVolume(const CellShape &shape)
{
    double sum = 0.0;
    for (int64_t cell = 0; cell < shape.count(); ++cell)
    {
        CellShape one{shape.positions, {}, shape.each};
        one.corners.assign(shape.corners.begin() + cell * shape.each, shape.corners.begin() + (cell + 1) * shape.each);
        const double volume = makeCells(one)->computeVolume(BAS_Vec3f(0.0f), 0);
        EXPECT_GE(volume, 0.0);
        sum += volume;
    }
    return sum;
}

TEST(Cells, OfModelsFillTheirSurface)
{
    const std::string folder = std::string(RQ_DATA_DIR) + "/cells/";
    if (!std::ifstream(folder + "elbow2.mesh"))
        GTEST_SKIP() << "there are no models in " << folder;
    for (const char *name : {"elbow2.mesh", "beam-hex.vtk", "beam-tet.vtk", "escher.vtk", "cube_medium_hexa.mesh",
                             "cube_sphere.mesh", "matrix_fiber_rand.vtk", "unit_ball.mesh"})
        for (const CellShape &shape : readModel(folder + name))
        {
            SCOPED_TRACE(name);
            EXPECT_NEAR(makeCells(shape)->computeVolume(BAS_Vec3f(0.0f), 0), plainVolume(shape), 1e-5);
        }
}
}  // namespace
