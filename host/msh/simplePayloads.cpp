#include <cmath>

#include <fmt/format.h>

#include <host/msh/Patch3.h>
#include <host/msh/Quadric.h>
#include <host/msh/SparseVolume.h>

// The checks of payloads that have little to check.

bool MSH_TubeData::check(const MSH_PayloadUse &, std::string &why) const
{
    if (std::isfinite(taper))
        return true;
    why = "the taper of a tube is not finite";
    return false;
}

bool MSH_Patch3Data::check(const MSH_PayloadUse &use, std::string &why) const
{
    constexpr int32_t kHighestDegree = 30;
    if (degree >= 1 && degree <= kHighestDegree && use.vertices == (degree + 1) * (degree + 2) / 2)
        return true;
    why = fmt::format("{} vertices do not make a triangular patch of degree {}", use.vertices, degree);
    return false;
}

bool MSH_SparseVolumeData::check(const MSH_PayloadUse &, std::string &why) const
{
    if (grid)
        return true;
    why = "a sparse volume needs a grid";
    return false;
}
