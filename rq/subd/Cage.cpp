#include <rq/subd/detail/cage.h>

#include <algorithm>
#include <limits>

#include <fmt/format.h>

#include <rq/data/Counts.h>
#include <rq/data/Values.h>

namespace
{
// What the evaluation can number around one point or in one face.
constexpr int64_t kMostNeighbours = 65535;

/// The first face that `isBad(corners)`, and how many are.
template <class IsBad>
void checkFaces(const RQ_CountArray &array, RQ_SubdFaultCode code, const char *what, IsBad &&isBad, RQ_SubdFaults &faults)
{
    const rq::Counts counts(array);
    int64_t first = -1, bad = 0;
    for (int64_t face = 0; face < counts.entries(); ++face)
        if (isBad(counts.count(face)) && bad++ == 0)
            first = face;
    if (bad > 0)
        faults.push_back({code, RQ_OWNER_UNIFORM, first, bad,
                          fmt::format("face {} has {} corners, {}{}", first, counts.count(first), what,
                                      bad > 1 ? fmt::format(" ({} such faces)", bad) : "")});
}

void checkPoints(const RQ_PrimPolygonMesh &mesh, RQ_SubdFaults &faults)
{
    const rq::Values<int32_t> points(mesh.getVertexList());
    std::vector<int32_t> uses(size_t(mesh.getPointCount()));
    for (const int32_t point : points)
        ++uses[size_t(point)];
    const auto worst = std::max_element(uses.begin(), uses.end());
    if (worst != uses.end() && *worst > kMostNeighbours)
        faults.push_back(
            {RQ_SUBD_POINT_FACES, RQ_OWNER_POINT, worst - uses.begin(), 1,
             fmt::format("{} corners lie at point {}, at most {} may", *worst, worst - uses.begin(), kMostNeighbours)});
}
}  // namespace

bool rq::checkCage(const RQ_PrimSubdivisionMesh &mesh, RQ_SubdFaults &faults)
{
    std::string why;
    if (!mesh.validate(&why))
        faults.push_back({RQ_SUBD_MESH, RQ_OWNER_DETAIL, 0, 1, why});
    else if (!RQscheme(mesh.scheme()))
        faults.push_back({RQ_SUBD_SCHEME, RQ_OWNER_DETAIL, 0, 1, fmt::format("{} is no scheme", int(mesh.scheme()))});
    else if (std::max(mesh.getVertexCount(), mesh.getPointCount()) > std::numeric_limits<int32_t>::max() / 4)
        faults.push_back({RQ_SUBD_SIZE, RQ_OWNER_DETAIL, 0, 1,
                          fmt::format("{} corners are too many to subdivide", mesh.getVertexCount())});
    if (!faults.empty())
        return false;

    const RQ_CountArray &counts = mesh.getFaceCountArray();
    const bool loop = mesh.scheme() == RQ_SCHEME_LOOP;
    if (counts.entries() > 0 && (counts.getMinCount() < 3 || counts.getMaxCount() > kMostNeighbours))
        checkFaces(
            counts, RQ_SUBD_FACE_CORNERS, "not 3 to 65535", [](int64_t n) { return n < 3 || n > kMostNeighbours; }, faults);
    else if (loop && counts.entries() > 0 && counts.getMaxCount() > 3)
        checkFaces(
            counts, RQ_SUBD_LOOP_FACE, "the Loop scheme takes triangles only", [](int64_t n) { return n != 3; }, faults);
    else if (mesh.getVertexList())
        checkPoints(mesh, faults);
    return faults.empty();
}

void rq::readCage(const RQ_PrimSubdivisionMesh &mesh, Cage &cage, RQ_SubdFaults &faults)
{
    cage.scheme = mesh.scheme();
    cage.pointCount = int32_t(mesh.getPointCount());
    const Counts counts(mesh.getFaceCountArray());
    cage.onlyQuads = counts.uniform() == 4;
    cage.counts.resize(size_t(counts.entries()));
    for (int64_t face = 0; face < counts.entries(); ++face)
        cage.counts[size_t(face)] = int32_t(counts.count(face));
    const Values<int32_t> points(mesh.getVertexList());
    cage.points.assign(points.begin(), points.end());
    readCageTags(mesh, cage, faults);
    readCageChannels(mesh.surfaceVertex(), cage);
}

void rq::renumberPoints(Cage &cage, const RQ_DataArrayHandle &rows)
{
    const Values<int64_t> used(rows);
    std::vector<int32_t> rowOf(size_t(cage.pointCount), -1);
    for (int64_t row = 0; row < used.entries(); ++row)
        rowOf[size_t(used[row])] = int32_t(row);
    cage.pointCount = int32_t(used.entries());
    for (std::vector<int32_t> *points : {&cage.points, &cage.creases, &cage.corners})
        for (int32_t &point : *points)
            point = rowOf[size_t(point)];

    // Creases lie on edges, but a corner may have named a point of no face.
    size_t kept = 0;
    for (size_t i = 0; i < cage.corners.size(); ++i)
        if (cage.corners[i] >= 0)
        {
            cage.corners[kept] = cage.corners[i];
            cage.cornerSharpness[kept++] = cage.cornerSharpness[i];
        }
    cage.corners.resize(kept);
    cage.cornerSharpness.resize(kept);
}
