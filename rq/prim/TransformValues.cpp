#include <cmath>

#include <Imath/ImathMatrixAlgo.h>

#include <host/bas/Parallel.h>
#include <rq/data/DANumeric.h>
#include <rq/data/convert.h>
#include <rq/prim/detail/transformInverse.h>

namespace
{
// A tuple costs 2 to 6 ns, so a task is 30 to 100 us of work.
constexpr int64_t kTuplesPerTask = 16384;

// What is done to the first components of a tuple, in 64 bits.
struct Affine
{
    static constexpr int kComponents = 3;

    BAS_Mat3d linear;
    BAS_Vec3d offset;

    bool changesNothing() const { return linear == BAS_Mat3d() && offset == BAS_Vec3d(0.0); }

    void operator()(double *v) const
    {
        const double x = v[0], y = v[1], z = v[2];
        for (int column = 0; column < 3; ++column)
            v[column] = x * linear[0][column] + y * linear[1][column] + z * linear[2][column] + offset[column];
    }
};

struct Rotation
{
    static constexpr int kComponents = 4;

    BAS_Quatd rotation;

    bool changesNothing() const { return rotation == BAS_Quatd(); }

    void operator()(double *q) const
    {
        const BAS_Quatd turned = rotation * BAS_Quatd(q[3], q[0], q[1], q[2]);
        q[0] = turned.v.x;
        q[1] = turned.v.y;
        q[2] = turned.v.z;
        q[3] = turned.r;
    }
};

BAS_Vec3d row(const BAS_Mat4d &matrix, int i) { return BAS_Vec3d(matrix[i][0], matrix[i][1], matrix[i][2]); }

BAS_Mat3d fromRows(const BAS_Vec3d &a, const BAS_Vec3d &b, const BAS_Vec3d &c)
{
    return BAS_Mat3d(a.x, a.y, a.z, b.x, b.y, b.z, c.x, c.y, c.z);
}

BAS_Mat3d linearPart(const BAS_Mat4d &matrix) { return fromRows(row(matrix, 0), row(matrix, 1), row(matrix, 2)); }

// The cofactors of the linear part: the transposed inverse but for the factor 1/determinant, and there even when the
// determinant is 0.  The identity where they are not finite.
BAS_Mat3d cofactors(const BAS_Mat4d &matrix)
{
    const BAS_Vec3d x = row(matrix, 0), y = row(matrix, 1), z = row(matrix, 2);
    const BAS_Mat3d result = fromRows(y.cross(z), z.cross(x), x.cross(y));
    for (int i = 0; i < 9; ++i)
        if (!std::isfinite(result[i / 3][i % 3]))
            return BAS_Mat3d();
    return result;
}

// Make `axis` a unit vector across those of `axes` that are set; zero when nothing is left of it.
BAS_Vec3d across(BAS_Vec3d axis, const BAS_Vec3d (&axes)[3])
{
    constexpr double kNothing = 1e-12;
    axis.normalize();
    for (const BAS_Vec3d &other : axes)
        axis -= other * axis.dot(other);
    return axis.length() > kNothing ? axis.normalized() : BAS_Vec3d(0.0);
}

// The rotation in a matrix: its rows made orthonormal one after the other, the third turned round in a mirroring one.
// Rows that give no direction are made up from the coordinate axes.
BAS_Quatd rotationOf(const BAS_Mat4d &matrix)
{
    BAS_Vec3d axes[3] = {BAS_Vec3d(0.0), BAS_Vec3d(0.0), BAS_Vec3d(0.0)};
    for (int i = 0; i < 3; ++i)
        axes[i] = across(row(matrix, i), axes);
    for (int i = 0; i < 3; ++i)
        for (int k = 0; k < 3 && axes[i] == BAS_Vec3d(0.0); ++k)
            axes[i] = across(row(BAS_Mat4d(), (i + k) % 3), axes);
    if (axes[0].cross(axes[1]).dot(axes[2]) < 0.0)
        axes[2] = -axes[2];
    return Imath::extractQuat(BAS_Mat4d(fromRows(axes[0], axes[1], axes[2]), BAS_Vec3d(0.0)));
}

template <class T, class Change> RQ_DataArrayHandle changed(const RQ_DataArray &array, const Change &change)
{
    RQ_DataArrayHandle buffer;
    const T *from = array.getArray<T>(buffer);
    const int64_t tupleSize = array.getTupleSize();
    auto *result = new RQ_DANumeric<T>(array.entries(), tupleSize, array.getTypeInfo());
    const RQ_DataArrayHandle handle(result);
    T *to = result->data();

    host::parallelFor(array.entries(), kTuplesPerTask, [&](int64_t i) {
        const T *source = from + i * tupleSize;
        T *target = to + i * tupleSize;
        double values[Change::kComponents];
        for (int c = 0; c < Change::kComponents; ++c)
            values[c] = RQconvert<double>(source[c]);
        change(values);
        for (int c = 0; c < Change::kComponents; ++c)
            target[c] = RQconvert<T>(values[c]);
        std::copy(source + Change::kComponents, source + tupleSize, target + Change::kComponents);
    });
    return handle;
}

template <class Change> RQ_DataArrayHandle apply(const RQ_DataArrayHandle &array, const Change &change)
{
    if (array->getTupleSize() < Change::kComponents || change.changesNothing())
        return array;
    switch (array->getStorage())
    {
    case RQ_STORAGE_REAL16:
        return changed<PLT_Half>(*array, change);
    case RQ_STORAGE_REAL32:
        return changed<float>(*array, change);
    default:
        return changed<double>(*array, change);
    }
}
}  // namespace

RQ_DataArrayHandle RQ_Transform::transform(const RQ_DataArrayHandle &array, int segment) const
{
    if (!array || identity_ || !RQisFloat(array->getStorage()) || array->hasArrayEntries())
        return array;

    const BAS_Mat4d &matrix = matrixAt(segment);
    switch (array->getTypeInfo())
    {
    case RQ_TYPE_POINT:
    case RQ_TYPE_HPOINT:
        return apply(array, Affine{linearPart(matrix), row(matrix, 3)});
    case RQ_TYPE_VECTOR:
        return apply(array, Affine{linearPart(matrix), BAS_Vec3d(0.0)});
    case RQ_TYPE_NORMAL: {
        const Inverse &inverse = inverseAt(segment);
        return apply(array,
                     Affine{inverse.singular ? cofactors(matrix) : linearPart(inverse.matrix).transposed(), BAS_Vec3d(0.0)});
    }
    case RQ_TYPE_QUATERNION:
        return apply(array, Rotation{rotationOf(matrix)});
    default:
        return array;
    }
}
