#include <host/msh/Meta.h>

#include <cmath>

#include <fmt/format.h>

bool MSH_BlobData::check(const MSH_PayloadUse &, std::string &why) const
{
    if (kernel < 0 || kernel >= MSH_KERNELS)
        why = fmt::format("{} is no kernel of blobs", kernel);
    else if (!std::isfinite(weight))
        why = "the weight of a blob is not finite";
    else if (!(exponentXY > 0.0 && exponentZ > 0.0 && std::isfinite(exponentXY + exponentZ)))
        why = fmt::format("the exponents {} and {} of a blob are not positive", exponentXY, exponentZ);
    else if (!(length >= 0.0 && std::isfinite(length)))
        why = fmt::format("{} is no length of a capsule", length);
    else if (!(rounding >= 0.0 && rounding <= 1.0))
        why = fmt::format("rounding {} is out of range [0, 1]", rounding);
    else
        return true;
    return false;
}

bool MSH_BlobExpressionData::check(const MSH_PayloadUse &use, std::string &why) const
{
    if (operation < 0 || operation >= MSH_BLOB_OPERATIONS)
        return why = fmt::format("{} is no operation of blobs", operation), false;
    if (children.owner != ELM_OWNER_PRIMITIVE)
        return why = "the children of a blob expression are no primitives", false;
    for (const ELM_Offset child : children.offsets)
    {
        if (child < 0 || child >= use.primitive || child >= use.detail->type.size())
            return why = fmt::format("child {} of a blob expression does not come before it, in [0, {})", child,
                                     use.primitive),
                   false;
        const int16_t type = use.detail->type.value(child);
        if (type < ELM_PRIMITIVE_BLOB_ELLIPSOID || type > ELM_PRIMITIVE_BLOB_EXPRESSION)
            return why = fmt::format("child {} of a blob expression is no blob", child), false;
    }
    return true;
}
