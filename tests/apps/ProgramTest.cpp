#include <algorithm>
#include <sstream>

#include <fmt/format.h>

#include <host/bas/JSONValue.h>
#include <tests/DataReadme.h>
#include <tests/apps/Program.h>

using namespace tests;

namespace
{
struct ExitCase
{
    const char *arguments;
    int code;
    const char *out;    ///< a part of what is printed
    const char *error;  ///< a part of what standard error gets, null when that must be empty
};

const ExitCase kExitCases[] = {
    {"", 1, "", "ubcommand"},
    {"--version", 0, "rq 0.", nullptr},
    {"--help > /dev/full", 3, "", "standard output"},
    {"info --parms", 0, "cuspangle ", nullptr},
    {"info --parms --json", 0, "\"key\": \"cuspangle\"", nullptr},
    {"info --parms @tri.obj", 1, "", "excludes"},
    {"info --what @tri.obj", 1, "", "--what"},
    {"info -p lod @tri.obj", 1, "", "-p lod: expected KEY=VALUE"},
    {"info -p cuspangel=40 @tri.obj", 1, "", "there is no option \"cuspangel\"; the nearest is \"cuspangle\""},
    {"info -p lod=inf @tri.obj", 1, "", "expected a number, found \"inf\""},
    {"info -p facesetmode=1.5 @tri.obj", 1, "", "expected a whole number, found \"1.5\""},
    {"info @nowhere.obj", 2, "", "nowhere.obj: error: cannot be read: No such file"},
    {"info @broken.obj @tri.obj", 2, "tri.obj\n", "broken.obj:1:6: error:"},
    {"info @oddity.obj", 0, "1 points", "oddity.obj:2:1: warning: expected a known word, found \"what\""},
    {"info - < @tri.obj", 0, "<stdin>\n  host: 3 points", nullptr},
    {"info -p cuspangle=40 -p addvertexnormals=on --convex 3 --threads 1 @tri.obj", 0, "3 points", nullptr},
    {"convert --help", 0, ".rqg.json or .rqg for everything", nullptr},
    {"convert @tri.obj", 1, "", "OUT is required"},
    {"convert @nowhere.obj @x.png", 1, "",
     "x.png: error: expected a file whose name ends with .rqg.json, .rqg, .json, .obj"},
    {"convert @broken.obj @x.rqg", 2, "", "broken.obj:1:6: error:"},
    {"convert @tri.obj @nowhere/x.rqg", 3, "", "nowhere/x.rqg: error: cannot be written: No such file"},
    {"convert @mixed.obj @x.rqg", 0, "", nullptr},
    {"convert @x.rqg @x.rqg", 0, "", nullptr},
    {"convert --threads 1 @x.rqg @x.rqg.json", 0, "", nullptr},
    {"convert - @x.obj < @x.rqg.json", 0, "", nullptr},
    {"convert @tri.obj -", 1, "", "<stdout>: error: expected the name of a format, one of json, rqg, obj, ply"},
    {"convert @tri.obj - --to png", 1, "", "--to"},
    {"convert @tri.obj - --to ply --ascii", 0, "element face 1", nullptr},
    {"convert @tri.obj - --to obj > /dev/full", 3, "", "<stdout>: error: cannot be written"},
    {"convert @tri.obj @x.any --to glb", 0, "", nullptr},
    {"convert - - --to json < @x.any", 0, "\"polygon\"", nullptr},
    {"info @cells.rqg.json", 0, "RQ_PrimHexMesh (<unknown>): 1 cells, 8 vertices, 8 points", nullptr},
    {"info --convex 3 @cells.rqg.json", 0, "12 faces of 3 to 3 vertices", nullptr},
    {"convert @cells.rqg.json @x.rqg", 0, "", nullptr},
    {"info @x.rqg", 0, "RQ_PrimTetMesh (TetMesh): 1 cells, 4 vertices, 4 points", nullptr},
    {"convert @x.rqg - --to ply --ascii", 0, "element face 10", nullptr},
    {"render @x.rqg -o @x.png --size 8x8 --samples 1", 0, "", nullptr},
    {"convert @disk.rqg.json - --to obj", 0, "f 1 2 3", nullptr},
    {"info @lost.rqg.json", 0, "Packed Disk", "lost.rqg.json: warning: packed geometry is missing: "},
    {"convert @a.rqg.json @y.obj", 0, "", "a.rqg.json\" places itself"},
    {"--man", 0, ".TH RQ 1", nullptr},
    {"--completion tcsh", 1, "", "--completion"},
    {"info @x.rqg @x.rqg.json @x.obj", 0, "floor", nullptr},
    {"render --help", 0, "PNG file to write", nullptr},
    {"render @nowhere.obj -o @x.png", 2, "", "nowhere.obj: error: cannot be read: No such file"},
    {"render @broken.obj -o @x.png", 2, "", "broken.obj:1:6: error:"},
    {"render /dev/null -o @x.png", 2, "", "expected a file whose name ends with .ply"},
    {"render - -o @x.png < /dev/null", 3, "", "<stdin>: there is nothing to draw"},
    {"render @tri.obj -o @x.png --size 8x8 --shade attribute:height", 0, "",
     "tri.obj: warning: nothing has an attribute \"height\" of finite numbers"},
    {"render @flat.rqg.json -o @x.png --size 32x32 --samples 2 --azimuth 60", 0, "", nullptr},
    {"render @tri.obj -o @x.png --eye 1e300,0,0", 3, "", "tri.obj: the camera stands or looks too far away"},
    {"render @tri.obj -o @nowhere/x.png --size 8x8", 3, "", "nowhere/x.png: "},
    {"info --json @tri.obj > /dev/full", 3, "", "standard output"},
    {"info @tri.obj > /dev/full", 3, "", "standard output"},
};

TEST_F(Program, AnswersWithCodesAndOnTheRightStream)
{
    // Scenes that place a file twice, once as a sheet of nearly no thickness; two of them place each other.
    for (const auto &[name, placed] : {std::pair("disk", "tri.obj"),
                                       {"a", "b.rqg.json"},
                                       {"b", "a.rqg.json"},
                                       {"lost", "none.obj"},
                                       {"flat", "cells.rqg.json"}})
        std::ofstream(testFolder() + name + ".rqg.json")
            << R"({"rqg": 1, "primitives": [{"type": "PackedDisk", "points": [0, 1], "payload": {"path": ")" << testFolder()
            << placed << R"("}}], "attributes": {"point": [{"name": "P", "size": 3, "storage": "real32",)"
            << R"("values": [0,0,0, 2,0,0]}], "primitive": [{"name": "transform", "scope": "private", "size": 9,)"
            << R"("storage": "real64", "values": [1,0,0, 0,1,0, 0,0,1, 1e-25,0,0, 0,1,0, 0,0,1]}]}})";
    for (const ExitCase &c : kExitCases)
    {
        SCOPED_TRACE(c.arguments);
        const Outcome run(c.arguments);
        EXPECT_EQ(run.code, c.code);
        EXPECT_NE(run.out.find(c.out), std::string::npos) << run.out;
        EXPECT_NE(run.error.find(c.error ? c.error : ""), std::string::npos) << run.error;
        EXPECT_EQ(run.error.empty(), c.error == nullptr) << run.error;
        EXPECT_TRUE(*c.out || run.out.empty()) << run.out;
    }
}

/// Reads one value of a JSON text by a path such as "primitives/0/faces".
class JSON
{
public:
    explicit JSON(const std::string &text)
    {
        std::string error;
        EXPECT_TRUE(BAS_JSONValue::parse(text, root_, error)) << error << "\n" << text;
    }
    explicit JSON(const BAS_JSONValue &root) : root_(root) {}

    const BAS_JSONValue *at(const std::string &path) const
    {
        const BAS_JSONValue *value = &root_;
        std::istringstream steps(path);
        for (std::string step; value && std::getline(steps, step, '/');)
        {
            const auto *array = value->array();
            const size_t index = array ? size_t(std::stoul(step)) : 0;
            value = !array ? value->find(step) : index < array->size() ? &(*array)[index] : nullptr;
        }
        return value;
    }

    /// A number or text as it would be printed.
    std::string text(const std::string &path) const
    {
        const BAS_JSONValue *value = at(path);
        double number = 0;
        if (value && value->string())
            return *value->string();
        return value && value->number(number) ? fmt::format("{:g}", number) : "no number";
    }
    int64_t integer(const std::string &path) const
    {
        int64_t value = -1;
        return at(path) && at(path)->integer(value) ? value : -1;
    }
    /// The primitives of one class.
    std::vector<JSON> primitivesOf(const std::string &className) const
    {
        std::vector<JSON> primitives;
        for (size_t i = 0; i < size("primitives"); ++i)
            if (const JSON primitive(*at("primitives/" + std::to_string(i))); primitive.text("class") == className)
                primitives.push_back(primitive);
        return primitives;
    }
    size_t size(const std::string &path) const { return at(path) && at(path)->array() ? at(path)->array()->size() : 0; }

private:
    BAS_JSONValue root_;
};

TEST_F(Program, PrintsFactsAsJSON)
{
    const Outcome run("info --json @mixed.obj");
    ASSERT_EQ(run.code, 0) << run.error;
    const JSON json(run.out);
    EXPECT_EQ(json.text("host/points"), "5");
    EXPECT_EQ(json.text("host/attributes/0/owner"), "vertex");
    EXPECT_EQ(json.text("host/attributes/0/name"), "uv");
    EXPECT_EQ(json.text("host/attributes/3/storage"), "string");
    EXPECT_EQ(json.text("host/groups/0/name"), "floor");
    EXPECT_GT(json.integer("held/host page"), 0);

    // The mesh lies in a collection with what became of the line, and the unused point beside it.
    const std::vector<JSON> meshes = json.primitivesOf("RQ_PrimPolygonMesh");
    ASSERT_EQ(meshes.size(), 1u);
    EXPECT_EQ(meshes[0].text("area"), "1");
    EXPECT_EQ(meshes[0].text("perimeter"), "4");
    EXPECT_EQ(meshes[0].text("attributes/vertex/0/name"), "uv");
    EXPECT_EQ(meshes[0].text("attributes/uniform/0/name"), "material");

    const std::vector<JSON> rows =
        JSON(Outcome("info --json " RQ_SCENES "/forest.rqg.json").out).primitivesOf("RQ_PrimInstance");
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].text("instances"), "40");
}

TEST_F(Program, FactsComeThroughEveryKindOfFile)
{
    const auto factsOf = [](const std::string &file) {
        const std::string out = Outcome("info --json " + file).out;
        const size_t begin = out.find("\"host\"");
        return out.substr(begin, out.find("\"seconds\"") - begin);
    };
    for (const char *step : {"@mixed.obj @y.rqg.json", "@y.rqg.json @y.rqg", "@y.rqg @y.obj"})
        EXPECT_EQ(Outcome(std::string("convert ") + step).code, 0) << step;
    for (const char *file : {"@y.rqg.json", "@y.rqg", "@y.obj"})
        EXPECT_EQ(factsOf(file), factsOf("@mixed.obj")) << file;
}

TEST_F(Program, CopiesNothingToReadATriangleInPlace)
{
    const JSON json(Outcome("info --json @tri.obj").out);
    EXPECT_EQ(json.text("primitives/0/area"), "0.5");
    ASSERT_TRUE(json.at("copied") && json.at("copied")->map());
    for (const auto &[cause, bytes] : *json.at("copied")->map())
        EXPECT_EQ(json.text("copied/" + cause), "0") << cause;
}

// The JSON of one file must agree with what its table tells.
void expectFacts(const JSON &json, const ModelFacts &model, bool compacted)
{
    int64_t faces = 0, meshPoints = 0, cloudPoints = 0, minCount = -1, maxCount = -1;
    for (const JSON &cloud : json.primitivesOf("RQ_PrimPointMesh"))
        cloudPoints += cloud.integer("points");
    for (const JSON &mesh : json.primitivesOf("RQ_PrimPolygonMesh"))
    {
        faces += mesh.integer("faces");
        meshPoints += mesh.integer("points");
        minCount = mesh.integer("min_count");
        maxCount = mesh.integer("max_count");
    }
    EXPECT_EQ(json.integer("host/points"), model.points);
    EXPECT_EQ(std::max<int64_t>(0, json.integer("host/types/1")), model.faces + model.lines);
    EXPECT_EQ(faces, model.faces);
    EXPECT_EQ(minCount, model.minCount);
    EXPECT_EQ(maxCount, model.maxCount);
    if (faces == 0)
        return;
    if (const bool hasParticles = json.integer("host/types/11") > 0; !hasParticles)
    {
        EXPECT_EQ(cloudPoints, model.unused);
    }
    EXPECT_EQ(model.points - meshPoints, compacted ? model.unused : 0);
}

TEST_F(Program, AgreesWithTheTablesOfTheModels)
{
    const std::vector<ModelFacts> models = meshModels();
    SKIP_WITHOUT_MODELS(models);
    for (const bool compacted : {false, true})
    {
        std::string arguments = compacted ? "info --json -p fastpolycompacting=0" : "info --json";
        for (const ModelFacts &model : models)
            arguments += " '" + model.path.string() + "'";
        const Outcome run(arguments);
        EXPECT_EQ(run.code, 2) << "broken models are among them";
        const JSON json(run.out);
        size_t read = 0;
        for (const ModelFacts &model : models)
        {
            SCOPED_TRACE(model.name);
            if (json.text(std::to_string(read) + "/file") == model.path.string())
            {
                const JSON facts(*json.at(std::to_string(read++)));
                if (model.told)
                    expectFacts(facts, model, compacted);
            }
            else
                EXPECT_NE(run.error.find(model.path.string() + ":"), std::string::npos) << "refused without a reason";
        }
        EXPECT_EQ(read, json.size(""));
        EXPECT_EQ(models.size() - read, 17u) << "models are refused";
    }
}

TEST_F(Program, GivesTheSameForAnyNumberOfThreads)
{
    const std::string file = RQ_DATA_DIR "/quad/sword-quad-dominant.obj";
    if (!std::filesystem::exists(file))
        GTEST_SKIP() << "no model " << file;
    const std::string one = Outcome("info --json --convex 3 --threads 1 " + file).out;
    const std::string two = Outcome("info --json --convex 3 --threads 2 " + file).out;
    const size_t times = one.find("\"seconds\"");
    EXPECT_EQ(one.substr(0, times), two.substr(0, times));
    EXPECT_EQ(JSON(one).text("primitives/0/max_count"), "3");
}
}  // namespace
