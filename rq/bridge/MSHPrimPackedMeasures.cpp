#include <algorithm>

#include <host/bas/JSONWriter.h>
#include <host/bas/Options.h>
#include <rq/bridge/MSHPrimPacked.h>
#include <rq/prim/PrimitiveJSON.h>
#include <rq/prim/detail/placedCorners.h>

// What is told about packed primitives without refining them: where they are, how large, and their saved form.

void RQ_MSHPrimPacked::enlargeBounds(BAS_BoundingBox *boxes, int segments) const
{
    const BAS_BoundingBox box = packed_.bounds();
    for (int segment = 0; segment < segments && !box.isEmpty(); ++segment)
    {
        BAS_Mat4d matrix;
        getViewportTransform(matrix, segment);
        rq::enlargeByCorners(boxes[segment], box, matrix);
    }
}

void RQ_MSHPrimPacked::enlargeRenderBounds(BAS_BoundingBox *boxes, int segments) const { enlargeBounds(boxes, segments); }

void RQ_MSHPrimPacked::getVelocityRange(BAS_Vec3f &minimum, BAS_Vec3f &maximum, const BAS_StringHolder &name) const
{
    minimum = maximum = BAS_Vec3f(0.0f);
    if (const RQ_PrimitiveHandle geometry = getInstanceGeometry())
        geometry->getVelocityRange(minimum, maximum, name);
}

int64_t RQ_MSHPrimPacked::getMemoryUsage() const
{
    int64_t bytes = int64_t(sizeof(*this));
    for (const RQ_AttributeListHandle *list : {&getPointAttributes(), &getVertexAttributes(), &getUniformAttributes()})
        bytes += *list ? (*list)->getMemoryUsage() : 0;
    for (const RQ_DataArrayHandle *ids : {&primitiveIds_, &pointIds_})
        bytes += *ids ? (*ids)->getMemoryUsage() : 0;
    return bytes;
}

bool RQ_MSHPrimPacked::save(BAS_JSONWriter &writer) const
{
    const jsonWriter record(writer, className());
    BAS_BoundingBox box;
    enlargeBounds(&box, 1);
    bool good = record->beginMap() && record->key("bounds") && record->beginArray();
    for (int axis = 0; axis < 3; ++axis)
        good = good && record->writeReal32(box.minimum()[axis]) && record->writeReal32(box.maximum()[axis]);
    good = good && record->endArray() && record->writeKeyBool("transformed", transformed_) &&
           record->writeKeyBool("caninstance", canInstance());
    if (canInstance())
    {
        good = good && record->key("instancetransform") && getInstanceTransform()->save(*record);
        if (BAS_Options key; getInstanceKey(key))
            good = good && record->key("instancekey") && key.save(*record);
    }
    const RQ_AttributeListHandle attributes = getInstanceAttributes();
    return good && record->key("instanceattributes") && (attributes ? attributes->save(*record) : record->writeNull()) &&
           record->key("attributes") && saveAttributeLists(*record) && record->endMap();
}
