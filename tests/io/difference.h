#pragma once

#include <algorithm>
#include <cstring>
#include <string>
#include <typeinfo>

#include <fmt/format.h>

#include <io/detail/compacted.h>
#include <io/detail/visitValues.h>

namespace tests
{
std::string difference(const MSH_Detail &a, const MSH_Detail &b);

// Whether values of attributes are the same.  Zeros have signs, but JSON has only one NaN.
template <class T> bool areSame(const T &x, const T &y)
{
    if constexpr (std::is_trivially_copyable_v<T>)
        return std::memcmp(static_cast<const void *>(&x), &y, sizeof(T)) == 0 || (x != x && y != y);
    else
        return x == y;
}
template <class T> bool areSame(const ELM_PageArray<T> &x, const ELM_PageArray<T> &y)
{
    bool same = x.size() == y.size() && x.tupleSize() == y.tupleSize();
    for (int64_t row = 0; same && row < x.size(); ++row)
        for (int c = 0; c < x.tupleSize(); ++c)
            same = same && areSame(x.value(row, c), y.value(row, c));
    return same;
}
template <class Item> bool areSame(const ELM_IndexedTuple<Item> &x, const ELM_IndexedTuple<Item> &y)
{
    return areSame(x.indices(), y.indices()) && x.table() == y.table();
}
template <class Item> bool areSame(const ELM_ArrayTuple<Item> &x, const ELM_ArrayTuple<Item> &y)
{
    bool same = areSame(x.indices(), y.indices()) && x.arrayCount() == y.arrayCount() && x.tupleSize() == y.tupleSize();
    for (int32_t i = 0; same && i < x.arrayCount(); ++i)
        same = std::ranges::equal(x.array(i), y.array(i), [](const Item &v, const Item &w) { return areSame(v, w); });
    return same;
}
inline bool areSame(const ELM_Attribute &a, const ELM_Attribute &b)
{
    return rq::io::visitValues(a, [&](const auto &x) {
        return rq::io::visitValues(b, [&](const auto &y) {
            if constexpr (std::is_same_v<decltype(x), decltype(y)>)
                return areSame(x, y);
            else
                return false;
        });
    });
}

inline bool samePayloads(const MSH_Payload *a, const MSH_Payload *b)
{
    if (!a || !b || typeid(*a) != typeid(*b))
        return !a && !b;
    const std::vector<MSH_ConstField> x = a->fields(), y = b->fields();
    return std::equal(x.begin(), x.end(), y.begin(), y.end(), [](const MSH_ConstField &f, const MSH_ConstField &g) {
        return std::visit(
            [&](const auto *value) {
                const auto &other = *std::get<decltype(value)>(g.value);
                using T = std::decay_t<decltype(*value)>;
                if constexpr (std::is_same_v<T, MSH_DetailList>)
                    return value->size() == other.size() &&
                           std::equal(value->begin(), value->end(), other.begin(), [](const auto &p, const auto &q) {
                               const MOD_ConstDetailHandle whole = rq::io::compacted(MOD_ConstDetailHandle(p.get()));
                               return difference(*whole.readLock(), *q).empty();
                           });
                else if constexpr (std::is_same_v<T, MSH_OpaqueHandle>)
                    return (!*value && !other) || (*value && other && (*value)->isEqual(*other));
                else
                    return *value == other;
            },
            f.value);
    });
}

/// The first thing in which two details without vacant offsets differ; empty when they hold the same.
inline std::string difference(const MSH_Detail &a, const MSH_Detail &b)
{
    for (const ELM_Owner owner : {ELM_OWNER_VERTEX, ELM_OWNER_POINT, ELM_OWNER_PRIMITIVE, ELM_OWNER_DETAIL})
    {
        if (a.capacity(owner) != b.capacity(owner) || b.hasVacantOffsets(owner))
            return fmt::format("{} or {} elements of owner {}", a.capacity(owner), b.capacity(owner), int(owner));
        if (a.attributes(owner).size() != b.attributes(owner).size() || a.groups(owner).size() != b.groups(owner).size())
            return fmt::format("the numbers of attributes or groups of owner {}", int(owner));
        for (int64_t i = 0; i < a.attributes(owner).size(); ++i)
        {
            const ELM_Attribute &x = a.attributes(owner)[i], &y = b.attributes(owner)[i];
            if (x.name() != y.name() || x.scope() != y.scope() || x.typeInfo() != y.typeInfo() || !areSame(x, y))
                return fmt::format("attribute \"{}\" or \"{}\" of owner {}", x.name().c_str(), y.name().c_str(), int(owner));
        }
        for (int64_t i = 0; i < a.groups(owner).size(); ++i)
        {
            const ELM_Group &x = a.groups(owner)[i], &y = b.groups(owner)[i];
            bool same = x.name() == y.name() && x.count() == y.count();
            for (int64_t offset = 0; offset < a.capacity(owner); ++offset)
                same = same && x.contains(offset) == y.contains(offset);
            if (!same)
                return fmt::format("group \"{}\" or \"{}\"", x.name().c_str(), y.name().c_str());
        }
    }
    for (int64_t vertex = 0; vertex < a.vertexCount(); ++vertex)
        if (a.vertexPoint(vertex) != b.vertexPoint(vertex))
            return fmt::format("the point of vertex {}", vertex);
    for (int64_t i = 0; i < a.primitiveCount(); ++i)
        if (a.typeOf(i) != b.typeOf(i) || a.isClosed(i) != b.isClosed(i) || a.vertexRun(i).start != b.vertexRun(i).start ||
            a.vertexRun(i).count != b.vertexRun(i).count || !samePayloads(a.payload(i), b.payload(i)))
            return fmt::format("primitive {}", i);
    return a.topologyIsValid() == b.topologyIsValid() ? "" : "the topology";
}
}  // namespace tests
