#include <io/detail/GLTFVertices.h>

#include <algorithm>
#include <cstring>

namespace rq::io
{
namespace
{
bool sameRows(const ELM_Attribute &attribute, int64_t a, int64_t b)
{
    return a == b || attribute.numericTuple()->visit([&](const auto &pages) {
        return std::memcmp(static_cast<const void *>(pages.tuple(a)), pages.tuple(b),
                           size_t(pages.tupleSize()) * sizeof(pages.value(0))) == 0;
    });
}
}  // namespace

GLTFVertices::GLTFVertices(const MSH_Detail &detail, const std::vector<const ELM_Attribute *> &ofCorners,
                           std::span<const int32_t> used)
    : detail_(detail)
{
    if (ofCorners.empty())
        return;
    const auto same = [&](int32_t a, int32_t b) {
        return std::ranges::all_of(ofCorners, [&](const ELM_Attribute *attribute) {
            const bool isOfPrimitives = attribute->owner() == ELM_OWNER_PRIMITIVE;
            const auto rowOf = [&](int32_t v) { return isOfPrimitives ? detail.vertexPrimitive().value(v) : int64_t(v); };
            return sameRows(*attribute, rowOf(a), rowOf(b));
        });
    };
    // The vertices that came from each point are a chain: few corners meet in a point.
    std::vector<int32_t> first(size_t(detail.pointCount()), -1), next;
    numbers_.assign(size_t(detail.vertexCount()), -1);
    for (const int32_t vertex : used)
    {
        int32_t &number = numbers_[size_t(vertex)];
        if (number >= 0)
            continue;
        const size_t point = size_t(detail.vertexPoint(vertex));
        for (number = first[point]; number >= 0 && !same(vertices_[size_t(number)], vertex);)
            number = next[size_t(number)];
        if (number >= 0)
            continue;
        number = int32_t(points_.size());
        next.push_back(first[point]);
        first[point] = number;
        points_.push_back(int32_t(point));
        vertices_.push_back(vertex);
    }
}

int64_t GLTFVertices::row(ELM_Owner owner, int64_t number) const
{
    if (points_.empty() || owner == ELM_OWNER_POINT)
        return points_.empty() ? number : points_[size_t(number)];
    const int32_t vertex = vertices_[size_t(number)];
    return owner == ELM_OWNER_VERTEX ? vertex : detail_.vertexPrimitive().value(vertex);
}
}  // namespace rq::io
