#include <gtest/gtest.h>

#include <functional>

#include <ImfArray.h>
#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputFile.h>

#include <apps/offline/Microfacet.h>
#include <apps/offline/Samples.h>
#include <io/OutputFile.h>
#include <tests/apps/Globe.h>
#include <tests/apps/Program.h>

using namespace tests;

namespace
{
RQ_PrimitiveHandle coated(const Globe &globe, float roughness)
{
    const RQ_AttributeListHandle face = oneAttribute(
        "roughness", RQ_DataArrayHandle(new RQ_DANumeric<float>(std::vector<float>(globe.counts.size(), roughness).data(),
                                                                int64_t(globe.counts.size()))));
    return globe.mesh({}, face);
}

float brightest(const Film &film)
{
    float most = 0.0f;
    for (const Pixel &pixel : film.pixels)
        most = std::max(most, pixel.coverage == 1.0f ? pixel.beauty.x : 0.0f);
    return most;
}
}  // namespace

TEST(Film, RoughSurfacesHaveWideDimHighlights)
{
    const Globe globe(64, 32);
    const float matt = brightest(*picture(globe.mesh(), 16)), rough = brightest(*picture(coated(globe, 0.9f), 16));
    const float satin = brightest(*picture(coated(globe, 0.5f), 16)),
                polished = brightest(*picture(coated(globe, 0.2f), 16));
    EXPECT_NEAR(rough / matt, 1.0f, 0.15f);
    EXPECT_GT(satin, 1.05f * rough);
    EXPECT_GT(polished, 2.0f * satin);
}

TEST(Film, CoatsMirrorNoMoreLightThanTheyGet)
{
    // What a sky of 1 gives by the directions that are picked is what it gives by directions spread evenly, and below 1.
    const Samples samples(7);
    for (const auto &[roughness, metalness] :
         {std::pair(0.3f, 0.0f), {0.6f, 0.0f}, {1.0f, 0.0f}, {0.3f, 1.0f}, {0.6f, 0.5f}})
        for (const float height : {0.2f, 0.7f, 1.0f})
        {
            SCOPED_TRACE(testing::Message() << roughness << ' ' << metalness << ' ' << height);
            const Microfacet coat(roughness, metalness, {0.1f, 0.9f, 0.5f});
            const BAS_Vec3f out(std::sqrt(1.0f - height * height), 0.0f, height);
            double picked = 0.0, even = 0.0;
            constexpr uint32_t kCount = 1 << 14;
            for (uint32_t i = 0; i < kCount; ++i)
            {
                BAS_Vec3f part;
                const Imath::V2f sample = samples.at(0, i);
                coat.sample(out, sample, part);
                picked += double(part.y);
                const float z = sample.x, r = std::sqrt(1.0f - z * z), turn = 6.2831853f * sample.y;
                even += 2.0 * double(coat.reflected({r * std::cos(turn), r * std::sin(turn), z}, out).y);
            }
            EXPECT_NEAR(picked / even, 1.0, 0.03);
            EXPECT_LT(picked / kCount, metalness > 0.0f ? 1.0 : 0.6);
        }
}

TEST(Film, AdaptiveSamplesGiveTheSamePictureForLess)
{
    const Globe globe(24, 12);
    Settings settings;
    const auto fixed = picture(globe.mesh(), 256);
    settings.noise = 0.01f;
    const auto adaptive = picture(globe.mesh(), 256, settings);
    int64_t spent = 0;
    for (const Pixel &pixel : adaptive->pixels)
        spent += pixel.samples;
    EXPECT_LT(difference(screenPicture(*fixed), screenPicture(*adaptive)), 0.02);
    EXPECT_LT(spent, int64_t(256) * kWidth * kHeight / 2);
    EXPECT_GT(spent, int64_t(16) * kWidth * kHeight);
}

TEST(Film, EXRFilesHoldEveryLayer)
{
    const Globe globe(24, 12);
    Settings settings;
    settings.ground = false;
    const auto film = picture(globe.mesh(), 4, settings);
    const OwnFolder own;
    const std::string path = own.path() + "film.exr";
    std::string error;
    ASSERT_TRUE(rq::io::writeFile(path, encodeEXR(*film, error), error)) << error;

    Imf::InputFile file(path.c_str());
    const struct
    {
        const char *name;
        Imf::PixelType type;
        std::function<float(const Pixel &)> value;
    } layers[] = {{"R", Imf::HALF, [](const Pixel &p) { return p.beauty.x; }},
                  {"A", Imf::HALF, [](const Pixel &p) { return p.coverage; }},
                  {"albedo.B", Imf::HALF, [](const Pixel &p) { return p.albedo.z; }},
                  {"normal.X", Imf::HALF, [](const Pixel &p) { return p.normal.x; }},
                  {"Z", Imf::FLOAT, [](const Pixel &p) { return p.depth; }}};
    for (const auto &layer : layers)
    {
        SCOPED_TRACE(layer.name);
        const Imf::Channel *channel = file.header().channels().findChannel(layer.name);
        ASSERT_TRUE(channel);
        EXPECT_EQ(channel->type, layer.type);
        Imf::Array2D<float> values(kHeight, kWidth);
        Imf::FrameBuffer frame;
        frame.insert(layer.name,
                     Imf::Slice(Imf::FLOAT, reinterpret_cast<char *>(&values[0][0]), sizeof(float), sizeof(float) * kWidth));
        file.setFrameBuffer(frame);
        file.readPixels(0, kHeight - 1);
        int covered = 0;
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x)
            {
                const float expected = layer.value(film->at(x, y));
                covered += film->at(x, y).coverage == 1.0f;
                const bool same = values[y][x] == expected;  // infinite ones too
                ASSERT_NEAR(same ? 0.0f : values[y][x] - expected, 0.0f, 1e-3f + 1e-3f * std::abs(expected));
            }
        EXPECT_GT(covered, kWidth);
    }

    // The globe of radius 1 in the middle: its near side faces the camera.
    const Pixel &middle = film->at(kWidth / 2, kHeight / 2), &corner = film->at(0, 0);
    EXPECT_NEAR(middle.normal.length(), 1.0f, 0.01f);
    EXPECT_GT(middle.normal.z, 0.7f);
    EXPECT_NEAR(middle.albedo.x, clay().colour.x, 1e-5f);
    EXPECT_GT(middle.depth, 2.0f);
    EXPECT_TRUE(std::isinf(corner.depth));
}

TEST(Film, ShowsWhatIsAskedFor)
{
    const Globe globe(24, 12);
    std::vector<float> heights, uvs;
    for (const BAS_Vec3f &point : globe.points)
        heights.push_back(point.y);
    for (const int32_t corner : globe.corners)
        uvs.insert(uvs.end(), {0.9f, globe.points[size_t(corner)].y});
    RQ_AttributeListHandle points = oneAttribute("P", triples(globe.points, RQ_TYPE_POINT));
    points = points->addAttribute(
        "height", RQ_DataArrayHandle(new RQ_DANumeric<float>(heights.data(), int64_t(heights.size()))), false);
    const RQ_PrimitiveHandle mesh(new RQ_PrimPolygonMesh(
        integers(globe.counts), integers(globe.corners), points,
        oneAttribute("uv", RQ_DataArrayHandle(new RQ_DANumeric<float>(uvs.data(), int64_t(uvs.size() / 2), 2)))));
    const auto albedo = [&](const Look &look, int row) { return picture(mesh, 16, {}, look)->at(kWidth / 2, row).albedo; };
    constexpr int kTop = kHeight / 4, kLow = 3 * kHeight / 4;
    const BAS_Vec3f high = albedo({Look::Attribute, "height"}, kTop), deep = albedo({Look::Attribute, "height"}, kLow);
    EXPECT_GT(high.x - deep.x, 0.2f) << "the greatest is red";
    EXPECT_GT(deep.z - high.z, 0.1f) << "and the least blue";
    EXPECT_NEAR(albedo({Look::UV, ""}, kTop).x, decodeSRGB(0.9f), 0.02f);
    EXPECT_LT((albedo({Look::Attribute, "nothing"}, kTop) - clay().colour).length(), 1e-5f);
    EXPECT_GT((albedo({Look::Primitives, ""}, kTop) - clay().colour).length(), 0.1f);
    const Pixel up = picture(mesh, 16, {}, {Look::Normals, ""})->at(kWidth / 2, kTop);
    EXPECT_NEAR(up.beauty.y, decodeSRGB(0.5f + 0.5f * up.normal.y), 0.02f);

    // Lines of one pixel or so around faces that are six pixels wide: a part of the picture, and never all.
    const auto wires = picture(mesh, 16, {}, {Look::Wires, ""}), plain = picture(mesh, 16);
    EXPECT_GT(difference(*wires, *plain), 0.03);
    EXPECT_LT(difference(*wires, *plain), 0.3);
}
