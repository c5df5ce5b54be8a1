#include <cmath>
#include <cstdio>
#include <cstdlib>

#include <bench/io/OBJFile.h>

namespace
{
std::string outputOf(const std::string &command)
{
    std::string output;
    FILE *pipe = popen((command + " 2>/dev/null").c_str(), "r");
    char part[4096];
    for (size_t got; pipe && (got = std::fread(part, 1, sizeof(part), pipe)) > 0;)
        output.append(part, got);
    if (pipe)
        pclose(pipe);
    return output;
}

// A whole program that tells what is in the file; faces must be among it.  The text of the file is all that it reads.
void addInfo(const char *who, const std::string &program, const std::string &faces)
{
    bench::add({"infoOBJ", "quads100MB", who, 2, bench::OBJFile::kFaces, 100e6, false, [program, faces] {
                    const auto file = std::make_shared<bench::OBJFile>();
                    const std::string command = program + " " + file->path();
                    return bench::Work{
                        [command, file] { return bench::keep(outputOf(command)); },
                        [command, faces] { return outputOf(command).find(faces) == std::string::npos ? 1.0 : 0.0; }};
                }});
}

const bool registered = [] {
    constexpr auto kFaces = int64_t(bench::OBJFile::kFaces);
#ifdef RQ_PROGRAM
    addInfo("ours", RQ_PROGRAM " info", std::to_string(kFaces));
#endif
    // It cuts quads.
    if (std::system("command -v assimp >/dev/null 2>&1") == 0)
        addInfo("assimp", "assimp info", std::to_string(2 * kFaces));
    return true;
}();
}  // namespace
