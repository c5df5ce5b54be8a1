#include <algorithm>
#include <cmath>

#include <rq/surface/detail/GridTrimmer.h>

// Loops are cut into chains that run through one cell each.

namespace
{
// What is as close to a line as this, in cells, lies on it.
constexpr double kSnap = 1e-5;

int64_t cellOf(const std::vector<double> &lines, double at)
{
    const auto behind = std::upper_bound(lines.begin(), lines.end(), at);
    return std::clamp<int64_t>(behind - lines.begin() - 1, 0, int64_t(lines.size()) - 2);
}

/// The number of the line that a value lies on, -1 for none.
int64_t lineAt(const std::vector<double> &lines, double at)
{
    const auto line = std::lower_bound(lines.begin(), lines.end(), at);
    return line != lines.end() && *line == at ? line - lines.begin() : -1;
}

double snapped(const std::vector<double> &lines, double at)
{
    const int64_t cell = cellOf(lines, at);
    const double low = lines[size_t(cell)], high = lines[size_t(cell) + 1], near = kSnap * (high - low);
    return std::abs(at - low) <= near ? low : std::abs(at - high) <= near ? high : at;
}

/// Add the places, as fractions of the way from a to b, where the way crosses lines.
void addCrossings(const std::vector<double> &lines, double a, double b, int axis, std::vector<std::pair<double, int>> &out)
{
    const auto [low, high] = std::minmax(a, b);
    for (auto line = std::upper_bound(lines.begin(), lines.end(), low); line != lines.end() && *line < high; ++line)
        out.push_back({(*line - a) / (b - a), axis + 2 * int(line - lines.begin())});
}
}  // namespace

std::vector<double> rq::GridTrimmer::missingLines(const std::vector<double> &us, const std::vector<double> &vs,
                                                  const TrimLoops &loops)
{
    std::vector<double> missing;
    for (const std::vector<BAS_Vec2d> &loop : loops)
    {
        BAS_Vec2d low = loop[0], high = loop[0];
        for (const BAS_Vec2d &point : loop)
            for (int axis = 0; axis < 2; ++axis)
            {
                low[axis] = std::min(low[axis], point[axis]);
                high[axis] = std::max(high[axis], point[axis]);
            }
        const int64_t i = cellOf(us, low.x), j = cellOf(vs, low.y);
        if (low.x > us[size_t(i)] && high.x < us[size_t(i) + 1] && low.y > vs[size_t(j)] && high.y < vs[size_t(j) + 1])
            missing.push_back(0.5 * (low.x + high.x));
    }
    return missing;
}

rq::GridTrimmer::Node rq::GridTrimmer::makeNode(const BAS_Vec2d &point) const
{
    const BAS_Vec2d at(std::clamp(point.x, us_.front(), us_.back()), std::clamp(point.y, vs_.front(), vs_.back()));
    return {at, lineAt(us_, at.x), lineAt(vs_, at.y), -1};
}

std::vector<rq::GridTrimmer::Node> rq::GridTrimmer::cutAtLines(const std::vector<BAS_Vec2d> &loop)
{
    const auto snap = [this](const BAS_Vec2d &p) { return BAS_Vec2d(snapped(us_, p.x), snapped(vs_, p.y)); };
    std::vector<Node> nodes;
    const auto add = [&](const BAS_Vec2d &at) {
        const Node node = makeNode(at);
        if (nodes.empty() || nodes.back().at != node.at)
            nodes.push_back(node);
    };
    std::vector<std::pair<double, int>> crossings;  // the place, and axis + 2 * line
    for (size_t i = 0; i < loop.size(); ++i)
    {
        const BAS_Vec2d a = snap(loop[i]), b = snap(loop[(i + 1) % loop.size()]);
        add(a);
        crossings.clear();
        addCrossings(us_, a.x, b.x, 0, crossings);
        addCrossings(vs_, a.y, b.y, 1, crossings);
        std::sort(crossings.begin(), crossings.end());
        for (const auto &[t, line] : crossings)
        {
            BAS_Vec2d at = snap(a + (b - a) * t);
            at[line % 2] = (line % 2 ? vs_ : us_)[size_t(line / 2)];
            add(at);
        }
    }
    while (nodes.size() > 1 && nodes.front().at == nodes.back().at)
        nodes.pop_back();
    for (Node &node : nodes)
        if (node.lineU >= 0 && node.lineV >= 0)
            node.corner = crossing(node.lineU, node.lineV);
        else
        {
            node.corner = (cellsU() + !wrapsU_) * (cellsV() + !wrapsV_) + int64_t(faces_.nodes.size());
            faces_.nodes.push_back(node.at);
        }
    return nodes;
}

void rq::GridTrimmer::addPassing(const Node &a, const Node &b, int64_t row)
{
    const double middle = 0.5 * (vs_[size_t(row)] + vs_[size_t(row) + 1]);
    if ((a.at.y <= middle) == (b.at.y <= middle))
        return;
    const double u = a.at.x + (b.at.x - a.at.x) * ((middle - a.at.y) / (b.at.y - a.at.y));
    passings_[size_t(row)].push_back({u, b.at.y < a.at.y ? 1 : -1});
}

void rq::GridTrimmer::addLoop(const std::vector<Node> &nodes)
{
    const auto first = std::find_if(nodes.begin(), nodes.end(), [](const Node &node) { return node.isOnLine(); });
    if (nodes.size() < 2 || first == nodes.end())
        return;
    Chain chain;
    int64_t cell = 0;
    for (size_t i = 0; i < nodes.size(); ++i)
    {
        const size_t at = (size_t(first - nodes.begin()) + i) % nodes.size();
        const Node &a = nodes[at], &b = nodes[(at + 1) % nodes.size()];
        const BAS_Vec2d middle = 0.5 * (a.at + b.at);
        const int64_t row = cellOf(vs_, middle.y);
        addPassing(a, b, row);
        if ((a.lineU >= 0 && a.lineU == b.lineU) || (a.lineV >= 0 && a.lineV == b.lineV))
            continue;  // along a line, which is a border already
        if (chain.empty())
        {
            chain = {a};
            cell = row * cellsU() + cellOf(us_, middle.x);
        }
        chain.push_back(b);
        if (b.isOnLine())
        {
            chains_[cell].push_back(std::move(chain));
            chain.clear();
        }
    }
}
