#pragma once

#include <memory>
#include <vector>

#include <rq/surface/PrimPolygonMesh.h>
#include <tests/rq/data/arrays.h>
#include <tests/shapes.h>

namespace tests
{
inline RQ_DataArrayHandle integers(const std::vector<int> &values) { return makeArray(values); }
inline RQ_DataArrayHandle positions(const std::vector<float> &values) { return makeArray(values, 3, RQ_TYPE_POINT); }

/// A list of one attribute.
inline RQ_AttributeListHandle oneAttribute(const char *name, const RQ_DataArrayHandle &array)
{
    return RQ_AttributeListHandle(new RQ_AttributeList(nullptr))->addAttribute(name, array, false);
}

/// A mesh whose vertex attribute "corner" and uniform attribute "face" number what they belong to.
inline RQ_PolygonMeshHandle makeMesh(const MeshShape &shape)
{
    std::vector<int> corners(shape.indices.size()), faces(shape.counts.size());
    for (size_t i = 0; i < corners.size(); ++i)
        corners[i] = int(i);
    for (size_t i = 0; i < faces.size(); ++i)
        faces[i] = int(i);
    return new RQ_PrimPolygonMesh(integers(shape.counts), integers(shape.indices),
                                  oneAttribute("P", positions(shape.positions)), oneAttribute("corner", integers(corners)),
                                  oneAttribute("face", integers(faces)));
}

inline BAS_Vec3d pointOf(const MeshShape &shape, int64_t point)
{
    const float *p = shape.positions.data() + 3 * point;
    return {p[0], p[1], p[2]};
}

inline BAS_Vec3d vectorOf(const RQ_DataArray &array, int64_t i)
{
    return {array.getF64(i, 0), array.getF64(i, 1), array.getF64(i, 2)};
}
}  // namespace tests
