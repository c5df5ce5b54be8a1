// Lend the library arrays that your application has already, and draw what it makes of them, without a copy on the way.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include <host/mod/Edit.h>
#include <rq/bridge/MSHDetail.h>
#include <rq/prim/RefineList.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace
{
/// The application's own geometry: a torus of quads.
struct Torus
{
    static constexpr int kAround = 96, kAcross = 48;
    std::vector<float> positions;
    std::vector<int32_t> corners;

    Torus()
    {
        for (int i = 0; i < kAround; ++i)
            for (int j = 0; j < kAcross; ++j)
            {
                const float u = 6.2831853f * float(i) / kAround, v = 6.2831853f * float(j) / kAcross;
                const float r = 1.0f + 0.45f * std::cos(v), y = r * std::sin(u), z = 0.45f * std::sin(v);
                positions.insert(positions.end(), {r * std::cos(u), 0.7f * y - 0.7f * z, 0.7f * y + 0.7f * z});
                const int nextI = (i + 1) % kAround, nextJ = (j + 1) % kAcross;
                for (const int corner : {i * kAcross + j, nextI * kAcross + j, nextI * kAcross + nextJ, i * kAcross + nextJ})
                    corners.push_back(corner);
            }
    }
};

/// A snapshot of a detail whose positions and corners stay where they are.  Null, with a message, when that fails.
MOD_ConstDetailHandle lend(const Torus &torus, int &released)
{
    MOD_Edit edit{MOD_DetailHandle()};
    const int64_t points = int64_t(torus.positions.size()) / 3, corners = int64_t(torus.corners.size());
    const auto release = [&released] { ++released; };
    if (edit.appendPoints(points) &&
        edit.adoptPolygons(4, true, ELM_STORAGE_INT32, torus.corners.data(), sizeof(int32_t), corners, release) &&
        edit.adopt(ELM_OWNER_POINT, ELM_POSITION_NAME, ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT, torus.positions.data(),
                   3 * sizeof(float), points, release))
        return edit.commit();
    std::fprintf(stderr, "%s\n", edit.message().c_str());
    return {};
}

/// A picture of characters, seen along -z.
class Picture
{
public:
    void draw(const float *a, const float *b, const float *c)
    {
        const float ux = b[0] - a[0], uy = b[1] - a[1], uz = b[2] - a[2], vx = c[0] - a[0], vy = c[1] - a[1],
                    vz = c[2] - a[2];
        const float nx = uy * vz - uz * vy, ny = uz * vx - ux * vz, nz = ux * vy - uy * vx;
        if (nz <= 0.0f)
            return;
        const float light = std::max(0.0f, (0.5f * nx + 0.6f * ny + 0.62f * nz) / std::sqrt(nx * nx + ny * ny + nz * nz));
        for (int row = 0; row < kRows; ++row)
            for (int column = 0; column < kColumns; ++column)
            {
                const float x = 1.6f * (2.0f * (float(column) + 0.5f) / kColumns - 1.0f) - a[0];
                const float y = 1.6f * (1.0f - 2.0f * (float(row) + 0.5f) / kRows) - a[1];
                const float s = (x * vy - y * vx) / nz, t = (ux * y - uy * x) / nz, z = a[2] + s * uz + t * vz;
                if (s < 0.0f || t < 0.0f || s + t > 1.0f || z <= depth_[row * kColumns + column])
                    continue;
                depth_[row * kColumns + column] = z;
                text_[row * kColumns + column] = ".:-=+*#%@"[std::min(8, int(9.0f * light))];
            }
    }
    void print() const
    {
        for (int row = 0; row < kRows; ++row)
            std::printf("%s\n", text_.substr(row * kColumns, kColumns).c_str());
    }

private:
    static constexpr int kColumns = 64, kRows = 32;
    std::string text_ = std::string(kColumns * kRows, ' ');
    std::vector<float> depth_ = std::vector<float>(kColumns * kRows, -1e30f);
};

void draw(const RQ_PrimPolygonMesh &mesh, const Torus &torus, Picture &picture)
{
    RQ_DataArrayHandle keepPoints, keepCorners;
    const float *points = mesh.getShared()->get("P")->getArray<float>(keepPoints);
    const int32_t *corners = mesh.getVertexList()->getArray<int32_t>(keepCorners);
    std::printf("%d faces, read in place: %s\n", int(mesh.getFaceCount()),
                points == torus.positions.data() && corners == torus.corners.data() ? "yes" : "no");
    for (int64_t face = 0; face < mesh.getFaceCount(); ++face)
    {
        const int32_t *corner = corners + mesh.getVertexOffset(face);
        for (int64_t i = 2; i < mesh.getFaceCountArray().getCount(face); ++i)
            picture.draw(points + 3 * corner[0], points + 3 * corner[i - 1], points + 3 * corner[i]);
    }
}
}  // namespace

int main()
{
    const Torus torus;
    Picture picture;
    int released = 0;
    {
        RQ_RefineList primitives;
        primitives.refine(RQ_MSHDetail::makeDetail(lend(torus, released)).get(), nullptr);
        for (int i = 0; i < primitives.entries(); ++i)
            if (const auto *mesh = dynamic_cast<const RQ_PrimPolygonMesh *>(primitives.getPrimitive(i).get()))
                draw(*mesh, torus, picture);
    }
    picture.print();
    std::printf("arrays given back: %d\n", released);
    return 0;
}
