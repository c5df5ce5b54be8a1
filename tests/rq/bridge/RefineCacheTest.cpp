#include <functional>
#include <thread>

#include <rq/bridge/RefineCache.h>
#include <rq/prim/PrimCollect.h>
#include <rq/prim/RefineCollect.h>
#include <rq/surface/PrimSubdivisionMesh.h>
#include <tests/interrupter.h>
#include <tests/rq/bridge/Fixture.h>
#include <tests/rq/data/arrays.h>

using namespace tests;

namespace
{
using Change = std::function<void(MOD_Edit &)>;

void moveFirstPoint(MOD_Edit &edit)
{
    edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->modifyAll<float>()[0] += 0.25f;
}

void colour(MOD_Edit &edit)
{
    edit.attribute(ELM_OWNER_VERTEX, "Cd", ELM_STORAGE_REAL32, 3, ELM_TYPE_COLOR)->modifyAll<float>()[1] += 1.0f;
}

void regroup(MOD_Edit &edit) { edit.group(ELM_OWNER_PRIMITIVE, "some")->set(2); }
void hide(MOD_Edit &edit) { edit.group(ELM_OWNER_PRIMITIVE, ELM_HIDDEN_GROUP_NAME)->set(1); }
void addAttribute(MOD_Edit &edit) { edit.attribute(ELM_OWNER_POINT, "new", ELM_STORAGE_INT32); }
void crease(MOD_Edit &edit) { edit.attribute(ELM_OWNER_VERTEX, "crease", ELM_STORAGE_REAL32)->modifyAll<float>()[2] = 3.0f; }

void addFace(MOD_Edit &edit)
{
    const int32_t face[] = {0, 1, 2};
    ASSERT_TRUE(edit.appendPolygons(3, face, true));
}

/// Faces of all kinds, a polyline, unused points, colours, a group and sharp edges.
MOD_DetailHandle makeScene()
{
    const MOD_DetailHandle geometry;
    MOD_Edit edit(geometry);
    append(edit, cubeShape());
    append(edit, meshShape("unused points"));
    append(edit, starShape(7));
    const int32_t line[] = {0, 3, 5}, three[] = {3};
    EXPECT_TRUE(edit.appendTriangleStrips(three, line) && edit.appendPolygons(three, line, false));
    colour(edit);
    edit.group(ELM_OWNER_PRIMITIVE, "some")->setRange(0, 2);
    edit.attribute(ELM_OWNER_VERTEX, "crease", ELM_STORAGE_REAL32)->modifyAll<float>()[5] = 1.0f;
    edit.attribute(ELM_OWNER_POINT, "uv", ELM_STORAGE_REAL32, 2)->modifyAll<float>()[3] = 1.0f;
    edit.commit();
    return geometry;
}

MOD_ConstDetailHandle changed(const MOD_DetailHandle &geometry, const Change &change)
{
    MOD_Edit edit(geometry);
    change(edit);
    return edit.commit();
}

struct OptionCase
{
    const char *what;
    std::function<void(RQ_RefineParms &)> set;
    int64_t creaseWalks;  // when sharpness changes
};

const OptionCase kOptions[] = {
    {"defaults", [](RQ_RefineParms &) {}, 0},
    {"normals", [](RQ_RefineParms &parms) { parms.setAddVertexNormals(true); }, 0},
    {"tangents", [](RQ_RefineParms &parms) { parms.setAddMikkT(true); }, 0},
    {"tangents of pieces",
     [](RQ_RefineParms &parms) {
         parms.setAddMikkT(true);
         parms.setMaxPolyMeshSize(3);
     },
     0},
    {"a surface with tangents",
     [](RQ_RefineParms &parms) {
         parms.setPolysAsSubdivision(true);
         parms.setAddVertexNormals(true);
         parms.setAddMikkT(true);
     },
     1},
    {"pieces", [](RQ_RefineParms &parms) { parms.setMaxPolyMeshSize(3); }, 0},
    {"a surface", [](RQ_RefineParms &parms) { parms.setPolysAsSubdivision(true); }, 1},
    {"face sets", [](RQ_RefineParms &parms) { parms.setFaceSetMode(1); }, 0},
    {"points", [](RQ_RefineParms &parms) { parms.setGeoPointMesh(true); }, 0},
};

TEST(RefineCache, GivesWhatARefinementGivesAndWalksOnlyWhenItMust)
{
    struct ChangeCase
    {
        const char *what;
        Change change;
        int64_t walks;
        bool moves = false;
    };
    for (const OptionCase &option : kOptions)
    {
        RQ_RefineParms parms;
        option.set(parms);
        RQ_RefineCache cache;
        const MOD_DetailHandle geometry = makeScene();
        const std::vector<RQ_PrimitiveHandle> first = cache.refine(RQ_MSHDetail(geometry.read()), &parms);
        const std::string firstText = textOf(first);
        EXPECT_EQ(cache.getWork().walks, 1);
        for (const ChangeCase &c : {ChangeCase{"colours", colour, 0}, ChangeCase{"positions", moveFirstPoint, 0, true},
                                    ChangeCase{"sharpness", crease, option.creaseWalks}, ChangeCase{"a group", regroup, 1},
                                    ChangeCase{"what is hidden", hide, 1}, ChangeCase{"an attribute", addAttribute, 1},
                                    ChangeCase{"faces", addFace, 1}, ChangeCase{"colours again", colour, 0}})
        {
            SCOPED_TRACE(std::string(option.what) + ", " + c.what);
            const RQ_RefineCache::Work before = cache.getWork();
            const MOD_ConstDetailHandle frame = changed(geometry, c.change);
            EXPECT_EQ(textOf(cache.refine(RQ_MSHDetail(frame), &parms)), textOf(refine(frame, &parms)));
            const RQ_RefineCache::Work after = cache.getWork();
            EXPECT_EQ(after.walks - before.walks, c.walks);
            EXPECT_EQ(after.tangents - before.tangents, parms.getAddMikkT() && (c.walks || c.moves));
        }
        EXPECT_EQ(textOf(first), firstText) << "what was handed out has changed";
    }
}

TEST(RefineCache, KeepsNothingThatWasInterrupted)
{
    const MOD_DetailHandle geometry = makeScene();
    const MOD_ConstDetailHandle first = geometry.read(), second = changed(geometry, moveFirstPoint);
    for (const OptionCase &option : kOptions)
        for (const bool follows : {false, true})
        {
            RQ_RefineParms parms;
            option.set(parms);
            const std::string whole = textOf(refine(second, &parms));
            bool isDone = false;
            for (int poll = 0; !isDone; ++poll)
            {
                SCOPED_TRACE(std::string(option.what) + (follows ? ", following, " : ", ") + std::to_string(poll));
                RQ_RefineCache cache;
                if (follows)
                    cache.refine(RQ_MSHDetail(first), &parms);
                {
                    const Interrupter interrupter(poll);
                    const std::string text = textOf(cache.refine(RQ_MSHDetail(second), &parms));
                    isDone = !interrupter.saidStop();
                    EXPECT_EQ(text, isDone ? whole : "");
                }
                EXPECT_EQ(textOf(cache.refine(RQ_MSHDetail(second), &parms)), whole);
            }
        }
}

/// What a viewport asks for in each frame.
std::string draw(RQ_RefineCache &cache, const MOD_ConstDetailHandle &frame, const RQ_RefineParms &parms)
{
    std::string text;
    for (const RQ_PrimitiveHandle &primitive : cache.refine(RQ_MSHDetail(frame), &parms))
    {
        const auto *several = as<RQ_PrimCollect>(primitive);
        const RQ_PrimitiveHandle faces = several ? several->getPrim(0) : primitive;
        if (const auto *surface = as<RQ_PrimSubdivisionMesh>(faces))
            text += textOf(*cache.subdivision(*surface)->refine(*surface, 1));
        else if (const auto *mesh = as<RQ_PrimPolygonMesh>(faces))
        {
            const RQ_PolygonMeshHandle triangles = cache.convex(*mesh, 3);
            std::string why;
            EXPECT_TRUE(triangles->validate(&why)) << why;
            const RQ_DataArrayHandle normals = cache.vertexNormals(*triangles, 0, 30.0);
            text += textOf(*triangles) + jsonOf(*normals, false);
            RQ_ConvexArrays cut;
            EXPECT_TRUE(cache.convexArrays(*mesh, cut, 3, true));
            text += jsonOf(*cut.sourceFace, false) + jsonOf(*cut.sourceVertex, false);
        }
    }
    return text;
}

TEST(RefineCache, ComputesOnlyWhatTheValuesChange)
{
    for (const bool subdivides : {false, true})
    {
        RQ_RefineParms parms;
        parms.setPolysAsSubdivision(subdivides);
        parms.setAddVertexNormals(true);
        parms.setAddMikkT(true);
        parms.setFaceSetMode(1);
        RQ_RefineCache cache;
        const MOD_DetailHandle geometry = makeScene();
        draw(cache, geometry.read(), parms);
        const RQ_RefineCache::Work first = cache.getWork();
        EXPECT_EQ(first, (RQ_RefineCache::Work{1, !subdivides, 1 + !subdivides, subdivides, 1}));

        RQ_RefineCache fresh;
        const MOD_ConstDetailHandle coloured = changed(geometry, colour);
        EXPECT_EQ(draw(cache, coloured, parms), draw(fresh, coloured, parms));
        EXPECT_EQ(cache.getWork(), first) << "no geometry has changed";

        fresh.clear();
        const MOD_ConstDetailHandle moved = changed(geometry, moveFirstPoint);
        EXPECT_EQ(draw(cache, moved, parms), draw(fresh, moved, parms));
        RQ_RefineCache::Work expected = first;
        expected.normals += 1 + !subdivides;
        expected.tangents += 1;
        EXPECT_EQ(cache.getWork(), expected) << "normals and tangents follow positions, nothing else does";
    }
}

// The same corners, shared out in another order, are other faces.
TEST(RefineCache, TellsFacesOfTheSameCornersApart)
{
    const RQ_DataArrayHandle corners = makeArray(std::vector<int32_t>{0, 1, 2, 3, 4, 5, 6, 7, 8});
    std::vector<float> places;
    for (int i = 0; i < 27; ++i)
        places.push_back(float(i * 7 % 11));
    const RQ_AttributeListHandle list =
        RQ_AttributeListHandle(new RQ_AttributeList(nullptr))->addAttribute("P", makeArray(places, 3, RQ_TYPE_POINT), false);
    RQ_RefineCache cache;
    for (const std::vector<int32_t> &counts : {std::vector<int32_t>{4, 5}, std::vector<int32_t>{5, 4}})
    {
        const RQ_PolygonMeshHandle mesh(new RQ_PrimPolygonMesh(makeArray(counts), corners, list));
        EXPECT_TRUE(cache.convex(*mesh, 3)->getVertexList()->isEqual(*mesh->convex(3, true)->getVertexList()));
        EXPECT_TRUE(
            cache.vertexNormals(*mesh, 0, 30.0)->isEqual(*mesh->createVertexNormals(0, "P", 30.0, true, RQ_STORAGE_REAL32)));
    }
    EXPECT_EQ(cache.getWork(), (RQ_RefineCache::Work{0, 2, 2, 0, 0}));
}

TEST(RefineCache, TakesWhatCollectorsOfCallersMake)
{
    struct Emptiness final : RQ_MSHPrimCollect
    {
        RQ_PrimitiveHandle collect(const RQ_MSHDetailListHandle &, const MSH_Primitive *const *, int,
                                   RQ_MSHPrimCollectData *) const override
        {
            const BAS_IntrusivePtr<RQ_PrimCollect> made(new RQ_PrimCollect);
            made->appendPrimitive(nullptr);
            return made;
        }
    };
    RQ_MSHPrimCollect::bind(std::make_shared<Emptiness>(), ELM_PRIMITIVE_POLYGON);
    RQ_RefineParms parms;
    parms.setAddMikkT(true);
    RQ_RefineCache cache;
    const MOD_ConstDetailHandle cube = makeDetail(cubeShape());
    for (const int largest : {-1, -1, 1, 1})
    {
        parms.setMaxPolyMeshSize(largest);
        EXPECT_EQ(cache.refine(RQ_MSHDetail(cube), &parms).size(), 6u);
    }
    RQ_MSHPrimCollect::bind(nullptr, ELM_PRIMITIVE_POLYGON);
}

TEST(RefineCache, LetsSnapshotsAndResultsGo)
{
    const MOD_DetailHandle geometry = makeScene();
    const MOD_ConstDetailHandle first = geometry.read(), second = changed(geometry, moveFirstPoint);
    RQ_RefineParms parms;
    parms.setAddMikkT(true);
    RQ_RefineCache cache;
    const auto held = first.readLock()->use_count();
    draw(cache, first, parms);
    EXPECT_GT(first.readLock()->use_count(), held);
    draw(cache, second, parms);
    EXPECT_EQ(first.readLock()->use_count(), held) << "the snapshot of the last frame but one is kept";
    const int64_t used = cache.getMemoryUsage();
    draw(cache, changed(geometry, moveFirstPoint), parms);
    EXPECT_LE(cache.getMemoryUsage(), used) << "normals of older frames are kept";

    RQ_RefineCache small(0);
    EXPECT_EQ(draw(small, second, parms), draw(cache, second, parms));
    draw(small, second, parms);
    EXPECT_EQ(small.getWork().walks, 2);
    EXPECT_LT(small.getMemoryUsage(), 1000);
    EXPECT_GT(cache.getMemoryUsage(), 1000);

    // Of as many as there is room for, the one that was not asked for the longest goes.
    const MOD_DetailHandle scenes[] = {makeScene(), makeScene(), makeScene()};
    const auto refineScene = [&](RQ_RefineCache &into, int i) { into.refine(RQ_MSHDetail(scenes[i].read()), nullptr); };
    RQ_RefineCache one;
    refineScene(one, 0);
    RQ_RefineCache two(5 * one.getMemoryUsage() / 2);
    for (const int i : {0, 1, 0, 2, 0})
        refineScene(two, i);
    EXPECT_EQ(two.getWork().walks, 3);
    refineScene(two, 1);
    EXPECT_EQ(two.getWork().walks, 4);
}

TEST(RefineCache, ServesThreadsAndSegments)
{
    const MOD_DetailHandle geometry = makeScene();
    std::vector<MOD_ConstDetailHandle> frames = {geometry.read()};
    for (int i = 0; i < 4; ++i)
        frames.push_back(changed(geometry, i % 2 ? colour : moveFirstPoint));
    RQ_RefineParms parms;
    parms.setAddMikkT(true);
    parms.setMaxPolyMeshSize(3);
    RQ_RefineCache cache;
    // Samples that become equal and different again share arrays in between.
    const auto sampled = [&](size_t i) {
        return RQ_MSHDetail(std::vector<MOD_ConstDetailHandle>{frames[i], frames[i], frames[(i * i) % frames.size()]});
    };
    std::vector<std::string> expected;
    for (size_t i = 0; i < frames.size(); ++i)
    {
        RQ_RefineCollect collect;
        ASSERT_TRUE(sampled(i).refine(collect, &parms));
        expected.emplace_back();
        for (int64_t k = 0; k < collect.entries(); ++k)
            expected.back() += textOf(*collect.getPrim(k)) + "\n";
    }
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (size_t i = 0; i < 40; ++i)
                EXPECT_EQ(textOf(cache.refine(sampled((i + t) % frames.size()), &parms)), expected[(i + t) % frames.size()]);
        });
    for (std::thread &thread : threads)
        thread.join();
}
}  // namespace
