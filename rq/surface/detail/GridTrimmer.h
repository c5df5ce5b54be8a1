#pragma once

#include <map>
#include <vector>

#include <host/bas/Vector.h>

namespace rq
{
/// Closed polygons in the parameter plane of a surface; the last point connects to the first.
using TrimLoops = std::vector<std::vector<BAS_Vec2d>>;

/// The faces that trim loops leave of a grid.
///
/// Shape  face i has counts[i] corners; a corner below columns * rows is the crossing of a line of u and one of v, and
///        behind those stand the nodes
struct TrimmedFaces
{
    std::vector<int32_t> counts;
    std::vector<int64_t> corners;
    std::vector<BAS_Vec2d> nodes;
};

/// Cuts the cells of a grid by loops: what lies to the left of an outer loop is kept.
///
/// Loops are cut where they cross the lines of the grid, which leaves chains that run through one cell each.  A cell with
/// chains is kept along their left sides: from where one leaves the cell its border is followed, counter-clockwise, to where
/// the next enters (Weiler, Atherton, Hidden surface removal using polygon area sorting, 1977).  A cell without is kept or
/// not as a whole, by how often the loops wind around its middle.  Neighbours share the points on their common border.
///
/// Shape    points on, or within a hundred-thousandth of a cell of, a line of the grid count as on it; what lies outside of
///          the grid is moved to its border.  The largest loop being clockwise, everything outside of it is kept
/// Failure  loops that cross themselves or each other give faces that may overlap there
class GridTrimmer
{
public:
    /// The lines, which rise; where a direction wraps the last one is where the first is.
    GridTrimmer(std::vector<double> us, std::vector<double> vs, bool wrapsU, bool wrapsV);

    /// Parameters to add to the lines of u so that every loop crosses a line: loops inside of a single cell could not be
    /// followed.
    static std::vector<double> missingLines(const std::vector<double> &us, const std::vector<double> &vs,
                                            const TrimLoops &loops);

    TrimmedFaces trim(const TrimLoops &loops);

private:
    /// A point of a loop, and the lines that it lies on, -1 for none.
    struct Node
    {
        BAS_Vec2d at;
        int64_t lineU, lineV;
        int64_t corner;

        bool isOnLine() const { return lineU >= 0 || lineV >= 0; }
    };
    using Chain = std::vector<Node>;  // through one cell, from border to border

    /// Where a loop passes the middle of a row of cells, and how the winding changes behind it.
    struct Passing
    {
        double u;
        int change;
    };

    int64_t cellsU() const { return int64_t(us_.size()) - 1; }
    int64_t cellsV() const { return int64_t(vs_.size()) - 1; }
    int64_t crossing(int64_t i, int64_t j) const;

    Node makeNode(const BAS_Vec2d &point) const;
    std::vector<Node> cutAtLines(const std::vector<BAS_Vec2d> &loop);
    void addLoop(const std::vector<Node> &nodes);
    void addPassing(const Node &a, const Node &b, int64_t row);
    double perimeterPlace(int64_t cell, const Node &node) const;
    void keepAlong(int64_t cell, const std::vector<Chain> &chains);
    void emit(std::vector<int64_t> &corners);

    std::vector<double> us_, vs_;
    bool wrapsU_, wrapsV_;
    std::map<int64_t, std::vector<Chain>> chains_;  // by cell
    std::vector<std::vector<Passing>> passings_;    // by row
    TrimmedFaces faces_;
};
}  // namespace rq
