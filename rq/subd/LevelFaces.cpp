#include <host/bas/Parallel.h>
#include <rq/subd/detail/levelValues.h>
#include <rq/subd/detail/osd.h>

namespace
{
// A face costs some 10 ns.
constexpr int64_t kFacesPerTask = 8192;

bool isLoop(const rq::Refiner &refiner) { return refiner.far->GetSchemeType() == rq::Sdc::SCHEME_LOOP; }
}  // namespace

rq::LevelSize rq::sizeOfChild(const Refiner &refiner, int level)
{
    const Far::TopologyLevel &parent = refiner.far->GetLevel(level);
    const int64_t points = int64_t(parent.GetNumVertices()) + parent.GetNumEdges();
    return isLoop(refiner) ? LevelSize{points, 4 * int64_t(parent.GetNumFaces())}
                           : LevelSize{points + parent.GetNumFaces(), parent.GetNumFaceVertices()};
}

void rq::refineUniformly(Refiner &refiner, int level, bool faceVarying)
{
    Far::TopologyRefiner::UniformOptions options(faceVarying ? level + 1 : level);
    options.fullTopologyInLastLevel = !faceVarying;
    if (options.refinementLevel > 0)
        refiner.far->RefineUniform(options);
}

void rq::childPoints(const Refiner &refiner, int level, int32_t *points)
{
    const Far::TopologyLevel &parent = refiner.far->GetLevel(level);
    const int vertices = parent.GetNumVertices(), edges = vertices + (isLoop(refiner) ? 0 : parent.GetNumFaces());
    if (isLoop(refiner))
        return host::parallelFor(parent.GetNumFaces(), kFacesPerTask, [&](int64_t face) {
            const Far::ConstIndexArray v = parent.GetFaceVertices(int(face)), e = parent.GetFaceEdges(int(face));
            const int middle[3] = {edges + e[0], edges + e[1], edges + e[2]};
            const int all[12] = {v[0],      middle[0], middle[2], middle[0], v[1],      middle[1],
                                 middle[2], middle[1], v[2],      middle[1], middle[2], middle[0]};
            std::copy(all, all + 12, points + 12 * face);
        });

    // Only the cage has faces that are no quads; a triangle and a pentagon have the corners of two quads.
    std::vector<int64_t> first;
    if (level == 0)
        for (int64_t face = 0, sum = 0; face < parent.GetNumFaces(); sum += parent.GetFaceVertices(int(face++)).size())
            first.push_back(sum);
    host::parallelFor(parent.GetNumFaces(), kFacesPerTask, [&](int64_t face) {
        const Far::ConstIndexArray v = parent.GetFaceVertices(int(face)), e = parent.GetFaceEdges(int(face));
        const int n = v.size(), centre = vertices + int(face);
        int32_t *out = points + 4 * (first.empty() ? 4 * face : first[size_t(face)]);
        for (int i = 0; i < n; ++i, out += 4)
        {
            const int turn = n == 4 ? i : 0;
            out[turn] = v[i];
            out[(turn + 1) & 3] = edges + e[i];
            out[(turn + 2) & 3] = centre;
            out[(turn + 3) & 3] = edges + e[i > 0 ? i - 1 : n - 1];
        }
    });
}

void rq::childSources(const Refiner &refiner, int level, int32_t *sources)
{
    const Far::TopologyLevel &parent = refiner.far->GetLevel(level);
    for (int vertex = 0; vertex < parent.GetNumVertices(); ++vertex)
        *sources++ = vertex;
    for (int face = 0; !isLoop(refiner) && face < parent.GetNumFaces(); ++face)
        *sources++ = parent.GetFaceVertices(face)[0];
    for (int edge = 0; edge < parent.GetNumEdges(); ++edge)
        *sources++ = parent.GetEdgeVertices(edge)[0];
}
