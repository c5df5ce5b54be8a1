#include <gtest/gtest.h>

#include <filesystem>

#include <io/Reader.h>
#include <rq/bridge/MSHDetail.h>
#include <rq/data/Positions.h>
#include <rq/prim/RefineCollect.h>
#include <rq/subd/SubdTopology.h>

namespace
{
const std::filesystem::path kFolder = std::filesystem::path(RQ_DATA_DIR) / "subdiv";

/// The one mesh of a file, as the cage of a subdivision surface.
RQ_SubdivisionMeshHandle load(const std::filesystem::path &path)
{
    MOD_DetailHandle detail;
    rq::io::Messages messages;
    if (!rq::io::load(path.string(), detail, messages, true))
        return nullptr;
    RQ_RefineParms parms;
    parms.setPolysAsSubdivision(true);
    RQ_RefineCollect collect;
    RQ_MSHDetail::makeDetail(detail.read())->refine(collect, &parms);
    return boost::dynamic_pointer_cast<RQ_PrimSubdivisionMesh>(collect.getPrim(0));
}

/// How far the points of one mesh are from the nearest of another, at worst.
double distance(const RQ_PrimPolygonMesh &from, const RQ_PrimPolygonMesh &to)
{
    const rq::Positions a(from.getShared()->get("P")), b(to.getShared()->get("P"));
    double worst = 0;
    for (int64_t i = 0; i < a.entries(); ++i)
    {
        double nearest = 1e30;
        for (int64_t j = 0; j < b.entries(); ++j)
            nearest = std::min(nearest, (a[i] - b[j]).length2());
        worst = std::max(worst, std::sqrt(nearest));
    }
    return worst;
}
}  // namespace

// The tags of the files, read, kept as attributes and made tags again, refine to the positions that come with them.
TEST(SubdivisionModels, RefineToTheirReference)
{
    if (!std::filesystem::exists(kFolder / "refined"))
        GTEST_SKIP() << "no models in " << kFolder;
    int compared = 0;
    for (const auto &entry : std::filesystem::directory_iterator(kFolder / "refined"))
    {
        const std::string name = entry.path().stem().string();
        SCOPED_TRACE(name);
        const size_t cut = name.rfind("_level");
        const RQ_SubdivisionMeshHandle cage = load(kFolder / (name.substr(0, cut) + ".obj")), expected = load(entry.path());
        ASSERT_TRUE(cage && expected);
        cage->setScheme(name.starts_with("loop")       ? RQ_SCHEME_LOOP
                        : name.starts_with("bilinear") ? RQ_SCHEME_BILINEAR
                                                       : RQ_SCHEME_CATMULL_CLARK);
        RQ_SubdFaults faults;
        const RQ_SubdTopologyHandle topology = RQ_SubdTopology::create(*cage, &faults);
        ASSERT_TRUE(topology && faults.empty());
        const RQ_PolygonMeshHandle mesh = topology->refine(*cage, name.back() - '0' + 1);
        ASSERT_TRUE(mesh && mesh->validate());
        EXPECT_EQ(mesh->getFaceCount(), expected->getFaceCount());
        EXPECT_EQ(mesh->getPointCount(), expected->getPointCount());
        EXPECT_LT(distance(*mesh, *expected), 1e-5);
        EXPECT_LT(distance(*expected, *mesh), 1e-5);
        ++compared;
    }
    EXPECT_GT(compared, 10);
}
