#include <embree3/rtcore.h>

#include <bench/drawnJobs.h>

namespace
{
// Positions are read 16 bytes at a time, so there is room behind the last.
struct Triangles
{
    std::vector<float> positions;
    std::vector<int32_t> corners;

    explicit Triangles(int cells)
    {
        bench::QuadMesh quads(cells);
        for (int64_t quad = 0; quad < quads.faces(); ++quad)
        {
            const int32_t *q = quads.indices.data() + 4 * quad;
            corners.insert(corners.end(), {q[0], q[1], q[2], q[0], q[2], q[3]});
        }
        positions = std::move(quads.positions);
        positions.push_back(0.0f);
    }
};

using Device = std::shared_ptr<RTCDeviceTy>;

/// A scene of the triangles, ready for rays.
std::shared_ptr<RTCSceneTy> build(const Device &device, const Triangles &triangles)
{
    const std::shared_ptr<RTCSceneTy> scene(rtcNewScene(device.get()), rtcReleaseScene);
    rtcSetSceneBuildQuality(scene.get(), RTC_BUILD_QUALITY_MEDIUM);
    const RTCGeometry geometry = rtcNewGeometry(device.get(), RTC_GEOMETRY_TYPE_TRIANGLE);
    rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, triangles.positions.data(), 0, 12,
                               triangles.positions.size() / 3);
    rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, triangles.corners.data(), 0, 12,
                               triangles.corners.size() / 3);
    rtcCommitGeometry(geometry);
    rtcAttachGeometry(scene.get(), geometry);
    rtcReleaseGeometry(geometry);
    rtcCommitScene(scene.get());
    return scene;
}

/// 0 when a ray from above meets the mesh.
double errorOf(const Device &device, const Triangles &triangles)
{
    const std::shared_ptr<RTCSceneTy> scene = build(device, triangles);
    RTCIntersectContext context;
    rtcInitIntersectContext(&context);
    RTCRayHit ray{};
    ray.ray.org_x = ray.ray.org_y = 10.3f;
    ray.ray.org_z = 1000.0f;
    ray.ray.dir_z = -1.0f;
    ray.ray.tfar = 1e6f;
    ray.ray.mask = ~0u;
    ray.hit.geomID = RTC_INVALID_GEOMETRY_ID;
    rtcIntersect1(scene.get(), &context, &ray);
    return ray.hit.geomID == RTC_INVALID_GEOMETRY_ID ? 1.0 : 0.0;
}

// What whoever traces rays pays in any case, to see beside it what we cost.
void addBuild(const char *job, int threads)
{
    bench::addDrawn(job, "embree, medium build", 1000, threads, [threads] {
        const Device device(rtcNewDevice(threads == 1 ? "threads=1" : "threads=2"), rtcReleaseDevice);
        const auto triangles = std::make_shared<Triangles>(1000);
        return bench::Work{[=] { return std::shared_ptr<void>(build(device, *triangles)); },
                           [=] { return errorOf(device, *triangles); }};
    });
}

const bool registered = [] {
    for (const int threads : {1, 2})
        for (const char *job : {bench::kTrianglesJob, bench::kNormalsJob})
            addBuild(job, threads);
    return true;
}();
}  // namespace
