#include <rq/data/DABool.h>

#include <rq/data/detail/TypedArrayImpl.h>

RQ_DABool::RQ_DABool(int64_t size, int64_t tupleSize, RQ_Type type)
    : bits_(size_t(std::max<int64_t>(0, tupleSize)), BAS_BitArray(std::max<int64_t>(0, size))),
      tupleSize_(std::max<int64_t>(0, tupleSize)), type_(type),
      tracked_(bits_.empty() ? 0 : bits_[0].getMemoryUsage() * tupleSize_)
{}

const char *RQ_DABool::className() const { return "RQ_DABool"; }

int64_t RQ_DABool::getMemoryUsage() const
{
    return 48 + (bits_.empty() ? 0 : (bits_[0].wordCount() + 4) * tupleSize_ * int64_t(sizeof(uint64_t)));
}

void RQ_DABool::setBit(int64_t index, bool value, int component)
{
    if (isInside(index, component))
        bits_[size_t(component)].set(index, value);
}

void RQ_DABool::setAllBits(bool value, int component)
{
    if (isInside(0, component))
        bits_[size_t(component)].setAll(value);
}

template <RQ_NumericValue T> T RQ_DABool::valueAs(int64_t offset, int component) const
{
    return T(getBit(offset, component) ? 1.0f : 0.0f);
}

template <RQ_NumericValue T>
void RQ_DABool::fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const
{
    const T kValues[2] = {T(0.0f), T(1.0f)};
    for (int c = 0; c < components; ++c)
    {
        const uint64_t *words = bits_[size_t(c)].words();
        T *value = out + c;
        for (int64_t i = start; i < start + length;)
        {
            uint64_t word = words[i >> 6] >> (i & 63);
            const int64_t end = std::min((i | 63) + 1, start + length);
            for (; i < end; ++i, word >>= 1, value += stride)
                *value = kValues[word & 1];
        }
    }
}

bool RQ_DABool::computeMinMax(double *min, double *max) const
{
    for (size_t c = 0; c < bits_.size(); ++c)
    {
        const int64_t count = bits_[c].count();
        min[c] = count == bits_[c].size() ? 1.0 : 0.0;
        max[c] = count > 0 ? 1.0 : 0.0;
    }
    return true;
}

template class RQ_TypedArray<RQ_DABool, RQ_DANumbers>;
