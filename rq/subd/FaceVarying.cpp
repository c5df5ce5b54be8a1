#include <rq/subd/detail/faceVarying.h>

#include <opensubdiv/far/primvarRefiner.h>

#include <rq/data/DANumeric.h>
#include <rq/subd/detail/osd.h>

namespace
{
/// One component, as OpenSubdiv sums them up.
template <class T> struct Component
{
    T value;

    void Clear() { value = 0; }
    void AddWithWeight(const Component &other, T weight) { value += other.value * weight; }
};
}  // namespace

template <class T>
RQ_DataArrayHandle rq::interpolateFaceVarying(const Refiner &refiner, int channel, const T *values, int64_t tuple,
                                              RQ_Type type)
{
    const int levels = refiner.far->GetNumLevels();
    const int64_t entries = refiner.far->GetLevel(levels - 1).GetNumFVarValues(channel);
    const BAS_IntrusivePtr<RQ_DANumeric<T>> result(new RQ_DANumeric<T>(entries, tuple, type));
    const Far::PrimvarRefinerReal<T> primvar(*refiner.far);
    std::vector<Component<T>> from, to;
    for (int64_t component = 0; component < tuple; ++component)
    {
        from.resize(size_t(refiner.far->GetLevel(0).GetNumFVarValues(channel)));
        for (size_t i = 0; i < from.size(); ++i)
            from[i].value = values[int64_t(i) * tuple + component];
        for (int level = 1; level < levels; ++level, from.swap(to))
        {
            to.resize(size_t(refiner.far->GetLevel(level).GetNumFVarValues(channel)));
            primvar.InterpolateFaceVarying(level, from, to, channel);
        }
        for (int64_t i = 0; i < entries; ++i)
            result->set(i, from[size_t(i)].value, int(component));
    }
    return result;
}

template RQ_DataArrayHandle rq::interpolateFaceVarying(const Refiner &, int, const float *, int64_t, RQ_Type);
template RQ_DataArrayHandle rq::interpolateFaceVarying(const Refiner &, int, const double *, int64_t, RQ_Type);

RQ_DataArrayHandle rq::faceVaryingIndices(const Refiner &refiner, int channel)
{
    const Far::TopologyLevel &level = refiner.far->GetLevel(refiner.far->GetMaxLevel());
    const BAS_IntrusivePtr<RQ_DANumeric<int32_t>> indices(new RQ_DANumeric<int32_t>(level.GetNumFaceVertices()));
    int32_t *out = indices->data();
    for (int face = 0; face < level.GetNumFaces(); ++face)
    {
        const Far::ConstIndexArray values = level.GetFaceFVarValues(face, channel);
        out = std::copy(values.begin(), values.end(), out);
    }
    return indices;
}
