#pragma once

#include <unordered_map>

#include <rq/bridge/MSHDetailList.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace rq
{
/// In how many segments a primitive has tangents that were computed for it; pieces of one mesh share them.
int64_t countTangents(const RQ_Primitive &primitive);

/// Makes primitives that read one list of details anew from another one with the same topology and the same attributes: all
/// but attribute arrays is shared.  Normals and tangents that were added are computed anew where what they are made of has
/// changed.
///
/// Failure  null for primitives of other kinds than meshes of polygons, cells, curves and points, and their collections, and
///          for arrays that read a detail in another way than through host attributes and views of them; and for those that
///          it is interrupted at
class Rebinding
{
public:
    Rebinding(const RQ_MSHDetailList &from, const RQ_MSHDetailList &to) : from_(from), to_(to) {}

    /// A mesh that others are pieces of goes before them: they show its tangents.
    RQ_PrimitiveHandle primitive(const RQ_PrimitiveHandle &old);

    bool isInterrupted() const { return interrupted_; }

    /// How many arrays of normals, and pairs of arrays of tangents, were computed anew.
    int64_t normals() const { return normals_; }
    int64_t tangents() const { return tangents_; }

private:
    bool attributes(const RQ_AttributeListHandle &old, RQ_AttributeListHandle &made);
    const RQ_DataArrayHandle &array(const RQ_DataArrayHandle &old);
    RQ_DataArrayHandle makeArray(const RQ_DataArrayHandle &old);
    template <class Mesh> RQ_PrimitiveHandle mesh(const Mesh &old);
    RQ_PrimitiveHandle withTangents(const RQ_PolygonMeshHandle &bare, const RQ_AttributeList &old);

    const RQ_MSHDetailList &from_, &to_;
    std::unordered_map<const RQ_DataArray *, RQ_DataArrayHandle> made_;  // segments and pieces share arrays
    int64_t normals_ = 0, tangents_ = 0;
    bool interrupted_ = false;
};
}  // namespace rq
