#include <gtest/gtest.h>

#include <filesystem>

#include <host/mod/DetailHandle.h>
#include <io/Reader.h>

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
    {"box_UTF16BE", ":1:1: error: expected UTF-8 text, found UTF-16 text", "another encoding"},
    {"invalid-relative-texture-index", ":2:3: error: expected the number of a point", "so is the uv number behind it"},
    {"invalid-relative-vertex-index", ":1:3: error: expected the number of a point", "a relative number before any point"},
    {"issue-140-zero-face-idx", ":16:3: error: expected a number from 1 up", "numbers count from 1"},
    {"malformed", ":28:3: error: expected a number from 1 up", "numbers count from 1; a 12 of 8 points would be next"},
    {"number_formats", ":11:14: error: expected a number, found", "a sign before the exponent's letter spells no number"},
    {"box_without_lineending", "", "the file's end ends the line"},
    {"deg_faces", "", "a face may repeat points"},
    {"degenerate_mesh", "", "points may coincide"},
    {"empty", kNoPoints, "nothing is wrong with nothing"},
    {"eof_test", "", "the file's end ends the line"},
    {"face_in_group_name", "", "the names of a group line are names, whatever they spell"},
    {"inf_nan", "", "inf and nan are numbers"},
    {"invalid-face-definition", kSmallFaces, "faces of one and two corners are kept"},
    {"issue-161-inconsistent-f", kNoMaterials, "corners without a uv get zeros"},
    {"jacked", kNoMaterials, "a slash that nothing follows is passed over"},
    {"joined_tetrahedra", "", "edges may have more than two faces"},
    {"leading-zero-in-exponent-notation-issue-210", kNoMaterials, "zeros before an exponent's digits mean nothing"},
    {"malformed2", kSmallFaces, "a face without corners is kept"},
    {"missing_material_file", "", "its line is a comment; material names need no file"},
    {"multiple_spaces", "", "blanks may repeat"},
    {"nancolor", "", "nan is a number"},
    {"notenoughindices", kSmallFaces, "a face of two corners is kept"},
    {"obj_empty", kNoPoints, "comments only"},
    {"obj_with_no_face_in_chunk", "", "a group may be empty"},
    {"only_a_part_of_vertexcolors", "", "points without a colour are white"},
    {"regr_3429812", kNoMaterials, "material names need no file"},
    {"test-nan", kNoMaterials, "nan and inf are numbers in every spelling"},
    {"test_wrong_attribute_mapping", ":4:6: warning: expected the number of a normal",
     "corners refer to normals without any"},
    {"triangle_with_degenerate_tex_coords", "", "uv may coincide"},
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
        EXPECT_EQ(load(folder / (c.name + std::string(".obj")), detail, messages),
                  expected.find("error") == std::string::npos);
        EXPECT_NE(messages.toString().find(expected), std::string::npos) << messages.toString() << "instead of " << expected;
        EXPECT_EQ(messages.all().empty(), expected.empty()) << messages.toString();
    }
}
}  // namespace
