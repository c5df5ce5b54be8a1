#include <algorithm>

#include <rq/data/Counts.h>
#include <rq/data/Values.h>
#include <rq/surface/detail/subdivisionTags.h>

namespace
{
RQ_DataArrayHandle numbers(const RQ_AttributeListHandle &list, const char *name)
{
    const RQ_DataArrayHandle array = list ? list->get(name) : nullptr;
    return array && RQisNumeric(array->getStorage()) && array->getTupleSize() >= 1 ? array : nullptr;
}

/// The first component of every entry, whatever element the attribute is bound to.
class Sharpness
{
public:
    explicit Sharpness(const RQ_PrimPolygonMesh &mesh)
    {
        for (const RQ_Owner owner : {RQ_OWNER_VERTEX, RQ_OWNER_UNIFORM, RQ_OWNER_DETAIL})
            if (const RQ_DataArrayHandle array = numbers(mesh.getAttributeList(owner), rq::kCreaseTag);
                array && values_.entries() == 0)
            {
                values_ = rq::Values<float>(array);
                owner_ = owner;
            }
    }

    bool any() const { return values_.entries() > 0; }
    float at(int64_t face, int64_t corner) const
    {
        return values_(owner_ == RQ_OWNER_VERTEX ? corner : owner_ == RQ_OWNER_UNIFORM ? face : 0, 0);
    }

private:
    rq::Values<float> values_;
    RQ_Owner owner_ = RQ_OWNER_INVALID;
};

struct Crease
{
    int64_t first, second;
    float sharpness;
};

/// Every edge once, the smaller point first, in order of their points, with the largest sharpness that a face gives it.
rq::ElementTag creases(const RQ_PrimPolygonMesh &mesh)
{
    const Sharpness sharpness(mesh);
    rq::ElementTag tag;
    if (!sharpness.any() || !mesh.getVertexList())
        return tag;
    const rq::Values<int64_t> points(mesh.getVertexList());
    const rq::Counts counts(mesh.getFaceCountArray());
    std::vector<Crease> found;
    for (int64_t face = 0; face < counts.entries(); ++face)
        for (int64_t corner = counts.begin(face); corner < counts.end(face); ++corner)
            if (const float sharp = sharpness.at(face, corner); sharp > 0.0f)
            {
                const int64_t a = points[corner];
                const int64_t b = points[corner + 1 < counts.end(face) ? corner + 1 : counts.begin(face)];
                found.push_back({std::min(a, b), std::max(a, b), sharp});
            }
    std::sort(found.begin(), found.end(), [](const Crease &a, const Crease &b) {
        return a.first != b.first     ? a.first < b.first
               : a.second != b.second ? a.second < b.second
                                      : a.sharpness > b.sharpness;
    });
    found.erase(std::unique(found.begin(), found.end(),
                            [](const Crease &a, const Crease &b) { return a.first == b.first && a.second == b.second; }),
                found.end());
    for (const Crease &crease : found)
    {
        tag.indices.insert(tag.indices.end(), {crease.first, crease.second});
        tag.sharpnesses.push_back(double(crease.sharpness));
    }
    return tag;
}

rq::ElementTag corners(const RQ_PrimPolygonMesh &mesh)
{
    rq::ElementTag tag;
    const rq::Values<float> values(numbers(mesh.getShared(), rq::kCornerTag));
    for (int64_t point = 0; point < values.entries(); ++point)
        if (values(point, 0) > 0.0f)
        {
            tag.indices.push_back(point);
            tag.sharpnesses.push_back(double(values(point, 0)));
        }
    return tag;
}

rq::ElementTag holes(const RQ_PrimPolygonMesh &mesh)
{
    rq::ElementTag tag;
    const rq::Values<int32_t> values(numbers(mesh.getUniform(), rq::kHoleTag));
    for (int64_t face = 0; face < values.entries(); ++face)
        if (values(face, 0) != 0)
            tag.indices.push_back(face);
    return tag;
}
}  // namespace

RQ_Scheme RQ_PrimSubdivisionMesh::lookupScheme(const RQ_DataArrayHandle &array, RQ_Scheme scheme)
{
    if (!array || array->entries() < 1)
        return scheme;
    if (array->getStorage() == RQ_STORAGE_STRING)
    {
        const RQ_Scheme named = RQscheme(array->getS(0).c_str());
        return named == RQ_SCHEME_INVALID ? scheme : named;
    }
    const int64_t number = array->getI64(0);
    return number == RQ_SCHEME_CATMULL_CLARK || number == RQ_SCHEME_LOOP ? RQ_Scheme(number) : scheme;
}

RQ_SubdivisionMeshHandle RQ_PrimSubdivisionMesh::createWithStandardTags(const RQ_PrimPolygonMesh &mesh, RQ_Scheme scheme)
{
    const RQ_SubdivisionMeshHandle result(new RQ_PrimSubdivisionMesh(mesh, scheme));
    const auto addElements = [&](const char *name, const rq::ElementTag &tag) {
        if (!tag.indices.empty())
            tag.write(result->findOrCreateTag(name));
    };
    addElements(rq::kCreaseTag, creases(mesh));
    addElements(rq::kCornerTag, corners(mesh));
    addElements(rq::kHoleTag, holes(mesh));
    const RQ_AttributeListHandle &detail = mesh.getDetail();
    if (!detail)
        return result;
    result->setScheme(lookupScheme(detail->get("osd_scheme"), scheme));
    for (const char *name : rq::kMethodTags)
        if (const RQ_DataArrayHandle &array = detail->get(name))
            array->getStorage() == RQ_STORAGE_STRING ? result->appendStringTag(name, array)
                                                     : result->appendIntTag(name, array);
    return result;
}
