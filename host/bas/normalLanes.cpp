#include <host/bas/normalLanes.h>

#include <host/bas/clones.h>
#include <host/bas/detail/LaneVector.h>
#include <host/bas/faceGeometry.h>

namespace
{
using host::CornerLanes;
using host::VectorLanes;

bool isPlain(double squared) { return (squared > host::kLeastPlainSquare) & (squared < host::kGreatestPlainSquare); }

// Divides a vector by its length.  One that needs care is left as it is, with length 1; false for such.
inline bool scaleToUnit(double &x, double &y, double &z, double &length)
{
    const double squared = x * x + y * y + z * z;
    length = std::sqrt(isPlain(squared) ? squared : 1.0);
    const double inverse = 1.0 / length;
    x *= inverse;
    y *= inverse;
    z *= inverse;
    return isPlain(squared);
}

HOST_CLONES bool normalizePlain(double *x, double *y, double *z, int64_t count, double *lengths)
{
    int64_t plain = 0;
    for (int64_t i = 0; i < count; ++i)
        plain += scaleToUnit(x[i], y[i], z[i], lengths[i]);
    return plain == count;
}

void normalizeOthers(VectorLanes &vectors, int64_t count, double *lengths)
{
    for (int64_t i = 0; i < count; ++i)
    {
        BAS_Vec3d vector = vectors[i];
        if (isPlain(vector.dot(vector)))
            continue;
        lengths[i] = host::normalize(vector);
        vectors.set(i, vector);
    }
}

// A cross product of two edges along a face's normal.
enum class Cross
{
    diagonals,
    firstEdges,
    trusted  // the former where the latter are not to be trusted
};

struct Found
{
    bool arePlain, areTrusted;
};

// As many doubles as fill a register.
constexpr int64_t kSome = 4;

using Doubles = host::Lanes<double, kSome>;
using Mask = host::Lanes<int64_t, kSome>;

template <class Value> HOST_LANES Doubles load(const Value *values)
{
    Doubles some;
    for (int64_t i = 0; i < kSome; ++i)
        some[i] = double(values[i]);
    return some;
}

// The directions and lengths of these products, and whether all are complete and were good without the diagonals.
template <Cross kCross, class Value>
HOST_CLONES Found crossPlain(const CornerLanes<Value> &corners, VectorLanes &normals, double *lengths)
{
    Mask plain = Mask{} - 1, trusted = plain;
    for (int64_t i = 0; i < corners.faces; i += kSome)
    {
        const auto at = [&](int corner) __attribute__((always_inline))
        {
            const auto &axes = corners.at[corner];
            return host::LaneVector<Doubles>{load(axes[0] + i), load(axes[1] + i), load(axes[2] + i)};
        };
        const auto diagonals = [&]() __attribute__((always_inline)) { return cross(at(2) - at(0), at(3) - at(1)); };
        host::LaneVector<Doubles> normal;
        if constexpr (kCross == Cross::diagonals)
            normal = diagonals();
        else
        {
            const auto origin = at(0);
            normal = cross(at(1) - origin, at(2) - origin);
            const Doubles squared = dot(normal, normal);
            const Mask isTrusted = (squared > host::kLeastTrustedSquare) & (squared <= std::numeric_limits<double>::max());
            trusted &= isTrusted;
            if constexpr (kCross == Cross::trusted)
            {
                const auto other = diagonals();
                normal = {isTrusted ? normal.x : other.x, isTrusted ? normal.y : other.y, isTrusted ? normal.z : other.z};
            }
        }
        const Doubles squared = dot(normal, normal);
        const Mask isPlain = (squared > host::kLeastPlainSquare) & (squared < host::kGreatestPlainSquare);
        plain &= isPlain;
        const Doubles known = isPlain ? squared : Doubles{} + 1.0;
        const Doubles length = host::squareRoots(known);
        const Doubles inverse = 1.0 / length;
        host::putLanes(normal.x * inverse, normals.x + i);
        host::putLanes(normal.y * inverse, normals.y + i);
        host::putLanes(normal.z * inverse, normals.z + i);
        host::putLanes(length, lengths + i);
    }
    return {!host::isAny(~plain), !host::isAny(~trusted)};
}

// From each corner to the next one.
template <class Value> HOST_CLONES void edgesOf(const CornerLanes<Value> &corners, double (*edges)[3][VectorLanes::kCount])
{
    for (int64_t k = 0; k < corners.corners; ++k)
        for (int axis = 0; axis < 3; ++axis)
        {
            const Value *const from = corners.at[k][axis], *const to = corners.at[k + 1 < corners.corners ? k + 1 : 0][axis];
            double *__restrict const edge = edges[k][axis];
            for (int64_t i = 0; i < corners.faces; ++i)
                edge[i] = double(to[i]) - double(from[i]);
        }
}

// How the outline turns between two rows of edges that follow each other.
HOST_CLONES void turnsOf(const double (*before)[VectorLanes::kCount], const double (*next)[VectorLanes::kCount],
                         int64_t count, double *acrossTo, double *alongTo)
{
    double *__restrict const across = acrossTo, *__restrict const along = alongTo;
    for (int64_t i = 0; i < count; ++i)
    {
        const double ax = before[0][i], ay = before[1][i], az = before[2][i];
        const double bx = next[0][i], by = next[1][i], bz = next[2][i];
        const double x = ay * bz - az * by, y = az * bx - ax * bz, z = ax * by - ay * bx;
        across[i] = x * x + y * y + z * z;
        along[i] = -(ax * bx + ay * by + az * bz);
    }
}

template <int kRows> HOST_CLONES void interleave(const double (*rows)[VectorLanes::kCount], int64_t count, double *to)
{
    double *__restrict const values = to;
    for (int64_t i = 0; i < count; ++i)
        for (int k = 0; k < kRows; ++k)
            values[i * kRows + k] = rows[k][i];
}

HOST_CLONES bool anglesBetween(const double *across, const double *along, int64_t count, double *angles)
{
    int64_t repeats = 0;
    for (int64_t i = 0; i < count; ++i)
    {
        angles[i] = host::angleOf(std::sqrt(across[i]), along[i]);
        repeats += (across[i] == 0.0) & (along[i] == 0.0);
    }
    return repeats == 0;
}

template <class Real> HOST_CLONES void weigh(const VectorLanes &vectors, const Real *weights, int64_t count, double *parts)
{
    // Rounded all at once: where GCC 12 itself makes vectors of neighbouring numbers that are converted to float and back,
    // it drops both conversions.
    const auto rounded = [](const double *values) __attribute__((always_inline))
    {
        const auto kept = host::convertLanes<Real>(load(values));
        Doubles some;
        for (int64_t i = 0; i < kSome; ++i)
            some[i] = double(kept[i]);
        return some;
    };
    for (int64_t i = 0; i < count; i += kSome)
    {
        Doubles weight = load(weights + i);
        Doubles x = rounded(vectors.x + i) * weight, y = rounded(vectors.y + i) * weight,
                z = rounded(vectors.z + i) * weight;
        host::transpose(x, y, z, weight);
        host::putLanes(x, parts + 4 * i);
        host::putLanes(y, parts + 4 * i + 4);
        host::putLanes(z, parts + 4 * i + 8);
        host::putLanes(weight, parts + 4 * i + 12);
    }
}

HOST_CLONES void loadVectors(const double *vectors, int64_t count, double *x, double *y, double *z)
{
    int64_t i = 0;
    for (; i + kSome <= count; i += kSome)
    {
        Doubles a = load(vectors + 4 * i), b = load(vectors + 4 * i + 4);
        Doubles c = load(vectors + 4 * i + 8), d = load(vectors + 4 * i + 12);
        host::transpose(a, b, c, d);
        host::putLanes(a, x + i);
        host::putLanes(b, y + i);
        host::putLanes(c, z + i);
    }
    for (; i < count; ++i)
    {
        x[i] = vectors[4 * i];
        y[i] = vectors[4 * i + 1];
        z[i] = vectors[4 * i + 2];
    }
}

template <class Real> HOST_CLONES void store(const VectorLanes &vectors, int64_t count, Real *valuesTo)
{
    Real *__restrict const values = valuesTo;
    for (int64_t i = 0; i < count; ++i)
    {
        values[3 * i] = Real(vectors.x[i]);
        values[3 * i + 1] = Real(vectors.y[i]);
        values[3 * i + 2] = Real(vectors.z[i]);
    }
}
}  // namespace

namespace host
{
void normalizeLanes(VectorLanes &vectors, int64_t count, double *lengths)
{
    if (!normalizePlain(vectors.x, vectors.y, vectors.z, count, lengths))
        normalizeOthers(vectors, count, lengths);
}

void weighLanes(const VectorLanes &vectors, const float *weights, int64_t count, BAS_Vec4d *parts)
{
    weigh(vectors, weights, count, &parts->x);
}

void weighLanes(const VectorLanes &vectors, const double *weights, int64_t count, BAS_Vec4d *parts)
{
    weigh(vectors, weights, count, &parts->x);
}

void loadLanes(const BAS_Vec4d *vectors, int64_t count, VectorLanes &lanes)
{
    loadVectors(&vectors->x, count, lanes.x, lanes.y, lanes.z);
}

void storeLanes(const VectorLanes &vectors, int64_t count, float *to) { store(vectors, count, to); }
void storeLanes(const VectorLanes &vectors, int64_t count, double *to) { store(vectors, count, to); }

template <class Value> void CornerLanes<Value>::normals(VectorLanes &normals, double *lengths) const
{
    const Found found = corners == 4 ? crossPlain<Cross::diagonals>(*this, normals, lengths)
                                     : crossPlain<Cross::firstEdges>(*this, normals, lengths);
    if (!found.arePlain)
        normalizeOthers(normals, faces, lengths);
}

template <class Value> bool CornerLanes<Value>::fastNormals(VectorLanes &normals, double *lengths) const
{
    Found found = crossPlain<Cross::firstEdges>(*this, normals, lengths);
    if (corners == 4 && !found.areTrusted)
    {
        if (known < corners)
            return false;
        found = crossPlain<Cross::trusted>(*this, normals, lengths);
    }
    if (!found.arePlain)
        normalizeOthers(normals, faces, lengths);
    return true;
}

template <class Value> bool CornerLanes<Value>::angles(double *angles) const
{
    alignas(64) double edges[kMost][3][VectorLanes::kCount], across[VectorLanes::kCount], along[VectorLanes::kCount];
    alignas(64) double rows[kMost][VectorLanes::kCount];
    edgesOf(*this, edges);
    bool areKnown = true;
    for (int64_t k = 0; k < corners; ++k)
    {
        turnsOf(edges[k > 0 ? k - 1 : corners - 1], edges[k], faces, across, along);
        areKnown &= anglesBetween(across, along, faces, rows[k]);
    }
    if (corners == 4)
        interleave<4>(rows, faces, angles);
    else
        interleave<3>(rows, faces, angles);
    return areKnown;
}

bool anglesOfLanes(const TurnLanes &turns, int64_t count, double *angles)
{
    return anglesBetween(turns.across.data(), turns.along.data(), count, angles);
}
}  // namespace host

template struct host::CornerLanes<float>;
template struct host::CornerLanes<double>;
