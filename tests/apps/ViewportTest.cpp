#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include <apps/viewport/GLContext.h>
#include <apps/viewport/MaterialColours.h>
#include <apps/viewport/Target.h>
#include <rq/data/DAText.h>
#include <rq/prim/PrimInstance.h>
#include <rq/surface/PrimCurveMesh.h>
#include <rq/surface/PrimPointMesh.h>
#include <rq/surface/PrimSphereMesh.h>
#include <rq/surface/PrimSubdivisionMesh.h>
#include <tests/rq/surface/Fixture.h>

namespace
{
using namespace rq::viewport;
using namespace tests;

constexpr int kWidth = 96, kHeight = 64;

/// A camera that looks at things between -1 and 1 in x and y from the front.
OrbitCamera frontCamera()
{
    OrbitCamera camera;
    camera.setAngles(0.0, 0.0);
    camera.frame({BAS_Vec3f(-1.0f, -1.0f, -0.01f), BAS_Vec3f(1.0f, 1.0f, 0.01f)}, double(kWidth) / kHeight);
    return camera;
}

/// Mean of a rectangle, in parts of the picture from its upper left corner; 0 to 255.
BAS_Vec3d meanOf(const Picture &picture, double x0, double y0, double x1, double y1)
{
    BAS_Vec3d sum(0.0);
    int count = 0;
    for (int y = int(y0 * kHeight); y < int(y1 * kHeight); ++y)
        for (int x = int(x0 * kWidth); x < int(x1 * kWidth); ++x, ++count)
            for (int c = 0; c < 3; ++c)
                sum[c] += picture.at(x, y)[c];
    return sum / double(count);
}

/// The part of the picture that is not background.
double coverage(const Picture &picture, const DrawStyle &style = {})
{
    int covered = 0;
    for (int i = 0; i < kWidth * kHeight; ++i)
    {
        double difference = 0.0;
        for (int c = 0; c < 3; ++c)
            difference += std::abs(picture.pixels[size_t(3 * i + c)] - 255.0 * style.background[c]);
        covered += difference > 24.0;
    }
    return double(covered) / (kWidth * kHeight);
}

class Viewport : public testing::Test
{
protected:
    void SetUp() override
    {
        std::string error;
        context_ = GLContext::create(error);
        if (!context_)
            GTEST_SKIP() << error;
        display_ = Display::create(error);
        ASSERT_TRUE(display_) << error;
        target_ = Target::create(kWidth, kHeight, 4, error);
        ASSERT_TRUE(target_) << error;
    }

    Picture draw(const std::vector<Shown> &shown, const DrawStyle &style = {}, const Preparation &preparation = {},
                 const OrbitCamera &camera = frontCamera())
    {
        const SceneHandle scene = Scene::make(shown, preparation, nullptr, display_->scene().get());
        display_->setScene(scene);
        target_->bind();
        std::string error;
        EXPECT_TRUE(display_->draw(camera, style, kWidth, kHeight, &error)) << error;
        return target_->read();
    }
    Picture draw(const RQ_PrimitiveHandle &primitive, const DrawStyle &style = {}, const Preparation &preparation = {})
    {
        return draw(std::vector<Shown>{{primitive, BAS_Mat4d()}}, style, preparation);
    }
    const DisplayStatistics &statistics() const { return display_->statistics(); }

    std::unique_ptr<GLContext> context_;
    std::unique_ptr<Display> display_;
    std::unique_ptr<Target> target_;
};

/// Two squares side by side over [-1, 1] x [-1, 1], seen from their front.
struct Squares
{
    RQ_DataArrayHandle points = positions({-1, -1, 0, 0, -1, 0, 1, -1, 0, -1, 1, 0, 0, 1, 0, 1, 1, 0});
    RQ_DataArrayHandle counts = integers({4, 4}), corners = integers({0, 1, 4, 3, 1, 2, 5, 4});

    struct Attribute
    {
        RQ_Owner owner;
        const char *name;
        RQ_DataArrayHandle array;
    };
    RQ_PrimitiveHandle with(RQ_Owner owner, const char *name, const RQ_DataArrayHandle &array) const
    {
        return with({{owner, name, array}});
    }
    RQ_PrimitiveHandle with(const std::vector<Attribute> &attributes) const
    {
        RQ_AttributeListHandle lists[4];
        lists[RQ_OWNER_POINT] = oneAttribute("P", points);
        for (const auto &[owner, name, array] : attributes)
            lists[owner] = lists[owner] ? lists[owner]->addAttribute(name, array, true) : oneAttribute(name, array);
        return RQ_PrimitiveHandle(new RQ_PrimPolygonMesh(counts, corners, lists[RQ_OWNER_POINT], lists[RQ_OWNER_VERTEX],
                                                         lists[RQ_OWNER_UNIFORM], lists[RQ_OWNER_DETAIL]));
    }
};

RQ_DataArrayHandle colours(const std::vector<float> &values) { return makeArray(values, 3, RQ_TYPE_COLOR); }

/// Whether a colour is mostly one channel.
bool isMostly(const BAS_Vec3d &colour, int channel)
{
    return colour[channel] > 1.5 * colour[(channel + 1) % 3] && colour[channel] > 1.5 * colour[(channel + 2) % 3];
}
}  // namespace

TEST_F(Viewport, ColoursByAttributesOfEveryOwner)
{
    const Squares squares;
    const struct
    {
        const char *what;
        RQ_Owner owner;
        RQ_DataArrayHandle values;
        int left, right;  // the channel that is seen there
    } kCases[] = {
        {"points", RQ_OWNER_POINT, colours({1, 0, 0, 1, 0, 0, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0, 0, 1}), 0, 2},
        {"corners", RQ_OWNER_VERTEX, colours({0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0}), 1,
         0},
        {"faces", RQ_OWNER_UNIFORM, colours({0, 0, 1, 1, 0, 0}), 2, 0},
        {"the whole", RQ_OWNER_DETAIL, colours({0, 1, 0}), 1, 1},
        {"faces, in bytes", RQ_OWNER_UNIFORM, makeArray<uint8_t>({0, 255, 0, 0, 0, 255}, 3, RQ_TYPE_COLOR), 1, 2},
        {"faces, in halfs", RQ_OWNER_UNIFORM, makeArray<PLT_Half>({PLT_Half(1.0f), {}, {}, {}, PLT_Half(1.0f), {}}, 3), 0,
         1},
    };
    for (const auto &c : kCases)
        for (const bool wire : {false, true})
        {
            SCOPED_TRACE(testing::Message() << c.what << (wire ? " with edges" : ""));
            DrawStyle style;
            style.wire = wire;
            const Picture picture = draw(squares.with(c.owner, "Cd", c.values), style);
            EXPECT_TRUE(isMostly(meanOf(picture, 0.25, 0.2, 0.4, 0.8), c.left));
            EXPECT_TRUE(isMostly(meanOf(picture, 0.65, 0.2, 0.75, 0.8), c.right));
        }
}

// Bytes of colours are parts of 255, those of places and widths are not.
TEST_F(Viewport, DrawsPlacesInAnyStorage)
{
    Squares squares;
    const std::vector<float> places = {0, 0, 0, 1, 0, 0, 2, 0, 0, 0, 1, 0, 1, 1, 0, 2, 1, 0};
    const auto in = [&](auto like) {
        return makeArray(std::vector<decltype(like)>(places.begin(), places.end()), 3, RQ_TYPE_POINT);
    };
    const auto cloud = [](const RQ_DataArrayHandle &points, const RQ_DataArrayHandle &widths) {
        const RQ_AttributeListHandle list = oneAttribute("P", points);
        return RQ_PrimitiveHandle(new RQ_PrimPointMesh(list->addAttribute("width", widths, true), nullptr));
    };
    squares.points = in(float());
    const Picture expected = draw(squares.with({})),
                  balls = draw(cloud(in(float()), makeArray<float>(std::vector<float>(6, 1.0f), 1)));
    EXPECT_GT(coverage(expected), 0.1);
    EXPECT_GT(coverage(balls), 0.1);
    for (const RQ_DataArrayHandle &points : {in(uint8_t()), in(int8_t()), in(int32_t()), in(double())})
    {
        SCOPED_TRACE(points->getStorage());
        squares.points = points;
        EXPECT_EQ(draw(squares.with({})).pixels, expected.pixels);
        EXPECT_EQ(draw(cloud(points, makeArray<uint8_t>(std::vector<uint8_t>(6, 1), 1))).pixels, balls.pixels);
    }
}

TEST_F(Viewport, MapsNumbersAndTellsTextsApart)
{
    const Squares squares;
    DrawStyle style;
    style.colour = {ColourBy::Attribute, "value"};
    style.colour.map = ColourMap::Diverging;
    Picture picture = draw(squares.with(RQ_OWNER_UNIFORM, "value", makeArray<double>({-3.0, 5.0}, 1)), style);
    EXPECT_TRUE(isMostly(meanOf(picture, 0.25, 0.2, 0.4, 0.8), 2)) << "the least is blue";
    EXPECT_TRUE(isMostly(meanOf(picture, 0.65, 0.2, 0.75, 0.8), 0)) << "the greatest is red";
    EXPECT_TRUE(display_->legend().shown);
    EXPECT_EQ(display_->legend().minimum, -3.0);
    EXPECT_EQ(display_->legend().maximum, 5.0);

    picture = draw(squares.with(RQ_OWNER_UNIFORM, "value", makeArray<float>({0, 0, 0, 3, 4, 0}, 3)), style);
    EXPECT_EQ(display_->legend().maximum, 5.0) << "vectors count by their length";

    const RQ_DataArrayHandle texts(new RQ_DAString(BAS_Array<BAS_StringHolder>{"brick", "glass"}));
    picture = draw(squares.with(RQ_OWNER_UNIFORM, "value", texts), style);
    const BAS_Vec3d apart = meanOf(picture, 0.25, 0.2, 0.4, 0.8) - meanOf(picture, 0.65, 0.2, 0.75, 0.8);
    EXPECT_GT(apart.length(), 40.0);
    EXPECT_FALSE(display_->legend().shown);
}

TEST_F(Viewport, ColoursByMaterialsThatTheFileTells)
{
    BAS_Options meanings;
    meanings.set("brick", std::vector<double>{1.0, 0.0, 0.0, 0.5});
    meanings.set("paint", std::vector<double>{0.0, 0.0, 1.0});
    const RQ_DataArrayHandle told(new RQ_DADict(BAS_Array<BAS_OptionsHolder>{BAS_OptionsHolder(meanings)}));
    const auto names = [](const BAS_Array<BAS_StringHolder> &texts) { return RQ_DataArrayHandle(new RQ_DAString(texts)); };
    const Squares::Attribute table{RQ_OWNER_DETAIL, "materials", told},
        ofFaces{RQ_OWNER_UNIFORM, "material", names({"brick", "paint"})}, green{RQ_OWNER_DETAIL, "Cd", colours({0, 1, 0})};
    const ColourSource own, byName{ColourBy::Attribute, "material"}, plain{ColourBy::Plain, ""};
    constexpr int kNeither = -1;
    const struct
    {
        const char *what;
        std::vector<Squares::Attribute> attributes;
        const ColourSource &source;
        int left, right;  // the channel that is seen there
    } kCases[] = {
        {"faces", {table, ofFaces}, own, 0, 2},
        {"points",
         {table, {RQ_OWNER_POINT, "material", names({"brick", "brick", "paint", "brick", "brick", "paint"})}},
         own,
         0,
         2},
        {"the whole", {table, {RQ_OWNER_DETAIL, "material", names({"paint"})}}, own, 2, 2},
        {"colours come first", {table, ofFaces, green}, own, 1, 1},
        {"unless names are asked for", {table, ofFaces, green}, byName, 0, 2},
        {"none of them", {table, ofFaces}, plain, kNeither, kNeither},
        {"names alone", {ofFaces}, own, kNeither, kNeither},
        {"a face without", {table, {RQ_OWNER_UNIFORM, "material", names({"", "paint"})}}, own, kNeither, 2},
    };
    for (const auto &c : kCases)
    {
        SCOPED_TRACE(c.what);
        DrawStyle style;
        style.colour = c.source;
        const Picture picture = draw(Squares().with(c.attributes), style);
        const BAS_Vec3d left = meanOf(picture, 0.25, 0.2, 0.4, 0.8), right = meanOf(picture, 0.65, 0.2, 0.75, 0.8);
        for (int channel = 0; channel < 3; ++channel)
        {
            EXPECT_EQ(isMostly(left, channel), channel == c.left);
            EXPECT_EQ(isMostly(right, channel), channel == c.right);
        }
    }
    draw(Squares().with({table, ofFaces}));
    const std::vector<MaterialRow> rows = materialsOf(*display_->scene());
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].name, "brick");
    EXPECT_EQ(rows[1].colour, BAS_Vec3f(0, 0, 1));
}

TEST_F(Viewport, ShowsEdgesOfFacesAndNotOfTheirTriangles)
{
    std::vector<float> ring;
    std::vector<int> corners;
    constexpr int kCorners = 12;
    for (int i = 0; i < kCorners; ++i)
    {
        const float turn = float(i) * 2.0f * std::numbers::pi_v<float> / kCorners, radius = i % 2 ? 0.55f : 1.0f;
        ring.insert(ring.end(), {radius * std::cos(turn), radius * std::sin(turn), 0.0f});
        corners.push_back(i);
    }
    const RQ_PolygonMeshHandle star(
        new RQ_PrimPolygonMesh(integers({kCorners}), integers(corners), oneAttribute("P", positions(ring))));
    DrawStyle style;
    style.faces = false;
    style.wire = true;
    const double faces = coverage(draw(star, style)), triangles = coverage(draw(star->convex(3), style));
    EXPECT_GT(faces, 0.02);
    EXPECT_GT(triangles, 1.3 * faces);
    // A fifth of the star around its middle has no edge of the face; its cuts must go somewhere.
    EXPECT_LT((meanOf(draw(star, style), 0.45, 0.4, 0.55, 0.6) - BAS_Vec3d(style.background) * 255.0).length(), 6.0);
    style.faces = true;
    style.wire = false;
    const double area = 0.5 * kCorners * 0.55 * std::sin(std::numbers::pi / 6.0);  // of the star
    const double whole = coverage(draw(Squares().with(RQ_OWNER_DETAIL, "none", integers({0}))));
    EXPECT_NEAR(coverage(draw(star, style)) / whole, area / 4.0, 0.03) << "concave, and without holes";
}

TEST_F(Viewport, DrawsEveryKindOfPrimitive)
{
    const RQ_PrimitiveHandle square(Squares().with(RQ_OWNER_DETAIL, "none", integers({0})));
    const BAS_IntrusivePtr<RQ_TransformArray> transforms(new RQ_TransformArray);
    for (const float x : {-0.7f, 0.7f})
    {
        BAS_Mat4f matrix;
        matrix.setScale(0.3f);
        matrix[3][0] = x;
        transforms->append(RQ_TransformHandle(new RQ_Transform(&matrix, 1)));
    }
    const RQ_AttributeListHandle sides = oneAttribute("Cd", colours({1, 0, 0, 0, 0, 1}));
    const auto spheres = BAS_IntrusivePtr<RQ_PrimSphereMesh>(new RQ_PrimSphereMesh);
    ASSERT_TRUE(spheres->init(sides, {}, transforms));
    const RQ_AttributeListHandle ends = oneAttribute("P", positions({-0.7f, 0, 0, 0.7f, 0, 0}));
    const RQ_AttributeListHandle wide = ends->addAttribute("width", makeArray<float>({0.6f, 0.6f}), false);
    const RQ_PrimitiveHandle cage(RQ_PrimSubdivisionMesh::createWithStandardTags(
        *boost::static_pointer_cast<RQ_PrimPolygonMesh>(Squares().with(RQ_OWNER_DETAIL, "none", integers({0})))));
    const struct
    {
        const char *what;
        RQ_PrimitiveHandle primitive;
        double left, middle;  // the least that the tile's colour differs from the background; 0: not at all
    } kCases[] = {
        {"mesh", square, 60, 60},
        {"instances", RQ_PrimitiveHandle(new RQ_PrimInstance(square, transforms, sides)), 40, 0},
        {"spheres", spheres, 40, 0},
        {"points", RQ_PrimitiveHandle(new RQ_PrimPointMesh(wide)), 60, 0},
        {"curve", RQ_PrimitiveHandle(new RQ_PrimCurveMesh(RQ_BASIS_LINEAR, integers({2}), wide)), 60, 60},
        {"subdivision surface", cage, 60, 60},
    };
    const BAS_Vec3d background = BAS_Vec3d(DrawStyle().background) * 255.0;
    for (const auto &c : kCases)
    {
        SCOPED_TRACE(c.what);
        const Picture picture = draw(c.primitive);
        const BAS_Vec3d left = meanOf(picture, 0.31, 0.46, 0.35, 0.54), middle = meanOf(picture, 0.48, 0.46, 0.52, 0.54);
        EXPECT_GT((left - background).length(), c.left);
        if (c.middle > 0)
            EXPECT_GT((middle - background).length(), c.middle);
        else
            EXPECT_LT((middle - background).length(), 6.0);
        EXPECT_LT((meanOf(picture, 0.0, 0.0, 0.1, 1.0) - background).length(), 6.0) << "nothing lies there";
    }
    EXPECT_TRUE(isMostly(meanOf(draw(kCases[1].primitive), 0.31, 0.46, 0.35, 0.54), 0)) << "copies have colours";
    EXPECT_TRUE(isMostly(meanOf(draw(kCases[2].primitive), 0.65, 0.46, 0.69, 0.54), 2));
}

TEST_F(Viewport, TintsWhatIsSeenFromBehind)
{
    const RQ_PrimitiveHandle square(Squares().with(RQ_OWNER_DETAIL, "none", integers({0})));
    OrbitCamera behind = frontCamera();
    behind.orbit(180.0, 0.0);
    BAS_Mat4d mirrored;
    mirrored[0][0] = -1.0;
    const auto blueness = [&](const BAS_Mat4d &placement, const OrbitCamera &camera) {
        const BAS_Vec3d mean = meanOf(draw({{square, placement}}, {}, {}, camera), 0.4, 0.4, 0.6, 0.6);
        return mean.z - mean.x;
    };
    EXPECT_LT(blueness(BAS_Mat4d(), frontCamera()), 0.0);
    EXPECT_GT(blueness(BAS_Mat4d(), behind), 20.0);
    EXPECT_LT(blueness(mirrored, frontCamera()), 0.0) << "a mirrored face keeps its front";
}

TEST_F(Viewport, UploadsOnlyWhatHasChanged)
{
    Squares squares;
    const RQ_DataArrayHandle red = colours(std::vector<float>(18, 0.5f));
    draw(squares.with(RQ_OWNER_POINT, "Cd", red));
    const int64_t held = statistics().gpuBytes;
    EXPECT_EQ(statistics().uploadedBytes, held);
    EXPECT_EQ(statistics().copiedBytes, 0);

    draw(squares.with(RQ_OWNER_POINT, "Cd", red));
    EXPECT_EQ(statistics().uploadedBytes, 0) << "the same arrays in another mesh";

    draw(squares.with(RQ_OWNER_POINT, "Cd", colours(std::vector<float>(18, 0.7f))));
    EXPECT_EQ(statistics().uploadedBytes, 18 * 4) << "colours alone are new";
    EXPECT_EQ(statistics().buffersRefreshed, 1);
    EXPECT_EQ(statistics().gpuBytes, held) << "they take the place of the old ones";

    const int64_t positionBytes = 18 * 4, normalBytes = 24 * 4;
    squares.points = positions({-1, -1, 0, 0, -1, 0.5f, 1, -1, 0, -1, 1, 0, 0, 1, 0.5f, 1, 1, 0});
    Squares moved = squares;
    draw(moved.with(RQ_OWNER_POINT, "Cd", red));
    draw(moved.with(RQ_OWNER_POINT, "Cd", red));
    EXPECT_EQ(statistics().uploadedBytes, 0);
    moved.points = positions({-1, -1, 0, 0, -1, 0.4f, 1, -1, 0, -1, 1, 0, 0, 1, 0.4f, 1, 1, 0});
    draw(moved.with(RQ_OWNER_POINT, "Cd", red));
    EXPECT_LE(statistics().uploadedBytes, positionBytes + normalBytes + 64) << "moved points leave the cuts as they are";

    draw(squares.with(RQ_OWNER_POINT, "Cd", makeArray(std::vector<double>(18, 0.5), 3)));
    EXPECT_EQ(statistics().copiedBytes, 18 * 4) << "doubles have to be converted";
}

TEST_F(Viewport, TellsWhatCannotBeDrawn)
{
    const RQ_PrimitiveHandle lost(
        new RQ_PrimPolygonMesh(integers({3}), integers({0, 1, 9}), oneAttribute("P", positions({0, 0, 0, 1, 0, 0}))));
    const SceneHandle scene =
        Scene::make({{lost, {}}, {RQ_PrimitiveHandle(new RQ_PrimPointMesh), {}}, {nullptr, {}}}, {}, nullptr);
    EXPECT_EQ(scene->complaints().size(), 2u);
    EXPECT_TRUE(scene->bounds().isEmpty());
    EXPECT_LT(coverage(draw({{lost, {}}})), 0.001);
}
