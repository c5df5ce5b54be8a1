#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <host/mod/Edit.h>
#include <host/msh/Detail.h>
#include <rq/bridge/MSHDetail.h>
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

inline MOD_ConstDetailHandle makeDetail(const MeshShape &shape)
{
    MOD_Edit edit{MOD_DetailHandle()};
    append(edit, shape);
    return edit.commit();
}

/// What a snapshot refines to.
inline std::vector<RQ_PrimitiveHandle> refine(const MOD_ConstDetailHandle &detail, const RQ_RefineParms *parms = nullptr)
{
    RQ_RefineList list;
    EXPECT_EQ(list.refine(RQ_MSHDetail::makeDetail(detail).get(), parms), bool(detail));
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
}  // namespace tests
