#pragma once

#include <unordered_map>

#include <host/bas/Array.h>
#include <host/bas/Intrusive.h>
#include <host/bas/StringHolder.h>
#include <rq/api.h>
#include <rq/data/types.h>

class RQ_AttributeMap;
using RQ_AttributeMapHandle = BAS_IntrusivePtr<RQ_AttributeMap>;

/// Chooses attributes of a map.
class RQ_API RQ_AttributeMapFilter
{
public:
    virtual ~RQ_AttributeMapFilter();
    virtual bool keep(const RQ_AttributeMap &map, int index) const = 0;
};

/// Names of attributes with dense numbers: many lists share one map and keep their arrays in plain rows.
///
/// Shape      the number of a name is its place in the order of adding; removing moves later names down by one
/// Failure    lookups answer -1; numbers are not checked
/// Ownership  counted; lists share a map through `RQ_AttributeMapHandle`
/// Threads    built by one thread, read-only once shared
/// Cost       names are few: they are searched in order, and only maps of more than 32 keep a hash table beside
class RQ_API RQ_AttributeMap : public BAS_IntrusiveRefCounter<RQ_AttributeMap>
{
public:
    RQ_AttributeMap();
    RQ_AttributeMap(const RQ_AttributeMap &other);
    ~RQ_AttributeMap();
    RQ_AttributeMap &operator=(const RQ_AttributeMap &) = delete;

    /// Add a name and return its number.  For a name that is there: its number with `replace`, else -1.
    int add(const BAS_StringHolder &name, bool replace);

    /// Remove a name and return the number it had, -1 when absent.
    int remove(const BAS_StringHolder &name);

    int get(const BAS_StringHolder &name) const;
    bool hasName(const BAS_StringHolder &name) const { return get(name) >= 0; }

    int entries() const { return int(names_.size()); }
    const BAS_StringHolder &getName(int index) const { return names_[size_t(index)]; }
    const BAS_Array<BAS_StringHolder> &getNames() const { return names_; }

    /// The name under which a renderer should see the attribute: its own unless another was registered.
    const BAS_StringHolder &getExportName(int index) const;

    /// Register an export name; the attribute's own name ends a registration, unknown attributes are ignored.
    void addExportName(int index, const BAS_StringHolder &exportName);
    void addExportName(const BAS_StringHolder &name, const BAS_StringHolder &exportName);

    /// The owner that the attribute had in the host, -1 when not set.
    RQ_Owner getOriginalOwner(int index) const { return owners_[size_t(index)]; }
    void setOriginalOwner(int index, RQ_Owner owner) { owners_[size_t(index)] = owner; }

    /// A map of the names that `filter` keeps, in order, with their owners and export names; `sources` becomes their numbers
    /// here.
    RQ_AttributeMapHandle filter(const RQ_AttributeMapFilter &filter, BAS_Array<int> &sources) const;

    /// The names, separated by blanks, for printing.
    std::string getLabel() const;

    /// Walks the names in the order of their numbers.
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

    /// Bytes of names, hash table and owners; with `inclusive` those of the map itself too.
    int64_t getMemoryUsage(bool inclusive) const;

    /// Same names in the same order; owners and export names do not count.
    bool operator==(const RQ_AttributeMap &other) const { return this == &other || names_ == other.names_; }

private:
    void rebuildIndex();

    std::unordered_map<BAS_StringHolder, BAS_StringHolder> exportNames_;
    BAS_Array<BAS_StringHolder> names_;
    std::unordered_map<BAS_StringHolder, int> index_;  // empty while the names are few
    BAS_Array<RQ_Owner> owners_;
};
