#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#if defined(__x86_64__)
#include <emmintrin.h>
#endif

namespace rq
{
/// A weighted sum of tuples of N values, to be stored when it is whole.
template <class T, int N> class TupleSum
{
public:
    void add(const T *tuple)
    {
        for (int i = 0; i < N; ++i)
            values_[i] += tuple[i];
    }
    void add(const T *tuple, T weight)
    {
        for (int i = 0; i < N; ++i)
            values_[i] += tuple[i] * weight;
    }
    void add(const TupleSum &other, T weight) { add(other.values_, weight); }
    void store(T *tuple) const { std::copy(values_, values_ + N, tuple); }

private:
    T values_[N] = {};
};

#if defined(__x86_64__)
/// Positions: compilers leave three values in a row to scalar instructions.  The sums have the same bits.
template <> class TupleSum<float, 3>
{
public:
    void add(const float *tuple) { values_ = _mm_add_ps(values_, load(tuple)); }
    void add(const float *tuple, float weight)
    {
        values_ = _mm_add_ps(values_, _mm_mul_ps(load(tuple), _mm_set1_ps(weight)));
    }
    void add(const TupleSum &other, float weight)
    {
        values_ = _mm_add_ps(values_, _mm_mul_ps(other.values_, _mm_set1_ps(weight)));
    }
    void store(float *tuple) const
    {
        const int64_t xy = _mm_cvtsi128_si64(_mm_castps_si128(values_));
        std::memcpy(tuple, &xy, sizeof(xy));
        _mm_store_ss(tuple + 2, _mm_movehl_ps(values_, values_));
    }

private:
    static __m128 load(const float *tuple)
    {
        int64_t xy;
        std::memcpy(&xy, tuple, sizeof(xy));
        return _mm_movelh_ps(_mm_castsi128_ps(_mm_cvtsi64_si128(xy)), _mm_load_ss(tuple + 2));
    }

    __m128 values_ = _mm_setzero_ps();
};
#endif
}  // namespace rq
