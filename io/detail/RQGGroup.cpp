#include <io/detail/RQGGroup.h>

namespace rq::io
{
namespace
{
// The members as runs, whichever way they are written.
bool readRuns(const RQGInput &input, JSONText list, bool isRuns, int64_t elements, std::vector<int64_t> &runs)
{
    std::vector<int64_t> read;
    if (!input.read(list, read))
        return false;
    if (isRuns && read.size() % 2 != 0)
        return input.fail(list, fmt::format("expected two numbers for each run, found {} in all", read.size()));
    for (size_t i = 0; i < read.size(); ++i)
    {
        const bool isEnd = isRuns && i % 2 == 1;
        const int64_t low = isEnd ? read[i - 1] : 0, high = elements - !isEnd;
        if (read[i] < low || read[i] > high)
            return input.fail(list, fmt::format("expected members from {} to {}, found {}", low, high, read[i]));
        runs.push_back(read[i]);
        if (!isRuns)
            runs.push_back(read[i] + 1);
    }
    return true;
}
}  // namespace

void writeGroup(RQGOutput &output, const ELM_Group &group)
{
    std::vector<int64_t> runs;
    for (const auto [begin, end] : group.range().blocks())
        if (!runs.empty() && runs.back() == begin)
            runs.back() = end;
        else
            runs.insert(runs.end(), {begin, end});
    output.json().beginMap();
    output.keyText("name", group.name().view());
    const bool areShort = group.count() <= std::ssize(runs);
    output.key(areShort ? "members" : "runs");
    if (areShort)
    {
        std::vector<int64_t> members;
        for (size_t run = 0; run < runs.size(); run += 2)
            for (int64_t offset = runs[run]; offset < runs[run + 1]; ++offset)
                members.push_back(offset);
        runs = std::move(members);
    }
    output.row(std::move(runs));
    output.json().endMap();
}

bool readGroup(RQGInput &input, JSONText map, ELM_Owner owner, MOD_Edit &edit)
{
    RQGMap members;
    std::string name;
    if (!members.open(input, map) || !members.read("name", name))
        return false;
    const JSONText list = members.find("members"), runList = members.find("runs");
    members.close();
    std::vector<int64_t> runs;
    const int64_t elements = edit.capacity(owner);
    if ((list && !readRuns(input, list, false, elements, runs)) ||
        (runList && !readRuns(input, runList, true, elements, runs)))
        return false;
    ELM_Group *group = edit.group(owner, name);
    for (size_t i = 0; group && i < runs.size(); i += 2)
        group->setRange(runs[i], runs[i + 1] - runs[i]);
    return group || input.fail(map, edit.message());
}
}  // namespace rq::io
