#pragma once

#include <host/bas/Vector.h>
#include <rq/data/DataArray.h>

namespace rq
{
/// Read an array as positions in space, for as long as the reader lives.
///
/// Shape      an array of type hpoint with more than three components is divided by its fourth (by nothing where that is 0:
///            such a point reads as the origin); of any other tuple of three or more the first three components count
/// Failure    `isValid` is false, and there are no entries, for a null array and for tuples of fewer than three components
/// Ownership  holds the array's own values, or a converted copy of them
/// Threads    making it may run in parallel; reading is safe from any thread
/// Cost       nothing is copied for 32- and 64-bit floats; everything else is converted once
class RQ_API Positions
{
public:
    Positions() = default;
    explicit Positions(const RQ_DataArray &array);
    explicit Positions(const RQ_DataArrayHandle &array);

    bool isValid() const { return tupleSize_ > 0; }
    int64_t entries() const { return entries_; }

    /// Packed x, y, z of every entry, null unless the array holds exactly that in 32-bit floats.  Hot loops test this once.
    const float *flat() const { return tupleSize_ == 3 ? singles_ : nullptr; }

    /// The same for 64-bit floats.
    const double *flatDoubles() const { return tupleSize_ == 3 ? doubles_ : nullptr; }

    /// Call `visitor(reader)`, where `reader(i)` gives x, y, z of entry i: a `BAS_Vec3f` for packed 32-bit floats, a
    /// `BAS_Vec3d` for everything else.  The form of the values is looked at once, so that loops in `visitor` read plain
    /// memory.
    template <class Visitor> decltype(auto) visit(Visitor &&visitor) const;

    BAS_Vec3d operator[](int64_t i) const
    {
        const int64_t at = i * tupleSize_;
        if (singles_)
            return homogeneous_ ? divided(singles_ + at) : BAS_Vec3d(singles_[at], singles_[at + 1], singles_[at + 2]);
        return homogeneous_ ? divided(doubles_ + at) : BAS_Vec3d(doubles_[at], doubles_[at + 1], doubles_[at + 2]);
    }

private:
    template <class T> static BAS_Vec3d divided(const T *values)
    {
        const double factor = values[3] == T(0) ? 0.0 : 1.0 / double(values[3]);
        return BAS_Vec3d(values[0], values[1], values[2]) * factor;
    }

    RQ_DataArrayHandle buffer_;
    const float *singles_ = nullptr;
    const double *doubles_ = nullptr;
    int64_t entries_ = 0;
    int64_t tupleSize_ = 0;
    bool homogeneous_ = false;
};

template <class Visitor> decltype(auto) Positions::visit(Visitor &&visitor) const
{
    if (const float *packed = flat(); packed)
        return visitor([packed](int64_t i) { return BAS_Vec3f(packed[3 * i], packed[3 * i + 1], packed[3 * i + 2]); });
    return visitor([this](int64_t i) { return (*this)[i]; });
}
}  // namespace rq
