#include <rq/subd/SubdLimit.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <new>

#include <host/bas/LargeBlocks.h>
#include <host/bas/Parallel.h>
#include <rq/data/Values.h>
#include <rq/subd/detail/topologyData.h>

namespace rq
{
class PatchValues
{
public:
    int64_t tuple;
    std::vector<Four, BAS_BlockAllocator<Four>> controls;
};
}  // namespace rq

namespace
{
// Samples that are gathered, evaluated and written out together; they stay in the nearest cache.
constexpr int64_t kSamplesPerBlock = 128;

// A sample costs 20 to 200 ns.
constexpr int64_t kSamplesPerTask = 1024;

float clamped(float t) { return t > 0.0f ? std::min(t, 1.0f) : 0.0f; }

/// Write the first N numbers of a result of every sample, packed.
template <int N> void writePacked(const rq::PatchSample *block, int64_t size, rq::Four rq::PatchSample::*result, float *out)
{
    for (int64_t i = 0; i < size; ++i)
        std::memcpy(out + N * i, &(block[i].*result), N * sizeof(float));
}

void write(int64_t tuple, const rq::PatchSample *block, int64_t size, rq::Four rq::PatchSample::*result, float *out)
{
    constexpr decltype(&writePacked<1>) kWriters[] = {writePacked<1>, writePacked<2>, writePacked<3>, writePacked<4>};
    kWriters[tuple - 1](block, size, result, out);
}

bool isEvaluable(const RQ_DataArrayHandle &values)
{
    return values && RQisNumeric(values->getStorage()) && !values->hasArrayEntries() && values->getTupleSize() >= 1 &&
           values->getTupleSize() <= 4;
}

/// The values at all control points, of which the first `count` are rows of an array.
template <class RowOf>
std::unique_ptr<rq::PatchValues> controlsOf(const rq::PatchTables &patches, const RQ_DataArray &values, int64_t count,
                                            RowOf &&rowOf)
{
    const rq::Values<float> numbers(values);
    auto made = std::make_unique<rq::PatchValues>();
    made->tuple = values.getTupleSize();
    made->controls.resize(size_t(patches.controlPoints()));
    for (int64_t point = 0; point < count; ++point)
    {
        const int64_t row = rowOf(point);
        rq::Four &control = made->controls[size_t(point)] = rq::Four();
        for (int64_t i = 0; i < made->tuple; ++i)
            control.lanes[i] = numbers(row, i);
    }
    patches.computeControls(made->controls.data());
    return made;
}

void writeNormal(const rq::PatchSample &sample, float *normal)
{
    const auto &du = sample.du.lanes, &dv = sample.dv.lanes;
    const double cross[3] = {double(du[1]) * dv[2] - double(du[2]) * dv[1], double(du[2]) * dv[0] - double(du[0]) * dv[2],
                             double(du[0]) * dv[1] - double(du[1]) * dv[0]};
    const double length = std::sqrt(cross[0] * cross[0] + cross[1] * cross[1] + cross[2] * cross[2]);
    const double factor = length > 0.0 && std::isfinite(length) ? 1.0 / length : 0.0;
    for (int i = 0; i < 3; ++i)
        normal[i] = factor > 0.0 ? float(cross[i] * factor) : 0.0f;
}
}  // namespace

RQ_SubdLimit::RQ_SubdLimit(const RQ_SubdTopologyHandle &topology, const PatchesHandle &patches,
                           std::unique_ptr<rq::PatchValues> values)
    : topology_(topology), patches_(patches), values_(std::move(values))
{}

RQ_SubdLimit::~RQ_SubdLimit() = default;

RQ_SubdLimitHandle RQ_SubdLimit::create(const RQ_SubdTopologyHandle &topology, const RQ_DataArrayHandle &values)
try
{
    if (!topology || !isEvaluable(values))
        return nullptr;
    const rq::Values<int64_t> rows(topology->usedPoints());
    const int64_t needed = rows.entries() > 0 ? rows[rows.entries() - 1] + 1 : topology->points();
    const rq::PatchTables *patches = topology->patchTables();
    if (values->entries() < needed || !patches)
        return nullptr;
    return new RQ_SubdLimit(topology, patches, controlsOf(*patches, *values, topology->points(), [&](int64_t point) {
                                return rows.entries() > 0 ? rows[point] : point;
                            }));
}
catch (const std::bad_alloc &)
{
    return nullptr;
}

RQ_SubdLimitHandle RQ_SubdLimit::createFaceVarying(const RQ_SubdTopologyHandle &topology, const RQ_DataArrayHandle &values)
try
{
    if (!topology || !isEvaluable(values) || values->entries() != int64_t(topology->data_->cage.points.size()))
        return nullptr;
    const rq::CageChannel seams = rq::findSeams(*values, topology->data_->cage);
    const PatchesHandle patches = topology->patchTables(seams);
    return new RQ_SubdLimit(topology, patches,
                            controlsOf(*patches, *values, int64_t(seams.sources.size()),
                                       [&](int64_t value) { return int64_t(seams.sources[size_t(value)]); }));
}
catch (const std::bad_alloc &)
{
    return nullptr;
}

int64_t RQ_SubdLimit::getTupleSize() const { return values_->tuple; }

bool RQ_SubdLimit::evaluate(const RQ_SubdSample *samples, int64_t count, const Results &results) const
{
    const rq::PatchTables &patches = *patches_;
    const rq::Four *controls = values_->controls.data();
    const int64_t tuple = values_->tuple;
    const bool loop = topology_->scheme() == RQ_SCHEME_LOOP;
    std::atomic<bool> all = true;
    const auto runBlock = [&](int64_t first, int64_t size) {
        rq::PatchSample block[kSamplesPerBlock];
        for (int64_t i = 0; i < size; ++i)
        {
            const RQ_SubdSample &sample = samples[first + i];
            const float u = clamped(sample.u), v = clamped(sample.v);
            block[i] = {patches.faceOf(sample.face, sample.corner), u, loop ? std::min(v, 1.0f - u) : v, {}, {}, {}};
        }
        if (!patches.evaluate(controls, block, size))
            all.store(false, std::memory_order_relaxed);
        if (results.values)
            write(tuple, block, size, &rq::PatchSample::value, results.values + first * tuple);
        if (results.du)
            write(tuple, block, size, &rq::PatchSample::du, results.du + first * tuple);
        if (results.dv)
            write(tuple, block, size, &rq::PatchSample::dv, results.dv + first * tuple);
        for (int64_t i = 0; results.normals && i < size; ++i)
            writeNormal(block[i], results.normals + 3 * (first + i));
    };
    host::parallelForRange(count, kSamplesPerTask, [&](int64_t begin, int64_t end) {
        for (int64_t first = begin; first < end; first += kSamplesPerBlock)
            runBlock(first, std::min(kSamplesPerBlock, end - first));
    });
    return all;
}
