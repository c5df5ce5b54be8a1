#pragma once

#include <boost/container/small_vector.hpp>

#include <host/bas/SmallBlocks.h>
#include <rq/attrib/AttributeMap.h>
#include <rq/data/DataArray.h>

class RQ_AttributeList;
struct RQ_AttributeMerge;
using RQ_AttributeListHandle = BAS_IntrusivePtr<RQ_AttributeList>;
using RQ_TransformHandle = BAS_IntrusivePtr<RQ_Transform>;

/// The attributes of one class of element: for every motion segment one array per name of a shared map.
///
/// Shape      all arrays of a list have the same number of entries; a slot may hold a null handle
/// Failure    a segment is clamped to the last one; a bad index or name gives a null handle, never an error
/// Ownership  counted; arrays and the map are shared, so that deriving a list copies no values
/// Threads    `set`, `setAllSegments`, `copySegment`, `harden` and `updateGeoDetail` belong to the one owner of a list
///            that is not yet shared; everything else is safe from any thread
/// Cost       deriving a list costs a handle per attribute and segment.  The same list made again from the same arrays
///            has the same data ids, so that caches recognise it
class RQ_API RQ_AttributeList : public BAS_IntrusiveRefCounter<RQ_AttributeList>, public BAS_SmallObject
{
public:
    /// An empty slot for every name of the map in every segment; fewer than one segment counts as one.
    explicit RQ_AttributeList(const RQ_AttributeMapHandle &map, int segments = 1);
    RQ_AttributeList(const RQ_AttributeList &other);
    ~RQ_AttributeList();
    RQ_AttributeList &operator=(const RQ_AttributeList &) = delete;

    int entries() const { return entries_; }
    int getSegments() const { return segments_; }
    const RQ_AttributeMapHandle &getMap() const { return map_; }

    const RQ_DataArrayHandle &get(int index, int segment = 0) const
    {
        return index >= 0 && index < entries_ ? data_[slot(index, segment)] : noArray();
    }
    const RQ_DataArrayHandle &get(const BAS_StringHolder &name, int segment = 0) const
    {
        return get(getIndex(name), segment);
    }

    int getIndex(const BAS_StringHolder &name) const { return map_ ? map_->get(name) : -1; }
    bool hasName(const BAS_StringHolder &name) const { return getIndex(name) != -1; }

    // Forwarded to the map; the index is not checked.
    const BAS_StringHolder &getName(int index) const { return map_->getName(index); }
    const BAS_StringHolder &getExportName(int index) const { return map_->getExportName(index); }
    RQ_Owner getOriginalOwner(int index) const { return map_->getOriginalOwner(index); }
    const BAS_Array<BAS_StringHolder> &getNames() const;

    /// An estimate: it takes every segment for as large as the first.
    int64_t getMemoryUsage() const;

    /// Hash the data ids of one segment; null and invalid arrays do not count.  False when an array has no id: then the
    /// values must not be cached.
    bool getDataIdHash(uint64_t &hash, int segment) const;

    /// Both null, or both with equal maps.
    static bool matchDefinition(const RQ_AttributeList *a, const RQ_AttributeList *b);
    static bool matchDefinition(const RQ_AttributeListHandle &a, const RQ_AttributeListHandle &b)
    {
        return matchDefinition(a.get(), b.get());
    }

    /// Store an array at (index, segment); ignored for a bad index.
    void set(int index, const RQ_DataArrayHandle &array, int segment = 0);
    void setAllSegments(int index, const RQ_DataArrayHandle &array);

    /// Take over one segment of a list of the same definition.  False when the definitions differ.
    bool copySegment(int segment, const RQ_AttributeList &source, int sourceSegment);

    /// This list with one attribute more, the same array in every segment.  A name that is there is replaced, or, without
    /// `replace`, this list itself is returned.
    RQ_AttributeListHandle addAttribute(const BAS_StringHolder &name, const RQ_DataArrayHandle &array, bool replace) const;

    /// The same with an array per segment; the last one is repeated.  The list gets as many segments as the longer side.
    RQ_AttributeListHandle addAttribute(const BAS_StringHolder &name, const RQ_DataArrayHandle *arrays, int segments,
                                        bool replace) const;

    /// This list without the named attributes; this list itself when it has none of them.
    RQ_AttributeListHandle removeAttribute(const BAS_StringHolder &name) const { return removeAttributes({name}); }
    RQ_AttributeListHandle removeAttributes(const BAS_Array<BAS_StringHolder> &names) const;

    /// Entry i becomes entry `indices[i]`, not checked; null arrays when the indices are not one integer component.
    /// `flatten` composes indirections instead of stacking them.
    RQ_AttributeListHandle createIndirect(const RQ_DataArrayHandle &indices, bool flatten = false) const;

    /// `count` entries from `start` on; a null array where these do not exist.
    RQ_AttributeListHandle createSubArray(int64_t start, int64_t count) const;

    /// `size` times entry `offset`; a null array where there is no such entry.
    RQ_AttributeListHandle createConstant(int64_t offset, int64_t size) const;

    /// This list with the parametric coordinates of a grid of `nu` by `nv` points, u fastest, in place of an attribute of
    /// that name: two 32-bit floats (see `RQ_DAParametric`).  Of one point, a direction has the lower bound.
    RQ_AttributeListHandle createUV(int64_t nu, int64_t nv, double u0, double u1, double v0, double v1,
                                    const BAS_StringHolder &name = "uv") const;

    /// Transform what the meaning of its values says (see `RQ_Transform::transform`) in as many segments as the longer side
    /// has; this list itself when nothing changes.
    RQ_AttributeListHandle transform(const RQ_TransformHandle &transform) const;

    /// This list and every attribute of `other` (null: none) whose name it lacks; this list itself when it lacks none.
    RQ_AttributeListHandle mergeNewAttributes(const RQ_AttributeListHandle &other) const;

    /// The entries of all lists end to end, in as many segments as the first one has; null lists do not count.
    ///
    /// Null without lists, when their names differ, and when the arrays of a name differ in storage or tuple size or only
    /// some are null.
    static RQ_AttributeListHandle concatenateLists(const BAS_Array<RQ_AttributeListHandle> &lists);

    /// The entries of `a` and then those of `b`, with the attributes of both.
    ///
    /// Where a side lacks an attribute it has entry 0 of the attribute of that name in its constants (numbers converted where
    /// they differ in form), or else zeros, empty texts and dictionaries, or empty arrays.  A null list lacks all.
    ///
    /// Null when an array does not have the count of its side, and when the arrays of a name differ in form.
    static RQ_AttributeListHandle createMerged(const RQ_AttributeMerge &merge, const RQ_AttributeListHandle &a,
                                               int64_t aCount, const RQ_AttributeListHandle &b, int64_t bCount,
                                               const RQ_AttributeListHandle &aConstants = nullptr,
                                               const RQ_AttributeListHandle &bConstants = nullptr);

    /// `count` times entry 0 of `a`, under the merged names; null arrays for those that it lacks.  Null when one of its
    /// arrays has no entry to repeat.
    static RQ_AttributeListHandle createConstantMerge(const RQ_AttributeMerge &merge, const RQ_AttributeListHandle &a,
                                                      int64_t count);

    /// The entries of `a`, which may be a merged list, and then `count` times entry 0 of `b`; zeros and empty values where a
    /// side lacks an attribute.  `aCount` below 0 is the length of the first array.  Null as for `createMerged`.
    static RQ_AttributeListHandle expandConstantMerge(const RQ_AttributeMerge &merge, const RQ_AttributeListHandle &a,
                                                      const RQ_AttributeListHandle &b, int64_t count, int64_t aCount = -1);

    /// Replace every array, of all segments or of one, by a copy that owns its values; one that has no such form stays.
    /// Segments that share an array share its copy.
    void harden();
    void harden(int segment);

    /// Read every array, of all segments, from a newer detail from now on: for lists of a single sample.  Every list that
    /// shares an array sees it: no other thread may read.
    void updateGeoDetail(const MOD_ConstDetailHandle &detail, RQ_Owner owner);

    /// Print names, sizes and ids to standard output, with the values if `values`.  `label` may be null.
    void dumpList(const char *label, bool values = false) const;

    /// Write a map from name to the arrays of all segments, null for a null array.  False when the writer failed.
    bool save(BAS_JSONWriter &writer) const;

    /// Walks the attributes of one segment.
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

private:
    static const RQ_DataArrayHandle &noArray();

    size_t slot(int index, int segment) const { return size_t(clampSegment(segment)) * size_t(entries_) + size_t(index); }
    int clampSegment(int segment) const { return segment < 0 ? 0 : segment < segments_ ? segment : segments_ - 1; }

    // Segment by segment.  The lists of single faces mostly hold no more than a position, and have it in themselves.
    using Slots = boost::container::small_vector<RQ_DataArrayHandle, 1>;

    // What the list accounts for.
    int64_t trackedBytes() const;

    // Fill `to` with make(array) for every slot of this list.  Segments mostly share an array, and then what is made of it.
    template <class Make> void makeSlots(Slots &to, Make &&make) const;
    template <class Make> RQ_AttributeListHandle derived(Make &&make) const;

    int32_t segments_;
    int32_t entries_;  // of the map when the list was made
    RQ_AttributeMapHandle map_;
    Slots data_;
};
