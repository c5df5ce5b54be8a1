#pragma once

#include <host/msh/Primitive.h>

/// A primitive seen as a polygon.
class MSH_Polygon : public MSH_Primitive
{
public:
    explicit MSH_Polygon(const MSH_Primitive &primitive) : MSH_Primitive(primitive) {}
    MSH_Polygon(const MSH_Detail &detail, ELM_Offset offset) : MSH_Primitive(detail, offset) {}

    /// False when the primitive is of another type; nothing else may be asked then.
    bool isValid() const { return type() == ELM_PRIMITIVE_POLYGON; }

    /// True when the last vertex connects to the first: a face.  Open polygons are polylines.
    bool isClosed() const { return detail().isClosed(offset()); }
};
