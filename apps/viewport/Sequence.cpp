#include <apps/viewport/Sequence.h>

#include <algorithm>
#include <filesystem>
#include <string_view>

namespace rq::viewport
{
namespace
{
namespace fs = std::filesystem;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// What stands before and behind the number, and the least length of the number; 0 when there is not just one run.
struct Pattern
{
    explicit Pattern(const std::string &name)
    {
        const size_t first = name.find('#');
        const size_t last = name.find_last_of('#');
        if (first == name.npos || name.find_first_not_of('#', first) < last)
            return;
        digits = last + 1 - first;
        before = name.substr(0, first);
        behind = name.substr(last + 1);
    }

    /// The digits of the number in a name, empty when it is none of the pattern's.
    std::string_view numberIn(std::string_view name) const
    {
        if (name.size() < before.size() + behind.size() + digits || !name.starts_with(before) || !name.ends_with(behind))
            return {};
        const std::string_view number = name.substr(before.size(), name.size() - before.size() - behind.size());
        const bool isFilledUp = number.size() > digits && number.front() == '0';
        return !isFilledUp && std::all_of(number.begin(), number.end(), isDigit) ? number : std::string_view();
    }

    std::string before, behind;
    size_t digits = 0;
};
}  // namespace

bool isSequence(const std::string &path) { return Pattern(fs::path(path).filename().string()).digits > 0; }

std::vector<std::string> sequenceFiles(const std::string &path)
{
    const fs::path whole(path);
    const Pattern pattern(whole.filename().string());
    std::vector<std::pair<std::string, std::string>> found;  // number, file
    std::error_code ignored;
    const fs::path folder = whole.has_parent_path() ? whole.parent_path() : fs::path(".");
    for (fs::directory_iterator entry(folder, ignored), end; pattern.digits > 0 && entry != end; entry.increment(ignored))
    {
        const std::string name = entry->path().filename().string();
        if (const std::string_view number = pattern.numberIn(name); !number.empty())
            found.emplace_back(number, (whole.parent_path() / name).string());
    }
    // Longer numbers are larger ones: only those of the pattern's length begin with zeros.
    std::sort(found.begin(), found.end(), [](const auto &a, const auto &b) {
        return a.first.size() != b.first.size() ? a.first.size() < b.first.size() : a.first < b.first;
    });
    std::vector<std::string> files;
    for (const auto &[number, file] : found)
        files.push_back(file);
    return files;
}
}  // namespace rq::viewport
