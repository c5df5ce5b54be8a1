// A primitive type of your own in the geometry database, and the collector that makes faces of it.

#include <algorithm>
#include <cstdio>
#include <vector>

#include <host/elm/PrimitiveFactory.h>
#include <host/mod/Edit.h>
#include <rq/bridge/MSHDetail.h>
#include <rq/bridge/MSHPrimCollect.h>
#include <rq/data/DANumeric.h>
#include <rq/data/Positions.h>
#include <rq/data/Values.h>
#include <rq/prim/RefineList.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace
{
/// Makes one mesh of all ribbons of a detail: flat bands along their points, as wide as the primitive attribute "width"
/// says.
///
/// Collectors are shared by all refinements, so what one run gathers lies in its data.
class RibbonCollector final : public RQ_MSHPrimCollect
{
public:
    RQ_MSHPrimCollectData *beginCollecting(const RQ_MSHDetailListHandle &, const RQ_RefineParms *) const override
    {
        return new RQ_MSHPrimCollectOffsets;
    }

    // Taken in; one that emits a primitive for each would return it here.
    RQ_PrimitiveHandle collect(const RQ_MSHDetailListHandle &, const MSH_Primitive *const *primitives, int,
                               RQ_MSHPrimCollectData *data) const override
    {
        const MSH_Primitive &ribbon = *primitives[0];
        for (int64_t i = 0; i < ribbon.vertexCount(); ++i)
            if (ribbon.point(i) < 0)
                return nullptr;  // a vertex without a point has no place
        static_cast<RQ_MSHPrimCollectOffsets *>(data)->append(ribbon);
        return nullptr;
    }

    // Large details are walked by several threads, each with data of its own.
    bool canMergeData() const override { return true; }
    void mergeData(RQ_MSHPrimCollectData *into, RQ_MSHPrimCollectData *from) const override
    {
        static_cast<RQ_MSHPrimCollectOffsets *>(into)->append(*static_cast<const RQ_MSHPrimCollectOffsets *>(from));
    }

    RQ_PrimitiveHandle endCollecting(const RQ_MSHDetailListHandle &details, RQ_MSHPrimCollectData *data) const override
    {
        const RQ_MSHOffsetList &ribbons = static_cast<const RQ_MSHPrimCollectOffsets *>(data)->getPrimitives();
        RQ_MSHOffsetList faces, points;  // the ribbon of every quad, and the point that every edge point comes from
        std::vector<int32_t> corners;
        for (int64_t i = 0; i < ribbons.entries(); ++i)
        {
            const MSH_Primitive ribbon(*details->getDetail(), ribbons[i]);
            for (int64_t k = 0; k < ribbon.vertexCount(); ++k)
            {
                const int32_t row = int32_t(points.entries());
                points.append(ribbon.point(k));
                points.append(ribbon.point(k));
                if (k == 0)
                    continue;
                faces.append(ribbon.offset());
                corners.insert(corners.end(), {row - 2, row, row + 1, row - 1});
            }
        }
        if (corners.empty())
            return nullptr;

        // All attributes come along, read where the detail has them; only positions are made anew, for every segment.
        const RQ_AttributeListHandle uniform = details->getPrimitiveAttributes(nullptr, faces);
        RQ_AttributeListHandle shared = details->getPointAttributes(nullptr, points);
        std::vector<RQ_DataArrayHandle> edges;
        for (int segment = 0; segment < shared->getSegments(); ++segment)
            edges.push_back(makeEdges(rq::Positions(shared->get("P", segment)), uniform, corners));
        shared = shared->addAttribute("P", edges.data(), int(edges.size()), true);

        const int64_t count = int64_t(corners.size());
        const RQ_DataArrayHandle list(new RQ_DANumeric<int32_t>(corners.data(), count));
        return new RQ_PrimPolygonMesh(RQ_CountArray(count / 4, 4), list, shared, {}, uniform,
                                      details->getDetailAttributes(nullptr));
    }

private:
    static RQ_DataArrayHandle makeEdges(const rq::Positions &middle, const RQ_AttributeListHandle &uniform,
                                        const std::vector<int32_t> &corners)
    {
        const BAS_IntrusivePtr<RQ_DANumeric<float>> edges(new RQ_DANumeric<float>(middle.entries(), 3, RQ_TYPE_POINT));
        const rq::Values<float> widths(uniform ? uniform->get("width") : nullptr);
        for (size_t face = 0; face < corners.size() / 4; ++face)
        {
            const int32_t *corner = corners.data() + 4 * face;
            const BAS_Vec3d along = middle[corner[1]] - middle[corner[0]];
            const double width = widths.size() > 0 ? double(widths[int64_t(face)]) : 1.0;
            const BAS_Vec3d side = BAS_Vec3d(-along.y, along.x, 0.0).normalized() * (width / 2.0);
            for (int i = 0; i < 4; ++i)
                edges->setTuple(corner[i], BAS_Vec3f(middle[corner[i]] + (i < 2 ? -side : side)).getValue());
        }
        return edges;
    }
};

/// Two ribbons, and a face of the kind that everybody knows.
MOD_ConstDetailHandle makeDetail(ELM_PrimitiveTypeId ribbon)
{
    const float positions[] = {0, 0, 0, 2, 0, 0, 4, 0, 0, 0, 5, 0, 3, 5, 0, 0, 0, 9, 1, 0, 9, 0, 1, 9};
    const std::vector<int32_t> lengths = {3, 2}, points = {0, 1, 2, 3, 4}, face = {5, 6, 7};
    MOD_Edit edit{MOD_DetailHandle()};
    if (!edit.appendPoints(8) || !edit.appendPolygons(3, face, true) ||
        !edit.append({.type = ribbon, .count = 2, .corners = lengths, .points = points}))
    {
        std::fprintf(stderr, "%s\n", edit.message().c_str());
        return {};
    }
    edit.attribute(ELM_OWNER_POINT, ELM_POSITION_NAME, ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->write(0, 8, positions);
    const float widths[] = {0.0f, 0.5f, 2.0f};
    edit.attribute(ELM_OWNER_PRIMITIVE, "width", ELM_STORAGE_REAL32)->write(0, 3, widths);
    return edit.commit();
}

void describe(const char *when, const MOD_ConstDetailHandle &detail)
{
    RQ_RefineList primitives;
    primitives.refine(RQ_MSHDetail::makeDetail(detail).get(), nullptr);
    for (int i = 0; i < primitives.entries(); ++i)
    {
        const RQ_Primitive &primitive = *primitives.getPrimitive(i);
        std::printf("%s: %s, area %g\n", when, primitive.className(), primitive.computeSurfaceArea(0));
    }
}
}  // namespace

int main()
{
    const ELM_PrimitiveTypeId ribbon = ELM_PrimitiveFactory::add({.name = "ribbon", .label = "Ribbon", .fewestVertices = 2});
    const MOD_ConstDetailHandle detail = makeDetail(ribbon);
    describe("unknown", detail);  // what nobody knows is wrapped as it is

    (new RibbonCollector)->bind(ribbon);  // the registry owns it
    describe("collected", detail);
    return 0;
}
