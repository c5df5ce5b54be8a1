#pragma once

#include <concepts>
#include <span>
#include <variant>

#include <host/bas/Vector.h>
#include <host/msh/Payload.h>

/// A view of values in one of two widths.
///
/// Ownership  none: valid while what it was made of is
template <class Narrow, class Wide> class MOD_EitherSpan
{
public:
    MOD_EitherSpan() = default;
    template <class Values>
    requires std::convertible_to<const Values &, std::span<const Narrow>> MOD_EitherSpan(const Values &values)
        : values_(std::span<const Narrow>(values))
    {}
    template <class Values>
    requires std::convertible_to<const Values &, std::span<const Wide>> MOD_EitherSpan(const Values &values)
        : values_(std::span<const Wide>(values))
    {}

    int64_t size() const
    {
        return visit([](auto values) { return int64_t(values.size()); });
    }
    bool isWide() const { return values_.index() == 1; }

    /// Call `visit` with the span in its own type.
    template <class Visit> decltype(auto) visit(Visit &&visit) const { return std::visit(visit, values_); }

private:
    std::variant<std::span<const Narrow>, std::span<const Wide>> values_;
};

/// Point numbers in 32 or 64 bits.
using MOD_Indices = MOD_EitherSpan<int32_t, int64_t>;

/// 3x3 matrices in 32- or 64-bit floats.
using MOD_Matrices = MOD_EitherSpan<BAS_Mat3f, BAS_Mat3d>;

/// Primitives of one type, to be added to a detail (see `MOD_Edit::append`).
///
/// Ownership  views of the caller's values; payloads are shared
struct MOD_Primitives
{
    ELM_PrimitiveTypeId type = 0;
    int64_t count = 0;
    std::span<const int32_t> corners{};  ///< the number of vertices of each; empty: all have `sameCorners`
    int32_t sameCorners = 0;
    MOD_Indices points{};  ///< of all vertices, primitive after primitive
    bool isClosed = false;
    std::span<const MSH_PayloadHandle> payloads{};  ///< one each, or one for all; none for types that have none
    MOD_Matrices transforms{};                      ///< one each, one for all, or none: the identity; of placed types only
};
