#pragma once

#include <atomic>
#include <mutex>
#include <set>

#include <host/bas/Array.h>
#include <rq/data/DataArray.h>

class RQ_FaceSet;
using RQ_FaceSetHandle = BAS_IntrusivePtr<RQ_FaceSet>;

/// A set of faces of a mesh.
///
/// Shape      face indices in increasing order, each once; negative ones are ignored
/// Ownership  counted; sets are shared between meshes of the same faces
/// Threads    changed by the one thread that makes it.  Faces that are added in bulk are put in order at the first read,
///            once, under the set's own lock, so that reading is safe from any thread
class RQ_API RQ_FaceSet : public BAS_IntrusiveRefCounter<RQ_FaceSet>
{
public:
    RQ_FaceSet();
    RQ_FaceSet(const RQ_FaceSet &other);
    ~RQ_FaceSet();
    RQ_FaceSet &operator=(const RQ_FaceSet &) = delete;

    void addFace(int64_t face);
    void addFaces(const int32_t *faces, int64_t count);
    void addFaces(const int64_t *faces, int64_t count);

    /// Take a face out; one that is not in the set is ignored.
    void removeFace(int64_t face);

    bool contains(int64_t face) const;

    int64_t entries() const { return int64_t(members().size()); }
    int64_t size() const { return entries(); }

    /// The members in increasing order, until the set changes.
    const int64_t *begin() const { return members().data(); }
    const int64_t *end() const { return begin() + entries(); }

    bool anyIntersect(const std::set<int> &faces) const;

    /// A new set of the members that `deleted` lacks, each renamed to entry [member] of `remap`: those that the renaming
    /// does not cover, or calls -1, are left out.
    RQ_FaceSetHandle deleteFaces(const RQ_FaceSet &deleted, const RQ_DataArrayHandle &remap) const;

    /// The members as an array of 32-bit integers, or 64-bit ones once a face above 0x40000000 was added.
    RQ_DataArrayHandle extractMembers() const;

    /// Write the members as an array.  False when the writer failed.
    bool save(BAS_JSONWriter &writer) const;

    int64_t getMemoryUsage() const { return int64_t(sizeof(*this) + members_.capacity() * sizeof(int64_t)); }

private:
    template <class Index> void append(const Index *faces, int64_t count);

    // Puts the members in order first.
    const BAS_Array<int64_t> &members() const;

    mutable BAS_Array<int64_t> members_;
    mutable std::mutex sorting_;
    mutable std::atomic<bool> needsSorting_{false};
    bool largeIndices_ = false;
};
