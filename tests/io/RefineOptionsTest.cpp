#include <array>
#include <filesystem>
#include <functional>
#include <numeric>

#include <gtest/gtest.h>

#include <host/msh/Polygon.h>
#include <io/Reader.h>
#include <rq/bridge/RefineCache.h>
#include <rq/data/DANumeric.h>
#include <rq/prim/PrimCollect.h>
#include <rq/surface/PrimCurveMesh.h>
#include <rq/surface/PrimPointMesh.h>
#include <tests/DataReadme.h>

namespace
{
/// How much of everything a detail holds, or the primitives that it refines to.
struct Sizes
{
    int64_t faces = 0, corners = 0, lines = 0, lineVertices = 0, points = 0;  // points: loose ones, and those of clouds

    auto all() const { return std::array{faces, corners, lines, lineVertices, points}; }

    void add(const MSH_Detail &detail)
    {
        for (ELM_Offset i = 0; i < detail.primitiveCount(); ++i)
        {
            const MSH_Polygon polygon(detail, i);
            if (!polygon.isValid())
            {
                points += polygon.vertexCount();
                continue;
            }
            (polygon.isClosed() ? faces : lines) += 1;
            (polygon.isClosed() ? corners : lineVertices) += polygon.vertexCount();
        }
        for (ELM_Offset i = 0; i < detail.pointCount(); ++i)
            points += !detail.usedPoints().get(i);
    }

    void add(const RQ_PrimitiveHandle &primitive)
    {
        std::string why;
        if (const auto *several = dynamic_cast<const RQ_PrimCollect *>(primitive.get()))
            for (int64_t i = 0; i < several->entries(); ++i)
                add(several->getPrim(i));
        else if (const auto *mesh = dynamic_cast<const RQ_PrimPolygonMesh *>(primitive.get()))
        {
            EXPECT_TRUE(mesh->validate(&why)) << why;
            faces += mesh->getFaceCount();
            corners += mesh->getVertexCount();
        }
        else if (const auto *curves = dynamic_cast<const RQ_PrimCurveMesh *>(primitive.get()))
        {
            EXPECT_TRUE(curves->validate(&why)) << why;
            lines += curves->getCurveCount();
            lineVertices += curves->getVertexCount();
        }
        else if (const auto *cloud = dynamic_cast<const RQ_PrimPointMesh *>(primitive.get()))
            points += cloud->getPointCount();
        else if (const auto *polygon = dynamic_cast<const RQ_PrimPolygon *>(primitive.get()))
        {
            ++faces;
            corners += polygon->getVertexCount();
        }
    }
};

struct Options
{
    const char *what;
    std::function<void(RQ_RefineParms &)> set;
};

const Options kOptions[] = {
    {"everything",
     [](RQ_RefineParms &parms) {
         parms.setAddVertexNormals(true);
         parms.setAddMikkT(true);
         parms.setFaceSetMode(2);
         parms.setMaxPolyMeshSize(1000);
         parms.setMaxPolyCurveSize(100);
         parms.setFastPolyCompacting(false);
     }},
    {"a surface with normals",
     [](RQ_RefineParms &parms) {
         parms.setPolysAsSubdivision(true);
         parms.setAddVertexNormals(true);
         parms.setCuspAngle(0.0f);
     }},
    {"nothing", [](RQ_RefineParms &) {}},
    {"small pieces", [](RQ_RefineParms &parms) { parms.setMaxPolyMeshSize(50); }},
    {"short curves", [](RQ_RefineParms &parms) { parms.setMaxPolyCurveSize(7); }},
    {"tangents", [](RQ_RefineParms &parms) { parms.setAddMikkT(true); }},
    {"face sets", [](RQ_RefineParms &parms) { parms.setFaceSetMode(1); }},
    {"polygons", [](RQ_RefineParms &parms) { parms.setGeoPolygonMesh(false); }},
    {"compacted", [](RQ_RefineParms &parms) { parms.setFastPolyCompacting(false); }},
    {"materials",
     [](RQ_RefineParms &parms) {
         const BAS_IntrusivePtr<RQ_DANumeric<int32_t>> materials(new RQ_DANumeric<int32_t>(200000, 1, RQ_TYPE_NONE));
         std::iota(materials->data(), materials->data() + materials->entries(), 0);
         parms.setViewportMaterialAttrib(materials, materials);
         parms.setPackedViewportLOD(true);
     }},
};

TEST(RefineOptions, KeepTheSizeOfEveryModel)
{
    int models = 0;
    if (!std::filesystem::exists(RQ_DATA_DIR))
        GTEST_SKIP() << "no models in " RQ_DATA_DIR;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(RQ_DATA_DIR))
    {
        MOD_DetailHandle geometry;
        rq::io::Messages messages;
        if (!entry.is_regular_file() || entry.path().extension() == ".json" ||
            !rq::io::load(entry.path().string(), geometry, messages))
            continue;
        ++models;
        const MOD_ConstDetailHandle detail = geometry.read();
        Sizes expected;
        expected.add(*detail.readLock());
        RQ_RefineCache cache;
        for (const Options &options : kOptions)
        {
            SCOPED_TRACE(entry.path().filename().string() + ", " + options.what);
            RQ_RefineParms parms;
            options.set(parms);
            // The second time from what the cache knows.
            for (int turn = 0; turn < 2; ++turn)
            {
                Sizes found;
                for (const RQ_PrimitiveHandle &primitive : cache.refine(RQ_MSHDetail(detail), &parms))
                    found.add(primitive);
                EXPECT_EQ(found.all(), expected.all()) << "turn " << turn;
            }
        }
    }
    EXPECT_GT(models, 100);
}
}  // namespace
