#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <sys/wait.h>
#include <unistd.h>

#include <host/bas/JSONValue.h>
#include <tests/DataReadme.h>

namespace
{
std::string contentOf(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Tests of this program may run side by side.
std::string testFolder() { return testing::TempDir() + "rq_program_test_" + std::to_string(getpid()) + "/"; }

/// What one run of the program gave.
struct Outcome
{
    /// Run with arguments of the shell; `@` in front of a name stands for the folder of the test's files.
    explicit Outcome(std::string arguments)
    {
        const std::string folder = testFolder();
        for (size_t at = 0; (at = arguments.find('@', at)) != std::string::npos;)
            arguments.replace(at, 1, folder);
        // A redirection among the arguments comes later and so wins.
        const int status = std::system((RQ_PROGRAM " >" + folder + "out 2>" + folder + "err " + arguments).c_str());
        code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        out = contentOf(folder + "out");
        error = contentOf(folder + "err");
    }

    int code;
    std::string out;
    std::string error;
};

class Program : public testing::Test
{
protected:
    void SetUp() override
    {
        const std::string folder = testFolder();
        std::filesystem::create_directories(folder);
        std::ofstream(folder + "tri.obj") << "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
        std::ofstream(folder + "mixed.obj") << "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 9 9 9\nvt 0 0\nvn 0 0 1\n"
                                               "g floor\nusemtl stone\nf 1/1/1 2/1/1 3/1/1 4/1/1\nl 1 3\n";
        std::ofstream(folder + "broken.obj") << "v 0 0\n";
        std::ofstream(folder + "oddity.obj") << "v 0 0 0\nwhat 1\n";
        std::ofstream(folder + "empty.obj");
    }

    void TearDown() override { std::filesystem::remove_all(testFolder()); }
};

struct ExitCase
{
    const char *arguments;
    int code;
    const char *out;    ///< a part of what is printed
    const char *error;  ///< a part of what standard error gets, null when that must be empty
};

const ExitCase kExitCases[] = {
    {"", 1, "", "ubcommand"},
    {"--help", 0, "info", nullptr},
    {"--version", 0, "rq 0.", nullptr},
    {"info --help", 0, "--json", nullptr},
    {"info", 1, "", "FILE"},
    {"nonsense", 1, "", "nonsense"},
    {"info --what @tri.obj", 1, "", "--what"},
    {"info --convex 2 @tri.obj", 1, "", "--convex"},
    {"info --threads 0 @tri.obj", 1, "", "--threads"},
    {"info -p lod @tri.obj", 1, "", "-p lod: expected KEY=VALUE"},
    {"info -p cuspangel=40 @tri.obj", 1, "", "there is no option \"cuspangel\"; the nearest is \"cuspangle\""},
    {"info -p cuspangle=forty @tri.obj", 1, "", "-p cuspangle=forty: expected a number, found \"forty\""},
    {"info -p geo:unusedpoints=2 @tri.obj", 1, "", "expected 0 or 1, found \"2\""},
    {"info -p facesetmode=1.5 @tri.obj", 1, "", "expected a whole number, found \"1.5\""},
    {"info @nowhere.obj", 2, "", "nowhere.obj: error: cannot be read: No such file"},
    {"info @broken.obj", 2, "", "broken.obj:1:6: error: expected a number, found the end of the line"},
    {"info --json @broken.obj", 2, "", "broken.obj:1:6: error:"},
    {"info @broken.obj @tri.obj", 2, "tri.obj\n", "broken.obj:1:6: error:"},
    {"info @oddity.obj", 0, "1 points", "oddity.obj:2:1: warning: expected a known word, found \"what\""},
    {"info @empty.obj", 0, "0 points", "warning: expected points, found none"},
    {"info @tri.obj", 0, "RQ_PrimPolygonMesh", nullptr},
    {"info - < @tri.obj", 0, "<stdin>\n  host: 3 points", nullptr},
    {"info - < @broken.obj", 2, "", "<stdin>:1:6: error:"},
    {"info -p cuspangle=40 -p addvertexnormals=on --convex 3 --threads 1 @tri.obj", 0, "3 points", nullptr},
    {"info --json @tri.obj > /dev/full", 3, "", "standard output"},
    {"info @tri.obj > /dev/full", 3, "", "standard output"},
};

TEST_F(Program, AnswersWithCodesAndOnTheRightStream)
{
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

    /// A number or text as it would be printed; "absent" without it.
    std::string text(const std::string &path) const
    {
        const BAS_JSONValue *value = at(path);
        double number = 0;
        if (value && value->string())
            return *value->string();
        if (!value || value->isNull() || !value->number(number))
            return !value ? "absent" : value->isNull() ? "null" : "other";
        std::ostringstream stream;
        stream << number;
        return stream.str();
    }
    int64_t integer(const std::string &path) const
    {
        int64_t value = -1;
        return at(path) && at(path)->integer(value) ? value : -1;
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
    const std::pair<const char *, const char *> expected[] = {
        {"host/points", "5"},
        {"host/vertices", "6"},
        {"host/primitives", "2"},
        {"host/types/1", "2"},
        {"host/attributes/0/owner", "vertex"},
        {"host/attributes/0/name", "uv"},
        {"host/attributes/0/storage", "real32"},
        {"host/attributes/0/type", "absent"},
        {"host/attributes/0/size", "2"},
        {"host/attributes/0/entries", "6"},
        {"host/attributes/1/type", "normal"},
        {"host/attributes/2/owner", "point"},
        {"host/attributes/2/type", "point"},
        {"host/attributes/3/owner", "primitive"},
        {"host/attributes/3/storage", "string"},
        {"host/groups/0/owner", "primitive"},
        {"host/groups/0/name", "floor"},
        {"host/groups/0/entries", "2"},
    };
    for (const auto &[path, text] : expected)
        EXPECT_EQ(json.text(path), text) << path;
    EXPECT_GE(json.text("seconds/load"), "0");
    EXPECT_GE(json.text("seconds/refine"), "0");

    // The mesh lies in a collection with what became of the line, and the unused point beside it.
    const std::vector<std::pair<const char *, const char *>> ofMesh = {
        {"type", "PolygonMesh"},
        {"type_id", "12"},
        {"depth", "1"},
        {"faces", "1"},
        {"vertices", "4"},
        {"points", "4"},
        {"min_count", "4"},
        {"max_count", "4"},
        {"bounds/0/0", "0"},
        {"bounds/1/1", "1"},
        {"area", "1"},
        {"volume", "0"},
        {"perimeter", "4"},
        {"segments", "1"},
        {"attributes/vertex/0/name", "uv"},
        {"attributes/point/0/name", "P"},
        {"attributes/point/0/entries", "4"},
        {"attributes/uniform/0/name", "material"},
    };
    int64_t meshes = 0, clouds = 0;
    for (size_t i = 0; i < json.size("primitives"); ++i)
    {
        const JSON primitive(*json.at("primitives/" + std::to_string(i)));
        clouds += primitive.text("class") == "RQ_PrimPointMesh" && primitive.text("points") == "1";
        if (primitive.text("class") != "RQ_PrimPolygonMesh")
            continue;
        ++meshes;
        for (const auto &[path, text] : ofMesh)
            EXPECT_EQ(primitive.text(path), text) << path;
    }
    EXPECT_EQ(meshes, 1);
    EXPECT_EQ(clouds, 1);
}

TEST_F(Program, PrintsAnArrayForSeveralFilesAndNullBoundsForNothing)
{
    const JSON several(Outcome("info --json @tri.obj @mixed.obj @broken.obj").out);
    EXPECT_EQ(several.size(""), 2u);
    EXPECT_EQ(several.text("0/primitives/0/faces"), "1");
    EXPECT_EQ(JSON(Outcome("info --json @empty.obj").out).size("primitives"), 0u);
}

TEST_F(Program, CopiesNothingToReadATriangleInPlace)
{
    const JSON json(Outcome("info --json @tri.obj").out);
    EXPECT_EQ(json.text("primitives/0/bounds/1/0"), "1");
    EXPECT_EQ(json.text("primitives/0/area"), "0.5");
    ASSERT_TRUE(json.at("copied") && json.at("copied")->map());
    EXPECT_EQ(json.at("copied")->map()->size(), 3u);
    for (const auto &[cause, bytes] : *json.at("copied")->map())
        EXPECT_EQ(json.text("copied/" + cause), "0") << cause;
}

// One file's JSON must agree with what its table tells.
void expectFacts(const JSON &json, const ModelFacts &model, bool compacted)
{
    int64_t faces = 0, meshPoints = 0, cloudPoints = 0, minCount = -1, maxCount = -1;
    for (size_t i = 0; i < json.size("primitives"); ++i)
    {
        const JSON primitive(*json.at("primitives/" + std::to_string(i)));
        if (primitive.text("class") == "RQ_PrimPointMesh")
            cloudPoints += primitive.integer("points");
        if (primitive.text("class") != "RQ_PrimPolygonMesh")
            continue;
        faces += primitive.integer("faces");
        meshPoints += primitive.integer("points");
        minCount = primitive.integer("min_count");
        maxCount = primitive.integer("max_count");
    }
    EXPECT_EQ(json.integer("host/points"), model.points);
    EXPECT_EQ(faces, model.faces);
    EXPECT_EQ(minCount, model.minCount);
    EXPECT_EQ(maxCount, model.maxCount);
    if (faces == 0)
        return;
    EXPECT_EQ(cloudPoints, model.unused);
    EXPECT_EQ(model.points - meshPoints, compacted ? model.unused : 0);
}

TEST_F(Program, AgreesWithTheTablesOfTheModels)
{
    std::vector<ModelFacts> models = objModels();
    SKIP_WITHOUT_MODELS(models);
    std::erase_if(models, [](const ModelFacts &model) { return model.name.starts_with("broken/"); });
    for (const bool compacted : {false, true})
    {
        std::string arguments = compacted ? "info --json -p fastpolycompacting=0" : "info --json";
        for (const ModelFacts &model : models)
            arguments += " '" + model.path.string() + "'";
        const Outcome run(arguments);
        ASSERT_EQ(run.code, 0) << run.error;
        const JSON json(run.out);
        ASSERT_EQ(json.size(""), models.size());
        for (size_t i = 0; i < models.size(); ++i)
        {
            SCOPED_TRACE(models[i].name);
            expectFacts(JSON(*json.at(std::to_string(i))), models[i], compacted);
        }
    }
}

TEST_F(Program, ReadsOrRefusesBrokenModels)
{
    const std::vector<ModelFacts> models = objModels();
    SKIP_WITHOUT_MODELS(models);
    int64_t refused = 0;
    for (const ModelFacts &model : models)
    {
        if (!model.name.starts_with("broken/"))
            continue;
        SCOPED_TRACE(model.name);
        const Outcome run("info --json '" + model.path.string() + "'");
        if (run.code == 0)
        {
            expectFacts(JSON(run.out), model, false);
            continue;
        }
        EXPECT_EQ(run.code, 2);
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.error.find(model.path.string() + ":"), std::string::npos);
        EXPECT_NE(run.error.find(": error: expected "), std::string::npos);
        ++refused;
    }
    EXPECT_EQ(refused, 6);
}

// All but the times.
std::string withoutSeconds(const std::string &text) { return text.substr(0, text.find("\"seconds\"")); }

TEST_F(Program, GivesTheSameForAnyNumberOfThreads)
{
    const std::vector<ModelFacts> models = objModels();
    SKIP_WITHOUT_MODELS(models);
    for (const char *name : {"tri/koala.obj", "quad/sword-quad-dominant.obj"})
    {
        const std::string file = (std::filesystem::path(RQ_DATA_DIR) / name).string();
        const std::string one = Outcome("info --json --convex 3 --threads 1 " + file).out;
        EXPECT_EQ(withoutSeconds(one), withoutSeconds(Outcome("info --json --convex 3 --threads 2 " + file).out)) << name;
        EXPECT_EQ(JSON(one).text("primitives/0/max_count"), "3") << name;
    }
}
}  // namespace
