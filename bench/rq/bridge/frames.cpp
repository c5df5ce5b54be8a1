#include <bench/Job.h>
#include <bench/rq/bridge/details.h>
#include <host/msh/Detail.h>
#include <rq/bridge/RefineCache.h>

namespace
{
using bench::kCells;
using bench::QuadMesh;
using bench::Work;

constexpr double kFaces = double(kCells) * kCells;

/// What a viewport asks for in each frame.
struct Drawn
{
    RQ_PolygonMeshHandle triangles;
    RQ_DataArrayHandle normals;
};

Drawn draw(RQ_RefineCache &cache, const MOD_ConstDetailHandle &frame)
{
    const std::vector<RQ_PrimitiveHandle> primitives = cache.refine(RQ_MSHDetail(frame), nullptr);
    const auto *mesh = dynamic_cast<const RQ_PrimPolygonMesh *>(primitives.at(0).get());
    const RQ_PolygonMeshHandle triangles = cache.convex(*mesh, 3);
    return {triangles, cache.vertexNormals(*triangles, 0, 60.0)};
}

/// A detail of which every frame differs from the one before in one attribute of points.
struct Frames
{
    MOD_DetailHandle geometry;
    std::vector<MOD_ConstDetailHandle> all;
    size_t next = 1;
    RQ_RefineCache cache;

    Frames(const char *attribute, bool hides)
    {
        // More than are timed: a frame that comes again would cost nothing.
        constexpr int kFrames = bench::kRepetitions + 5;
        const auto prepare = [hides](MOD_Edit &edit) {
            edit.attribute(ELM_OWNER_POINT, "Cd", ELM_STORAGE_REAL32, 3, ELM_TYPE_COLOR);
            for (int64_t face = 0; hides && face < edit.primitiveCount(); face += 100)
                edit.group(ELM_OWNER_PRIMITIVE, ELM_HIDDEN_GROUP_NAME)->set(face);
        };
        all.push_back(bench::makeDetail(QuadMesh(kCells), prepare, geometry));
        for (int i = 0; i < kFrames; ++i)
        {
            MOD_Edit edit(geometry);
            const ELM_TypeInfo type = *attribute == 'P' ? ELM_TYPE_POINT : ELM_TYPE_COLOR;
            edit.attribute(ELM_OWNER_POINT, attribute, ELM_STORAGE_REAL32, 3, type)->modifyAll<float>()[0] += 0.001f;
            all.push_back(edit.commit());
        }
        draw(cache, all[0]);
    }
};

void addFrame(const char *who, const char *mesh, const char *attribute, bool hides, bool isFirst)
{
    bench::add({"frame", mesh, who, 1, kFaces, 0.0, false, [=] {
                    const auto frames = std::make_shared<Frames>(attribute, hides);
                    return Work{[=] {
                                    if (isFirst)
                                        frames->cache.clear();
                                    return bench::keep(
                                        draw(frames->cache, frames->all[frames->next++ % frames->all.size()]));
                                },
                                [=] {
                                    RQ_RefineCache fresh;
                                    const MOD_ConstDetailHandle &frame = frames->all.back();
                                    return std::abs(double(draw(fresh, frame).triangles->getFaceCount() -
                                                           draw(frames->cache, frame).triangles->getFaceCount()));
                                }};
                }});
}

const bool registered = [] {
    for (const bool hides : {false, true})
    {
        const char *mesh = hides ? "quads1M, some hidden" : "quads1M";
        addFrame("ours, the first", mesh, "P", hides, true);
        addFrame("ours, positions changed", mesh, "P", hides, false);
        addFrame("ours, colours changed", mesh, "Cd", hides, false);
    }
    return true;
}();
}  // namespace
