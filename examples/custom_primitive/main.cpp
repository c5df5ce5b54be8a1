// A primitive of your own: what you must say about it, and what the library makes of that.

#include <algorithm>
#include <cstdio>
#include <string>

#include <host/bas/JSONWriter.h>
#include <rq/data/DANumeric.h>
#include <rq/prim/PrimInstance.h>
#include <rq/prim/PrimitiveJSON.h>
#include <rq/prim/RefineCollect.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace
{
template <class T, size_t N> RQ_DataArrayHandle arrayOf(const T (&values)[N], int64_t tupleSize, RQ_Type type = RQ_TYPE_NONE)
{
    auto *array = new RQ_DANumeric<T>(int64_t(N) / tupleSize, tupleSize, type);
    const RQ_DataArrayHandle handle(array);
    std::copy(std::begin(values), std::end(values), array->data());
    return handle;
}

/// A box from the origin to `size`, kept as three numbers until somebody wants faces.
class Crate : public RQ_Primitive
{
public:
    explicit Crate(const BAS_Vec3f &size) : size_(size) {}

    // A name and a number of its own, so that others can tell it from what they know.
    const char *className() const override { return "Crate"; }
    int getPrimitiveType() const override
    {
        static const int id = createPrimitiveTypeId();
        return id;
    }

    // Simpler primitives that stand for it: six faces, placed as the crate is.
    bool refine(RQ_Refine &sink, const RQ_RefineParms *) const override
    {
        const RQ_PrimitiveHandle faces = makeFaces();
        faces->refineCopyTransformFrom(*this);
        sink.addPrimitive(faces);
        return true;
    }

    void enlargeBounds(BAS_BoundingBox *boxes, int segments) const override
    {
        const RQ_PrimitiveHandle faces = makeFaces();
        faces->refineCopyTransformFrom(*this);
        faces->enlargeBounds(boxes, segments);
    }
    int getMotionSegments() const override { return getPrimitiveTransform()->getSegments(); }
    int64_t getMemoryUsage() const override { return int64_t(sizeof(*this)); }

    bool save(BAS_JSONWriter &writer) const override
    {
        const jsonWriter record(writer, className());
        return record->uniformArray(size_.getValue(), 3) && saveAttributeLists(*record);
    }

    // All it has is its own, so both copies are the plain one.
    RQ_PrimitiveHandle doSoftCopy() const override { return RQ_PrimitiveHandle(new Crate(*this)); }
    RQ_PrimitiveHandle doHarden() const override { return doSoftCopy(); }

private:
    RQ_PrimitiveHandle makeFaces() const
    {
        const auto [x, y, z] = size_;
        const float positions[] = {0, 0, 0, x, 0, 0, x, y, 0, 0, y, 0, 0, 0, z, x, 0, z, x, y, z, 0, y, z};
        const int32_t counts[] = {4, 4, 4, 4, 4, 4};
        const int32_t corners[] = {0, 3, 2, 1, 4, 5, 6, 7, 0, 1, 5, 4, 1, 2, 6, 5, 2, 3, 7, 6, 3, 0, 4, 7};

        const RQ_AttributeListHandle none(new RQ_AttributeList(new RQ_AttributeMap));
        const RQ_AttributeListHandle points = none->addAttribute("P", arrayOf(positions, 3, RQ_TYPE_POINT), true);
        return RQ_PrimitiveHandle(new RQ_PrimPolygonMesh(arrayOf(counts, 1), arrayOf(corners, 1), points));
    }

    BAS_Vec3f size_;
};

std::string saved(const RQ_Primitive &primitive)
{
    std::string text;
    BAS_JSONWriter writer(text);
    primitive.save(writer);
    writer.flush();
    return text;
}

void describe(const RQ_Primitive &primitive)
{
    BAS_BoundingBox box;
    primitive.enlargeBounds(&box, 1);
    std::printf("%s: to (%g %g %g), area %g, volume %g\n", primitive.className(), box.maximum().x, box.maximum().y,
                box.maximum().z, primitive.computeSurfaceArea(0), primitive.computeVolume(BAS_Vec3f(0.0f), 0));
}
}  // namespace

int main()
{
    // Measured through the faces that it refines to.
    const RQ_PrimitiveHandle crate(new Crate(BAS_Vec3f(1, 2, 3)));
    describe(*crate);
    describe(*RQ_Primitive::refinePrimitive(crate, nullptr));
    std::printf("%s\n", saved(*crate).c_str());

    // Drawn three times, each a step along x.
    const RQ_TransformArrayHandle steps(new RQ_TransformArray);
    for (int i = 0; i < 3; ++i)
    {
        const BAS_Mat4d step = BAS_Mat4d().setTranslation(BAS_Vec3d(2.0 * i, 0.0, 0.0));
        steps->append(RQ_TransformHandle(new RQ_Transform(&step, 1)));
    }
    const RQ_PrimInstance row(crate, steps);
    describe(row);

    RQ_RefineCollect crates;
    row.refine(crates, nullptr);
    std::printf("%d crates of type %d\n", int(crates.entries()), crates.getPrim(0)->getPrimitiveType());
    return 0;
}
