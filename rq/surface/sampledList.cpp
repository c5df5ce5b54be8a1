#include <rq/surface/detail/sampledList.h>

#include <rq/data/DAIndirect.h>
#include <rq/surface/detail/evaluateCurves.h>

const RQ_DataArray *rq::rationalWeights(const RQ_AttributeList &list, int attribute, int segment)
{
    static const BAS_StringHolder kWeights = BAS_StringHolder::literal("Pw");
    const RQ_DataArray *weights = list.get(kWeights, segment).get();
    const RQ_DataArray *array = list.get(attribute, segment).get();
    if (!weights || weights == array || weights->getTupleSize() != 1 || weights->entries() != array->entries())
        return nullptr;
    return array->getTypeInfo() == RQ_TYPE_HPOINT && array->getTupleSize() > 3 ? nullptr : weights;
}

RQ_AttributeListHandle rq::sampledList(const CurveSampling &sampling, const RQ_AttributeList &vertex)
{
    return sampledList({sampling.shapes().vertices(), sampling.points().sumCounts(),
                        [&](const RQ_DataArray &array, const RQ_DataArray *weights, RQ_DataArray &target) {
                            evaluateCurves(sampling, array, weights, target);
                        },
                        [&] { return sampling.nearestVertices(); }},
                       vertex);
}

RQ_AttributeListHandle rq::sampledList(const Sampler &sampler, const RQ_AttributeList &vertex)
{
    const RQ_AttributeListHandle list(new RQ_AttributeList(vertex.getMap(), vertex.getSegments()));
    RQ_DataArrayHandle nearest;
    for (int i = 0; i < vertex.entries(); ++i)
        for (int segment = 0; segment < vertex.getSegments(); ++segment)
        {
            const RQ_DataArrayHandle &array = vertex.get(i, segment);
            if (!array || array->entries() < sampler.vertices)
                continue;
            const RQ_DataArray *weights = rationalWeights(vertex, i, segment);
            // Segments mostly share an array, and then what is made of it.
            if (segment > 0 && array == vertex.get(i, segment - 1) && weights == rationalWeights(vertex, i, segment - 1))
                list->set(i, list->get(i, segment - 1), segment);
            else if (isEvaluated(*array))
            {
                const RQ_DataArrayHandle values = makeLike(*array, sampler.samples);
                sampler.evaluate(*array, weights, *values);
                list->set(i, values, segment);
            }
            else
            {
                if (!nearest)
                    nearest = sampler.nearestVertices();
                list->set(i, RQ_DAIndirect::createIndirect(array, nearest), segment);
            }
        }
    return list;
}
