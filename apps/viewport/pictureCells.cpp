#include <apps/viewport/pictureCells.h>

#include <algorithm>
#include <cmath>

#include <host/bas/clones.h>

namespace rq::viewport
{
namespace
{
constexpr int kPointsAtOnce = 512;

// Vertices are moved to a grid of this many parts of a pixel, or a finer one.
constexpr float kSnap = 1.0f / 256.0f;

// Roundings behind one another, here and in the shaders, in units of half the last place; twice as many as there are.
constexpr double kRoundings = 32.0 / (1 << 24);

struct Lanes
{
    float x[kPointsAtOnce], y[kPointsAtOnce], z[kPointsAtOnce];
};

// A point in clip space, and how far off each coordinate may be.
struct ClipPoint
{
    ClipPoint(const CellSpace &space, float px, float py, float pz)
    {
        const auto &m = space.clip;
        x = px * m[0][0] + py * m[1][0] + pz * m[2][0] + m[3][0];
        y = px * m[0][1] + py * m[1][1] + pz * m[2][1] + m[3][1];
        z = px * m[0][2] + py * m[1][2] + pz * m[2][2] + m[3][2];
        w = px * m[0][3] + py * m[1][3] + pz * m[2][3] + m[3][3];
        const float *e = space.error;
        error = std::abs(px) * e[0] + std::abs(py) * e[1] + std::abs(pz) * e[2] + e[3];
    }

    float x, y, z, w, error;
};

// Between what pixels a coordinate of the picture lies.
struct Stretch
{
    Stretch(float clip, const ClipPoint &point, float size)
    {
        const float half = 0.5f / point.w;
        const float place = (clip * half + 0.5f) * size, error = point.error * half * size + kSnap;
        least = place - error;
        greatest = place + error;
    }

    float middle() const { return 0.5f * (least + greatest); }
    float halfLength() const { return 0.5f * (greatest - least); }

    float least, greatest;
};

// The number of middles before a place, and 1; a place that is no number is before all.
int cellOf(float place, float size)
{
    const float shifted = place + 0.5f;
    const float positive = shifted > 0.0f ? shifted : 0.0f;
    return int(positive < size ? positive : size) + 1;
}

// Takes all points for such as lie in the picture; returns how many do.
HOST_CLONES int findInnerCells(const Lanes &points, int count, const CellSpace &space, Cells *cells, int *areIn)
{
    const float width = space.width, height = space.height;
    int inside = 0;
    for (int i = 0; i < count; ++i)
    {
        const ClipPoint point(space, points.x[i], points.y[i], points.z[i]);
        const Stretch across(point.x, point, width), up(point.y, point, height);
        const int isIn = (point.w + point.z > point.error) & (point.w - point.z > point.error) & (across.least > 0.0f) &
                         (across.greatest < width) & (up.least > 0.0f) & (up.greatest < height);
        areIn[i] = isIn;
        inside += isIn;
        cells[i].bounds[0] = int16_t(cellOf(across.least, width));
        cells[i].bounds[1] = int16_t(cellOf(up.least, height));
        cells[i].bounds[2] = int16_t(-cellOf(across.greatest, width));
        cells[i].bounds[3] = int16_t(-cellOf(up.greatest, height));
    }
    return inside;
}

// Of a point that is not surely in the picture.  Column and row 0 are before it, the last ones behind it; what is too near
// has a cell of its own, and so has what is too far.
Cells outerCells(const CellSpace &space, const ClipPoint &point)
{
    const bool isBefore = point.w + point.z < -point.error, isBehind = point.w - point.z < -point.error;
    if (isBefore || isBehind)
        return isBefore ? Cells{{-1, -1, 1, 1}} : Cells{{-2, -2, 2, 2}};
    const auto lastColumn = int16_t(space.width + 2.0f), lastRow = int16_t(space.height + 2.0f);
    Cells all{{0, 0, int16_t(-lastColumn), int16_t(-lastRow)}};
    if (!(point.w + point.z > point.error && point.w - point.z > point.error))
        return all;
    const Stretch across(point.x, point, space.width), up(point.y, point, space.height);
    if (across.greatest < 0.0f)
        all.bounds[2] = 0;
    else if (across.least > space.width)
        all.bounds[0] = lastColumn;
    else if (up.greatest < 0.0f)
        all.bounds[3] = 0;
    else if (up.least > space.height)
        all.bounds[1] = lastRow;
    return all;
}
}  // namespace

CellSpace::CellSpace(const PictureSpace &space) : width(float(space.width)), height(float(space.height))
{
    const auto absolute = [](BAS_Mat4d matrix) {
        for (int i = 0; i < 16; ++i)
            matrix[i / 4][i % 4] = std::abs(matrix[i / 4][i % 4]);
        return matrix;
    };
    // The shaders take the fourth coordinate in the camera's space for 1.
    BAS_Mat4d view(space.view);
    for (int row = 0; row < 4; ++row)
        view[row][3] = row == 3 ? 1.0 : 0.0;
    const BAS_Mat4d projection(space.projection), toClip = view * projection;
    const BAS_Mat4d magnitudes = absolute(view) * absolute(projection);
    for (int row = 0; row < 4; ++row)
    {
        for (int column = 0; column < 4; ++column)
            clip[row][column] = float(toClip[row][column]);
        const double *of = magnitudes[row];
        // A place in the picture suffers from an error of its coordinate and from one of the divisor.
        error[row] = float(kRoundings * (std::max({of[0], of[1], of[2]}) + of[3]));
    }
}

void findCells(const TriangleArrays &mesh, const CellSpace &space, int64_t begin, int64_t end, Cells *cells)
{
    Lanes points;
    int areIn[kPointsAtOnce];
    for (int64_t first = begin; first < end; first += kPointsAtOnce)
    {
        const int count = int(std::min<int64_t>(kPointsAtOnce, end - first));
        const float *position = mesh.positions + first * mesh.positionSize;
        for (int i = 0; i < count; ++i, position += mesh.positionSize)
        {
            points.x[i] = position[0];
            points.y[i] = position[1];
            points.z[i] = position[2];
        }
        if (findInnerCells(points, count, space, cells + first, areIn) == count)
            continue;
        for (int i = 0; i < count; ++i)
            if (!areIn[i])
                cells[first + i] = outerCells(space, ClipPoint(space, points.x[i], points.y[i], points.z[i]));
    }
}

bool missesMiddle(const TriangleArrays &mesh, const CellSpace &space, int64_t triangle, const Cells &cells)
{
    const auto &[column, row, minusLastColumn, minusLastRow] = cells.bounds;
    if (column < 1 || row < 1 || -minusLastColumn != column + 1 || -minusLastRow != row + 1)
        return false;
    // Three corners, and the first again, as seen from the middle.
    float x[4], y[4], error = 0.0f;
    for (int i = 0; i < 4; ++i)
    {
        const float *p = mesh.positions + mesh.corners[3 * triangle + i % 3] * mesh.positionSize;
        const ClipPoint point(space, p[0], p[1], p[2]);
        const Stretch across(point.x, point, space.width), up(point.y, point, space.height);
        x[i] = across.middle() - (float(column) - 0.5f);
        y[i] = up.middle() - (float(row) - 0.5f);
        error = std::max({error, across.halfLength(), up.halfLength()});
    }
    // It lies outside when it lies left of one edge and right of another, whichever way around the triangle goes.
    bool isLeft = false, isRight = false;
    for (int i = 0; i < 3; ++i)
    {
        const float side = x[i] * y[i + 1] - y[i] * x[i + 1];
        const float reach = std::abs(x[i]) + std::abs(y[i]) + std::abs(x[i + 1]) + std::abs(y[i + 1]);
        isLeft |= side > error * (reach + 2.0f * error);
        isRight |= side < -error * (reach + 2.0f * error);
    }
    return isLeft && isRight;
}
}  // namespace rq::viewport
