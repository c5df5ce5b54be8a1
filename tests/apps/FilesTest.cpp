#include <cmath>
#include <set>

#include <tests/DataReadme.h>
#include <tests/apps/Program.h>

using namespace tests;

namespace
{
const std::string kData = RQ_DATA_DIR;

/// What becomes of files that are broken, or only odd.  Others of the folders must be read without a word.
struct BrokenCase
{
    const char *file;
    int code;
    const char *error;  ///< a part of what is said of it
};

const BrokenCase kBroken[] = {
    {"broken/malformed.obj", 2, "malformed.obj:"},
};

TEST_F(Program, AnswersForEveryBrokenFile)
{
    if (!std::filesystem::exists(kData))
        GTEST_SKIP() << "no models in " << kData;
    std::map<std::string, const BrokenCase *> cases;
    for (const BrokenCase &c : kBroken)
        cases[c.file] = &c;
    for (const char *folder : {"broken", "broken/gltf"})
        for (const auto &entry : std::filesystem::directory_iterator(kData + '/' + folder))
        {
            const std::string name = std::string(folder) + '/' + entry.path().filename().string();
            SCOPED_TRACE(name);
            if (!entry.is_regular_file())
                continue;
            const std::string file = " '" + entry.path().string() + "' ";
            const Outcome info("info" + file);
            const Outcome convert("convert" + file + "@x.rqg"), render("render" + file + "-o @x.png --size 8x8 --samples 1");
            printf("    {\"%s\", %d, %d, %d, \"%s\"},\n", name.c_str(), info.code, convert.code, render.code, info.error.c_str());
        }
}
}  // namespace
