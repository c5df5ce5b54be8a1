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

// Positions and corners are read, and normals of all triangles' corners written.
constexpr double kNormalBytes = (kCells + 1.0) * (kCells + 1.0) * 12.0 + kFaces * (16.0 + 6.0 * 12.0);

// Positions, texture coordinates and corners are read, and two tangents of all quads' corners written.
constexpr double kTangentBytes = (kCells + 1.0) * (kCells + 1.0) * 20.0 + kFaces * (16.0 + 4.0 * 24.0);

// The report sets it beside "ours": a later frame in which only positions changed.
constexpr const char *kFirst = "ours, the first";

/// What a viewport asks for in each frame.
enum class Wanted
{
    TRIANGLES,
    NORMALS,        ///< and normals of the triangles
    ADDED_NORMALS,  ///< and normals that the refinement's option adds to the quads, seen through the triangles
    TANGENTS        ///< and tangents that the refinement's option adds to the quads
};

struct Drawn
{
    RQ_PolygonMeshHandle triangles;
    RQ_DataArrayHandle normals, buffer;
};

Drawn draw(RQ_RefineCache &cache, const MOD_ConstDetailHandle &frame, Wanted wanted)
{
    RQ_RefineParms parms;
    parms.setAddVertexNormals(wanted == Wanted::ADDED_NORMALS);
    parms.setAddMikkT(wanted == Wanted::TANGENTS);
    const std::vector<RQ_PrimitiveHandle> primitives = cache.refine(RQ_MSHDetail(frame), &parms);
    const auto *mesh = dynamic_cast<const RQ_PrimPolygonMesh *>(primitives.at(0).get());
    Drawn drawn{cache.convex(*mesh, 3), nullptr, nullptr};
    if (wanted == Wanted::NORMALS)
        drawn.normals = cache.vertexNormals(*drawn.triangles, 0, 60.0);
    if (wanted == Wanted::ADDED_NORMALS)
        drawn.normals = drawn.triangles->getVertex()->get("N");
    if (drawn.normals)
        drawn.normals->getArray<float>(drawn.buffer);
    return drawn;
}

/// A detail of which every frame differs from the one before in the values of one attribute of all points.
struct Frames
{
    MOD_DetailHandle geometry;
    std::vector<MOD_ConstDetailHandle> all;
    size_t next = 1;
    RQ_RefineCache cache;

    Frames(const char *attribute, bool hides, Wanted wanted)
    {
        // More than are timed: a frame that comes again would cost nothing.
        constexpr int kFrames = bench::kRepetitions + 5;
        const auto prepare = [hides, wanted](MOD_Edit &edit) {
            edit.attribute(ELM_OWNER_POINT, "Cd", ELM_STORAGE_REAL32, 3, ELM_TYPE_COLOR);
            if (wanted == Wanted::TANGENTS)
            {
                float *uv = edit.attribute(ELM_OWNER_POINT, "uv", ELM_STORAGE_REAL32, 2)->writeAll<float>();
                for (int64_t point = 0; point < edit.pointCount(); ++point, uv += 2)
                {
                    uv[0] = float(point % (kCells + 1)) / kCells;
                    uv[1] = float(point / (kCells + 1)) / kCells;
                }
            }
            for (int64_t face = 0; hides && face < edit.primitiveCount(); face += 100)
                edit.group(ELM_OWNER_PRIMITIVE, ELM_HIDDEN_GROUP_NAME)->set(face);
        };
        all.push_back(bench::makeDetail(QuadMesh(kCells), prepare, geometry));
        for (int i = 0; i < kFrames; ++i)
        {
            MOD_Edit edit(geometry);
            const ELM_TypeInfo type = *attribute == 'P' ? ELM_TYPE_POINT : ELM_TYPE_COLOR;
            float *values = edit.attribute(ELM_OWNER_POINT, attribute, ELM_STORAGE_REAL32, 3, type)->modifyAll<float>();
            for (int64_t k = 0; k < 3 * edit.pointCount(); ++k)
                values[k] += 0.001f;
            all.push_back(edit.commit());
        }
        draw(cache, all[0], wanted);
    }
};

void addFrame(const char *job, Wanted wanted, const char *who, const char *attribute, bool hides)
{
    const char *mesh = hides ? "quads1M, some hidden" : "quads1M";
    const bool isFirst = std::string_view(who) == kFirst;
    const double bytes = wanted == Wanted::TRIANGLES ? 0.0 : wanted == Wanted::TANGENTS ? kTangentBytes : kNormalBytes;
    bench::add({job, mesh, who, 1, kFaces, bytes, false, [=] {
                    const auto frames = std::make_shared<Frames>(attribute, hides, wanted);
                    return Work{[=] {
                                    if (isFirst)
                                        frames->cache.clear();
                                    return bench::keep(
                                        draw(frames->cache, frames->all[frames->next++ % frames->all.size()], wanted));
                                },
                                [=] {
                                    RQ_RefineCache fresh;
                                    const MOD_ConstDetailHandle &frame = frames->all.back();
                                    const Drawn expected = draw(fresh, frame, wanted);
                                    const Drawn found = draw(frames->cache, frame, wanted);
                                    return std::abs(
                                        double(expected.triangles->getFaceCount() - found.triangles->getFaceCount()));
                                }};
                }});
}

const bool registered = [] {
    const std::pair<const char *, Wanted> kJobs[] = {{"frame_triangles", Wanted::TRIANGLES},
                                                     {"frame_normals", Wanted::NORMALS},
                                                     {"frame_added_normals", Wanted::ADDED_NORMALS},
                                                     {"frame_tangents", Wanted::TANGENTS}};
    for (const auto &[job, wanted] : kJobs)
        for (const bool hides : {false, true})
        {
            addFrame(job, wanted, "ours", "P", hides);
            addFrame(job, wanted, kFirst, "P", hides);
            addFrame(job, wanted, "ours, only colours changed", "Cd", hides);
        }
    return true;
}();
}  // namespace
