#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include <Imath/ImathMatrixAlgo.h>

#include <host/bas/Parallel.h>
#include <rq/data/DANumeric.h>
#include <rq/data/convert.h>
#include <host/bas/clones.h>
#include <rq/prim/detail/transformInverse.h>

namespace
{
// A tuple costs 2 to 4 ns, so a task is 30 to 60 us of work.
constexpr int64_t kTuplesPerTask = 16384;

// What is done to the first components of a tuple: they are a row vector, three of them with a 1 behind, and multiplied by
// the matrix.
struct Change
{
    BAS_Mat4d matrix;
    int components;
};

BAS_Vec3d row(const BAS_Mat4d &matrix, int i) { return BAS_Vec3d(matrix[i][0], matrix[i][1], matrix[i][2]); }

BAS_Mat3d fromRows(const BAS_Vec3d &a, const BAS_Vec3d &b, const BAS_Vec3d &c)
{
    return BAS_Mat3d(a.x, a.y, a.z, b.x, b.y, b.z, c.x, c.y, c.z);
}

BAS_Mat3d linearPart(const BAS_Mat4d &matrix) { return fromRows(row(matrix, 0), row(matrix, 1), row(matrix, 2)); }

// The largest magnitude in the linear part; no finite number when some entry is none.
double largestEntry(const BAS_Mat4d &matrix)
{
    double largest = 0.0;
    for (int i = 0; i < 9; ++i)
        largest = std::max(largest, std::abs(matrix[i / 3][i % 3])) + 0.0 * matrix[i / 3][i % 3];
    return largest;
}

// The sum of three unit values times this stays in the range of the storage.
double largestFactor(RQ_Storage storage)
{
    const double largest = storage == RQ_STORAGE_REAL16   ? double(std::numeric_limits<PLT_Half>::max())
                           : storage == RQ_STORAGE_REAL32 ? double(std::numeric_limits<float>::max())
                                                          : std::numeric_limits<double>::max();
    return largest / 4.0;
}

// What normals are multiplied by: the transposed inverse while there is one that keeps them in range; else the cofactors,
// which have its directions, taken of entries up to 1.
BAS_Mat3d normalMatrix(const BAS_Mat4d &matrix, const BAS_Mat4d *inverse, double limit)
{
    if (inverse && largestEntry(*inverse) < limit)
        return linearPart(*inverse).transposed();
    const double largest = largestEntry(matrix);
    if (!std::isfinite(largest))
        return BAS_Mat3d();
    const BAS_Mat4d scaled = largest > 0.0 ? matrix / largest : matrix;
    const BAS_Mat3d result = rq::cofactors(scaled);
    const double determinant = row(scaled, 0).dot(BAS_Vec3d(result[0][0], result[0][1], result[0][2]));
    return result * (inverse ? std::copysign(1.0, determinant) : 1.0);
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

Change quaternionChange(const BAS_Quatd &rotation)
{
    // The product of two quaternions is linear in the second: the rows are what becomes of i, j, k and 1.
    Change change{BAS_Mat4d(), 4};
    for (int i = 0; i < 4; ++i)
    {
        const BAS_Quatd turned = rotation * BAS_Quatd(i == 3, i == 0, i == 1, i == 2);
        for (int c = 0; c < 4; ++c)
            change.matrix[i][c] = c < 3 ? turned.v[c] : turned.r;
    }
    return change;
}

template <int kComponents, class T>
HOST_CLONES void multiplyTuples(const BAS_Mat4d &matrix, const T *from, T *to, int64_t tupleSize, int64_t count)
{
    // Four lanes by name: no compiler finds them in tuples of three.
    typedef double Row __attribute__((vector_size(4 * sizeof(double))));
    Row rows[4];
    std::memcpy(rows, matrix.getValue(), sizeof(rows));
    for (int64_t i = 0; i < count; ++i, from += tupleSize, to += tupleSize)
    {
        const Row last = kComponents == 4 ? double(from[3]) * rows[3] : rows[3];
        const Row result = double(from[0]) * rows[0] + double(from[1]) * rows[1] + double(from[2]) * rows[2] + last;
        for (int c = 0; c < kComponents; ++c)
            to[c] = T(result[c]);
        for (int64_t c = kComponents; c < tupleSize; ++c)
            to[c] = from[c];
    }
}

template <class T> void changeTuples(const Change &change, const T *from, T *to, int64_t tupleSize, int64_t count)
{
    const auto multiply = change.components == 4 ? multiplyTuples<4, T> : multiplyTuples<3, T>;
    multiply(change.matrix, from, to, tupleSize, count);
}

// Halfs go through floats, block by block, for the sake of the processor's own conversion.
void changeTuples(const Change &change, const PLT_Half *from, PLT_Half *to, int64_t tupleSize, int64_t count)
{
    const int64_t tuplesPerBlock = std::max<int64_t>(1, 1024 / tupleSize);
    std::vector<float> block(static_cast<size_t>(tuplesPerBlock * tupleSize));
    for (int64_t i = 0; i < count; i += tuplesPerBlock)
    {
        const int64_t tuples = std::min(tuplesPerBlock, count - i);
        const int64_t values = tuples * tupleSize;
        rq::convertValues(from + i * tupleSize, RQ_STORAGE_REAL16, block.data(), RQ_STORAGE_REAL32, values);
        changeTuples<float>(change, block.data(), block.data(), tupleSize, tuples);
        rq::convertValues(block.data(), RQ_STORAGE_REAL32, to + i * tupleSize, RQ_STORAGE_REAL16, values);
    }
}

template <class T> RQ_DataArrayHandle changed(const RQ_DataArray &array, const Change &change)
{
    RQ_DataArrayHandle buffer;
    const T *from = array.getArray<T>(buffer);
    const int64_t tupleSize = array.getTupleSize();
    auto *result = new RQ_DANumeric<T>(array.entries(), tupleSize, array.getTypeInfo());
    const RQ_DataArrayHandle handle(result);
    T *to = result->data();
    host::parallelForRange(array.entries(), kTuplesPerTask, [&](int64_t begin, int64_t end) {
        changeTuples(change, from + begin * tupleSize, to + begin * tupleSize, tupleSize, end - begin);
    });
    return handle;
}

RQ_DataArrayHandle apply(const RQ_DataArrayHandle &array, const Change &change)
{
    if (array->getTupleSize() < change.components || change.matrix == BAS_Mat4d())
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
        return apply(array, {BAS_Mat4d(linearPart(matrix), row(matrix, 3)), 3});
    case RQ_TYPE_VECTOR:
        return apply(array, {BAS_Mat4d(linearPart(matrix), BAS_Vec3d(0.0)), 3});
    case RQ_TYPE_NORMAL: {
        const Inverse &inverse = inverseAt(segment);
        const BAS_Mat3d linear =
            normalMatrix(matrix, inverse.singular ? nullptr : &inverse.matrix, largestFactor(array->getStorage()));
        return apply(array, {BAS_Mat4d(linear, BAS_Vec3d(0.0)), 3});
    }
    case RQ_TYPE_QUATERNION:
        return apply(array, quaternionChange(rotationOf(matrix)));
    default:
        return array;
    }
}
