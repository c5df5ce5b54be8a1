#include <host/msh/sameTopology.h>

#include <algorithm>

namespace
{
template <class A, class B> bool hasSameRows(const ELM_PageArray<A> &a, const ELM_PageArray<B> &b)
{
    const int64_t rows = a.size();
    for (int64_t first = 0; first < rows; first += ELM_PAGE_SIZE)
    {
        const int64_t page = first >> ELM_PAGE_BITS, count = std::min<int64_t>(ELM_PAGE_SIZE, rows - first);
        const auto left = a.reader();
        const auto right = b.reader();
        const bool oneValue = a.isConstantPage(page) && b.isConstantPage(page);
        for (int64_t row = first; row < first + (oneValue ? 1 : count); ++row)
            if (int64_t(left.value(row)) != int64_t(right.value(row)))
                return false;
    }
    return rows == b.size();
}

bool hasSameRows(const ELM_IndexColumn &a, const ELM_IndexColumn &b)
{
    return a.size() == b.size() &&
           a.visit([&](const auto &left) { return b.visit([&](const auto &right) { return hasSameRows(left, right); }); });
}

bool hasSameElements(const MSH_DetailData &a, const MSH_DetailData &b, ELM_Owner owner)
{
    if (a.capacity[owner] != b.capacity[owner] || a.vacant[owner] != b.vacant[owner])
        return false;
    for (ELM_Offset i = 0; a.vacant[owner] > 0 && i < a.capacity[owner]; ++i)
        if (a.isLive(owner, i) != b.isLive(owner, i))
            return false;
    return true;
}

bool hasSamePayloads(const MSH_Detail &a, const MSH_Detail &b)
{
    if (a.data().payloads.size() == 0 && b.data().payloads.size() == 0)
        return true;
    for (ELM_Offset i = 0; i < a.capacity(ELM_OWNER_PRIMITIVE); ++i)
    {
        const MSH_Payload *left = a.payload(i), *right = b.payload(i);
        if (left != right && (!left || !right || !left->isEqual(*right)))
            return false;
    }
    return true;
}
}  // namespace

bool MSHhasSameTopology(const MSH_Detail &a, const MSH_Detail &b)
{
    if (a.topologyId() == b.topologyId())
        return true;
    const MSH_DetailData &left = a.data(), &right = b.data();
    for (const ELM_Owner owner : {ELM_OWNER_POINT, ELM_OWNER_VERTEX, ELM_OWNER_PRIMITIVE})
        if (!hasSameElements(left, right, owner))
            return false;
    return hasSameRows(left.type, right.type) && hasSameRows(left.flags, right.flags) &&
           hasSameRows(left.vertexCount, right.vertexCount) && hasSameRows(left.vertexStart, right.vertexStart) &&
           hasSameRows(left.vertexPoint, right.vertexPoint) && hasSamePayloads(a, b);
}
