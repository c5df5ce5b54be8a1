#pragma once

#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

/// What is known of a model, from the tables that come with the models.
struct ModelFacts
{
    std::filesystem::path path;
    std::string name;  ///< folder and file
    bool told = false;  ///< the table says something about the content
    int64_t points = 0;
    int64_t faces = 0;
    int64_t minCount = -1;  ///< corners of a face, -1 without faces
    int64_t maxCount = -1;
    int64_t unused = 0;  ///< points that no face uses, told only where there are faces
    int64_t lines = 0;
};

inline int64_t numberIn(const std::string &text, const std::string &pattern, int64_t fallback)
{
    std::smatch match;
    return std::regex_search(text, match, std::regex(pattern)) ? std::stoll(match[1]) : fallback;
}

/// The OBJ, PLY, STL and OFF models of the folder that the tests read from.  Empty when it is absent.
inline std::vector<ModelFacts> meshModels()
{
    std::vector<ModelFacts> models;
    const std::filesystem::path root(RQ_DATA_DIR);
    std::ifstream tables(root / "README.md");
    std::string folder;
    const std::regex heading("## ([a-z/]+)"), row(R"(\| (\S+\.(?:obj|ply|stl|off)) \| \d+ \| ([^|]*) \|.*)");
    for (std::string line; std::getline(tables, line);)
    {
        std::smatch match;
        if (std::regex_match(line, match, heading))
            folder = match[1];
        else if (std::regex_match(line, match, row))
        {
            const std::string name = match[1], content = match[2];
            models.push_back({.path = root / folder / name,
                              .name = folder + "/" + name,
                              .told = !content.empty(),
                              .points = numberIn(content, R"((\d+) pts)", 0),
                              .faces = numberIn(content, R"((\d+) faces)", 0),
                              .minCount = numberIn(content, R"(\[(\d+)\.\.)", -1),
                              .maxCount = numberIn(content, R"(\.\.(\d+)\])", -1),
                              .unused = numberIn(content, R"((\d+) unused)", 0),
                              .lines = numberIn(content, R"((\d+) lines)", 0)});
        }
    }
    return models;
}

/// Leave a test that needs the models when they are not there.
#define SKIP_WITHOUT_MODELS(models)                                                                                         \
    if ((models).empty())                                                                                                   \
    GTEST_SKIP() << "no models in " << RQ_DATA_DIR
