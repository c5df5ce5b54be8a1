#include <algorithm>
#include <filesystem>
#include <fstream>
#include <limits>
#include <numeric>
#include <sstream>

#include <gtest/gtest.h>

#include <host/bas/Convex.h>
#include <host/bas/JSONValue.h>
#include <host/bas/predicates.h>
#include <tests/host/bas/polygons.h>

using namespace tests;

namespace
{
/// Keeps what a run emits, and stops it behind `most` pieces.
class Pieces final : public BAS_Convex
{
public:
    Pieces(const Polygon &polygon, int limit, bool keepWhole, size_t most = SIZE_MAX) : polygon_(polygon), most_(most)
    {
        run(limit, keepWhole);
    }

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
    bool earlyTermination() override { return pieces.size() >= most_; }

    std::vector<std::vector<int>> pieces;
    int forcedPieces = 0;

private:
    const Polygon &polygon_;
    size_t most_;
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
    std::iota(corners.begin(), corners.end(), 0);
    return corners;
}

/// -1 for a clockwise polygon, else 1.
int directionOf(const Polygon &polygon)
{
    long double magnitude = 0;
    return area2(polygon, allCorners(polygon), magnitude) < 0 ? -1 : 1;
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

/// What holds for the pieces of every polygon that does not cross itself.  Returns the number of pieces without area.
int expectProperPieces(const Polygon &polygon, int limit = 3, bool keepWhole = false)
{
    const Pieces result(polygon, limit, keepWhole);
    if (result.pieces.empty())
    {
        EXPECT_TRUE(keepWhole && !result.isConcave() && int(polygon.size()) <= limit);
        return 0;
    }
    EXPECT_EQ(result.forcedPieces, 0);
    const int direction = directionOf(polygon);
    int flat = 0, turned = 0;
    size_t triangles = 0;
    long double magnitude = 0, sum = 0;
    for (const std::vector<int> &piece : result.pieces)
    {
        const size_t size = piece.size();
        EXPECT_LE(int(size), limit);
        triangles += size - 2;
        bool hasArea = false;
        for (size_t i = 0; i < size; ++i)
        {
            const BAS_Vec2d &p = polygon[piece[i]], &q = polygon[piece[(i + 1) % size]];
            const double side = direction * host::orientation(p, q, polygon[piece[(i + 2) % size]]);
            turned += side < 0.0;
            hasArea |= side > 0.0;
        }
        flat += !hasArea;
        sum += std::abs(area2(polygon, piece, magnitude));
    }
    EXPECT_EQ(triangles, polygon.size() - 2);
    EXPECT_EQ(turned, 0);
    const long double whole = std::abs(area2(polygon, allCorners(polygon), magnitude));
    EXPECT_LE(std::abs(double(sum - whole)), 1e-12 * double(whole) + 1e-18 * double(magnitude));
    // All pairs of few pieces; of many, some.
    const size_t count = result.pieces.size(), step = count <= 12 ? 1 : 1 + count * count / 200;
    for (size_t pair = 0; pair < count * count; pair += step)
        if (const size_t i = pair / count, k = pair % count; i != k)
        {
            EXPECT_TRUE(apart(polygon, result.pieces[i], result.pieces[k], direction) ||
                        apart(polygon, result.pieces[k], result.pieces[i], direction))
                << "pieces " << k << " and " << i << " overlap";
        }
    return flat;
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
    {"corners in one place", {{1, 2}, {1, 2}, {1, 2}, {1, 2}, {1, 2}}, false, 3},
    {"straight corners", {{0, 0}, {1, 0}, {2, 0}, {3, 0}, {3, 1}, {3, 2}, {1, 2}, {0, 2}, {0, 1}}, false, 0},
    {"repeated corners", {{0, 0}, {0, 0}, {2, 0}, {2, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 2}}, false, 4},
    {"dart", {{0, 0}, {2, 1}, {0, 2}, {0.5, 1}}, true, 0},
    {"L", {{0, 0}, {2, 0}, {2, 1}, {1, 1}, {1, 2}, {0, 2}}, true, 0},
    {"corner on a diagonal", {{0, 0}, {4, 0}, {4, 4}, {2, 2}, {0, 4}}, true, 0},
    {"corner on an edge", {{0, 0}, {4, 0}, {4, 4}, {2, 0}, {0, 4}}, true, 1},
    {"keyhole", {{0, 0}, {4, 0}, {4, 4}, {0, 4}, {0, 0}, {1, 1}, {1, 3}, {3, 3}, {3, 1}, {1, 1}}, true, 0},
    {"bent spike outwards", {{0, 0}, {2, 0}, {4, 0}, {5, 1}, {4, 0}, {2, 0}, {2, 2}, {0, 2}}, true, 4},
    {"two squares that meet in a point", {{0, 0}, {1, 0}, {1, 1}, {2, 1}, {2, 2}, {1, 2}, {1, 1}, {0, 1}}, true, 2},
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
            EXPECT_EQ(expectProperPieces(polygon), shape.flat);
            EXPECT_EQ(Pieces(polygon, 3, false).isConcave(), shape.concave);
            for (const int limit : {3, 4, 5, 100})
                expectProperPieces(polygon, limit, true);
            EXPECT_EQ(Pieces(polygon, 100, true).pieces.empty(), !shape.concave);
        }
}

TEST(Convex, CutsWhatCrossesItselfIntoAsManyTriangles)
{
    const Shape crossing[] = {
        {"bow tie", {{0, 0}, {2, 2}, {2, 0}, {0, 2}}, true, 0},
        {"pentagram", {{0, 3}, {-2, -3}, {3, 1}, {-3, 1}, {2, -3}}, true, 0},
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

struct Generator
{
    const char *what;
    Polygon (*make)(Random &random);
    bool mayBeFlat;  // some triangles cannot have an area, or rounding takes it
};

int between(Random &random, int low, int high) { return low + int(random() % unsigned(high - low + 1)); }

const Generator kGenerators[] = {
    {"random", [](Random &r) { return tornPatch(r, 4, 4, between(r, 2, 12), 0.2); }, false},
    {"star", [](Random &r) { return randomStar(r, between(r, 5, 30), 0.001 * between(r, 5, 999)); }, true},
    {"spiral", [](Random &r) { return spiral(between(r, 20, 50), 1); }, false},
    {"comb", [](Random &r) { return comb(r, between(r, 1, 7)); }, true},
    {"keyhole", [](Random &r) { return keyhole(r, between(r, 5, 12)); }, false},
    {"collinear", [](Random &r) { return tornPatch(r, between(r, 1, 4), between(r, 1, 4), between(r, 1, 20)); }, false},
    {"repeated", [](Random &r) { return withRepeats(r, tornPatch(r, 3, 3, between(r, 1, 10), 0.2)); }, true},
    {"nearly degenerate", [](Random &r) { return nearlyStraight(r, between(r, 3, 10)); }, true},
};

TEST(Convex, CutsGeneratedPolygons)
{
    for (unsigned seed = 0; seed < 100000; ++seed)
    {
        Random random(seed);
        const Generator &generator = kGenerators[seed % std::size(kGenerators)];
        SCOPED_TRACE(std::string(generator.what) + ", seed " + std::to_string(seed));
        Polygon polygon = generator.make(random);
        const bool isMoved = random() % 4 == 0;
        if (isMoved)
        {
            const double scale = std::pow(10.0, uniform(random, -6.0, 6.0));
            polygon = moved(polygon, scale, scale * uniform(random, -1e4, 1e4), scale * 1e4, uniform(random, 0.0, 6.0));
        }
        if (random() % 2)
            std::reverse(polygon.begin(), polygon.end());
        const int limit = random() % 2 ? 3 : between(random, 4, 12);
        const int flat = expectProperPieces(polygon, limit, limit > 3);
        EXPECT_TRUE(flat == 0 || isMoved || generator.mayBeFlat) << flat;
        const double scale = std::ldexp(1.0, between(random, -600, 600));
        EXPECT_EQ(Pieces(moved(polygon, scale, 0.0, 0.0, 0.0), limit, true).pieces, Pieces(polygon, limit, true).pieces);
        if (HasFailure())
            return;
    }
}

TEST(Convex, CutsLargePolygons)
{
    Random random(1);
    const Polygon large[] = {randomStar(random, 100000, 0.01), spiral(100000, 150), tornPatch(random, 60, 60, 6000)};
    for (const Polygon &polygon : large)
    {
        SCOPED_TRACE(polygon.size());
        expectProperPieces(polygon);
    }
    Polygon crossing;
    for (int i = 0; i < 100000; ++i)
        crossing.emplace_back(uniform(random, 0, 1), uniform(random, 0, 1));
    EXPECT_EQ(Pieces(crossing, 3, false).pieces.size(), crossing.size() - 2);
}

TEST(Convex, CutsConvexPolygonsInAsFewPiecesAsCanBe)
{
    for (int corners = 4; corners < 40; ++corners)
        for (int limit = 4; limit < 12; ++limit)
        {
            Random random(corners);
            const Polygon polygon = randomStar(random, corners, 1.0);
            const int fewest = corners <= limit ? 0 : (corners - 2 + limit - 3) / (limit - 2);
            EXPECT_EQ(int(Pieces(polygon, limit, true).pieces.size()), fewest) << corners << " corners by " << limit;
        }
}

/// True when the polygon has an edge that crosses the one from `p` to `q`; if `touches`, also when it meets its inside.
bool hits(const Polygon &polygon, const BAS_Vec2d &p, const BAS_Vec2d &q, bool touches)
{
    for (size_t i = 0; i < polygon.size(); ++i)
    {
        const BAS_Vec2d &u = polygon[i], &v = polygon[(i + 1) % polygon.size()];
        const double sideU = host::orientation(p, q, u), sideV = host::orientation(p, q, v);
        const double sides = sideU * sideV, otherSides = host::orientation(u, v, p) * host::orientation(u, v, q);
        const bool meetsAtEnd = u == p || v == p || u == q || v == q;
        const bool touched = meetsAtEnd ? sideU == 0.0 && sideV == 0.0 : sides <= 0.0 && otherSides <= 0.0;
        if (touches ? touched : sides < 0.0 && otherSides < 0.0)
            return true;
    }
    return false;
}

/// The fewest convex pieces without new corners, by trying every cut.  Right for polygons without straight corners.
size_t fewestPieces(const Polygon &polygon)
{
    if (!Pieces(polygon, int(polygon.size()), true).isConcave())
        return 1;
    size_t fewest = polygon.size() - 2;
    for (size_t i = 0; i < polygon.size(); ++i)
        for (size_t k = i + 2; k < polygon.size() - (i == 0); ++k)
        {
            const Polygon inner(polygon.begin() + i, polygon.begin() + k + 1);
            Polygon outer(polygon.begin(), polygon.begin() + i + 1);
            outer.insert(outer.end(), polygon.begin() + k, polygon.end());
            // A cut outside of the polygon turns one side over.
            if (directionOf(inner) > 0 && directionOf(outer) > 0 && !hits(polygon, polygon[i], polygon[k], true))
                fewest = std::min(fewest, fewestPieces(inner) + fewestPieces(outer));
        }
    return fewest;
}

TEST(Convex, NeedsAtMostFourTimesAsManyPiecesAsTheBest)
{
    for (unsigned seed = 0; seed < 400; ++seed)
    {
        Random random(seed);
        Polygon polygon = seed % 4 ? randomStar(random, between(random, 4, seed % 16 == 1 ? 10 : 8), 0.1)
                                   : comb(random, between(random, 1, 2));
        const size_t fewest = fewestPieces(polygon);
        if (random() % 2)
            std::reverse(polygon.begin(), polygon.end());
        const size_t pieces = std::max<size_t>(1, Pieces(polygon, 100, true).pieces.size());
        EXPECT_LE(pieces, 4 * fewest) << "seed " << seed;
    }
}

TEST(Convex, StopsWhenTold) { EXPECT_EQ(Pieces(spiral(200, 2), 3, false, 7).pieces.size(), 7u); }

/// Join a ring to the first, which it lies in, over an edge walked twice.  False when that would touch others.
bool joinOne(std::vector<Polygon> &rings)
{
    const auto canJoin = [&](const BAS_Vec2d &p, const BAS_Vec2d &q) {
        // Where several rings meet in a point a bridge could leave from the wrong one.
        int64_t visits = 0;
        for (const Polygon &ring : rings)
            visits += std::count(ring.begin(), ring.end(), p) + std::count(ring.begin(), ring.end(), q);
        return visits == 2 &&
               std::none_of(rings.begin(), rings.end(), [&](const Polygon &ring) { return hits(ring, p, q, true); });
    };
    Polygon &joined = rings[0];
    for (size_t h = 1; h < rings.size(); ++h)
        for (size_t k = 0; k < rings[h].size(); ++k)
            for (size_t i = 0; i < joined.size(); ++i)
            {
                Polygon &hole = rings[h];
                const BAS_Vec2d p = joined[i], q = hole[k];
                if (!canJoin(p, q))
                    continue;
                std::rotate(hole.begin(), hole.begin() + k, hole.end());
                hole.insert(hole.end(), {q, p});
                joined.insert(joined.begin() + i + 1, hole.begin(), hole.end());
                rings.erase(rings.begin() + h);
                return true;
            }
    return false;
}

/// Make one polygon of an outline and its holes.  False when that cannot be, or when edges cross.
bool joinRings(std::vector<Polygon> &rings)
{
    for (size_t i = 0; i < rings.size(); ++i)
        if (directionOf(rings[i]) != (i == 0 ? 1 : -1))
            std::reverse(rings[i].begin(), rings[i].end());
    while (rings.size() > 1)
        if (!joinOne(rings))
            return false;
    const Polygon &joined = rings[0];
    for (size_t i = 0; i < joined.size(); ++i)
        if (hits(joined, joined[i], joined[(i + 1) % joined.size()], false))
            return false;
    return true;
}

std::vector<Polygon> readRings(const std::filesystem::path &path)
{
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    BAS_JSONValue value;
    std::string error;
    std::vector<Polygon> rings;
    if (!BAS_JSONValue::parse(text.str(), value, error) || !value.array())
        return rings;
    for (const BAS_JSONValue &ring : *value.array())
    {
        Polygon &corners = rings.emplace_back();
        for (const BAS_JSONValue &point : *ring.array())
        {
            corners.emplace_back();
            (*point.array())[0].number(corners.back().x);
            (*point.array())[1].number(corners.back().y);
        }
    }
    return rings;
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
        std::vector<Polygon> rings = readRings(entry.path());
        size_t corners = 0;
        for (const Polygon &ring : rings)
            corners += ring.size();
        if (corners > 0 && corners < 1500 && joinRings(rings))
        {
            ++joinable;
            expectProperPieces(rings[0]);
        }
        else if (corners > 0)
        {
            EXPECT_EQ(Pieces(rings[0], 3, false).pieces.size(), rings[0].size() - 2);
        }
    }
    EXPECT_GT(joinable, 30);
}
}  // namespace
