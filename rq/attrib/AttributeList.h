#pragma once

#include <rq/attrib/AttributeMap.h>
#include <rq/data/DataArray.h>

class RQ_AttributeList;
using RQ_AttributeListHandle = BAS_IntrusivePtr<RQ_AttributeList>;

/// The attributes of one class of elements: for every name of a map one array per motion segment.
///
/// Editing a shared list makes a new one that shares the arrays; values are never copied except by `harden`.
///
/// Shape      slots are segment-major; a slot may hold a null handle.  Segments past the last read as the last, negative
///            ones as the first
/// Failure    a bad index or an unknown name gives a null handle, -1 or false
/// Ownership  shares map and arrays through handles; itself counted, on the heap behind an `RQ_AttributeListHandle`
/// Threads    filled by its creator, read-only once shared, and then safe to read from any thread
/// Cost       a derived list costs a handle per attribute and segment
class RQ_API RQ_AttributeList : public BAS_IntrusiveRefCounter<RQ_AttributeList>
{
public:
    /// A list of null handles for the names of `map` (null: no attributes); at least one segment.
    explicit RQ_AttributeList(const RQ_AttributeMapHandle &map, int segments = 1);

    /// Share map and arrays.
    RQ_AttributeList(const RQ_AttributeList &other);
    RQ_AttributeList &operator=(const RQ_AttributeList &) = delete;
    ~RQ_AttributeList();

    int entries() const { return entries_; }
    int getSegments() const { return segments_; }
    const RQ_AttributeMapHandle &getMap() const { return map_; }

    const RQ_DataArrayHandle &get(int index, int segment = 0) const
    {
        return index >= 0 && index < entries_ ? data_[slot(index, segment)] : null();
    }
    const RQ_DataArrayHandle &get(const BAS_StringHolder &name, int segment = 0) const
    {
        return get(getIndex(name), segment);
    }

    int getIndex(const BAS_StringHolder &name) const { return map_ ? map_->get(name) : -1; }
    bool hasName(const BAS_StringHolder &name) const { return getIndex(name) >= 0; }

    // By index, as the map answers; the index is not checked.
    const BAS_StringHolder &getName(int index) const { return map_->getName(index); }
    const BAS_StringHolder &getExportName(int index) const { return map_->getExportName(index); }
    RQ_Owner getOriginalOwner(int index) const { return map_->getOriginalOwner(index); }
    const BAS_Array<BAS_StringHolder> &getNames() const;

    /// Walks the attributes of one segment in index order.
    class iterator
    {
    public:
        iterator(const RQ_AttributeList &list, int segment) : list_(&list), segment_(segment) {}

        bool atEnd() const { return index_ >= list_->entries(); }
        int getIndex() const { return index_; }
        const BAS_StringHolder &getName() const { return list_->getName(index_); }
        const RQ_DataArrayHandle &getData() const { return list_->get(index_, segment_); }
        iterator &operator++()
        {
            ++index_;
            return *this;
        }

    private:
        const RQ_AttributeList *list_;
        int segment_;
        int index_ = 0;
    };
    iterator begin(int segment = 0) const { return iterator(*this, segment); }

    // In place, for a list that is not yet shared.

    /// Store an array (null allowed) in one segment, or in all.  Ignored for a bad index.
    void set(int index, const RQ_DataArrayHandle &array, int segment = 0);
    void setAllSegments(int index, const RQ_DataArrayHandle &array);

    /// Take over the arrays of one segment of `source`.  False when the names differ.
    bool copySegment(int segment, const RQ_AttributeList &source, int sourceSegment);

    /// Replace every array, or those of one segment, by an owning copy; an array that has none stays.  Segments that shared
    /// an array share its copy.
    void harden();
    void harden(int segment);

    /// Read from a newer detail from now on, in all arrays that read from one.  Seen by every list that shares an array, so
    /// it must not race with readers.
    void updateGeoDetail(const MOD_ConstDetailHandle &detail, RQ_Owner owner);

    // Derived lists.  The source stays as it is; adding or removing that changes nothing returns the source itself.

    /// Add an attribute that is the same in every segment.  A name that is there already is replaced, keeping its index, or
    /// without `replace` left alone.
    RQ_AttributeListHandle addAttribute(const BAS_StringHolder &name, const RQ_DataArrayHandle &array, bool replace) const;

    /// Add an attribute with an array per segment.  The list gets as many segments as the longer of both; the shorter
    /// repeats its last.
    RQ_AttributeListHandle addAttribute(const BAS_StringHolder &name, const RQ_DataArrayHandle *arrays, int segments,
                                        bool replace) const;

    RQ_AttributeListHandle removeAttribute(const BAS_StringHolder &name) const;
    RQ_AttributeListHandle removeAttributes(const BAS_Array<BAS_StringHolder> &names) const;

    /// View entry indices[i] as entry i in every array; `flatten` composes views of views (see `RQ_DAIndirect`).
    RQ_AttributeListHandle createIndirect(const RQ_DataArrayHandle &indices, bool flatten = false) const;

    /// View `count` entries from `start` on in every array; a null array where the window does not fit.
    RQ_AttributeListHandle createSubArray(int64_t start, int64_t count) const;

    /// Repeat entry `offset` of every array `size` times.
    RQ_AttributeListHandle createConstant(int64_t offset, int64_t size) const;

    /// Add every attribute of `other` (null: none) whose name is new.
    RQ_AttributeListHandle mergeNewAttributes(const RQ_AttributeListHandle &other) const;

    /// Hash of the data ids of one segment; null and invalid arrays do not count.  False when an array has no stable id.
    bool getDataIdHash(int64_t &hash, int segment = 0) const;

    /// True when both are null, or both have the same names in the same order.
    static bool matchDefinition(const RQ_AttributeListHandle &a, const RQ_AttributeListHandle &b);

    /// Bytes of map and arrays; an estimate that takes every segment for as large as the first.
    int64_t getMemoryUsage() const;

    /// Print to standard output, with the values when asked for.  `label` may be null.
    void dumpList(const char *label, bool values = false) const;

    /// Write a map from name to the array of its segments.  False when the writer failed.
    bool save(BAS_JSONWriter &writer) const;

private:
    RQ_AttributeList(int entries, const RQ_AttributeMapHandle &map, int segments);

    static const RQ_DataArrayHandle &null();

    int clampSegment(int segment) const { return segment < 0 ? 0 : segment < segments_ ? segment : segments_ - 1; }
    size_t slot(int index, int segment) const { return size_t(clampSegment(segment)) * size_t(entries_) + size_t(index); }

    // The list of the same map whose slots are make(array of this list); make is not called for null.
    template <class Make> RQ_AttributeListHandle derive(Make &&make) const;

    int32_t segments_;
    int32_t entries_;  // of the map when the list was made
    RQ_AttributeMapHandle map_;
    BAS_Array<RQ_DataArrayHandle> data_;
};
