#include <rq/surface/detail/NetSampling.h>

#include <limits>

#include <host/bas/Parallel.h>
#include <rq/data/DANumeric.h>
#include <rq/surface/detail/sampledList.h>

namespace
{
// A sample costs some 2 ns.
constexpr int64_t kSamplesPerTask = 16384;

int64_t heaviestOf(const rq::NetLines &lines, int64_t line)
{
    return lines.vertices(line)[rq::heaviest(lines.weights(line), lines.order())];
}

/// For every sample the vertex that has the greatest weight there.
template <class Index> RQ_DataArrayHandle nearestVertices(const rq::NetSampling &sampling)
{
    const int64_t nu = sampling.u.count(), crossings = sampling.crossings();
    const BAS_IntrusivePtr<RQ_DANumeric<Index>> nearest(new RQ_DANumeric<Index>(sampling.samples()));
    host::parallelForRange(sampling.v.count(), std::max<int64_t>(1, kSamplesPerTask / std::max<int64_t>(1, nu)),
                           [&](int64_t begin, int64_t end) {
                               Index *out = nearest->data() + begin * nu;
                               for (int64_t j = begin; j < end; ++j)
                                   for (int64_t i = 0; i < nu; ++i)
                                       *out++ =
                                           Index(heaviestOf(sampling.v, j) * sampling.columns + heaviestOf(sampling.u, i));
                           });
    host::parallelForRange(sampling.others, kSamplesPerTask / 16, [&](int64_t begin, int64_t end) {
        rq::NetSum sum;
        for (int64_t i = begin; i < end; ++i)
        {
            sampling.otherSum(i, sum);
            const int best = rq::heaviest(sum.weights.data(), int(sum.weights.size()));
            nearest->data()[crossings + i] = Index(sum.vertices[size_t(best)]);
        }
    });
    return nearest;
}
}  // namespace

rq::NetLines::NetLines(const NetSpans &spans, const std::vector<NetPlace> &places)
    : order_(spans.order()), vertices_(places.size() * size_t(order_)), weights_(vertices_.size()), slopes_(vertices_.size())
{
    for (size_t i = 0; i < places.size(); ++i)
    {
        const size_t first = i * size_t(order_);
        spans.weights(places[i], weights_.data() + first, slopes_.data() + first);
        for (int k = 0; k < order_; ++k)
            vertices_[first + size_t(k)] = spans.vertex(places[i].span, k);
    }
}

void rq::tensorSum(const NetSpans &u, const NetSpans &v, const NetPlace &atU, const NetPlace &atV, NetSum &sum)
{
    double weightsU[kLargestOrder], slopesU[kLargestOrder], weightsV[kLargestOrder], slopesV[kLargestOrder];
    u.weights(atU, weightsU, slopesU);
    v.weights(atV, weightsV, slopesV);
    sum.resize(size_t(u.order()) * size_t(v.order()));
    size_t term = 0;
    for (int j = 0; j < v.order(); ++j)
        for (int i = 0; i < u.order(); ++i, ++term)
        {
            sum.vertices[term] = v.vertex(atV.span, j) * u.vertices() + u.vertex(atU.span, i);
            sum.weights[term] = weightsU[i] * weightsV[j];
            sum.alongU[term] = slopesU[i] * weightsV[j];
            sum.alongV[term] = weightsU[i] * slopesV[j];
        }
}

RQ_AttributeListHandle rq::sampledNet(const NetSampling &sampling, const RQ_AttributeList &vertex)
{
    const Sampler sampler{sampling.vertices, sampling.samples(),
                          [&](const RQ_DataArray &array, const RQ_DataArray *weights, RQ_DataArray &target) {
                              evaluateNet(sampling, array, weights, target);
                          },
                          [&] {
                              return sampling.vertices > std::numeric_limits<int32_t>::max()
                                         ? nearestVertices<int64_t>(sampling)
                                         : nearestVertices<int32_t>(sampling);
                          }};
    const RQ_AttributeListHandle list = sampledList(sampler, vertex);
    if (vertex.hasName("N"))
        return list;
    std::vector<RQ_DataArrayHandle> normals;
    for (int segment = 0; segment < vertex.getSegments(); ++segment)
    {
        // Segments mostly share their positions, and then their normals.
        const bool isSame = segment > 0 && vertex.get("P", segment) == vertex.get("P", segment - 1) &&
                            vertex.get("Pw", segment) == vertex.get("Pw", segment - 1);
        normals.push_back(isSame ? normals.back() : netNormals(sampling, vertex, segment));
        if (!normals.back())
            return list;
    }
    return list->addAttribute("N", normals.data(), int(normals.size()), false);
}
