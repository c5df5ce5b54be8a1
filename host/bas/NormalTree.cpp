#include <host/bas/NormalTree.h>

#include <algorithm>
#include <array>

namespace host
{
namespace
{
constexpr size_t kFew = 16;

// Dot products of unit vectors are this exact at least; what is nearer to the border is looked at one by one.
constexpr double kRounding = 1e-14;

// No more halvings than this make leaves of all entries that memory holds.
constexpr size_t kDeepest = 64;
}  // namespace

void NormalTree::build(std::span<const BAS_Vec3d> vectors, std::span<const BAS_Vec3d> parts)
{
    entries_.resize(vectors.size());
    for (size_t i = 0; i < vectors.size(); ++i)
        entries_[i] = {vectors[i], parts[i]};
    nodes_.clear();
    nodes_.push_back({{}, {}, BAS_Vec3d(0.0), 0, entries_.size()});
    for (size_t node = 0; node < nodes_.size(); ++node)
        split(node);
}

void NormalTree::split(size_t node)
{
    const size_t begin = nodes_[node].begin, end = nodes_[node].end;
    if (begin == end)
        return;
    BAS_Vec3d least = entries_[begin].vector, greatest = least, sum(0.0);
    for (size_t i = begin; i < end; ++i)
    {
        for (int axis = 0; axis < 3; ++axis)
        {
            least[axis] = std::min(least[axis], entries_[i].vector[axis]);
            greatest[axis] = std::max(greatest[axis], entries_[i].vector[axis]);
        }
        sum += entries_[i].part;
    }
    nodes_[node].least = least;
    nodes_[node].greatest = greatest;
    nodes_[node].sum = sum;
    const BAS_Vec3d size = greatest - least;
    const int axis = size.x >= size.y && size.x >= size.z ? 0 : size.y >= size.z ? 1 : 2;
    if (end - begin <= kFew || !(size[axis] > 0.0))
        return;
    const size_t middle = begin + (end - begin) / 2;
    std::nth_element(entries_.begin() + int64_t(begin), entries_.begin() + int64_t(middle), entries_.begin() + int64_t(end),
                     [axis](const Entry &a, const Entry &b) { return a.vector[axis] < b.vector[axis]; });
    nodes_[node].children = nodes_.size();
    nodes_.push_back({{}, {}, BAS_Vec3d(0.0), begin, middle});
    nodes_.push_back({{}, {}, BAS_Vec3d(0.0), middle, end});
}

BAS_Vec3d NormalTree::sumWithin(const BAS_Vec3d &direction, double cosine) const
{
    BAS_Vec3d sum(0.0);
    std::array<size_t, kDeepest> waiting;
    size_t waits = 0;
    waiting[waits++] = 0;
    while (waits > 0)
    {
        const Node &node = nodes_[waiting[--waits]];
        double lowest = 0.0, highest = 0.0;  // dot products in the box
        for (int axis = 0; axis < 3; ++axis)
        {
            const double a = direction[axis] * node.least[axis], b = direction[axis] * node.greatest[axis];
            lowest += std::min(a, b);
            highest += std::max(a, b);
        }
        if (highest < cosine - kRounding)
            continue;
        if (lowest >= cosine + kRounding)
            sum += node.sum;
        else if (node.children > 0)
        {
            waiting[waits++] = node.children + 1;
            waiting[waits++] = node.children;
        }
        else
            for (size_t i = node.begin; i < node.end; ++i)
                if (direction.dot(entries_[i].vector) >= cosine)
                    sum += entries_[i].part;
    }
    return sum;
}
}  // namespace host
