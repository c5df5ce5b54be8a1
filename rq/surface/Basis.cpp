#include <rq/surface/Basis.h>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace
{
constexpr const char *kNames[] = {"linear", "bezier", "bspline", "catmullrom", "hermite", "power"};
}

RQ_Basis RQbasis(const char *name)
{
    const auto *found = name ? std::find(std::begin(kNames), std::end(kNames), std::string_view(name)) : std::end(kNames);
    return found == std::end(kNames) ? RQ_BASIS_INVALID : RQ_Basis(found - kNames);
}

const char *RQbasis(RQ_Basis basis) { return basis >= 0 && size_t(basis) < std::size(kNames) ? kNames[basis] : "invalid"; }

int RQbasisStep(RQ_Basis basis, int order)
{
    switch (basis)
    {
    case RQ_BASIS_BEZIER:
        return order - 1;
    case RQ_BASIS_HERMITE:
        return 2;
    case RQ_BASIS_POWER:
        return order;
    default:
        return 1;
    }
}
