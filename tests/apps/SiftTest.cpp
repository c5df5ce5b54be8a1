#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include <apps/viewport/GLContext.h>
#include <apps/viewport/Target.h>
#include <apps/viewport/siftTriangles.h>
#include <tests/rq/surface/Fixture.h>

namespace
{
using namespace rq::viewport;
using namespace tests;

constexpr float kNone = std::numeric_limits<float>::quiet_NaN();

/// A rough sheet of about 180,000 triangles that is folded into itself, with a few points that lie nowhere or far away.
struct Sheet
{
    static constexpr int kCells = 300;
    std::vector<float> points, colours;
    std::vector<int> corners;

    Sheet()
    {
        std::mt19937 random(7);
        std::uniform_real_distribution<float> shift(-0.01f, 0.01f);
        for (int j = 0; j <= kCells; ++j)
            for (int i = 0; i <= kCells; ++i)
            {
                const float x = float(i) / kCells - 0.5f, y = float(j) / kCells - 0.5f;
                points.insert(points.end(),
                              {x + shift(random), y + shift(random), 0.3f * std::sin(9.0f * x * y) + shift(random)});
                colours.insert(colours.end(), {x + 0.5f, y + 0.5f, 0.5f});
            }
        points[3 * 5000] = kNone;
        points[3 * 6000 + 1] = std::numeric_limits<float>::infinity();
        points[3 * 7000 + 2] = 3000.0f;
        points[3 * 8000] = -1e6f;
        for (int cell = 0; cell < kCells * kCells; ++cell)
        {
            const int a = cell / kCells * (kCells + 1) + cell % kCells, above = a + kCells + 1;
            corners.insert(corners.end(), {a, a + 1, above, above, a + 1, above + 1});
        }
    }

    /// The sheet in so many primitives, one after the other.
    std::vector<Shown> in(size_t pieces, RQ_Owner colourOwner) const
    {
        const RQ_AttributeListHandle list = oneAttribute("P", positions(points));
        const RQ_DataArrayHandle array = makeArray(colours, 3, RQ_TYPE_COLOR);
        std::vector<Shown> shown;
        for (size_t piece = 0, length = corners.size() / pieces; piece < pieces; ++piece)
        {
            const std::vector<int> own(corners.begin() + long(piece * length), corners.begin() + long((piece + 1) * length));
            const RQ_DataArrayHandle counts = integers(std::vector<int>(own.size() / 3, 3));
            RQ_AttributeListHandle ofFaces;
            if (colourOwner == RQ_OWNER_UNIFORM)
            {
                std::vector<float> values;
                for (size_t i = 0; i < own.size(); i += 3)
                    values.insert(values.end(), colours.begin() + 3 * own[i], colours.begin() + 3 * own[i] + 3);
                ofFaces = oneAttribute("Cd", makeArray(values, 3, RQ_TYPE_COLOR));
            }
            const RQ_AttributeListHandle ofPoints = ofFaces ? list : list->addAttribute("Cd", array, true);
            shown.push_back(
                {RQ_PrimitiveHandle(new RQ_PrimPolygonMesh(counts, integers(own), ofPoints, nullptr, ofFaces)), {}});
        }
        return shown;
    }
};
}  // namespace

// Small meshes are drawn whole, so a large one looks the same in pieces.
TEST(Sifting, LeavesPicturesAsTheyAre)
{
    constexpr int kWidth = 150, kHeight = 110;
    std::string error;
    const std::unique_ptr<GLContext> context = GLContext::create(error);
    if (!context)
        GTEST_SKIP() << error;
    const std::unique_ptr<Display> display = Display::create(error);
    ASSERT_TRUE(display) << error;
    const Sheet sheet;
    Preparation flat;
    flat.shading = Shading::Flat;
    const struct
    {
        const char *what;
        double azimuth, elevation, zoom;
        int samples;
        bool faces, wire;
        RQ_Owner colours;
        double most;  // of the triangles that the driver is given
    } kCases[] = {
        {"from the front", 10, 5, 1, 1, true, false, RQ_OWNER_POINT, 0.5},
        {"from behind, coloured by face", 190, 5, 1, 1, true, false, RQ_OWNER_UNIFORM, 0.5},
        {"edges", 30, 40, 2, 1, true, true, RQ_OWNER_POINT, 0.75},
        {"edges alone, from near", 70, 20, 6, 1, false, true, RQ_OWNER_POINT, 0.6},
        {"from within", 80, 3, 40, 1, true, false, RQ_OWNER_POINT, 0.5},
        {"from within, closely", 45, 15, 500, 1, true, false, RQ_OWNER_POINT, 0.5},
        {"several samples", 10, 5, 1, 4, true, false, RQ_OWNER_POINT, 1.0},
    };
    for (const auto &c : kCases)
    {
        SCOPED_TRACE(c.what);
        const std::unique_ptr<Target> target = Target::create(kWidth, kHeight, c.samples, error);
        ASSERT_TRUE(target) << error;
        OrbitCamera camera;
        camera.setAngles(c.azimuth, c.elevation);
        camera.frame({BAS_Vec3f(-0.5f), BAS_Vec3f(0.5f)}, double(kWidth) / kHeight);
        camera.zoom(c.zoom);
        DrawStyle style;
        style.faces = c.faces;
        style.wire = c.wire;
        Picture pictures[2];
        int64_t drawn[2];
        for (const size_t pieces : {1, 2})
        {
            display->setScene(Scene::make(sheet.in(pieces, c.colours), flat));
            target->bind();
            ASSERT_TRUE(display->draw(camera, style, kWidth, kHeight, &error)) << error;
            pictures[pieces - 1] = target->read();
            drawn[pieces - 1] = display->statistics().trianglesDrawn;
            EXPECT_EQ(display->statistics().triangles, int64_t(sheet.corners.size() / 3));
        }
        EXPECT_EQ(drawn[1], int64_t(sheet.corners.size() / 3));
        EXPECT_LE(double(drawn[0]) / double(drawn[1]), hasGraphicsCard() ? 1.0 : c.most);
        EXPECT_TRUE(pictures[0].pixels == pictures[1].pixels);
    }
}

TEST(Sifting, KeepsWhatMayHoldTheMiddleOfAPixel)
{
    // Four pixels a side, whose middles lie at odd quarters, and positions as clip space has them.
    const struct
    {
        const char *what;
        std::vector<float> points;
        bool isKept;
    } kCases[] = {
        {"around a middle", {0.2f, 0.2f, 0, 0.3f, 0.2f, 0, 0.25f, 0.3f, 0}, true},
        {"the same from behind", {0.2f, 0.2f, 0, 0.25f, 0.3f, 0, 0.3f, 0.2f, 0}, true},
        {"a corner on a middle", {0.25f, 0.25f, 0, 0.3f, 0.25f, 0, 0.3f, 0.3f, 0}, true},
        {"between middles", {0.3f, 0.3f, 0, 0.6f, 0.3f, 0, 0.5f, 0.6f, 0}, false},
        {"long and between rows", {-0.9f, 0.1f, 0, 0.9f, 0.1f, 0, 0.0f, 0.12f, 0}, false},
        {"the same across the frame", {-0.9f, 0.1f, 0, 1.5f, 0.1f, 0, 0.0f, 0.12f, 0}, true},
        {"right of the picture", {1.1f, -0.9f, 0, 1.6f, -0.9f, 0, 1.1f, 0.9f, 0}, false},
        {"above it", {-0.9f, 1.1f, 0, 0.9f, 1.1f, 0, 0, 1.6f, 0}, false},
        {"around all of it", {-9, -9, 0, 9, -9, 0, 0, 20, 0}, true},
        {"too near", {0.2f, 0.2f, -2, 0.3f, 0.2f, -2, 0.25f, 0.3f, -2}, false},
        {"too near to too far, where no middle is", {0.3f, 0.3f, -2, 0.4f, 0.3f, 2, 0.35f, 0.4f, 2}, true},
        {"a point nowhere", {0.3f, 0.3f, 0, kNone, 0.3f, 0, 0.35f, 0.4f, 0}, true},
        {"nowhere at all", std::vector<float>(9, kNone), true},
    };
    const int32_t corners[] = {0, 1, 2};
    for (const auto &c : kCases)
        for (const CornerName name : {CornerName::Point, CornerName::Place})
            EXPECT_EQ(siftTriangles({c.points.data(), 3, 3, corners, 1}, {{}, {}, 4, 4}, name).size(), c.isKept ? 3u : 0u)
                << c.what;
}
