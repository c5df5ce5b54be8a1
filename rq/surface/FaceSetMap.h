#pragma once

#include <unordered_map>

#include <rq/surface/FaceSet.h>

class RQ_FaceSetMap;
using RQ_FaceSetMapHandle = BAS_IntrusivePtr<RQ_FaceSetMap>;

/// The named face sets of a mesh.
///
/// Ownership  counted; shares its sets
/// Threads    built by one thread, read-only once shared
class RQ_API RQ_FaceSetMap : public BAS_IntrusiveRefCounter<RQ_FaceSetMap>
{
public:
    RQ_FaceSetMap();
    RQ_FaceSetMap(const RQ_FaceSetMap &other);
    ~RQ_FaceSetMap();
    RQ_FaceSetMap &operator=(const RQ_FaceSetMap &) = delete;

    /// Store a set under a name and return what is stored: the set that is there already unless `replace`.
    RQ_FaceSetHandle add(const BAS_StringHolder &name, const RQ_FaceSetHandle &set, bool replace = false);

    /// Null when there is none.
    RQ_FaceSetHandle find(const BAS_StringHolder &name) const;

    int64_t entries() const { return int64_t(sets_.size()); }

    /// Every set without the `deleted` faces and renamed through `remap`; see `RQ_FaceSet::deleteFaces`.
    RQ_FaceSetMapHandle deleteFaces(const RQ_FaceSet &deleted, const RQ_DataArrayHandle &remap) const;

    /// Every set as seen by a mesh whose face i was face `sources[i]`: a face that became several stands for all of them.
    RQ_FaceSetMapHandle followFaces(const RQ_DataArrayHandle &sources) const;

    /// Write a map of name to members, by name.  False when the writer failed.
    bool save(BAS_JSONWriter &writer) const;

    /// Print names and sizes to standard output, by name.
    void dump() const;

    int64_t getMemoryUsage() const;

    /// Walk the sets, in no particular order.
    class iterator
    {
    public:
        explicit iterator(const RQ_FaceSetMap &map) : at_(map.sets_.begin()), end_(map.sets_.end()) {}

        bool atEnd() const { return at_ == end_; }
        const BAS_StringHolder &name() const { return at_->first; }
        const RQ_FaceSetHandle &faceSet() const { return at_->second; }
        void advance() { ++at_; }
        iterator &operator++()
        {
            advance();
            return *this;
        }

    private:
        std::unordered_map<BAS_StringHolder, RQ_FaceSetHandle>::const_iterator at_, end_;
    };
    iterator begin() const { return iterator(*this); }

private:
    BAS_Array<BAS_StringHolder> sortedNames() const;

    std::unordered_map<BAS_StringHolder, RQ_FaceSetHandle> sets_;
};
