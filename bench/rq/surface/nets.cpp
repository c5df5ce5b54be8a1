#include <cmath>

#include <bench/Job.h>
#include <rq/data/DANumeric.h>
#include <rq/data/Values.h>
#include <rq/surface/PrimPatchMesh.h>

namespace
{
// A million points of a bicubic B-spline.
constexpr int64_t kVertices = 128, kSpans = kVertices - 3, kSteps = 8, kSide = kSpans * kSteps + 1;

std::vector<float> netPositions()
{
    std::vector<float> positions;
    for (int64_t j = 0; j < kVertices; ++j)
        for (int64_t i = 0; i < kVertices; ++i)
            positions.insert(positions.end(),
                             {float(i), float(j), float(std::sin(0.3 * double(i)) * std::cos(0.2 * double(j)))});
    return positions;
}

/// A net with "P", and with "N" as an attribute like any other if it is not to be computed.
RQ_PrimitiveHandle makeNet(bool normals)
{
    const std::vector<float> positions = netPositions();
    const int64_t vertices = kVertices * kVertices;
    RQ_AttributeListHandle list(new RQ_AttributeList(nullptr));
    list = list->addAttribute("P", new RQ_DANumeric<float>(positions.data(), vertices, 3, RQ_TYPE_POINT), false);
    if (!normals)
        list = list->addAttribute("N", new RQ_DANumeric<float>(positions.data(), vertices, 3, RQ_TYPE_NORMAL), false);
    const BAS_IntrusivePtr<RQ_PrimPatchMesh> net(new RQ_PrimPatchMesh);
    const RQ_NetDirection direction{RQ_BASIS_BSPLINE, 4, false, kVertices, {}};
    net->init(direction, direction, list);
    return net;
}

RQ_PolygonMeshHandle refined(const RQ_PrimitiveHandle &net)
{
    return static_cast<const RQ_PrimPatchMesh &>(*net).refineToPolygonMesh(nullptr);
}

/// Weights, and slopes, of the four vertices at the steps of a span, its end included.
struct Weights
{
    float values[kSteps + 1][4], slopes[kSteps + 1][4];

    Weights()
    {
        for (int64_t step = 0; step <= kSteps; ++step)
        {
            const float t = float(step) / float(kSteps), s = 1.0f - t;
            const float value[] = {s * s * s / 6, (3 * t * t * t - 6 * t * t + 4) / 6, (3 * s * s * s - 6 * s * s + 4) / 6,
                                   t * t * t / 6};
            const float slope[] = {-s * s / 2, (3 * t * t - 4 * t) / 2, -(3 * s * s - 4 * s) / 2, t * t / 2};
            std::copy_n(value, 4, values[step]);
            std::copy_n(slope, 4, slopes[step]);
        }
    }
};

/// The plain loop: sixteen products a value.  Points, normals and quads as ours.
struct Plain
{
    std::vector<float> points = std::vector<float>(size_t(3 * kSide * kSide)), normals = points;
    std::vector<int32_t> quads = std::vector<int32_t>(size_t(4 * (kSide - 1) * (kSide - 1)));

    void run(const std::vector<float> &net, const Weights &weights)
    {
        for (int64_t j = 0; j < kSide; ++j)
            for (int64_t i = 0; i < kSide; ++i)
            {
                const int64_t spanU = std::min(i / kSteps, kSpans - 1), spanV = std::min(j / kSteps, kSpans - 1);
                const int64_t u = i - spanU * kSteps, v = j - spanV * kSteps;
                float point[3] = {}, alongU[3] = {}, alongV[3] = {};
                for (int64_t b = 0; b < 4; ++b)
                    for (int64_t a = 0; a < 4; ++a)
                        for (int axis = 0; axis < 3; ++axis)
                        {
                            const float value = net[size_t(3 * ((spanV + b) * kVertices + spanU + a) + axis)];
                            point[axis] += weights.values[u][a] * weights.values[v][b] * value;
                            alongU[axis] += weights.slopes[u][a] * weights.values[v][b] * value;
                            alongV[axis] += weights.values[u][a] * weights.slopes[v][b] * value;
                        }
                const float normal[] = {alongU[1] * alongV[2] - alongU[2] * alongV[1],
                                        alongU[2] * alongV[0] - alongU[0] * alongV[2],
                                        alongU[0] * alongV[1] - alongU[1] * alongV[0]};
                const float length = std::sqrt(normal[0] * normal[0] + normal[1] * normal[1] + normal[2] * normal[2]);
                for (int axis = 0; axis < 3; ++axis)
                {
                    points[size_t(3 * (j * kSide + i) + axis)] = point[axis];
                    normals[size_t(3 * (j * kSide + i) + axis)] = normal[axis] / length;
                }
            }
        int32_t *out = quads.data();
        for (int64_t j = 0; j + 1 < kSide; ++j)
            for (int64_t i = 0; i + 1 < kSide; ++i)
                for (const int64_t corner : {i, i + 1, i + 1 + kSide, i + kSide})
                    *out++ = int32_t(j * kSide + corner);
    }
};

double difference(const RQ_PolygonMeshHandle &mesh)
{
    Plain plain;
    plain.run(netPositions(), Weights());
    const rq::Values<float> points(mesh->getShared()->get("P")), normals(mesh->getShared()->get("N"));
    double error = points.size() == int64_t(plain.points.size()) ? 0.0 : 1e30;
    for (int64_t i = 0; i < points.size() && error < 1e30; ++i)
        error = std::max({error, double(std::abs(points[i] - plain.points[size_t(i)])),
                          double(std::abs(normals[i] - plain.normals[size_t(i)]))});
    return error;
}

void addRow(const char *mesh, const char *who, int threads, int values, std::function<bench::Work()> prepare)
{
    const double points = double(kSide * kSide), written = points * (4.0 * values + 16.0);
    bench::add({"net-to-mesh", mesh, who, threads, points, double(kVertices * kVertices) * 4.0 * values + written, false,
                std::move(prepare)});
}

const bool registered = [] {
    for (const int threads : {1, 2})
    {
        addRow("bicubic1M", "ours", threads, 6, [] {
            const RQ_PrimitiveHandle net = makeNet(true);
            return bench::Work{[net] { return bench::keep(refined(net)); }, [net] { return difference(refined(net)); }};
        });
        addRow("bicubic1M-6values", "ours", threads, 6, [] {
            const RQ_PrimitiveHandle net = makeNet(false);
            return bench::Work{[net] { return bench::keep(refined(net)); }, [] { return 0.0; }};
        });
    }
    addRow("bicubic1M", "prototype", 1, 6, [] {
        const auto net = std::make_shared<std::vector<float>>(netPositions());
        const auto plain = std::make_shared<Plain>();
        return bench::Work{[=] {
                               plain->run(*net, Weights());
                               return std::shared_ptr<void>();
                           },
                           [] { return 0.0; }};
    });
    return true;
}();
}  // namespace
