#include <io/detail/RQGPrimitives.h>

#include <algorithm>
#include <unordered_map>

#include <io/detail/RQGPayload.h>

namespace rq::io
{
namespace
{
/// Primitives that are written as one map.
struct Run
{
    const MSH_Detail &detail;
    ELM_Offset first, end;

    static Run from(const MSH_Detail &detail, ELM_Offset first)
    {
        const auto isLike = [&](ELM_Offset other) {
            return detail.typeOf(first) == detail.typeOf(other) && detail.isClosed(first) == detail.isClosed(other) &&
                   !detail.payload(first) == !detail.payload(other);
        };
        ELM_Offset end = first + 1;
        while (end < detail.primitiveCount() && isLike(end))
            ++end;
        return {detail, first, end};
    }

    void write(RQGOutput &output) const;
    void writeCorners(RQGOutput &output) const;
    void writePoints(RQGOutput &output) const;
    void writePayloads(RQGOutput &output) const;
};

void Run::writeCorners(RQGOutput &output) const
{
    std::vector<int32_t> corners(size_t(end - first));
    for (ELM_Offset i = first; i < end; ++i)
        corners[size_t(i - first)] = int32_t(detail.vertexRun(i).count);
    const bool same = std::all_of(corners.begin(), corners.end(), [&](int32_t count) { return count == corners[0]; });
    output.key("corners");
    // How many have no corners, the points would not tell.
    if (same && corners[0] > 0)
        output.json().writeInt(corners[0]);
    else
        output.row(std::move(corners));
}

void Run::writePoints(RQGOutput &output) const
{
    const auto [lastStart, lastCount] = detail.vertexRun(end - 1);
    const ELM_Offset start = detail.vertexRun(first).start;
    const int64_t count = lastStart + lastCount - start;
    const auto copy = [&](auto values) {
        values.resize(size_t(count));
        detail.vertexPoint().copyOut(values.data(), ELM_OffsetList(start, count), 0, count);
        output.row(std::move(values));
    };
    output.key("points");
    if (const int32_t *points = detail.vertexPoint().contiguous32())
        output.row(std::span(points + start, size_t(count)));
    else if (detail.pointCount() <= INT32_MAX)
        copy(std::vector<int32_t>());
    else
        copy(std::vector<int64_t>());
}

void Run::writePayloads(RQGOutput &output) const
{
    std::vector<const MSH_Payload *> payloads;
    std::unordered_map<const MSH_Payload *, int32_t> numbers;
    std::vector<int32_t> numberOf;
    for (ELM_Offset i = first; i < end; ++i)
    {
        const auto [known, isNew] = numbers.emplace(detail.payload(i), int32_t(payloads.size()));
        if (isNew)
            payloads.push_back(known->first);
        numberOf.push_back(known->second);
    }
    if (payloads.size() == 1)
    {
        output.key("payload");
        return writePayload(output, *payloads[0]);
    }
    output.key("payloads");
    output.json().beginArray();
    for (const MSH_Payload *payload : payloads)
        writePayload(output, *payload);
    output.json().endArray();
    if (payloads.size() < numberOf.size())
    {
        output.key("payload_of");
        output.row(std::move(numberOf));
    }
}

void Run::write(RQGOutput &output) const
{
    const ELM_PrimitiveTypeId type = detail.typeOf(first);
    const ELM_PrimitiveDefinition *definition = ELM_PrimitiveFactory::find(type);
    output.json().beginMap();
    output.keyText("type", definition ? definition->name.view() : kRQGReserved);
    if (type == ELM_PRIMITIVE_POLYGON || detail.isClosed(first) != isRQGClosed(type))
        output.json().writeKeyBool("closed", detail.isClosed(first));
    writeCorners(output);
    writePoints(output);
    if (detail.payload(first))
        writePayloads(output);
    output.json().endMap();
}
}  // namespace

void writePrimitives(RQGOutput &output, const MSH_Detail &detail)
{
    output.key("primitives");
    output.json().beginArray();
    for (ELM_Offset first = 0; first < detail.primitiveCount();)
    {
        const Run run = Run::from(detail, first);
        run.write(output);
        first = run.end;
    }
    output.json().endArray();
}
}  // namespace rq::io
