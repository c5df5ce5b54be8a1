#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <unistd.h>

namespace bench
{
/// Where `scripts/setup --oracles` puts packages of node.
inline std::filesystem::path oracleFolder()
{
    const char *cache = std::getenv("XDG_CACHE_HOME"), *home = std::getenv("HOME");
    return std::filesystem::path(cache ? cache : std::string(home ? home : "") + "/.cache") / "librq" / "oracles";
}

/// Whether the shell finds a program.
inline bool hasProgram(const std::string &name)
{
    const char *path = std::getenv("PATH");
    std::string rest = path ? path : "";
    for (size_t end = 0; end != std::string::npos; rest.erase(0, end + 1))
    {
        end = rest.find(':');
        if (access((rest.substr(0, end) + "/" + name).c_str(), X_OK) == 0)
            return true;
    }
    return false;
}

/// Runs a program that reads a file, writes floats to another, and says how many seconds its work took.
class Oracle
{
public:
    explicit Oracle(const std::string &command) : command_(command) {}

    template <class T> void write(const std::vector<T> &values)
    {
        input_.append(reinterpret_cast<const char *>(values.data()), values.size() * sizeof(T));
    }

    /// The floats; none when the program fails.
    std::vector<float> run()
    {
        namespace fs = std::filesystem;
        const std::string stem = (fs::temp_directory_path() / ("rq-oracle-" + std::to_string(getpid()))).string();
        std::ofstream(stem + ".in", std::ios::binary) << input_;
        std::vector<float> values;
        if (call(command_ + " " + stem + ".in " + stem + ".out 2>/dev/null"))
        {
            values.resize(fs::file_size(stem + ".out") / sizeof(float));
            std::ifstream(stem + ".out", std::ios::binary)
                .read(reinterpret_cast<char *>(values.data()), std::streamsize(values.size() * sizeof(float)));
        }
        fs::remove(stem + ".in");
        fs::remove(stem + ".out");
        return values;
    }

    /// Of the last run.
    double seconds() const { return seconds_; }

private:
    bool call(const std::string &command)
    {
        FILE *const output = popen(command.c_str(), "r");
        if (!output)
            return false;
        char line[4096];
        while (std::fgets(line, sizeof line, output))
            std::sscanf(line, "seconds %lf", &seconds_);
        return pclose(output) == 0;
    }

    std::string command_, input_;
    double seconds_ = 0.0;
};
}  // namespace bench
