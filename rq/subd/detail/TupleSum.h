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

    static TupleSum of(const T *tuple)
    {
        TupleSum sum;
        std::copy(tuple, tuple + N, sum.values_);
        return sum;
    }
    friend TupleSum operator+(TupleSum a, const TupleSum &b)
    {
        a.add(b.values_);
        return a;
    }
    friend TupleSum operator*(TupleSum a, float weight)
    {
        for (T &value : a.values_)
            value *= T(weight);
        return a;
    }

private:
    T values_[N] = {};
};

#if defined(__x86_64__)
/// Positions: compilers leave three values in a row to scalar instructions.  The sums have the same bits.
template <> class TupleSum<float, 3>
{
public:
    TupleSum() = default;

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

    static TupleSum of(const float *tuple) { return TupleSum(load(tuple)); }
    friend TupleSum operator+(const TupleSum &a, const TupleSum &b) { return TupleSum(_mm_add_ps(a.values_, b.values_)); }
    friend TupleSum operator*(const TupleSum &a, float weight)
    {
        return TupleSum(_mm_mul_ps(a.values_, _mm_set1_ps(weight)));
    }

private:
    explicit TupleSum(__m128 values) : values_(values) {}

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
