#include <rq/subd/detail/osdPatches.h>

namespace
{
using namespace rq;
using Lanes = Four::Lanes;

/// The four uniform cubic B-splines at t in [0, 1], and their slopes.
struct Cubic
{
    float value[4], slope[4];

    explicit Cubic(float t)
    {
        constexpr float kSixth = 1.0f / 6.0f;
        const float s = 1.0f - t, tt = t * t, ss = s * s;
        value[0] = kSixth * ss * s;
        value[1] = kSixth * (4.0f - 6.0f * tt + 3.0f * tt * t);
        value[2] = kSixth * (4.0f - 6.0f * ss + 3.0f * ss * s);
        value[3] = kSixth * tt * t;
        slope[0] = -0.5f * ss;
        slope[1] = 1.5f * tt - 2.0f * t;
        slope[2] = 2.0f * s - 1.5f * ss;
        slope[3] = 0.5f * tt;
    }

    // At a boundary the outer control point is the inner one mirrored in the middle one: P0 = 2 P1 - P2.
    void mirrorFirst() { mirror(0, 1, 2); }
    void mirrorLast() { mirror(3, 2, 1); }

private:
    void mirror(int outer, int middle, int inner)
    {
        for (float *weights : {value, slope})
        {
            weights[middle] += 2.0f * weights[outer];
            weights[inner] -= weights[outer];
            weights[outer] = 0.0f;
        }
    }
};

void evaluateRegular(const PatchTables::Osd::Regular &patch, const int *indices, const Four *controls, PatchSample &sample)
{
    const float scale = float(1 << patch.depth);
    Cubic u(sample.u * scale - float(patch.u)), v(sample.v * scale - float(patch.v));
    if (patch.boundaries)
    {
        if (patch.boundaries & 1)
            v.mirrorFirst();
        if (patch.boundaries & 2)
            u.mirrorLast();
        if (patch.boundaries & 4)
            v.mirrorLast();
        if (patch.boundaries & 8)
            u.mirrorFirst();
    }
    Lanes value = {}, du = {}, dv = {};
    for (int row = 0; row < 4; ++row, indices += 4)
    {
        Lanes along = {}, slope = {};
        for (int i = 0; i < 4; ++i)
        {
            const Lanes control = controls[indices[i]].lanes;
            along += control * u.value[i];
            slope += control * u.slope[i];
        }
        value += along * v.value[row];
        du += slope * v.value[row];
        dv += along * v.slope[row];
    }
    sample.value.lanes = value;
    sample.du.lanes = du * scale;
    sample.dv.lanes = dv * scale;
}

void evaluateOther(const Far::PatchTable &table, const Far::PatchTable::PatchHandle &handle, const Four *controls,
                   PatchSample &sample)
{
    constexpr int kMostControls = 32;
    float weights[3][kMostControls];
    table.EvaluateBasis(handle, sample.u, sample.v, weights[0], weights[1], weights[2]);
    const Far::ConstIndexArray indices = table.GetPatchVertices(handle);
    Lanes value = {}, du = {}, dv = {};
    for (int i = 0; i < indices.size(); ++i)
    {
        const Lanes control = controls[indices[i]].lanes;
        value += control * weights[0][i];
        du += control * weights[1][i];
        dv += control * weights[2][i];
    }
    sample.value.lanes = value;
    sample.du.lanes = du;
    sample.dv.lanes = dv;
}
}  // namespace

bool rq::PatchTables::evaluate(const Four *controls, PatchSample *samples, int64_t count) const
{
    const int *const indices = osd_->table->GetPatchControlVerticesTable().data();
    bool all = true;
    for (int64_t i = 0; i < count; ++i)
    {
        PatchSample &sample = samples[i];
        if (sample.face < 0)
        {
            all = false;
            continue;
        }
        int32_t number = osd_->whole[size_t(sample.face)];
        const Far::PatchTable::PatchHandle *handle = nullptr;
        if (number < 0)
        {
            handle = osd_->map->FindPatch(sample.face, double(sample.u), double(sample.v));
            if (!handle)
            {
                all = false;
                continue;
            }
            number = handle->patchIndex;
        }
        if (const Osd::Regular &patch = osd_->regular[size_t(number)]; patch.controls >= 0)
            evaluateRegular(patch, indices + patch.controls, controls, sample);
        else
            evaluateOther(*osd_->table, *handle, controls, sample);
    }
    return all;
}
