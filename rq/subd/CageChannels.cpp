#include <cstring>

#include <rq/data/Values.h>
#include <rq/subd/detail/cage.h>

namespace
{
/// The corners around each point, as lists that begin at `first[point]`.
struct CornersOfPoints
{
    explicit CornersOfPoints(const rq::Cage &cage) : first(size_t(cage.pointCount) + 1), corners(cage.points.size())
    {
        for (const int32_t point : cage.points)
            ++first[size_t(point) + 1];
        for (size_t point = 1; point < first.size(); ++point)
            first[point] += first[point - 1];
        std::vector<int32_t> next(first.begin(), first.end() - 1);
        for (size_t corner = 0; corner < cage.points.size(); ++corner)
            corners[size_t(next[size_t(cage.points[corner])]++)] = int32_t(corner);
    }

    std::vector<int32_t> first;
    std::vector<int32_t> corners;
};

/// Corners of one point share a value where their tuples are the same.
rq::CageChannel weld(const rq::Values<double> &tuples, const CornersOfPoints &points)
{
    rq::CageChannel channel;
    channel.values.resize(points.corners.size());
    const size_t bytes = size_t(tuples.tupleSize()) * sizeof(double);
    const auto tuple = [&](int32_t corner) { return tuples.data() + corner * tuples.tupleSize(); };
    for (size_t point = 0; point + 1 < points.first.size(); ++point)
    {
        const size_t before = channel.sources.size();
        for (int32_t i = points.first[point]; i < points.first[point + 1]; ++i)
        {
            const int32_t corner = points.corners[size_t(i)];
            size_t value = before;
            while (value < channel.sources.size() && std::memcmp(tuple(channel.sources[value]), tuple(corner), bytes) != 0)
                ++value;
            if (value == channel.sources.size())
                channel.sources.push_back(corner);
            channel.values[size_t(corner)] = int32_t(value);
        }
    }
    return channel;
}
}  // namespace

rq::CageChannel rq::findSeams(const RQ_DataArray &array, const Cage &cage)
{
    return weld(Values<double>(array), CornersOfPoints(cage));
}

void rq::readCageChannels(const RQ_AttributeListHandle &vertex, Cage &cage)
{
    // What is linear on every face needs no seams.
    if (!vertex || cage.linear == FaceVaryingLinear::All || cage.scheme == RQ_SCHEME_BILINEAR)
        return;
    const CornersOfPoints points(cage);
    for (auto at = vertex->begin(); !at.atEnd(); ++at)
    {
        const RQ_DataArrayHandle &array = at.getData();
        if (!array || !RQisFloat(array->getStorage()) || array->hasArrayEntries())
            continue;
        CageChannel channel = weld(Values<double>(array), points);
        auto same = cage.channels.begin();
        while (same != cage.channels.end() && same->values != channel.values)
            ++same;
        if (same == cage.channels.end())
            same = cage.channels.insert(same, std::move(channel));
        same->names.push_back(at.getName());
    }
}
