#include <gtest/gtest.h>

#include <filesystem>

#include <host/mod/DetailHandle.h>
#include <io/GLTFReader.h>
#include <io/Reader.h>
#include <tests/io/Dump.h>

using namespace rq::io;

namespace
{
// Three points, (0 0 0), (1 0 0), (0 1 0), at byte 0; indices 0 1 2 of 16 bits at 36; a fourth place (5 5 5) at 44.
const std::string kBuffers = R"("buffers": [{"byteLength": 56, "uri": "data:application/octet-stream;base64,)"
                             R"(AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAAAAABAAIAAAAAAKBAAACgQAAAoEA="}],
       "bufferViews": [{"buffer": 0, "byteLength": 36}, {"buffer": 0, "byteOffset": 36, "byteLength": 6},
                       {"buffer": 0, "byteOffset": 44, "byteLength": 12}],)";
const std::string kAccessors =
    R"("accessors": [{"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3"},
                     {"bufferView": 1, "componentType": 5123, "count": 3, "type": "SCALAR"}],)";
const std::string kMesh = R"("meshes": [{"primitives": [{"attributes": {"POSITION": 0}, "indices": 1}]}])";

std::string file(const std::string &members) { return R"({"asset": {"version": "2.0"}, )" + members + "}"; }

struct ReadCase
{
    const char *what;
    std::string text;
    const char *expected;  ///< messages, and what there is to see when it was read
};

const ReadCase kReadCases[] = {
    {"nothing", file("\"scene\": 0"), "x: warning: expected meshes, found none\n\npoint P real32:"},
    {"a mesh without a node", file(kBuffers + kAccessors + kMesh), "f 0 1 2,\npoint P real32: 0 0 0; 1 0 0; 0 1 0;"},
    {"nodes place copies, mirrors turn faces, scale and then turn and then move",
     file(kBuffers + kAccessors + kMesh + R"(, "nodes": [{"children": [1, 2], "translation": [0, 0, 1]},
        {"mesh": 0, "scale": [2, 1, 1], "rotation": [0, 0, 1, 0]}, {"mesh": 0, "scale": [-1, 1, 1]},
        {"mesh": 0}], "scenes": [{"nodes": [0]}])"),
     "f 0 1 2,f 3 5 4,\npoint P real32: 0 0 1; -2 0 1; 0 -1 1; 0 0 1; -1 0 1; 0 1 1;"},
    {"sparse values over zeros, fractions, integers and matrices of materials",
     file(kBuffers + R"("accessors": [{"componentType": 5126, "count": 3, "type": "VEC3", "sparse": {"count": 1,
          "indices": {"bufferView": 1, "byteOffset": 2, "componentType": 5123}, "values": {"bufferView": 2}}},
        {"bufferView": 1, "componentType": 5121, "count": 3, "type": "SCALAR", "normalized": true},
        {"bufferView": 1, "componentType": 5122, "count": 3, "type": "SCALAR"}],
        "materials": [{"name": "m"}, {"name": "m", "pbrMetallicRoughness": {"baseColorFactor": [1, 0.25, 0, 1], "metallicFactor": 0}},
          {"pbrMetallicRoughness": {"metallicFactor": 0, "roughnessFactor": 0.25}}],
        "meshes": [{"name": "a", "primitives": [
          {"attributes": {"POSITION": 0, "_F": 1, "_I": 2, "JOINTS_0": 2}, "mode": 0, "material": 0, "targets": [{}]},
          {"attributes": {"POSITION": 0, "_F": 1, "_I": 2, "JOINTS_0": 2}, "mode": 2, "material": 1}, {"attributes": {}}]}])"),
     "x: warning: expected a known attribute, found \"JOINTS_0\"; it is passed over\n"
     "x: warning: morph targets of 1 primitive are passed over\n"
     "x: warning: expected attribute \"POSITION\", found none; 1 primitive is passed over\n"
     "f 0 1 2,f 0 1 2 0,\npoint P real32: 0 0 0; 5 5 5; 0 0 0;\npoint F real32: 0; 0; 0.00392157;\npoint I int32: 0; 1; 2;"
     "\nface object\nface material\ndetail materials "
     R"({"m":[1,1,1,1,1],"m.1":[1,0.537098730483,0],"material2":[1,1,1,0.25]})"},
    {"colours of linear light, with an alpha",
     file(kBuffers + R"("accessors": [{"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3"},
        {"bufferView": 0, "byteOffset": 12, "componentType": 5121, "normalized": true, "count": 3, "type": "VEC4"}],
        "meshes": [{"primitives": [{"attributes": {"POSITION": 0, "COLOR_0": 1}}]}])"),
     "f 0 1 2,\npoint P real32: 0 0 0; 1 0 0; 0 1 0;\npoint Cd real32: 0 0 0.736647; 0 0 0; 0 0 0;"
     "\npoint Alpha real32: 0.247059; 0; 0;"},
    {"no JSON", R"({"asset": {"version" "2.0"}})", "x:1:22: error: a colon is missing\n"},
    {"no version", R"({"asset": {}})",
     "x: error: expected glTF: \"asset\" object not found in .gltf or not an object type\n"},
    {"a buffer without its file", file(R"("buffers": [{"byteLength": 56, "uri": "nowhere.bin"}])"),
     "x: error: expected a file \"nowhere.bin\" of a buffer beside this one, found none\n"},
    {"an accessor that is not there", file(kBuffers + R"("meshes": [{"primitives": [{"attributes": {"POSITION": 7}}]}])"),
     "x: error: mesh 0, primitive 0: expected one of 0 accessors, found 7\n"},
    {"rows behind the end",
     file(kBuffers + R"("accessors": [{"bufferView": 0, "componentType": 5126, "count": 4, "type": "VEC3"}],
        "meshes": [{"primitives": [{"attributes": {"POSITION": 0}}]}])"),
     "x: error: mesh 0, primitive 0: expected 4 rows of 12 bytes of accessor 0, found 36 bytes in its buffer view\n"},
    {"an index that is too large",
     file(kBuffers + R"("accessors": [{"bufferView": 0, "componentType": 5126, "count": 2, "type": "VEC3"},
        {"bufferView": 1, "componentType": 5123, "count": 3, "type": "SCALAR"}],)" +
          kMesh),
     "x: error: mesh 0, primitive 0: expected the index of one of 2 points, found 2\n"},
    {"rows that differ in number",
     file(kBuffers + R"("accessors": [{"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3"},
        {"bufferView": 0, "componentType": 5126, "count": 2, "type": "VEC3"}],
        "meshes": [{"primitives": [{"attributes": {"POSITION": 0, "NORMAL": 1}}]}])"),
     "x: error: mesh 0, primitive 0: expected 3 rows of attribute \"NORMAL\", as \"POSITION\" has, found 2\n"},
    {"a node that is its own child", file(R"("nodes": [{"children": [0]}], "scenes": [{"nodes": [0]}])"),
     "x: error: expected no node under itself, found node 0\n"},
    {"too many brackets", file("\"extras\": " + std::string(200, '[') + std::string(200, ']')),
     "x:1:168: error: expected at most 128 levels of brackets, found more\n"},
    {"the header of a GLB alone", std::string("glTF\2\0\0\0\x0c\0\0\0", 12),
     "x:@12: error: expected the 8 bytes of a chunk's header, found 0\n"},
    {"a chunk that is too long", std::string("glTF\2\0\0\0\x18\0\0\0\x08\0\0\0JSON{}  ", 24),
     "x:@12: error: expected a chunk of 8 bytes, found 4 before the end of the file\n"},
};

TEST(GLTFReader, ReadsScenesAndTellsWhatIsWrong)
{
    for (const ReadCase &c : kReadCases)
    {
        SCOPED_TRACE(c.what);
        MOD_DetailHandle detail;
        Messages messages;
        const bool good = readGLTF(c.text, "x", detail, messages);
        EXPECT_EQ(good, messages.errors() == 0);
        EXPECT_EQ(messages.toString() + (good ? tests::dump(*detail.read().readLock()) : ""), c.expected);
    }
}

struct ModelCase
{
    const char *name;
    int64_t points, primitives, vertices;
    const char *attributes;  ///< of points
};

const ModelCase kModels[] = {
    {"BoxTextured.glb", 24, 12, 36, "P N uv"},
    {"BoxTextured_embedded.gltf", 24, 12, 36, "P N uv"},
    {"SimpleSparseAccessor.gltf", 14, 12, 36, "P"},
    {"Triangle.gltf", 3, 1, 3, "P"},
    {"Lantern.gltf", 4145, 5394, 16182, "P N tangent uv"},
    {"CubeScaledInstances.gltf", 96, 48, 144, "P N uv"},
};

TEST(GLTFReader, ReadsModels)
{
    const std::filesystem::path folder(RQ_DATA_DIR "/gltf");
    if (!std::filesystem::exists(folder))
        GTEST_SKIP() << "no models in " << folder;
    for (const ModelCase &c : kModels)
    {
        SCOPED_TRACE(c.name);
        MOD_DetailHandle detail;
        Messages messages;
        ASSERT_TRUE(load(folder / c.name, detail, messages)) << messages.toString();
        const MOD_ConstDetailHandle snapshot = detail.read();
        EXPECT_EQ(snapshot.readLock()->pointCount(), c.points);
        EXPECT_EQ(snapshot.readLock()->primitiveCount(), c.primitives);
        EXPECT_EQ(snapshot.readLock()->vertexCount(), c.vertices);
        std::string attributes;
        for (const ELM_Attribute &attribute : snapshot.readLock()->attributes(ELM_OWNER_POINT))
            attributes.append(attributes.empty() ? "" : " ").append(attribute.name().view());
        EXPECT_EQ(attributes, c.attributes);
    }
    // Every mode with and without indices shows a square: of points, its outline, or its area.
    for (int i = 0; i < 16; ++i)
    {
        MOD_DetailHandle detail;
        Messages messages;
        EXPECT_TRUE(load(folder / fmt::format("Mesh_PrimitiveMode_{:02}.gltf", i), detail, messages));
        EXPECT_EQ(messages.toString(), "") << i;
        EXPECT_GT(detail.read().readLock()->primitiveCount(), 0) << i;
    }
}
}  // namespace
