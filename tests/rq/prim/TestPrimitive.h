#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include <rq/data/convert.h>
#include <rq/prim/Primitive.h>
#include <tests/json.h>
#include <tests/rq/data/arrays.h>

/// A primitive as an application would write it: any attribute lists, any children to refine to, fixed measures.
class TestPrimitive : public RQ_Primitive
{
public:
    TestPrimitive() = default;
    explicit TestPrimitive(RQ_AttributeListHandle points) { lists[RQ_OWNER_POINT] = std::move(points); }

    const char *className() const override { return "TestPrimitive"; }
    void enlargeBounds(BAS_BoundingBox *boxes, int segments) const override
    {
        enlargeP(boxes, segments, getPointAttributes());
    }
    int getMotionSegments() const override { return motionSegments; }
    int64_t getMemoryUsage() const override { return 1000; }
    const RQ_AttributeListHandle &getVertexAttributes() const override { return lists[RQ_OWNER_VERTEX]; }
    const RQ_AttributeListHandle &getPointAttributes() const override { return lists[RQ_OWNER_POINT]; }
    const RQ_AttributeListHandle &getUniformAttributes() const override { return lists[RQ_OWNER_UNIFORM]; }
    const RQ_AttributeListHandle &getDetailAttributes() const override { return lists[RQ_OWNER_DETAIL]; }
    RQ_PrimitiveHandle doHarden() const override { return hardens ? doSoftCopy() : RQ_Primitive::doHarden(); }
    RQ_PrimitiveHandle doSoftCopy() const override { return RQ_PrimitiveHandle(new TestPrimitive(*this)); }

    bool refine(RQ_Refine &sink, const RQ_RefineParms *) const override
    {
        for (const RQ_PrimitiveHandle &child : children)
            sink.addPrimitive(child);
        return !children.empty();
    }

    double computeSurfaceArea(int segment) const override
    {
        return children.empty() ? area * (segment + 1) : RQ_Primitive::computeSurfaceArea(segment);
    }

    // The helpers for subclasses, opened for tests.
    using RQ_Primitive::dropDataIdHash;
    using RQ_Primitive::enlargeP;
    using RQ_Primitive::enlargePw;

    RQ_AttributeListHandle lists[4];
    std::vector<RQ_PrimitiveHandle> children;
    int motionSegments = 1;
    double area = 0.0;
    bool hardens = true;
};

using TestPrimitiveHandle = BAS_IntrusivePtr<TestPrimitive>;

template <class T>
RQ_DataArrayHandle numbers(std::initializer_list<double> values, int64_t tupleSize = 1, RQ_Type type = RQ_TYPE_NONE)
{
    std::vector<T> converted;
    for (const double value : values)
        converted.push_back(RQconvert<T>(value));
    return makeArray(converted, tupleSize, type);
}

/// A list of one attribute, with one array per motion segment.
inline RQ_AttributeListHandle listOf(const char *name, const std::vector<RQ_DataArrayHandle> &segments)
{
    return RQ_AttributeListHandle(new RQ_AttributeList(nullptr))
        ->addAttribute(name, segments.data(), int(segments.size()), true);
}

inline RQ_DataArrayHandle positions(std::initializer_list<double> values)
{
    return numbers<float>(values, 3, RQ_TYPE_POINT);
}

inline RQ_TransformHandle transformOf(const BAS_Mat4d &matrix) { return RQ_TransformHandle(new RQ_Transform(&matrix, 1)); }

inline RQ_TransformHandle translation(double x, double y, double z)
{
    return transformOf(BAS_Mat4d().translate(BAS_Vec3d(x, y, z)));
}

using tests::jsonOf;
