#pragma once

#include <cstring>
#include <string>
#include <typeinfo>

#include <fmt/format.h>

#include <io/detail/compacted.h>

namespace tests
{
std::string difference(const MSH_Detail &a, const MSH_Detail &b);

/// In what the values of two attributes of the same shape differ.
struct SameValues
{
    const ELM_Attribute &a, &b;

    bool operator()() const
    {
        bool same = true;
        if (a.numericTuple())
            a.numericTuple()->visit([&](const auto &pages) {
                using T = std::decay_t<decltype(pages.value(0))>;
                // Zeros have signs, but JSON has only one NaN.
                for (int64_t i = 0; i < a.size() * a.tupleSize(); ++i)
                {
                    const T x = pages.value(i / a.tupleSize(), int(i % a.tupleSize()));
                    const T y = b.pages<T>()->value(i / a.tupleSize(), int(i % a.tupleSize()));
                    same = same && (std::memcmp(static_cast<const void *>(&x), &y, sizeof(T)) == 0 || (x != x && y != y));
                }
            });
        else if (a.numericArrays())
            a.numericArrays()->visit([&](const auto &arrays) {
                same = sameArrays(arrays,
                                  *b.numericArrays()->as<typename std::decay_t<decltype(arrays.array(0))>::value_type>());
            });
        else if (a.strings())
            same = sameIndices(*a.strings(), *b.strings()) && a.strings()->table() == b.strings()->table();
        else if (a.dicts())
            same = sameIndices(*a.dicts(), *b.dicts()) && a.dicts()->table() == b.dicts()->table();
        else if (a.stringArrays())
            same = sameArrays(*a.stringArrays(), *b.stringArrays());
        else
            same = sameArrays(*a.dictArrays(), *b.dictArrays());
        return same;
    }

    static bool sameIndices(const ELM_IndexedRows &x, const ELM_IndexedRows &y)
    {
        bool same = x.size() == y.size();
        for (int64_t row = 0; same && row < x.size(); ++row)
            for (int c = 0; c < x.indices().tupleSize(); ++c)
                same = same && x.index(row, c) == y.index(row, c);
        return same;
    }

    template <class Arrays> static bool sameArrays(const Arrays &x, const Arrays &y)
    {
        bool same = sameIndices(x, y) && x.arrayCount() == y.arrayCount();
        for (int32_t i = 0; same && i < x.arrayCount(); ++i)
            same = x.array(i).size() == y.array(i).size() &&
                   std::equal(x.array(i).begin(), x.array(i).end(), y.array(i).begin(),
                              [](const auto &v, const auto &w) { return v == w || (v != v && w != w); });
        return same;
    }
};

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
            const bool same = x.name() == y.name() && x.scope() == y.scope() && x.storage() == y.storage() &&
                              x.tupleSize() == y.tupleSize() && x.typeInfo() == y.typeInfo() &&
                              x.hasArrays() == y.hasArrays() && x.size() == y.size() && SameValues{x, y}();
            if (!same)
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
