#include <host/bas/normalLanes.h>

#include <host/bas/clones.h>
#include <host/bas/faceGeometry.h>

namespace
{
bool isPlain(double squared) { return (squared > host::kLeastPlainSquare) & (squared < host::kGreatestPlainSquare); }

// Leaves vectors that need care as they are, with length 1; false when there are any.
HOST_CLONES bool normalizePlain(double *x, double *y, double *z, int64_t count, double *lengths)
{
    int64_t plain = 0;
    for (int64_t i = 0; i < count; ++i)
    {
        const double squared = x[i] * x[i] + y[i] * y[i] + z[i] * z[i];
        const double length = std::sqrt(isPlain(squared) ? squared : 1.0);
        x[i] /= length;
        y[i] /= length;
        z[i] /= length;
        lengths[i] = length;
        plain += isPlain(squared);
    }
    return plain == count;
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
}  // namespace

namespace host
{
void normalizeLanes(VectorLanes &vectors, int64_t count, double *lengths)
{
    if (normalizePlain(vectors.x, vectors.y, vectors.z, count, lengths))
        return;
    for (int64_t i = 0; i < count; ++i)
    {
        BAS_Vec3d vector = vectors[i];
        if (isPlain(vector.dot(vector)))
            continue;
        lengths[i] = normalize(vector);
        vectors.set(i, vector);
    }
}

bool anglesOfLanes(const TurnLanes &turns, int64_t count, double *angles)
{
    return anglesBetween(turns.across.data(), turns.along.data(), count, angles);
}
}  // namespace host
