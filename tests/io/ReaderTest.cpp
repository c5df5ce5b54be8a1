#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>

#include <host/mod/DetailHandle.h>
#include <io/GLTFReader.h>
#include <io/OBJReader.h>
#include <io/OFFReader.h>
#include <io/PLYReader.h>
#include <io/Reader.h>
#include <io/STLReader.h>
#include <io/XYZReader.h>
#include <tests/OwnFolder.h>

using namespace rq::io;

namespace
{
std::string binarySTL()
{
    std::string text(84 + 3 * 50, '\0');
    text[80] = 3;
    return text;
}

// With blanks behind it, as nearly any change of the rest is an error.
std::string textGLTF()
{
    return R"({"asset":{"version":"2.0"},"nodes":[{"mesh":0}],"meshes":[{"primitives":[{"attributes":{"POSITION":0},)"
           R"("indices":1,"mode":4}]}],"buffers":[{"byteLength":44,"uri":"data:application/octet-stream;base64,)"
           R"(AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAABAAIAAAA="}],"bufferViews":[{"buffer":0,"byteLength":36},)"
           R"({"buffer":0,"byteOffset":36,"byteLength":6}],"accessors":[{"bufferView":0,"componentType":5126,)"
           R"("count":3,"type":"VEC3","sparse":{"count":1,"indices":{"bufferView":1,"componentType":5123},)"
           R"("values":{"bufferView":0}}},{"bufferView":1,"componentType":5123,"count":3,"type":"SCALAR"}]})" +
           std::string(900, ' ');
}

std::string binaryPLY(const char *form)
{
    const std::string body = std::string(24, '\0') + std::string("\3\0\0\1\4\1\0\5", 8);
    return std::string("ply\nformat ") + form +
           " 1.0\nelement vertex 2\nproperty float x\nproperty float y\nproperty float z\n"
           "element face 2\nproperty list uchar uchar vertex_index\nproperty uchar id\nend_header\n" +
           body;
}

// Small files of every form, with everything that a reader knows.
bool readCopiedPLY(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages)
{
    return readPLY(text, name, detail, messages);
}

const std::pair<decltype(&readOBJ), std::string> kWhole[] = {
    {readOBJ, "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 1e10 -.5e-3 nan 1 .5 .5 .5\r\nvt 0 0\nvn 0 0 1\ng a b\nusemtl m\ns 1\n"
              "f 1/1/1 2/1/1 3//1\nl 1 -2 \\\n 3\np 4\no x\nt crease 2/1/0 0 1 5\n"},
    {readCopiedPLY,
     "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty double y\nproperty int z\nproperty uchar red\n"
     "element face 2\nproperty list uchar int vertex_index\nproperty char id\nelement tristrips 1\n"
     "property list int int vertex_indices\nend_header\n0 0 0 1\n1 0 0 2\n0 1 0 3\n3 0 1 2 4\n2 1 0 5\n5 0 1 2 -1 0\n"},
    {readCopiedPLY, binaryPLY("binary_little_endian")},
    {readCopiedPLY, binaryPLY("binary_big_endian")},
    {readSTL,
     "solid a\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 nan 0\nendloop\nendfacet\nendsolid\n"},
    {readSTL, binarySTL()},
    {readXYZ, "3\n0 0 0 7 255 1 2\n1 0 0 7 255 1 2\n1 0 nan 7 1 1 2 # short\n"},
    {readGLTF, textGLTF()},
    {readOFF, "STCNOFF\n2 2 0\n0 0 0 0 0 1 1 0 0 0 0\n1 0 0 0 0 1 .5 .5 .5 1 1 0\n3 0 1 0 255 0 0\n2 1 0 # short\n"},
};

// Mutants of small files must load or fail with a message, and never crash.
TEST(Reader, SurvivesMutants)
{
    const std::string alphabet = std::string("0123456789-+./ \\\n\r\tvnftglpse#\xff\x80") + '\0';
    for (const auto &[read, whole] : kWhole)
    {
        int64_t failures = 0;
        for (uint32_t seed = 0; seed < 3000; ++seed)
        {
            SCOPED_TRACE(whole.substr(0, 40) + " " + std::to_string(seed));
            std::mt19937 random(seed);
            std::string text = whole;
            for (uint32_t edits = 1 + random() % 3; edits > 0; --edits)
            {
                const size_t at = random() % text.size(), removed = random() % 4, added = random() % 4;
                text.replace(at, removed, added, alphabet[random() % alphabet.size()]);
            }
            if (seed % 5 == 0)
                text.resize(random() % text.size());
            // At the end of a block of its own, where a step too far is found out.
            const std::vector<char> block(text.begin(), text.end());
            MOD_DetailHandle handle;
            Messages messages;
            const bool good = read({block.data(), block.size()}, "x", handle, messages);
            ASSERT_EQ(good, messages.errors() == 0);
            ASSERT_LE(messages.errors(), 1);
            failures += !good;
            const MOD_ConstDetailHandle detail = handle.read();
            for (int64_t v = 0; v < detail.readLock()->vertexCount(); ++v)
                ASSERT_LT(uint64_t(detail.readLock()->vertexPoint(v)), uint64_t(detail.readLock()->pointCount()));
        }
        EXPECT_GT(failures, 300) << whole;
        EXPECT_LT(failures, 2900) << whole;
    }
}

TEST(Reader, TellsFilesByTheirContentThenByTheirNames)
{
    const std::pair<const char *, std::string> cases[] = {{"rq_a.obj", "ply\nformat ascii 1.0\nend_header\n"},
                                                          {"rq_b", "STC4OFF 0 0"},
                                                          {"rq_c.txt", binarySTL()},
                                                          {"rq_d.ply", "\n Solid x\n"},
                                                          {"rq_e.OFF", "0 0"},
                                                          {"rq_f.Obj", "v 0 0 0"},
                                                          {"rq_g", "\n{ \"rqg\": 1}"},
                                                          {"rq_h.rqg.JSON", "{\"points\": 0, \"rqg\": 1}"},
                                                          {"rq_i.ply", "{\"asset\": {\"version\": \"2.0\"}}"},
                                                          {"rq_j.stl", "# x\n\nv 0 0 0\n"},
                                                          {"rq_k.XYZ", "0 0 0\n"},
                                                          {"rq_m", "\xef\xbb\xbfv 0 0 0"},
                                                          {"rq_n", "\xef\xbb\xbf{\"rqg\": 1}"},
                                                          {"rq_o.pts", "\xef\xbb\xbf 0 0 0"},
                                                          {"rq_l", "# x\n1 1 0 0 0 .5 -1\n2 3 1 0 0 1 1"}};
    const tests::OwnFolder own;
    for (const auto &[name, text] : cases)
    {
        const std::string path = own.path() + name;
        std::ofstream(path, std::ios::binary) << text;
        MOD_DetailHandle detail;
        Messages messages;
        EXPECT_TRUE(load(path, detail, messages)) << messages.toString();
    }
    MOD_DetailHandle detail;
    Messages messages;
    EXPECT_FALSE(load("/nowhere/x.obj", detail, messages));
    EXPECT_FALSE(load("/dev/null", detail, messages));
    EXPECT_EQ(messages.toString(), "/nowhere/x.obj: error: cannot be read: No such file or directory\n"
                                   "/dev/null: error: expected a file whose name ends with .ply, .rqg.json, .rqg, "
                                   ".glb, .gltf, .off, .stl, .obj, .xyz, .pts, .swc\n");
}
}  // namespace
