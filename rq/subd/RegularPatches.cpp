#include <rq/subd/detail/regularPatches.h>

#include <algorithm>

#include <host/bas/Parallel.h>
#include <rq/subd/detail/levelValues.h>
#include <rq/subd/detail/osd.h>

namespace
{
using namespace rq;

constexpr int64_t kItemsPerTask = 1024;  // some 20 ns each

/// Where in the grid of four by four points the corners of a face lie.
constexpr int kCornerRow[4] = {1, 1, 2, 2}, kCornerColumn[4] = {1, 2, 2, 1};

int placeOf(const Far::ConstIndexArray &items, int item)
{
    return int(std::find(items.begin(), items.end(), item) - items.begin());
}

/// Finds the points around the faces of a level.
class Surroundings
{
public:
    explicit Surroundings(const Far::TopologyLevel &level) : level_(level), regular_(size_t(level.GetNumVertices()))
    {
        host::parallelFor(level.GetNumVertices(), kItemsPerTask,
                          [this](int64_t vertex) { regular_[size_t(vertex)] = isRegularPoint(int(vertex)); });
    }

    /// The points around a face, row by row.  False when it is not regular.
    bool find(int face, int32_t *grid) const
    {
        const Far::ConstIndexArray corners = level_.GetFaceVertices(face), edges = level_.GetFaceEdges(face);
        if (corners.size() != 4)
            return false;
        int across[4];
        for (int i = 0; i < 4; ++i)
        {
            if (!regular_[size_t(corners[i])])
                return false;
            const Far::ConstIndexArray faces = level_.GetEdgeFaces(edges[i]);
            if (faces.size() != 2)
                return false;
            across[i] = faces[faces[0] == face];
        }
        for (int i = 0; i < 4; ++i)
        {
            // Steps in the grid towards the neighbours outside the face.
            const int row = kCornerRow[i], column = kCornerColumn[i], back = (i + 3) % 4;
            const int down = row == 1 ? -1 : 1, right = column == 1 ? -1 : 1;
            const bool edgeIsRow = i % 2 == 0;  // edge i runs along a row from corners 0 and 2 on
            const int beyondOwn = outerNeighbour(across[i], corners[i], corners[(i + 1) % 4]);
            const int beyondBack = outerNeighbour(across[back], corners[i], corners[back]);
            const int diagonal = oppositeCorner(face, across[i], across[back], corners[i]);
            if (beyondOwn < 0 || beyondBack < 0 || diagonal < 0)
                return false;
            grid[4 * row + column] = corners[i];
            grid[4 * (row + down) + column] = edgeIsRow ? beyondOwn : beyondBack;
            grid[4 * row + column + right] = edgeIsRow ? beyondBack : beyondOwn;
            grid[4 * (row + down) + column + right] = diagonal;
        }
        return true;
    }

private:
    bool isRegularPoint(int vertex) const
    {
        const Far::ConstIndexArray faces = level_.GetVertexFaces(vertex);
        return faces.size() == 4 && level_.GetVertexEdges(vertex).size() == 4 && !level_.IsVertexNonManifold(vertex) &&
               level_.GetVertexRule(vertex) == Sdc::Crease::RULE_SMOOTH &&
               std::all_of(faces.begin(), faces.end(),
                           [this](int face) { return level_.GetFaceVertices(face).size() == 4; });
    }

    /// The neighbour of `point` in a quad that is not `other`; -1 when that is none.
    int outerNeighbour(int quad, int point, int other) const
    {
        const Far::ConstIndexArray corners = level_.GetFaceVertices(quad);
        const int at = placeOf(corners, point);
        if (at == 4)
            return -1;
        const int next = corners[(at + 1) % 4], before = corners[(at + 3) % 4];
        return next == other ? before : before == other ? next : -1;
    }

    /// The point opposite of `point` in the face that is neither of three others; -1 when there is not one such face.
    int oppositeCorner(int a, int b, int c, int point) const
    {
        int found = -1, count = 0;
        for (const int face : level_.GetVertexFaces(point))
            if (face != a && face != b && face != c)
            {
                found = face;
                ++count;
            }
        if (count != 1)
            return -1;
        const Far::ConstIndexArray corners = level_.GetFaceVertices(found);
        return corners[(placeOf(corners, point) + 2) % 4];
    }

    const Far::TopologyLevel &level_;
    std::vector<uint8_t> regular_;
};

/// Which of the regular faces that share an edge or a point makes what lies on it: the first.
class Owners
{
public:
    Owners(const Far::TopologyLevel &level, const std::vector<int64_t> &slots) : level_(level), slots_(slots) {}

    bool ofEdge(int face, int i) const { return isFirst(face, level_.GetEdgeFaces(level_.GetFaceEdges(face)[i])); }
    bool ofCorner(int face, int i) const { return isFirst(face, level_.GetVertexFaces(level_.GetFaceVertices(face)[i])); }

private:
    bool isFirst(int face, const Far::ConstIndexArray &around) const
    {
        return std::none_of(around.begin(), around.end(),
                            [&](int other) { return other < face && slots_[size_t(other)] >= 0; });
    }

    const Far::TopologyLevel &level_;
    const std::vector<int64_t> &slots_;
};

/// Write -1 over the points of a grid that the face does not own.
void leaveToOthers(const Owners &owners, int face, int side, int32_t *grid)
{
    const int last = side - 1, corner[4] = {0, last, last * side + last, last * side};
    const int step[4] = {1, side, -1, -side};
    for (int i = 0; i < 4; ++i)
    {
        if (!owners.ofCorner(face, i))
            grid[corner[i]] = -1;
        for (int k = 1; !owners.ofEdge(face, i) && k < last; ++k)
            grid[corner[i] + k * step[i]] = -1;
    }
}
}  // namespace

rq::RegularPatches::RegularPatches(const Refiner &refiner, int base, int level, const int32_t *corners,
                                   const LevelSize &size)
    : steps_(level - base), points_(size.points)
{
    const Far::TopologyLevel &from = refiner.far->GetLevel(base);
    const int64_t count = from.GetNumFaces();
    const Surroundings surroundings(from);
    std::vector<int64_t> slots(size_t(count), -1), first(size_t(count), 0);
    host::parallelFor(count, kItemsPerTask, [&](int64_t face) {
        int32_t grid[kControls];
        slots[size_t(face)] = surroundings.find(int(face), grid) ? 0 : -1;
    });
    for (int64_t face = 0, sum = 0; face < count; ++face)
    {
        // Each corner becomes a face, and of each of those four a further step.
        first[size_t(face)] = sum;
        sum += int64_t(from.GetFaceVertices(int(face)).size()) << (2 * (steps_ - 1));
        if (slots[size_t(face)] < 0)
            continue;
        slots[size_t(face)] = int64_t(faces_.size());
        faces_.push_back(int32_t(face));
    }
    if (4 * int64_t(faces_.size()) < count)
        faces_.clear();
    controls_.resize(faces_.size() * kControls);
    const int width = side(), leaves = 1 << (2 * steps_);
    made_.resize(faces_.size() * size_t(width * width));
    const Owners owners(from, slots);
    host::parallelFor(int64_t(faces_.size()), kItemsPerTask / 16, [&](int64_t slot) {
        const int face = faces_[size_t(slot)];
        surroundings.find(face, controls_.data() + slot * kControls);
        int32_t *grid = made_.data() + slot * width * width;
        const int32_t *quad = corners + 4 * first[size_t(face)];
        for (int leaf = 0; leaf < leaves; ++leaf, quad += 4)
        {
            // The child at corner i has that corner at place i: two bits a step say in which half of the grid it lies.
            int row = 0, column = 0;
            for (int step = steps_ - 1; step >= 0; --step)
            {
                const int child = leaf >> (2 * step) & 3;
                row = 2 * row + kCornerRow[child] - 1;
                column = 2 * column + kCornerColumn[child] - 1;
            }
            for (int i = 0; i < 4; ++i)
                grid[(row + kCornerRow[i] - 1) * width + column + kCornerColumn[i] - 1] = quad[i];
        }
        leaveToOthers(owners, face, width, grid);
    });
}

std::vector<uint8_t> rq::RegularPatches::missingPoints() const
{
    std::vector<uint8_t> missing(isEmpty() ? 0 : size_t(points_), 1);
    host::parallelFor(int64_t(made_.size()), 64 * kItemsPerTask, [&](int64_t i) {
        if (made_[size_t(i)] >= 0)
            missing[size_t(made_[size_t(i)])] = 0;
    });
    return missing;
}

int64_t rq::RegularPatches::getMemoryUsage() const
{
    return int64_t((faces_.capacity() + controls_.capacity() + made_.capacity()) * sizeof(int32_t));
}
