#include <algorithm>
#include <vector>

#include <rq/prim/Transform.h>

namespace
{
BAS_Mat4d widen(const BAS_Mat4d &matrix) { return matrix; }

BAS_Mat4d widen(const BAS_Mat4f &matrix) { return BAS_Mat4d(matrix); }

template <class T> BAS_Mat4d widen(const Imath::Matrix33<T> &matrix)
{
    return BAS_Mat4d(Imath::Matrix33<double>(matrix), BAS_Vec3d(0.0));
}

// Apply `first`, then `second`: as many segments as the longer one has.
RQ_Transform *combine(const RQ_Transform &first, const RQ_Transform &second)
{
    const int segments = std::max(first.getSegments(), second.getSegments());
    std::vector<BAS_Mat4d> products(static_cast<size_t>(segments));
    for (int i = 0; i < segments; ++i)
    {
        BAS_Mat4d a, b;
        first.getMatrix(a, i);
        second.getMatrix(b, i);
        products[size_t(i)] = a * b;
    }
    return new RQ_Transform(products.data(), segments);
}

// The same where one side is a matrix: the segments stay those of `transform`.  Without any there is one all the same, or
// the matrix would be lost.
template <class Product> RQ_Transform *combineEach(const RQ_Transform &transform, Product &&product)
{
    const int segments = std::max(transform.getSegments(), 1);
    std::vector<BAS_Mat4d> products(static_cast<size_t>(segments));
    for (int i = 0; i < segments; ++i)
    {
        BAS_Mat4d own;
        transform.getMatrix(own, i);
        products[size_t(i)] = product(own);
    }
    return new RQ_Transform(products.data(), segments);
}

template <class M> RQ_Transform *multiplyEach(const RQ_Transform &transform, const M &matrix)
{
    return combineEach(transform, [other = widen(matrix)](const BAS_Mat4d &own) { return own * other; });
}

template <class M> RQ_Transform *preMultiplyEach(const RQ_Transform &transform, const M &matrix)
{
    return combineEach(transform, [other = widen(matrix)](const BAS_Mat4d &own) { return other * own; });
}
}  // namespace

RQ_TransformHandle RQ_Transform::multiply(const RQ_TransformHandle &other) const
{
    if (!other || (other->isIdentity() && !identity_))
        return self();
    return identity_ ? other : RQ_TransformHandle(combine(*this, *other));
}

RQ_TransformHandle RQ_Transform::preMultiply(const RQ_TransformHandle &other) const
{
    if (!other || (other->isIdentity() && !identity_))
        return self();
    return identity_ ? other : RQ_TransformHandle(combine(*other, *this));
}

RQ_Transform *RQ_Transform::multiply(const BAS_Mat3f &matrix) const { return multiplyEach(*this, matrix); }

RQ_Transform *RQ_Transform::multiply(const BAS_Mat3d &matrix) const { return multiplyEach(*this, matrix); }

RQ_Transform *RQ_Transform::multiply(const BAS_Mat4f &matrix) const { return multiplyEach(*this, matrix); }

RQ_Transform *RQ_Transform::multiply(const BAS_Mat4d &matrix) const { return multiplyEach(*this, matrix); }

RQ_Transform *RQ_Transform::preMultiply(const BAS_Mat3f &matrix) const { return preMultiplyEach(*this, matrix); }

RQ_Transform *RQ_Transform::preMultiply(const BAS_Mat3d &matrix) const { return preMultiplyEach(*this, matrix); }

RQ_Transform *RQ_Transform::preMultiply(const BAS_Mat4f &matrix) const { return preMultiplyEach(*this, matrix); }

RQ_Transform *RQ_Transform::preMultiply(const BAS_Mat4d &matrix) const { return preMultiplyEach(*this, matrix); }
