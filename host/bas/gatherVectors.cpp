#include <host/bas/gatherVectors.h>

#include <host/bas/clones.h>
#include <host/bas/detail/lanes.h>

namespace
{
using host::PaddedVector;

template <class Real, class Index>
HOST_CLONES void gather(const PaddedVector<Real> *vectors, const Index *indices, int64_t count, int64_t first, Real *to)
{
    using Four = host::Lanes<Real, 4>;
    const auto at = [&](int64_t i) __attribute__((always_inline))
    {
        Four four;
        std::memcpy(&four, vectors + (int64_t(indices[i]) - first), sizeof(four));
        return four;
    };
    const auto store = [&](int64_t value, const Four &four) __attribute__((always_inline))
    {
        std::memcpy(to + value, &four, sizeof(four));
    };
    int64_t i = 0;
    for (; i + 4 <= count; i += 4)
    {
        const Four a = at(i), b = at(i + 1), c = at(i + 2), d = at(i + 3);
        store(3 * i, __builtin_shufflevector(a, b, 0, 1, 2, 4));
        store(3 * i + 4, __builtin_shufflevector(b, c, 1, 2, 4, 5));
        store(3 * i + 8, __builtin_shufflevector(c, d, 2, 4, 5, 6));
    }
    for (; i < count; ++i)
        store(3 * i, at(i));
}
}  // namespace

namespace host
{
void gatherVectors(const PaddedVector<float> *vectors, const int32_t *indices, int64_t count, int64_t first, float *to)
{
    gather(vectors, indices, count, first, to);
}

void gatherVectors(const PaddedVector<float> *vectors, const int64_t *indices, int64_t count, int64_t first, float *to)
{
    gather(vectors, indices, count, first, to);
}

void gatherVectors(const PaddedVector<double> *vectors, const int32_t *indices, int64_t count, int64_t first, double *to)
{
    gather(vectors, indices, count, first, to);
}

void gatherVectors(const PaddedVector<double> *vectors, const int64_t *indices, int64_t count, int64_t first, double *to)
{
    gather(vectors, indices, count, first, to);
}
}  // namespace host
