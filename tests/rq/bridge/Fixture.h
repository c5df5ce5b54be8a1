#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <host/mod/Edit.h>
#include <host/msh/Detail.h>
#include <rq/bridge/MSHDetail.h>
#include <rq/bridge/MSHPrimCollectPoly.h>
#include <rq/bridge/MSHPrimitive.h>
#include <rq/prim/RefineList.h>
#include <rq/surface/PrimPointMesh.h>
#include <rq/surface/PrimPolygonMesh.h>
#include <tests/json.h>
#include <tests/shapes.h>

namespace tests
{
/// Add a shape's points and faces, closed ones, to an edit.
inline void append(MOD_Edit &edit, const MeshShape &shape)
{
    const int first = int(edit.pointCount());
    std::vector<int32_t> points = shape.indices;
    for (int32_t &point : points)
        point += first;
    ASSERT_TRUE(edit.appendPoints(shape.pointCount()));
    ASSERT_TRUE(edit.appendPolygons(shape.counts, points, true)) << edit.message();
    if (shape.pointCount() > 0)
    {
        ELM_Attribute *p = edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT);
        ASSERT_TRUE(p->write(first, shape.pointCount(), shape.positions.data()));
    }
}

/// Geometry that can be edited further.
inline MOD_DetailHandle makeGeometry(const MeshShape &shape)
{
    const MOD_DetailHandle geometry;
    MOD_Edit edit(geometry);
    append(edit, shape);
    edit.commit();
    return geometry;
}

inline MOD_ConstDetailHandle makeDetail(const MeshShape &shape) { return makeGeometry(shape).read(); }

/// What a snapshot refines to.
inline std::vector<RQ_PrimitiveHandle> refine(const MOD_ConstDetailHandle &detail, const RQ_RefineParms *parms = nullptr,
                                              const RQ_MSHDetail::RangeHandle &range = {})
{
    RQ_RefineList list;
    EXPECT_EQ(list.refine(RQ_MSHDetail::makeDetail(detail, range).get(), parms), bool(detail));
    std::vector<RQ_PrimitiveHandle> primitives;
    for (int i = 0; i < list.entries(); ++i)
        primitives.push_back(list.getPrimitive(i));
    return primitives;
}

inline std::string textOf(const RQ_Primitive &primitive) { return jsonOf(primitive); }

inline std::string textOf(const std::vector<RQ_PrimitiveHandle> &primitives)
{
    std::string text;
    for (const RQ_PrimitiveHandle &primitive : primitives)
        text += textOf(*primitive) + "\n";
    return text;
}

template <class T> const T *as(const RQ_PrimitiveHandle &primitive) { return dynamic_cast<const T *>(primitive.get()); }

/// A collector that emits nothing but the attributes of what it got, with or without merging.
class Recorder final : public RQ_MSHPrimCollect
{
public:
    explicit Recorder(bool merges) : merges_(merges) {}

    RQ_MSHPrimCollectData *beginCollecting(const RQ_MSHDetailListHandle &, const RQ_RefineParms *) const override
    {
        return new RQ_MSHPrimCollectOffsets;
    }
    RQ_PrimitiveHandle collect(const RQ_MSHDetailListHandle &details, const MSH_Primitive *const *primitives, int,
                               RQ_MSHPrimCollectData *data) const override
    {
        static_cast<RQ_MSHPrimCollectOffsets *>(data)->append(*primitives[0]);
        // Some are emitted on the way.
        const ELM_Offset offset = primitives[0]->offset();
        return offset % 1000 == 0 ? new RQ_MSHPrimitive(details, offset) : RQ_PrimitiveHandle();
    }
    RQ_PrimitiveHandle endCollecting(const RQ_MSHDetailListHandle &details, RQ_MSHPrimCollectData *data) const override
    {
        const RQ_MSHOffsetList &all = static_cast<const RQ_MSHPrimCollectOffsets *>(data)->getPrimitives();
        return new RQ_PrimPointMesh(details->getPrimitiveAttributes(nullptr, all));
    }
    bool canMergeData() const override { return merges_; }
    void mergeData(RQ_MSHPrimCollectData *into, RQ_MSHPrimCollectData *from) const override
    {
        static_cast<RQ_MSHPrimCollectOffsets *>(into)->append(*static_cast<const RQ_MSHPrimCollectOffsets *>(from));
    }

private:
    bool merges_;
};
}  // namespace tests
