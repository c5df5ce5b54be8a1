#pragma once

#include <host/bas/Vector.h>
#include <host/msh/Primitive.h>

/// A primitive that is placed by a 3x3 matrix, the private attribute "transform", and by the position of its one point.
///
/// Moving the point moves it, and a million of them are two columns.
class HOST_API MSH_Placed : public MSH_Primitive
{
public:
    explicit MSH_Placed(const MSH_Primitive &primitive) : MSH_Primitive(primitive) {}
    MSH_Placed(const MSH_Detail &detail, ELM_Offset offset) : MSH_Primitive(detail, offset) {}

    /// Its matrix; the identity in a detail without the attribute.  Vectors are rows.
    BAS_Mat3d transform() const;

    /// Where its point is; the origin without one.
    BAS_Vec3d position() const;

    /// Both as one matrix.
    BAS_Mat4d placement() const;
};
