#include <gtest/gtest.h>

#include <filesystem>

#include <host/mod/DetailHandle.h>
#include <io/OBJWriter.h>
#include <io/Reader.h>
#include <io/Writer.h>
#include <tests/DataReadme.h>
#include <tests/OwnFolder.h>
#include <tests/io/difference.h>

using namespace rq::io;

namespace
{
constexpr const char *kSmallFaces = ": warning: expected three or more corners, found fewer";
constexpr const char *kNoMaterials = ": warning: expected a material file, found none of this name";
constexpr const char *kNoPoints = ": warning: expected points, found none";

const struct
{
    const char *name;
    const char *message;  ///< how its first error or warning begins, after the file's name; empty when there is none
    const char *why;
} kBroken[] = {
    {"box_UTF16BE.obj", ":1:1: error: expected UTF-8 text, found UTF-16 text", "another encoding"},
    {"invalid-relative-texture-index.obj", ":2:3: error: expected the number of a point", "so is the uv number behind it"},
    {"invalid-relative-vertex-index.obj", ":1:3: error: expected the number of a point",
     "a relative number before any point"},
    {"issue-140-zero-face-idx.obj", ":16:3: error: expected a number from 1 up", "numbers count from 1"},
    {"malformed.obj", ":28:3: error: expected a number from 1 up", "numbers count from 1; a 12 of 8 points would be next"},
    {"number_formats.obj", ":11:14: error: expected a number, found",
     "a sign before the exponent's letter spells no number"},
    {"box_without_lineending.obj", "", "the file's end ends the line"},
    {"deg_faces.obj", "", "a face may repeat points"},
    {"degenerate_mesh.obj", "", "points may coincide"},
    {"empty.obj", kNoPoints, "nothing is wrong with nothing"},
    {"eof_test.obj", "", "the file's end ends the line"},
    {"face_in_group_name.obj", "", "the names of a group line are names, whatever they spell"},
    {"inf_nan.obj", "", "inf and nan are numbers"},
    {"invalid-face-definition.obj", kSmallFaces, "faces of one and two corners are kept"},
    {"issue-161-inconsistent-f.obj", kNoMaterials, "corners without a uv get zeros"},
    {"jacked.obj", kNoMaterials, "a slash that nothing follows is passed over"},
    {"joined_tetrahedra.obj", "", "edges may have more than two faces"},
    {"leading-zero-in-exponent-notation-issue-210.obj", kNoMaterials, "zeros before an exponent's digits mean nothing"},
    {"malformed2.obj", kSmallFaces, "a face without corners is kept"},
    {"missing_material_file.obj", "", "its line is a comment; material names need no file"},
    {"multiple_spaces.obj", "", "blanks may repeat"},
    {"nancolor.obj", "", "nan is a number"},
    {"notenoughindices.obj", kSmallFaces, "a face of two corners is kept"},
    {"obj_empty.obj", kNoPoints, "comments only"},
    {"obj_with_no_face_in_chunk.obj", "", "a group may be empty"},
    {"only_a_part_of_vertexcolors.obj", "", "points without a colour are white"},
    {"regr_3429812.obj", kNoMaterials, "material names need no file"},
    {"test-nan.obj", kNoMaterials, "nan and inf are numbers in every spelling"},
    {"test_wrong_attribute_mapping.obj", ":4:6: warning: expected the number of a normal",
     "corners refer to normals without any"},
    {"triangle_with_degenerate_tex_coords.obj", "", "uv may coincide"},
    {"bob_small_truncated.ply", ":@5993: error: expected 500 records of \"face\", found 215", "the file ends too early"},
    {"crash-30d6d0f7c529b3b66b4131700b7a4580cd7082df.ply", ":7:48: error: expected \"end_header\"", "zeros for a header"},
    {"cube_binary_header_with_RN_newline.ply", "", "the header may end with CR LF"},
    {"cube_binary_starts_with_nl.ply", "", "a line end may be the first byte of the body"},
    {"delim_test.ply", ":16:9: warning: expected vertex, face or tristrips, found \"material\"", "lines may end with CR"},
    {"empty.ply", ":1:1: error: expected \"ply\", found the end of the file", "a PLY file has a header"},
    {"float_inf_point_cloud.ply", "", "inf is a number"},
    {"issue623.ply", ":14:56: error: expected the length of the list", "lists of points that are not there"},
    {"platonic_shelf_truncated.ply", ":@893: error: expected 50 records of \"face\", found 41", "the file ends too early"},
    {"ply_empty_bin.ply", kNoPoints, "nothing is wrong with nothing"},
    {"ply_empty_header.ply", kNoPoints, "nothing is wrong with nothing"},
    {"pond_lf_damage.ply", ":@59982: error: expected 70051 records of \"vertex\", found 1926", "the file ends too early"},
    {"pond_truncated.ply", ":@50000: error: expected 70051 records of \"vertex\", found 1604", "the file ends too early"},
    {"test_extra_whitespace.ply", "", "blanks may repeat"},
    {"stl_box_truncated.stl", ":@484: error: expected 12 facets, found 8", "the file ends too early"},
    {"stl_empty_ascii.stl", ": warning: expected facets, found none", "nothing is wrong with nothing"},
    {"stl_empty_bin.stl", ": warning: expected facets, found none", "nothing is wrong with nothing"},
    {"triangle_with_empty_solid.stl", "", "a solid may be empty"},
    {"triangle_with_two_solids.stl", "", "a file may hold several solids"},
    {"OutOfMemory.off", ":2:1: error: expected a line for each of 353535235358 points", "a number of points from nowhere"},
    {"empty.off", ":1:1: error: expected \"OFF\"", "an OFF file has a header"},
    {"invalid.off", ":7:2: error: expected the number of a point, of which the file has 3", "a line broken in two by CR"},
    {"whitespace.off", "", "blanks and comments may stand anywhere"},
};

TEST(Models, BrokenOnesAreReadOrRefusedWithAReason)
{
    const std::filesystem::path folder = std::filesystem::path(RQ_DATA_DIR) / "broken";
    if (!std::filesystem::exists(folder))
        GTEST_SKIP() << "no models in " << folder;
    for (const auto &c : kBroken)
    {
        SCOPED_TRACE(std::string(c.name) + ": " + c.why);
        const std::string expected = c.message;
        MOD_DetailHandle detail;
        Messages messages;
        EXPECT_EQ(load(folder / c.name, detail, messages), expected.find("error") == std::string::npos);
        EXPECT_NE(messages.toString().find(expected), std::string::npos) << messages.toString() << "instead of " << expected;
        EXPECT_EQ(messages.all().empty(), expected.empty()) << messages.toString();
    }
}

// What is written to a file of any kind comes back, unless a warning says that it does not.
TEST(Models, ComeBackFromEveryKindOfFile)
{
    const std::vector<ModelFacts> models = meshModels();
    SKIP_WITHOUT_MODELS(models);
    const tests::OwnFolder own;
    int64_t compared = 0;
    for (const ModelFacts &model : models)
    {
        MOD_DetailHandle detail;
        Messages reading;
        if (!load(model.path, detail, reading, true))
            continue;
        for (const std::string ending : {".rqg.json", ".RQG", ".obj"})
        {
            SCOPED_TRACE(model.name + ending);
            MOD_DetailHandle again;
            Messages writing;
            const std::string path = own.path() + "model" + ending;
            ASSERT_TRUE(save(path, detail.read(), writing)) << writing.toString();
            ASSERT_TRUE(load(path, again, writing, true)) << writing.toString();
            const std::string differs = tests::difference(*detail.read().readLock(), *again.read().readLock());
            EXPECT_TRUE(differs.empty() || (ending == ".obj" && writing.warnings() > 0)) << differs;
            compared += differs.empty();
            std::filesystem::remove(materialFileOf(path));
        }
    }
    EXPECT_GT(compared, std::ssize(models) * 2);
}
}  // namespace
