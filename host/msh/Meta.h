#pragma once

#include <host/msh/Placed.h>

/// How the field of a blob falls from 1 at its centre to 0 at its surface, as a polynomial of the squared distance q.
enum MSH_BlobKernel : int32_t
{
    MSH_KERNEL_QUADRATIC,  ///< (1 - q)^2
    MSH_KERNEL_CUBIC,      ///< (1 - q)^3
    MSH_KERNEL_QUARTIC,    ///< (1 - q)^4
    MSH_KERNELS
};

/// What a blob's payload holds.  The blob reaches as far as its shape, which "transform" places.
struct HOST_API MSH_BlobData
{
    int32_t kernel = MSH_KERNEL_CUBIC;
    double weight = 1.0;      ///< of its field; negative weights dig
    double exponentXY = 1.0;  ///< super-quadric: 1 is round, towards 0 square
    double exponentZ = 1.0;
    double length = 2.0;    ///< capsule: the distance along z between the centres of its two unit balls
    double rounding = 0.5;  ///< rounded box, from -1 to 1: the radius of its edges

    template <class Self, class Visit> static void describe(Self &self, Visit &&visit)
    {
        visit("kernel", self.kernel);
        visit("weight", self.weight);
        visit("exponent_xy", self.exponentXY);
        visit("exponent_z", self.exponentZ);
        visit("length", self.length);
        visit("rounding", self.rounding);
    }
    bool check(const MSH_PayloadUse &use, std::string &why) const;
};

/// How an expression combines the fields of its children.
enum MSH_BlobOperation : int32_t
{
    MSH_BLOB_SUM,
    MSH_BLOB_MAXIMUM,
    MSH_BLOB_MINIMUM,
    MSH_BLOB_OPERATIONS
};

/// What a blob expression's payload holds.  Children come before it in the detail, so there are no circles.
struct HOST_API MSH_BlobExpressionData
{
    int32_t operation = MSH_BLOB_SUM;
    MSH_ElementRefs children;

    template <class Self, class Visit> static void describe(Self &self, Visit &&visit)
    {
        visit("operation", self.operation);
        visit("children", self.children);
    }
    bool check(const MSH_PayloadUse &use, std::string &why) const;
};

/// A primitive seen as a blob, or as an expression of blobs.
class HOST_API MSH_Meta : public MSH_Placed
{
public:
    explicit MSH_Meta(const MSH_Primitive &primitive) : MSH_Placed(primitive) {}
    MSH_Meta(const MSH_Detail &detail, ELM_Offset offset) : MSH_Placed(detail, offset) {}

    /// False when the primitive is of another type; nothing else may be asked then.
    bool isValid() const { return type() >= ELM_PRIMITIVE_BLOB_ELLIPSOID && type() <= ELM_PRIMITIVE_BLOB_EXPRESSION; }
    bool isExpression() const { return type() == ELM_PRIMITIVE_BLOB_EXPRESSION; }

    /// Of blobs: kernel, weight, and what their shape needs.
    const MSH_BlobData &blob() const { return payload<MSH_BlobData>(); }

    /// Of expressions.
    const MSH_BlobExpressionData &expression() const { return payload<MSH_BlobExpressionData>(); }
};
