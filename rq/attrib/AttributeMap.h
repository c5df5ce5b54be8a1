#pragma once

#include <unordered_map>

#include <host/bas/Array.h>
#include <host/bas/Intrusive.h>
#include <host/bas/StringHolder.h>
#include <rq/data/types.h>

class RQ_AttributeMap;
using RQ_AttributeMapHandle = BAS_IntrusivePtr<RQ_AttributeMap>;

/// The names of a list's attributes and the index of each.
///
/// Lists of the same attribute set share one map.  Beside its name an attribute has the owner that it had in the host, and
/// the name under which a renderer should see it.
///
/// Shape    indices are dense from 0, in the order of adding; removing one moves all later ones down
/// Failure  an absent name answers -1; indices are not checked
/// Threads  built by one thread, read-only once shared, and then safe to read from any thread
/// Cost     a linear search in small maps, a hashed one in large
class RQ_API RQ_AttributeMap : public BAS_IntrusiveRefCounter<RQ_AttributeMap>
{
public:
    RQ_AttributeMap();
    RQ_AttributeMap(const RQ_AttributeMap &other);
    RQ_AttributeMap &operator=(const RQ_AttributeMap &) = delete;
    ~RQ_AttributeMap();

    /// Add a name and return its index.  A name that is there already answers its index with `replace`, -1 without.
    int add(const BAS_StringHolder &name, bool replace);

    /// Remove a name and return the index that it had.  Whoever keeps arrays by index must remove the array there too.
    int remove(const BAS_StringHolder &name);

    int get(const BAS_StringHolder &name) const;
    bool hasName(const BAS_StringHolder &name) const { return get(name) >= 0; }

    int entries() const { return int(names_.size()); }
    const BAS_StringHolder &getName(int index) const { return names_[size_t(index)]; }
    const BAS_Array<BAS_StringHolder> &getNames() const { return names_; }

    /// The name for a renderer: the one registered, else the attribute's own.
    const BAS_StringHolder &getExportName(int index) const;

    /// Register a name for a renderer; the attribute's own name ends a registration.  Unknown attributes are ignored.
    void addExportName(int index, const BAS_StringHolder &exportName);
    void addExportName(const BAS_StringHolder &name, const BAS_StringHolder &exportName);

    /// The owner in the host, invalid until set.
    RQ_Owner getOriginalOwner(int index) const { return owners_[size_t(index)]; }
    void setOriginalOwner(int index, RQ_Owner owner) { owners_[size_t(index)] = owner; }

    /// The names in order, as "P, N, Cd".
    BAS_StringHolder getLabel() const;

    /// Walks names in index order.
    class iterator
    {
    public:
        explicit iterator(const RQ_AttributeMap &map) : map_(&map) {}

        bool atEnd() const { return index_ >= map_->entries(); }
        const BAS_StringHolder &getName() const { return map_->getName(index_); }
        int getIndex() const { return index_; }
        iterator &operator++()
        {
            ++index_;
            return *this;
        }

    private:
        const RQ_AttributeMap *map_;
        int index_ = 0;
    };
    iterator begin() const { return iterator(*this); }

    /// Bytes of the tables, and of the object itself when `inclusive`.
    int64_t getMemoryUsage(bool inclusive) const;

    /// True when both hold the same names in the same order.  Owners and export names do not count.
    bool operator==(const RQ_AttributeMap &other) const;

private:
    void trackMemory();

    std::unordered_map<BAS_StringHolder, BAS_StringHolder> exportNames_;  // only names that differ
    BAS_Array<BAS_StringHolder> names_;
    std::unordered_map<BAS_StringHolder, int> indices_;  // empty in small maps
    BAS_Array<RQ_Owner> owners_;
    int64_t tracked_ = 0;
};
