#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include <sys/wait.h>
#include <gtest/gtest.h>

#include <tests/OwnFolder.h>

namespace tests
{
inline std::string contentOf(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The folder of this process.
inline const std::string &testFolder()
{
    static const OwnFolder folder;
    return folder.path();
}

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
        std::ofstream(folder + "cells.rqg.json")
            << R"({"rqg": 1, "primitives": [{"type": "hexahedron", "points": [0, 1, 2, 3, 4, 5, 6, 7]},)"
               R"({"type": "tetrahedron", "points": [4, 5, 7, 8]}], "attributes": {"point": [{"name": "P", "size": 3,)"
               R"("storage": "real32", "values": [0,0,0,1,0,0,1,1,0,0,1,0,0,0,1,1,0,1,1,1,1,0,1,1,0,0,2]}]}})";
        std::ofstream(folder + "oddity.obj") << "v 0 0 0\nwhat 1\n";
    }

    void TearDown() override { std::filesystem::remove_all(testFolder()); }
};
}  // namespace tests
