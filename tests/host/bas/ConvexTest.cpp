#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>

#include <gtest/gtest.h>

#include <host/bas/Convex.h>
#include <host/bas/JSONValue.h>
#include <host/bas/predicates.h>
#include <tests/host/bas/polygons.h>

using namespace tests;

namespace
{
/// Keeps what a run emits.
class Pieces final : public BAS_Convex
{
public:
    Pieces(const Polygon &polygon, int limit, bool keepWhole) : polygon_(polygon) { run(limit, keepWhole); }

    int getPointCount() const override { return int(polygon_.size()); }
    BAS_Vec2d getPoint(int i) const override { return polygon_[i]; }
    void beginPolygon(int corners, bool forced) override
    {
        pieces.emplace_back();
        expected_ = corners;
        forcedPieces += forced;
    }
    void polyVertex(int corner) override { pieces.back().push_back(corner); }
    void endPolygon() override { EXPECT_EQ(int(pieces.back().size()), expected_); }

    std::vector<std::vector<int>> pieces;
    int forcedPieces = 0;

private:
    const Polygon &polygon_;
    int expected_ = 0;
};

/// Twice the signed area, good to 19 digits of the magnitude.
long double area2(const Polygon &polygon, const std::vector<int> &corners, long double &magnitude)
{
    const BAS_Vec2d &o = polygon[corners[0]];
    long double sum = 0;
    for (size_t i = 1; i + 1 < corners.size(); ++i)
    {
        const BAS_Vec2d &a = polygon[corners[i]], &b = polygon[corners[i + 1]];
        const long double left = ((long double)a.x - o.x) * ((long double)b.y - o.y);
        const long double right = ((long double)a.y - o.y) * ((long double)b.x - o.x);
        sum += left - right;
        magnitude += std::abs(left) + std::abs(right);
    }
    return sum;
}

std::vector<int> allCorners(const Polygon &polygon)
{
    std::vector<int> corners(polygon.size());
    for (size_t i = 0; i < corners.size(); ++i)
        corners[i] = int(i);
    return corners;
}

/// -1 for a clockwise polygon, else 1.
int directionOf(const Polygon &polygon)
{
    host::ExactSum sum;
    for (size_t i = 0, last = polygon.size() - 1; i < polygon.size(); last = i++)
    {
        sum.addProduct(polygon[last].x, polygon[i].y);
        sum.addProduct(-polygon[last].y, polygon[i].x);
    }
    return sum.leading() < 0.0 ? -1 : 1;
}

/// True when a line along an edge of one convex piece has the other on its outer side, or when the first is but a point.
bool apart(const Polygon &polygon, const std::vector<int> &a, const std::vector<int> &b, int direction)
{
    for (size_t i = 0; i < a.size(); ++i)
    {
        const BAS_Vec2d &p = polygon[a[i]], &q = polygon[a[(i + 1) % a.size()]];
        if (p != q && std::all_of(b.begin(), b.end(),
                                  [&](int corner) { return direction * host::orientation(p, q, polygon[corner]) <= 0.0; }))
            return true;
    }
    return std::all_of(a.begin(), a.end(), [&](int corner) { return polygon[corner] == polygon[a[0]]; });
}

/// What holds for every polygon that does not cross itself.  Returns the number of triangles without area.
int expectProperTriangles(const Polygon &polygon)
{
    const Pieces result(polygon, 3, false);
    EXPECT_EQ(result.pieces.size(), polygon.size() - 2);
    EXPECT_EQ(result.forcedPieces, 0);
    const int direction = directionOf(polygon);
    int flat = 0, turned = 0;
    long double magnitude = 0, sum = 0;
    for (const std::vector<int> &t : result.pieces)
    {
        EXPECT_EQ(t.size(), 3u);
        const double side = direction * host::orientation(polygon[t[0]], polygon[t[1]], polygon[t[2]]);
        flat += side == 0.0;
        turned += side < 0.0;
        sum += std::abs(area2(polygon, t, magnitude));
    }
    EXPECT_EQ(turned, 0);
    const long double whole = std::abs(area2(polygon, allCorners(polygon), magnitude));
    EXPECT_LE(std::abs(double(sum - whole)), 1e-12 * double(whole) + 1e-18 * double(magnitude));
    const size_t compared = polygon.size() <= 24 ? result.pieces.size() : 0;
    for (size_t i = 0; i < compared; ++i)
        for (size_t k = 0; k < i; ++k)
        {
            EXPECT_TRUE(apart(polygon, result.pieces[i], result.pieces[k], direction) ||
                        apart(polygon, result.pieces[k], result.pieces[i], direction))
                << "pieces " << k << " and " << i << " overlap";
        }
    return flat;
}

/// What holds for pieces of any polygon that does not cross itself.
void expectProperPieces(const Polygon &polygon, int limit)
{
    const Pieces result(polygon, limit, true);
    if (result.pieces.empty())
    {
        EXPECT_FALSE(result.isConcave());
        EXPECT_LE(int(polygon.size()), limit);
        return;
    }
    const int direction = directionOf(polygon);
    int triangles = 0;
    for (const std::vector<int> &piece : result.pieces)
    {
        const int size = int(piece.size());
        EXPECT_LE(size, limit);
        triangles += size - 2;
        for (int i = 0; i < size; ++i)
            EXPECT_GE(direction * host::orientation(polygon[piece[i]], polygon[piece[(i + 1) % size]],
                                                    polygon[piece[(i + 2) % size]]),
                      0.0);
    }
    EXPECT_EQ(triangles, int(polygon.size()) - 2);
}

struct Shape
{
    const char *what;
    Polygon polygon;
    bool concave;
    int flat;  // triangles without area
};

const double kNaN = std::numeric_limits<double>::quiet_NaN();

const Shape kShapes[] = {
    {"triangle", {{0, 0}, {1, 0}, {0, 1}}, false, 0},
    {"triangle without area", {{0, 0}, {1, 0}, {2, 0}}, true, 1},
    {"square", {{0, 0}, {1, 0}, {1, 1}, {0, 1}}, false, 0},
    {"clockwise square", {{0, 0}, {0, 1}, {1, 1}, {1, 0}}, false, 0},
    {"corners in one place", {{1, 2}, {1, 2}, {1, 2}, {1, 2}, {1, 2}}, false, 3},
    {"line there and back", {{0, 0}, {1, 0}, {3, 0}, {4, 0}, {2, 0}}, true, 3},
    {"line back and forth", {{0, 0}, {3, 0}, {1, 0}, {4, 0}, {2, 0}, {5, 0}}, true, 4},
    {"straight corners", {{0, 0}, {1, 0}, {2, 0}, {3, 0}, {3, 1}, {3, 2}, {1, 2}, {0, 2}, {0, 1}}, false, 0},
    {"triangle with straight sides", {{0, 0}, {1, 0}, {2, 0}, {1, 1}, {0, 2}, {0, 1}}, false, 0},
    {"triangle with one straight corner", {{0, 0}, {1, 0}, {2, 0}, {0, 2}}, false, 0},
    {"repeated corners", {{0, 0}, {0, 0}, {2, 0}, {2, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 2}}, false, 4},
    {"dart", {{0, 0}, {2, 1}, {0, 2}, {0.5, 1}}, true, 0},
    {"dart with a straight inner corner", {{0, 0}, {2, 1}, {0, 2}, {0, 1}}, false, 0},
    {"L", {{0, 0}, {2, 0}, {2, 1}, {1, 1}, {1, 2}, {0, 2}}, true, 0},
    {"corner on a diagonal", {{0, 0}, {4, 0}, {4, 4}, {2, 2}, {0, 4}}, true, 0},
    {"corner on an edge", {{0, 0}, {4, 0}, {4, 4}, {2, 0}, {0, 4}}, true, 1},
    {"keyhole", {{0, 0}, {4, 0}, {4, 4}, {0, 4}, {0, 0}, {1, 1}, {1, 3}, {3, 3}, {3, 1}, {1, 1}}, true, 0},
    {"slit from a corner", {{0, 0}, {4, 0}, {4, 4}, {0, 4}, {0, 0}, {2, 1}}, true, 0},
    {"spike outwards", {{0, 0}, {2, 0}, {4, 0}, {2, 0}, {2, 2}, {0, 2}}, true, 2},
    {"bent spike outwards", {{0, 0}, {2, 0}, {4, 0}, {5, 1}, {4, 0}, {2, 0}, {2, 2}, {0, 2}}, true, 4},
    {"two squares that meet in a point", {{0, 0}, {1, 0}, {1, 1}, {2, 1}, {2, 2}, {1, 2}, {1, 1}, {0, 1}}, true, 2},
    {"two squares joined by a bent passage without width",
     {{0, 0}, {1, 0}, {1, 1}, {3, 1}, {3, 3}, {4, 3}, {4, 4}, {3, 4}, {3, 3}, {3, 1}, {1, 1}, {0, 1}},
     true,
     6},
    {"hole that fills all but a corner", {{0, 0}, {4, 0}, {4, 4}, {4, 2}, {2, 2}, {2, 4}, {4, 4}, {0, 4}}, true, 2},
};

TEST(Convex, KnowsTheNamedShapes)
{
    for (const Shape &shape : kShapes)
        for (const bool reversed : {false, true})
        {
            SCOPED_TRACE(std::string(shape.what) + (reversed ? ", reversed" : ""));
            Polygon polygon = shape.polygon;
            if (reversed)
                std::reverse(polygon.begin(), polygon.end());
            EXPECT_EQ(expectProperTriangles(polygon), shape.flat);
            EXPECT_EQ(Pieces(polygon, 3, false).isConcave(), shape.concave);
            for (const int limit : {3, 4, 5, 100})
                expectProperPieces(polygon, limit);
            EXPECT_EQ(Pieces(polygon, 100, true).pieces.empty(), !shape.concave);
        }
}

TEST(Convex, CutsWhatCrossesItselfIntoAsManyTriangles)
{
    const Shape crossing[] = {
        {"bow tie", {{0, 0}, {2, 2}, {2, 0}, {0, 2}}, true, 0},
        {"pentagram", {{0, 3}, {-2, -3}, {3, 1}, {-3, 1}, {2, -3}}, true, 0},
        {"walked twice", {{0, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 0}, {2, 0}, {2, 2}, {0, 2}}, true, 0},
        {"not a number", {{0, 0}, {kNaN, 0}, {1, 1}, {0, 1}, {-1, 0.5}}, false, 0},
        {"infinite", {{0, 0}, {1, 0}, {1, std::numeric_limits<double>::infinity()}, {0, 1}}, false, 0},
    };
    for (const Shape &shape : crossing)
    {
        SCOPED_TRACE(shape.what);
        const Pieces result(shape.polygon, 3, false);
        EXPECT_EQ(result.pieces.size(), shape.polygon.size() - 2);
        EXPECT_EQ(result.isConcave(), shape.concave);
        long double magnitude = 0, sum = 0;
        for (const std::vector<int> &t : result.pieces)
            sum += area2(shape.polygon, t, magnitude);
        if (shape.concave)
        {
            EXPECT_NEAR(double(sum), double(area2(shape.polygon, allCorners(shape.polygon), magnitude)), 1e-12);
        }
    }
    for (int corners = 0; corners < 3; ++corners)
        EXPECT_TRUE(Pieces(Polygon(corners, BAS_Vec2d(1, 2)), 3, false).pieces.empty());
}

TEST(Convex, CutsGeneratedPolygons)
{
    for (unsigned seed = 0; seed < 4000; ++seed)
    {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        Polygon polygon;
        switch (seed % 8)
        {
        case 0:
            polygon = randomStar(random, 5 + int(random() % 60), 0.02);
            break;
        case 1:
            polygon = randomStar(random, 5 + int(random() % 12), 0.4);
            break;
        case 2:
            polygon = randomStar(random, 5 + int(random() % 100), 1.0 - 1e-9);
            break;
        case 3:
            polygon = spiral(120 + int(random() % 200), 1 + int(random() % 4));
            break;
        case 4:
            polygon = comb(1 + int(random() % 30));
            break;
        default:
            polygon = tornPatch(random, 1 + int(random() % 7), 1 + int(random() % 7), 1 + int(random() % 60));
            break;
        }
        if (seed % 8 == 7)
            polygon = withRepeats(random, polygon);
        if (seed % 8 < 4 && seed % 16 >= 8)
            polygon = moved(polygon, std::pow(10.0, uniform(random, -6.0, 6.0)), uniform(random, -1e6, 1e6), 1e6,
                            uniform(random, 0.0, 6.0));
        if (seed % 3 == 2)
            std::reverse(polygon.begin(), polygon.end());
        const int flat = expectProperTriangles(polygon);
        if (seed % 8 >= 3 && seed % 8 <= 6)
        {
            EXPECT_EQ(flat, 0);
        }
        expectProperPieces(polygon, 3 + int(random() % 9));
        if (HasFailure())
            return;
    }
}

TEST(Convex, CutsLargePolygons)
{
    Random random(1);
    const Polygon large[] = {randomStar(random, 100000, 0.01), spiral(100000, 150), comb(40000),
                             withRuns(random, tornPatch(random, 60, 60, 6000))};
    for (const Polygon &polygon : large)
    {
        SCOPED_TRACE(polygon.size());
        expectProperTriangles(polygon);
    }
    Polygon crossing, places;
    for (int i = 0; i < 100000; ++i)
    {
        crossing.emplace_back(uniform(random, 0, 1), uniform(random, 0, 1));
        places.emplace_back(i % 2, i % 3);
    }
    EXPECT_EQ(Pieces(crossing, 3, false).pieces.size(), crossing.size() - 2);
    EXPECT_EQ(Pieces(places, 3, false).pieces.size(), places.size() - 2);
}

TEST(Convex, DoesNotDependOnTheScale)
{
    for (unsigned seed = 0; seed < 200; ++seed)
    {
        Random random(seed);
        const Polygon polygon =
            seed % 2 ? randomStar(random, 5 + int(seed) / 2, 0.2) : tornPatch(random, 5, 5, int(seed) / 4 + 2);
        const Pieces result(polygon, 5, true);
        for (const double scale : {0x1p-30, 0x1p40, 0x1p-300, 0x1p400, 0x1p600})
            EXPECT_EQ(Pieces(moved(polygon, scale, 0.0, 0.0, 0.0), 5, true).pieces, result.pieces) << "seed " << seed;
    }
}

TEST(Convex, CutsConvexPolygonsInAsFewPiecesAsCanBe)
{
    for (int corners = 4; corners < 40; ++corners)
        for (int limit = 4; limit < 12; ++limit)
        {
            Polygon polygon;
            for (int i = 0; i < corners; ++i)
                polygon.emplace_back(std::cos(2.0 * M_PI * i / corners), std::sin(2.0 * M_PI * i / corners));
            expectProperPieces(polygon, limit);
            const int fewest = corners <= limit ? 0 : (corners - 2 + limit - 3) / (limit - 2);
            EXPECT_EQ(int(Pieces(polygon, limit, true).pieces.size()), fewest) << corners << " corners by " << limit;
        }
}

TEST(Convex, StopsWhenTold)
{
    class Impatient final : public BAS_Convex
    {
    public:
        int getPointCount() const override { return 100; }
        BAS_Vec2d getPoint(int i) const override { return {std::cos(0.06 * i), std::sin(0.06 * i)}; }
        void beginPolygon(int, bool) override { ++pieces; }
        void polyVertex(int) override {}
        bool earlyTermination() override { return pieces == 7; }
        int pieces = 0;
    };
    Impatient polygon;
    polygon.run(3, false);
    EXPECT_EQ(polygon.pieces, 7);
}

TEST(Convex, TellsWhichDiagonalSplitsAQuad)
{
    const BAS_Vec3d a(0, 0, 0), b(1, 0, 0), c(1, 1, 0), d(0, 1, 0);
    EXPECT_TRUE(BAS_Convex::canSplitQuad02(a, b, c, d));
    EXPECT_TRUE(BAS_Convex::canSplitQuad02(a, b, BAS_Vec3d(1, 1, 0.5), d)) << "not planar";
    EXPECT_FALSE(BAS_Convex::canSplitQuad02(BAS_Vec3d(0, 3, 0), b, BAS_Vec3d(0, 0.5, 0), BAS_Vec3d(-1, 0, 0)) &&
                 BAS_Convex::canSplitQuad02(b, BAS_Vec3d(0, 0.5, 0), BAS_Vec3d(-1, 0, 0), BAS_Vec3d(0, 3, 0)))
        << "concave: one of the two diagonals lies outside";
    EXPECT_FALSE(BAS_Convex::canSplitQuad02(a, b, BAS_Vec3d(2, 0, 0), d)) << "a corner on the diagonal";
}

int windingOf(const Polygon &ring, const BAS_Vec2d &p)
{
    int winding = 0;
    for (size_t i = 0; i < ring.size(); ++i)
    {
        const BAS_Vec2d &u = ring[i], &v = ring[(i + 1) % ring.size()];
        if ((u.y > p.y) != (v.y > p.y))
            winding += v.y > u.y ? host::orientation(u, v, p) > 0.0 : -int(host::orientation(u, v, p) < 0.0);
    }
    return winding;
}

/// The first ring with the others joined to it by edges walked twice; false when some ring cannot be joined without touching
/// others.
bool joinRings(std::vector<Polygon> rings, Polygon &joined)
{
    for (size_t i = 0; i < rings.size(); ++i)
        if (directionOf(rings[i]) != (i == 0 ? 1 : -1))
            std::reverse(rings[i].begin(), rings[i].end());
    joined = rings[0];
    const auto inCone = [](const Polygon &ring, size_t i, const BAS_Vec2d &p) {
        const size_t n = ring.size();
        const BAS_Vec2d &before = ring[(i + n - 1) % n], &here = ring[i], &after = ring[(i + 1) % n];
        const bool leftOfIn = host::orientation(before, here, p) > 0.0, leftOfOut = host::orientation(here, after, p) > 0.0;
        return host::orientation(before, here, after) > 0.0 ? leftOfIn && leftOfOut : leftOfIn || leftOfOut;
    };
    const auto hits = [](const Polygon &ring, const BAS_Vec2d &p, const BAS_Vec2d &q) {
        for (size_t i = 0; i < ring.size(); ++i)
        {
            const BAS_Vec2d &u = ring[i], &v = ring[(i + 1) % ring.size()];
            const double sideU = host::orientation(p, q, u), sideV = host::orientation(p, q, v);
            const double sideP = host::orientation(u, v, p), sideQ = host::orientation(u, v, q);
            const bool meetsAtEnd = u == p || v == p || u == q || v == q;
            if (!meetsAtEnd && sideU * sideV <= 0.0 && sideP * sideQ <= 0.0)
                return true;
            if (meetsAtEnd && sideU == 0.0 && sideV == 0.0)
                return true;
        }
        return false;
    };
    const auto isInside = [&](const BAS_Vec2d &p) {
        int winding = 0;
        for (const Polygon &ring : rings)
            winding += windingOf(ring, p);
        return winding == 1;
    };
    std::vector<Polygon> holes(rings.begin() + 1, rings.end());
    // Where several rings meet in a point a bridge could leave from the wrong one.
    const auto isAlone = [&](const BAS_Vec2d &p) {
        int64_t visits = std::count(joined.begin(), joined.end(), p);
        for (const Polygon &hole : holes)
            visits += std::count(hole.begin(), hole.end(), p);
        return visits == 1;
    };
    while (!holes.empty())
    {
        bool found = false;
        for (size_t h = 0; h < holes.size() && !found; ++h)
            for (size_t k = 0; k < holes[h].size() && !found; ++k)
                for (size_t i = 0; i < joined.size() && !found; ++i)
                {
                    const BAS_Vec2d p = joined[i], q = holes[h][k];
                    if (!isAlone(p) || !isAlone(q) || !isInside((p + q) * 0.5) || !inCone(joined, i, q) ||
                        !inCone(holes[h], k, p) || hits(joined, p, q) ||
                        std::any_of(holes.begin(), holes.end(), [&](const Polygon &hole) { return hits(hole, p, q); }))
                        continue;
                    Polygon &hole = holes[h];
                    std::rotate(hole.begin(), hole.begin() + k, hole.end());
                    hole.push_back(q);
                    hole.push_back(p);
                    joined.insert(joined.begin() + i + 1, hole.begin(), hole.end());
                    holes.erase(holes.begin() + h);
                    found = true;
                }
        if (!found)
            return false;
    }
    return true;
}

bool crossesItself(const Polygon &polygon)
{
    const size_t n = polygon.size();
    for (size_t i = 0; i < n; ++i)
        for (size_t k = 0; k < i; ++k)
        {
            const BAS_Vec2d &p = polygon[i], &q = polygon[(i + 1) % n], &u = polygon[k], &v = polygon[(k + 1) % n];
            if (host::orientation(p, q, u) * host::orientation(p, q, v) < 0.0 &&
                host::orientation(u, v, p) * host::orientation(u, v, q) < 0.0)
                return true;
        }
    return false;
}

bool readRings(const std::filesystem::path &path, std::vector<Polygon> &rings)
{
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    BAS_JSONValue value;
    std::string error;
    if (!BAS_JSONValue::parse(text.str(), value, error) || !value.array())
        return false;
    for (const BAS_JSONValue &ring : *value.array())
    {
        rings.emplace_back();
        for (const BAS_JSONValue &point : *ring.array())
        {
            BAS_Vec2d p;
            (*point.array())[0].number(p.x);
            (*point.array())[1].number(p.y);
            rings.back().push_back(p);
        }
    }
    return !rings.empty();
}

TEST(Convex, CutsRingsThatBrokeOthers)
{
    const std::filesystem::path folder = std::filesystem::path(RQ_DATA_DIR) / "ngon/rings";
    if (!std::filesystem::exists(folder))
        GTEST_SKIP() << "no " << folder;
    int joinable = 0;
    for (const auto &entry : std::filesystem::directory_iterator(folder))
    {
        SCOPED_TRACE(entry.path().filename().string());
        std::vector<Polygon> rings;
        if (!readRings(entry.path(), rings))
            continue;
        Polygon joined;
        size_t corners = 0;
        for (const Polygon &ring : rings)
            corners += ring.size();
        if (corners < 1500 && joinRings(rings, joined) && !crossesItself(joined))
        {
            ++joinable;
            expectProperTriangles(joined);
        }
        else
            EXPECT_EQ(Pieces(rings[0], 3, false).pieces.size(), rings[0].size() - 2);
    }
    EXPECT_GT(joinable, 30);
}
}  // namespace
