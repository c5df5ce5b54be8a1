#include <rq/subd/detail/osdPatches.h>

namespace
{
using namespace rq;
using Lanes = Four::Lanes;

constexpr Lanes all(float value) { return Lanes{value, value, value, value}; }

/// The four uniform cubic B-splines at t in [0, 1], and their slopes.
struct Cubic
{
    Lanes value, slope;

    explicit Cubic(float t)
    {
        constexpr float kSixth = 1.0f / 6.0f;
        constexpr Lanes k0 = {kSixth, 4 * kSixth, kSixth, 0}, k1 = {-0.5f, 0, 0.5f, 0}, k2 = {0.5f, -1, 0.5f, 0},
                        k3 = {-kSixth, 0.5f, -0.5f, kSixth};
        const Lanes x = all(t);
        value = ((k3 * x + k2) * x + k1) * x + k0;
        slope = (k3 * all(3) * x + k2 * all(2)) * x + k1;
    }
};

/// A bicubic patch, ready to be evaluated at many places.
class RegularPatch
{
public:
    bool holds(int32_t number) const { return number_ == number; }

    void load(int32_t number, const PatchTables::Osd::Regular &patch, const int *indices, const Four *controls)
    {
        number_ = number;
        scale_ = float(1 << patch.depth);
        u_ = float(patch.u);
        v_ = float(patch.v);
        for (int i = 0; i < 16; ++i)
            controls_[i] = controls[indices[i]].lanes;

        // Beyond a boundary the control points inside are mirrored in those on it.
        if (patch.boundaries & 1)
            mirror(0, 4, 1);
        if (patch.boundaries & 4)
            mirror(12, -4, 1);
        if (patch.boundaries & 8)
            mirror(0, 1, 4);
        if (patch.boundaries & 2)
            mirror(3, -1, 4);
    }

    void evaluate(PatchSample &sample) const
    {
        const Cubic u(sample.u * scale_ - u_), v(sample.v * scale_ - v_);
        Lanes value = {}, du = {}, dv = {};
        for (int row = 0; row < 4; ++row)
        {
            const Lanes *control = controls_ + 4 * row;
            const Lanes along =
                control[0] * u.value[0] + control[1] * u.value[1] + control[2] * u.value[2] + control[3] * u.value[3];
            const Lanes slope =
                control[0] * u.slope[0] + control[1] * u.slope[1] + control[2] * u.slope[2] + control[3] * u.slope[3];
            value += along * v.value[row];
            du += slope * v.value[row];
            dv += along * v.slope[row];
        }
        sample.value.lanes = value;
        sample.du.lanes = du * scale_;
        sample.dv.lanes = dv * scale_;
    }

private:
    // Four control points from `first` on, `step` apart, lie outside; the next two in the direction `inward` mirror.
    void mirror(int first, int inward, int step)
    {
        for (int i = first, end = first + 4 * step; i != end; i += step)
            controls_[i] = all(2) * controls_[i + inward] - controls_[i + 2 * inward];
    }

    Lanes controls_[16] = {};
    float scale_ = 1, u_ = 0, v_ = 0;
    int32_t number_ = -1;
};

/// Weights of a patch's control points at a place.
struct PatchWeights
{
    static constexpr int kMostControls = 32;
    float value[kMostControls], du[kMostControls], dv[kMostControls];

    void sum(const Far::ConstIndexArray &indices, const Four *controls, PatchSample &sample) const
    {
        Lanes sums[3] = {};
        for (int i = 0; i < indices.size(); ++i)
        {
            const Lanes control = controls[indices[i]].lanes;
            sums[0] += control * value[i];
            sums[1] += control * du[i];
            sums[2] += control * dv[i];
        }
        sample.value.lanes = sums[0];
        sample.du.lanes = sums[1];
        sample.dv.lanes = sums[2];
    }
};

void evaluateOther(const Far::PatchTable &table, const Far::PatchTable::PatchHandle &handle, const Four *controls,
                   PatchSample &sample)
{
    PatchWeights weights;
    table.EvaluateBasis(handle, sample.u, sample.v, weights.value, weights.du, weights.dv);
    weights.sum(table.GetPatchVertices(handle), controls, sample);
}
}  // namespace

bool rq::PatchTables::evaluateVarying(const Four *controls, PatchSample *samples, int64_t count) const
{
    bool complete = true;
    for (PatchSample *sample = samples; sample != samples + count; ++sample)
    {
        const Far::PatchTable::PatchHandle *handle =
            sample->face < 0 ? nullptr : osd_->map->FindPatch(sample->face, double(sample->u), double(sample->v));
        complete = complete && handle;
        if (!handle)
            continue;
        PatchWeights weights;
        osd_->table->EvaluateBasisFaceVarying(*handle, sample->u, sample->v, weights.value, weights.du, weights.dv);
        weights.sum(osd_->table->GetPatchFVarValues(*handle), controls, *sample);
    }
    return complete;
}

bool rq::PatchTables::evaluate(const Four *controls, PatchSample *samples, int64_t count) const
{
    if (osd_->varying)
        return evaluateVarying(controls, samples, count);
    const int *const indices = osd_->table->GetPatchControlVerticesTable().data();
    RegularPatch regular;  // mostly good for the next samples, too
    bool complete = true;
    for (int64_t i = 0; i < count; ++i)
    {
        PatchSample &sample = samples[i];
        if (sample.face < 0)
        {
            complete = false;
            continue;
        }
        int32_t number = osd_->whole[size_t(sample.face)];
        const Far::PatchTable::PatchHandle *handle = nullptr;
        if (number < 0)
        {
            handle = osd_->map->FindPatch(sample.face, double(sample.u), double(sample.v));
            if (!handle)
            {
                complete = false;
                continue;
            }
            number = handle->patchIndex;
        }
        if (!regular.holds(number))
        {
            const Osd::Regular &patch = osd_->regular[size_t(number)];
            if (patch.controls < 0)
            {
                evaluateOther(*osd_->table, *handle, controls, sample);
                continue;
            }
            regular.load(number, patch, indices + patch.controls, controls);
        }
        regular.evaluate(sample);
    }
    return complete;
}
