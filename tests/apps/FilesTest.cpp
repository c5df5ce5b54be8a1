#include <algorithm>
#include <map>
#include <sstream>

#include <fmt/format.h>

#include <host/bas/JSONValue.h>
#include <tests/apps/Program.h>

using namespace tests;

namespace
{
const std::string kData = RQ_DATA_DIR;

struct BrokenCase
{
    const char *file;
    const char *error;  ///< what is said behind its name
};

const char *const kUnknown =
    ": error: expected a file whose name ends with .ply, .rqg.json, .rqg, .glb, .gltf, .off, .stl, .obj, "
    ".xyz, .pts, .swc";

// Files that cannot be read.  Of the others each must be read, whatever is odd about it.
const BrokenCase kBroken[] = {
    {"broken/BoxTextured_truncated.glb", R"(:@8: error: expected 4696 bytes, found 3000)"},
    {"broken/Neuron_missing_parents.swc",
     R"(:40:1: error: expected a sample that continues one of the file, found one that continues 5)"},
    {"broken/OutOfMemory.off",
     R"(:2:1: error: expected a line for each of 353535235358 points and 6 faces, found 14 lines)"},
    {"broken/bob_small_truncated.ply",
     R"(:@5993: error: expected 500 records of "face", found 215 before the end of the file)"},
    {"broken/box_UTF16BE.obj", R"(:1:1: error: expected UTF-8 text, found UTF-16 text)"},
    {"broken/crash-30d6d0f7c529b3b66b4131700b7a4580cd7082df.ply",
     R"(:7:48: error: expected "end_header", found the end of the file)"},
    {"broken/empty.off", R"(:1:1: error: expected "OFF", found the end of the file)"},
    {"broken/empty.ply", R"(:1:1: error: expected "ply", found the end of the file)"},
    {"broken/invalid-relative-texture-index.obj",
     R"(:2:3: error: expected the number of a point, of which the file has 0, found "1/-1")"},
    {"broken/invalid-relative-vertex-index.obj",
     R"(:1:3: error: expected the number of a point, of which the file has 0, found "-4")"},
    {"broken/invalid.off",
     R"(:7:2: error: expected the number of a point, of which the file has 3, found the end of the line)"},
    {"broken/issue-140-zero-face-idx.obj",
     R"(:16:3: error: expected a number from 1 up, or a relative one from -1 down, found "0/0/0")"},
    {"broken/issue623.ply", R"(:14:56: error: expected the length of the list "vertex_indices", found the end of the line)"},
    {"broken/malformed.obj", R"(:28:3: error: expected a number from 1 up, or a relative one from -1 down, found "0")"},
    {"broken/no_header_end.tck", kUnknown},
    {"broken/no_magic_number.tck", kUnknown},
    {"broken/number_formats.obj", R"(:11:14: error: expected a number, found "3.1+e2")"},
    {"broken/platonic_shelf_truncated.ply",
     R"(:@893: error: expected 50 records of "face", found 41 before the end of the file)"},
    {"broken/pond_lf_damage.ply",
     R"(:@59982: error: expected 70051 records of "vertex", found 1926 before the end of the file)"},
    {"broken/pond_truncated.ply",
     R"(:@50000: error: expected 70051 records of "vertex", found 1604 before the end of the file)"},
    {"broken/repeated_id.swc",
     R"(:6:1: error: expected a number that no other sample has, found 4)"},
    {"broken/stl_box_truncated.stl", R"(:@484: error: expected 12 facets, found 8 before the end of the file)"},
    {"broken/gltf/AllIndicesOutOfRange.gltf",
     R"(: error: mesh 0, primitive 0: expected the index of one of 24 points, found 65535)"},
    {"broken/gltf/IndexOutOfRange.gltf",
     R"(: error: mesh 0, primitive 0: expected the index of one of 24 points, found 255)"},
    {"broken/gltf/MissingBin.gltf",
     R"(: error: expected a file "BoxTextured0.bin" of a buffer beside this one, found none)"},
    {"broken/gltf/RecursiveNodes.gltf", R"(: error: expected no node under itself, found node 0)"},
    {"broken/gltf/accessor_unequal_count.gltf",
     R"(: error: mesh 0, primitive 0: expected 3 rows of attribute "COLOR_0", as "POSITION" has, found 4)"},
    {"broken/gltf/chunk_too_big.glb", R"(:@12: error: expected the 8 bytes of a chunk's header, found 1)"},
    {"broken/gltf/empty_json_chunk.glb", R"(:@20: error: expected "glTF" or a map in JSON, found the end of the file)"},
    {"broken/gltf/index_buffer_degenerate_triangle.gltf",
     R"(: error: expected a file "index_buffer_degenerate_triangle.bin" of a buffer beside this one, found none)"},
    {"broken/gltf/index_buffer_oob.gltf",
     R"(: error: expected a file "index_buffer_oob.bin" of a buffer beside this one, found none)"},
    {"broken/gltf/index_buffer_primitive_restart.gltf",
     R"(: error: expected a file "index_buffer_primitive_restart.bin" of a buffer beside this one, found none)"},
    {"broken/gltf/indices_invalid_format.gltf", R"(: error: expected glTF: accessor[1] invalid bufferView)"},
    {"broken/gltf/integer-out-of-bounds.gltf",
     R"(: error: expected a file "simpleTriangle.bin" of a buffer beside this one, found none)"},
    {"broken/gltf/invalid-buffer-index.gltf",
     R"(: error: expected a file "simpleTriangle.bin" of a buffer beside this one, found none)"},
    {"broken/gltf/invalid-buffer-view-index.gltf", R"(: error: expected glTF: accessor[0] invalid bufferView)"},
    {"broken/gltf/invalid-primitive-indices.gltf", R"(: error: expected glTF: primitive indices accessor out of bounds)"},
    {"broken/gltf/invalid_elements_float.gltf",
     R"(: error: expected a file "invalid_elements_float.bin" of a buffer beside this one, found none)"},
    {"broken/gltf/invalid_magic.glb",
     R"(:1:1: error: expected "glTF" or a map in JSON, found "\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00")"},
    {"broken/gltf/length_mismatch.glb", R"(:@8: error: expected 49 bytes, found 48)"},
    {"broken/gltf/only_header.glb", R"(:@12: error: expected the 8 bytes of a chunk's header, found 0)"},
    {"broken/gltf/truncated_chunk_data.glb", R"(:@8: error: expected 48 bytes, found 47)"},
    {"broken/gltf/unresolved_indices.gltf", R"(: error: expected glTF: primitive indices accessor out of bounds)"},
    {"broken/gltf/unresolved_positions.gltf", R"(: error: mesh 0, primitive 0: expected one of 0 accessors, found 0)"},
};

// Those of which nothing is left to be drawn.
const char *const kInvisible[] = {"broken/empty.obj",
                                  "broken/inf_nan.obj",
                                  "broken/obj_empty.obj",
                                  "broken/ply_empty_bin.ply",
                                  "broken/ply_empty_header.ply",
                                  "broken/stl_empty_ascii.stl",
                                  "broken/stl_empty_bin.stl",
                                  "broken/gltf/BoxWithInfinites.glb",
                                  "broken/gltf/primitive_no_position.gltf"};

// What is said, without lines that are warnings.
std::string errorsOf(const std::string &said)
{
    std::string errors;
    std::istringstream lines(said);
    for (std::string line; std::getline(lines, line);)
        if (line.find(": warning: ") == std::string::npos)
            errors += line + '\n';
    return errors;
}

TEST_F(Program, AnswersForEveryBrokenFile)
{
    if (!std::filesystem::exists(kData))
        GTEST_SKIP() << "no models in " << kData;
    std::map<std::string, const char *> errors;
    for (const BrokenCase &c : kBroken)
        errors[c.file] = c.error;
    for (const std::string folder : {"broken", "broken/gltf"})
        for (const auto &entry : std::filesystem::directory_iterator(kData + '/' + folder))
        {
            const std::string name = folder + '/' + entry.path().filename().string(), path = entry.path().string();
            // Buffers of other files are none by themselves.
            if (!entry.is_regular_file() || entry.path().extension() == ".bin")
                continue;
            SCOPED_TRACE(name);
            const bool isInvisible = std::ranges::find(kInvisible, name) != std::end(kInvisible);
            const char *error = errors.contains(name) ? errors[name] : nullptr;
            for (const auto &[command, code] :
                 {std::pair("info '" + path + "'", 0), std::pair("info - < '" + path + "'", 0),
                  std::pair("convert '" + path + "' @x.rqg", 0),
                  std::pair("render '" + path + "' -o @x.png --size 8x8 --samples 1", isInvisible ? 3 : 0)})
            {
                // Standard input has no name that tells what it is, nor a folder for files beside it.
                const bool isNamed = command.find(" - ") == std::string::npos;
                const Outcome run(command);
                const int expected = isNamed ? (error ? 2 : code) : run.code == 0 ? 0 : 2;
                EXPECT_EQ(run.code, expected) << command << run.error;
                EXPECT_EQ(errorsOf(run.error).empty(), run.code == 0) << command << run.error;
                if (isNamed && error)
                {
                    EXPECT_EQ(errorsOf(run.error), path + error + '\n') << command;
                }
            }
        }
}

/// The facts of a file that every form of it has.
struct Facts
{
    double faces = 0, area = 0, points = 0;

    explicit Facts(const std::string &arguments)
    {
        const Outcome run("info --json " + arguments);
        EXPECT_EQ(run.code, 0) << run.error;
        BAS_JSONValue root;
        std::string error;
        if (!BAS_JSONValue::parse(run.out, root, error) || !root.find("host"))
            return;
        root.find("host")->find("points")->number(points);
        for (const BAS_JSONValue &primitive : *root.find("primitives")->array())
            for (const auto &[key, sum] : {std::pair("faces", &faces), std::pair("area", &area)})
                if (double value = 0; primitive.find(key) && primitive.find(key)->number(value))
                    *sum += value;
    }
};

// Files of all sorts for whose faces and areas every form must stand.
const char *const kModels[] = {"tri/spot.obj",
                               "tri/bob_small.ply",
                               "tri/Spider_binary.stl",
                               "quad/teapot.obj",
                               "quad/moebius.obj",
                               "ngon/wallhole.obj",
                               "ngon/E.obj",
                               "ngon/chamfer-cube.off",
                               "polylines/testmixed.obj",
                               "gltf/Lantern.gltf",
                               "gltf/BoxTextured.glb",
                               "broken/nancolor.obj",
                               "points/points_ascii_with_lists.ply",
                               "broken/joined_tetrahedra.obj"};

TEST_F(Program, EveryFormHasTheSameFacesAndAreas)
{
    if (!std::filesystem::exists(kData))
        GTEST_SKIP() << "no models in " << kData;
    for (const std::string model : kModels)
        for (const std::string form : {"json", "rqg", "obj", "ply", "ply --ascii", "stl", "glb", "gltf"})
        {
            SCOPED_TRACE(model + " as " + form);
            const std::string path = kData + '/' + model;
            const bool isCut = form == "stl" || form[0] == 'g';
            ASSERT_EQ(Outcome("convert '" + path + "' @x.any --to " + form).code, 0);
            const Facts before((isCut ? "--convex 3 " : "") + path), after("@x.any");
            EXPECT_EQ(before.faces, after.faces);
            EXPECT_NEAR(before.area, after.area, 1e-5 * before.area);
            if (!isCut)
            {
                EXPECT_EQ(before.points, after.points);
            }
        }
}

TEST_F(Program, WritesWhatTheValidatorOfGLTFAccepts)
{
    const char *cache = std::getenv("XDG_CACHE_HOME"), *home = std::getenv("HOME");
    const std::string package = (cache ? std::string(cache) : std::string(home ? home : "") + "/.cache") +
                                "/librq/oracles/node_modules/gltf-validator";
    if (!std::filesystem::exists(package) || std::system("node --version >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "node and the package gltf-validator are not there (scripts/setup --oracles)";
    if (!std::filesystem::exists(kData))
        GTEST_SKIP() << "no models in " << kData;
    const auto errorsIn = [&](const std::string &files) {
        const std::string out = testFolder() + "errors";
        EXPECT_EQ(std::system(("node " RQ_ORACLES "/gltfErrors.js " + package + files + " > " + out).c_str()), 0);
        return contentOf(out);
    };
    EXPECT_NE(errorsIn(" " + kData + "/broken/gltf/BoxBadNormals.glb").find("ACCESSOR_VECTOR3_NON_UNIT"), std::string::npos);
    std::string files;
    const auto convert = [&](const std::string &path) {
        for (const char *form : {"glb", "gltf"})
        {
            const std::string name = fmt::format("v{}.{}", files.size(), form);
            ASSERT_EQ(Outcome("convert '" + path + "' @" + name).code, 0) << path;
            files += fmt::format(" {}{}", testFolder(), name);
        }
    };
    for (const std::string model : kModels)
        convert(kData + '/' + model);
    for (const char *odd :
         {"test-nan.obj", "inf_nan.obj", "obj_empty.obj", "gltf/BoxWithInfinites.glb", "gltf/BoxBadNormals.glb"})
        convert(kData + "/broken/" + odd);
    EXPECT_EQ(errorsIn(files), "");
}
}  // namespace
