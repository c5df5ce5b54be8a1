#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

namespace tests
{
/// A folder for the files of a test, which goes with the object.
///
/// Its name is new: tests run side by side, also those of two builds, and one that was killed leaves its files behind.
class OwnFolder
{
public:
    OwnFolder()
    {
        if (!mkdtemp(path_.data()))
            std::abort();
        path_ += '/';
    }
    ~OwnFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    OwnFolder(const OwnFolder &) = delete;
    OwnFolder &operator=(const OwnFolder &) = delete;

    /// Ends with a slash.
    const std::string &path() const { return path_; }

private:
    std::string path_ = testing::TempDir() + "rq_test_XXXXXX";
};

/// Write a file in one step, as a new one: who watches it sees no half of it, and another file even within one tick of the
/// system's clock.
inline void replaceFile(const std::string &path, const std::string &content)
{
    std::ofstream(path + ".new", std::ios::binary) << content;
    std::filesystem::rename(path + ".new", path);
}
}  // namespace tests
