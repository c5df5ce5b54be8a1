#include <rq/surface/detail/GridTrimmer.h>

#include <algorithm>
#include <cmath>
#include <set>

namespace
{
double signedArea(const std::vector<BAS_Vec2d> &loop)
{
    double area = 0.0;
    for (size_t i = 0; i < loop.size(); ++i)
        area += (loop[i] - loop[0]).cross(loop[(i + 1) % loop.size()] - loop[0]);
    return 0.5 * area;
}
}  // namespace

rq::GridTrimmer::GridTrimmer(std::vector<double> us, std::vector<double> vs, bool wrapsU, bool wrapsV)
    : us_(std::move(us)), vs_(std::move(vs)), wrapsU_(wrapsU), wrapsV_(wrapsV), passings_(size_t(cellsV()))
{}

int64_t rq::GridTrimmer::crossing(int64_t i, int64_t j) const
{
    const int64_t columns = cellsU() + !wrapsU_, rows = cellsV() + !wrapsV_;
    return i % columns + columns * (j % rows);
}

double rq::GridTrimmer::perimeterPlace(int64_t cell, const Node &node) const
{
    const size_t i = size_t(cell % cellsU()), j = size_t(cell / cellsU());
    // Far outside, rounding puts a place where the grid is cut beside the cell.
    const double s = std::clamp((node.at.x - us_[i]) / (us_[i + 1] - us_[i]), 0.0, 1.0);
    const double t = std::clamp((node.at.y - vs_[j]) / (vs_[j + 1] - vs_[j]), 0.0, 1.0);
    if (node.at.y == vs_[j] && s < 1.0)
        return s;
    if (node.at.x == us_[i + 1] && t < 1.0)
        return 1.0 + t;
    return node.at.y == vs_[j + 1] && s > 0.0 ? 3.0 - s : 4.0 - t;
}

void rq::GridTrimmer::keepAlong(int64_t cell, const std::vector<Chain> &chains)
{
    const int64_t i = cell % cellsU(), j = cell / cellsU();
    const int64_t border[] = {crossing(i, j), crossing(i + 1, j), crossing(i + 1, j + 1), crossing(i, j + 1)};
    std::vector<double> entries, exits;
    std::set<std::pair<double, size_t>> waiting;  // where chains enter, and which, without those taken
    for (size_t c = 0; c < chains.size(); ++c)
    {
        entries.push_back(perimeterPlace(cell, chains[c].front()));
        exits.push_back(perimeterPlace(cell, chains[c].back()));
        waiting.insert({entries[c], c});
    }
    const auto wayFrom = [](double from, double to) { return to < from ? to - from + 4.0 : to - from; };
    for (size_t start = 0; start < chains.size(); ++start)
    {
        if (waiting.erase({entries[start], start}) == 0)
            continue;
        std::vector<int64_t> corners;
        std::vector<BAS_Vec2d> outline;  // of the chains alone, for as long as no border is followed
        size_t current = start;
        const auto followBorder = [&](double way) {
            for (int step = 0; step < 4; ++step)
            {
                const int corner = (int(std::floor(exits[current])) + 1 + step) % 4;
                const double from = wayFrom(exits[current], corner);
                if (from > 0.0 && from < way && corners.back() != border[corner])
                    corners.push_back(border[corner]);
            }
        };
        for (size_t next = chains.size(); next != start; current = next)
        {
            for (const Node &node : chains[current])
            {
                corners.push_back(node.corner);
                outline.push_back(node.at);
            }
            next = start;
            auto nearest = waiting.lower_bound({exits[current], 0});
            if (nearest == waiting.end())
                nearest = waiting.begin();
            if (nearest != waiting.end() &&
                wayFrom(exits[current], nearest->first) < wayFrom(exits[current], entries[start]))
            {
                next = nearest->second;
                waiting.erase(nearest);
            }
            const double way = wayFrom(exits[current], entries[next]);
            if (way > 0.0)
            {
                followBorder(way);
                outline.clear();
            }
            else if (next == start && corners.size() == outline.size() && signedArea(outline) < 0.0)
                followBorder(4.0);  // a hole that touches the border: the cell is around it
        }
        emit(corners);
    }
}

void rq::GridTrimmer::emit(std::vector<int64_t> &corners)
{
    corners.erase(std::unique(corners.begin(), corners.end()), corners.end());
    while (corners.size() > 1 && corners.front() == corners.back())
        corners.pop_back();
    if (corners.size() < 3)
        return;
    faces_.counts.push_back(int32_t(corners.size()));
    faces_.corners.insert(faces_.corners.end(), corners.begin(), corners.end());
}

rq::TrimmedFaces rq::GridTrimmer::trim(const TrimLoops &loops)
{
    double largest = 0.0;
    for (const std::vector<BAS_Vec2d> &loop : loops)
    {
        if (const double area = signedArea(loop); std::abs(area) > std::abs(largest))
            largest = area;
        addLoop(cutAtLines(loop));
    }
    auto chains = chains_.begin();
    for (int64_t row = 0; row < cellsV(); ++row)
    {
        std::vector<Passing> &passings = passings_[size_t(row)];
        std::sort(passings.begin(), passings.end(), [](const Passing &a, const Passing &b) { return a.u < b.u; });
        int winding = largest < 0.0;
        auto passing = passings.begin();
        for (int64_t i = 0; i < cellsU(); ++i)
        {
            const double middle = 0.5 * (us_[size_t(i)] + us_[size_t(i) + 1]);
            for (; passing != passings.end() && passing->u < middle; ++passing)
                winding += passing->change;
            const int64_t cell = row * cellsU() + i;
            if (chains != chains_.end() && chains->first == cell)
                keepAlong(cell, (chains++)->second);
            else if (winding > 0)
            {
                std::vector<int64_t> quad{crossing(i, row), crossing(i + 1, row), crossing(i + 1, row + 1),
                                          crossing(i, row + 1)};
                emit(quad);
            }
        }
    }
    return std::move(faces_);
}
