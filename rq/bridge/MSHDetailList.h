#pragma once

#include <initializer_list>
#include <memory>
#include <span>
#include <vector>

#include <rq/attrib/AttributeList.h>
#include <rq/bridge/MSHAttributeFilter.h>
#include <rq/bridge/MSHOffsetList.h>
#include <rq/prim/RefineParms.h>
#include <rq/surface/FaceSetMap.h>

class MSH_Primitive;
namespace rq
{
class PointMotion;
}
class RQ_MSHDetailList;
using RQ_MSHDetailListHandle = std::shared_ptr<const RQ_MSHDetailList>;

/// Whether the list of a primitive takes in the attributes of the detail, or of points, that it lacks.
enum class RQ_MSHIncludeDetail
{
    OMIT,
    INCLUDE
};
enum class RQ_MSHIncludePoint
{
    OMIT,
    INCLUDE
};

/// The details of one refinement, one per motion segment, and the attribute lists made of them.
///
/// Shape      the first detail is what is there; the others, samples of it at even intervals, tell how it moves.  What the
///            segments are made of is the first of these that fits all samples:
///
///            equal topology, and the same "id"    every segment reads its own detail
///            a whole number "id" on points        attributes of a point are those of the point of that "id" in each sample;
///                                                 one that is gone there keeps those of the first, and moves on by its
///                                                 velocity.  Points that are born later are not there
///            a velocity "v" on points             "P" + t "v" + t^2 / 2 "accel", where there is such an attribute
///            none of them                         there is one segment, and a warning
///
///            In the second and third case all other attributes are the first's
/// Units      velocities a second, accelerations a second squared; "P", "v" and "accel" are 3 floats
/// Ownership  keeps the details alive
/// Threads    immutable, shared by every collector of a refinement
class RQ_API RQ_MSHDetailList
{
public:
    explicit RQ_MSHDetailList(const MOD_ConstDetailHandle &detail);

    /// One detail per segment; null handles are left out.
    explicit RQ_MSHDetailList(std::vector<MOD_ConstDetailHandle> details, double secondsApart = kFrameSeconds);

    /// Segments of a single detail, moved by its velocity; one segment and a warning without.
    RQ_MSHDetailList(const MOD_ConstDetailHandle &detail, int segments, double secondsApart);

    /// The time between samples unless it is given.
    static constexpr double kFrameSeconds = 1.0 / 24.0;

    int getSegments() const { return int(details_.size()); }

    /// True when segments differ from the first in their points alone: then the first's detail stands for all.
    bool movesPoints() const { return motion_ != nullptr; }

    /// The detail of a segment, clamped to the last; a handle of nothing when the list is empty.
    const MOD_ConstDetailHandle &getHandle(int segment = 0) const;
    const MSH_Detail *getDetail(int segment = 0) const { return getHandle(segment).readLock(); }

    // Lists of element arrays, one per host attribute that the filter accepts (null: that of the parms, else every public
    // one), in the host's order and under the host's names.  Null when there is no such attribute.  A segment that lacks an
    // attribute, or has it in another storage or tuple size, repeats the first segment's.

    RQ_AttributeListHandle getDetailAttributes(const RQ_MSHAttributeFilter *filter,
                                               const RQ_RefineParms *parms = nullptr) const;
    RQ_AttributeListHandle getPointAttributes(const RQ_MSHAttributeFilter *filter, const RQ_MSHOffsetList &points,
                                              const RQ_RefineParms *parms = nullptr) const;
    RQ_AttributeListHandle getPrimitiveAttributes(const RQ_MSHAttributeFilter *filter, const RQ_MSHOffsetList &primitives,
                                                  const RQ_RefineParms *parms = nullptr) const;

    /// What is included stands behind, unless the name is taken.
    RQ_AttributeListHandle getVertexAttributes(const RQ_MSHAttributeFilter *filter, const RQ_MSHOffsetList &vertices,
                                               const RQ_RefineParms *parms = nullptr,
                                               RQ_MSHIncludePoint point = RQ_MSHIncludePoint::OMIT) const;

    /// The vertex attributes of primitives of one vertex: row i is the first vertex of primitive i, and that vertex's point.
    /// Null when one of them has no vertex.
    RQ_AttributeListHandle getPrimitiveVertexAttributes(const RQ_MSHAttributeFilter *filter,
                                                        const RQ_MSHOffsetList &primitives,
                                                        const RQ_RefineParms *parms = nullptr,
                                                        RQ_MSHIncludePoint point = RQ_MSHIncludePoint::OMIT) const;

    /// The first vertex of each primitive; none at all when one has no vertex.
    RQ_MSHOffsetList firstVertices(const RQ_MSHOffsetList &primitives) const;

    // The same for one primitive.  What is included stands behind, unless the name is taken.

    RQ_AttributeListHandle createDetail(const RQ_MSHAttributeFilter *filter, const RQ_RefineParms *parms = nullptr) const
    {
        return getDetailAttributes(filter, parms);
    }

    /// One row: the primitive's.
    RQ_AttributeListHandle createPrimitive(const RQ_MSHAttributeFilter *filter, ELM_Offset primitive,
                                           const RQ_RefineParms *parms = nullptr,
                                           RQ_MSHIncludeDetail detail = RQ_MSHIncludeDetail::OMIT) const;

    /// One row: the first vertex of the primitive, and that vertex's point.  Null without a vertex.
    RQ_AttributeListHandle createPrimitiveVertex(const RQ_MSHAttributeFilter *filter, ELM_Offset primitive,
                                                 const RQ_RefineParms *parms = nullptr,
                                                 RQ_MSHIncludePoint point = RQ_MSHIncludePoint::OMIT) const;

    /// One row a vertex of the primitive, and that vertex's point.
    RQ_AttributeListHandle createVertex(const RQ_MSHAttributeFilter *filter, ELM_Offset primitive,
                                        const RQ_RefineParms *parms = nullptr,
                                        RQ_MSHIncludePoint point = RQ_MSHIncludePoint::OMIT) const;

    /// The groups of primitives as sets of faces, face i being entry i of `primitives`, under the groups' names.
    ///
    /// Modes: 0 and unknown ones make none, 1 those of groups with a member among the faces, 2 those of all groups.  Null
    /// without any set.
    RQ_FaceSetMapHandle buildFaceSets(const RQ_MSHOffsetList &primitives, int64_t mode) const;

    // Attribute lists of details and a primitive given once per segment; the first one's offset stands for all.  Null
    // without primitives.

    using Details = std::span<const MOD_ConstDetailHandle>;
    using Primitives = std::span<const MSH_Primitive *const>;

    static RQ_AttributeListHandle createDetailAttributes(const RQ_MSHAttributeFilter *filter, Details details,
                                                         const RQ_RefineParms *parms = nullptr);
    static RQ_AttributeListHandle createPrimitiveAttributes(const RQ_MSHAttributeFilter *filter, Details details,
                                                            Primitives primitives, const RQ_RefineParms *parms = nullptr,
                                                            RQ_MSHIncludeDetail detail = RQ_MSHIncludeDetail::OMIT);
    static RQ_AttributeListHandle createPrimitiveVertexAttributes(const RQ_MSHAttributeFilter *filter, Details details,
                                                                  Primitives primitives,
                                                                  const RQ_RefineParms *parms = nullptr,
                                                                  RQ_MSHIncludePoint point = RQ_MSHIncludePoint::OMIT);
    static RQ_AttributeListHandle createVertexAttributes(const RQ_MSHAttributeFilter *filter, Details details,
                                                         Primitives primitives, const RQ_RefineParms *parms = nullptr,
                                                         RQ_MSHIncludePoint point = RQ_MSHIncludePoint::OMIT);

private:
    // Attributes of some owners, read at the elements of `rowOwner`.
    RQ_AttributeListHandle makeList(std::initializer_list<ELM_Owner> owners, const RQ_MSHAttributeFilter *filter,
                                    const RQ_MSHOffsetList &rows, ELM_Owner rowOwner, const RQ_RefineParms *parms) const;
    RQ_DataArrayHandle makeArray(const ELM_Attribute &attribute, const RQ_MSHOffsetList &rows, ELM_Owner rowOwner,
                                 int segment) const;

    // The array of a segment, `first` being that of the first one.
    RQ_DataArrayHandle makeSegment(const ELM_Attribute &attribute, const RQ_DataArrayHandle &first,
                                   const RQ_MSHOffsetList &rows, ELM_Owner rowOwner, int segment) const;

    void setMotion(std::shared_ptr<const rq::PointMotion> motion);

    std::vector<MOD_ConstDetailHandle> details_;
    std::shared_ptr<const rq::PointMotion> motion_;  // null when every segment reads its own detail
};
