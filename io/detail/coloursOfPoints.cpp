#include <io/detail/coloursOfPoints.h>

#include <algorithm>

#include <io/detail/rowReader.h>
#include <rq/data/DANumeric.h>

namespace rq::io
{
RQ_DataArrayHandle coloursOfPoints(const MSH_Detail &detail, const ELM_Attribute &colours)
{
    const int size = colours.tupleSize();
    const BAS_IntrusivePtr<RQ_DANumeric<float>> made(new RQ_DANumeric<float>(detail.pointCount(), size, RQ_TYPE_COLOR));
    std::fill_n(made->data(), detail.pointCount() * size, 1.0f);
    for (ELM_Offset primitive = 0; primitive < detail.primitiveCount(); ++primitive)
    {
        const auto [start, count] = detail.vertexRun(primitive);
        for (ELM_Offset vertex = start; vertex < start + count; ++vertex)
            if (const ELM_Offset point = detail.vertexPoint(vertex); point >= 0)
                readRow(colours, primitive, made->data() + point * size, size);
    }
    return made;
}
}  // namespace rq::io
