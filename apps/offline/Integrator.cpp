#include <apps/offline/Integrator.h>

#include <algorithm>
#include <atomic>

#include <apps/offline/Tracer.h>
#include <host/bas/Parallel.h>
#include <host/bas/Progress.h>

namespace rq::offline
{
std::unique_ptr<Film> render(const Scene &scene, const Camera &camera, const Settings &settings)
{
    // A tile of 16 x 16 pixels with 16 samples is some 5 ms of work: enough tasks to share a picture evenly.
    constexpr int kTile = 16;
    const Tracer tracer(scene, camera, settings);
    auto film = std::make_unique<Film>(settings.width, settings.height);
    film->isPlain = scene.shade() == Look::Normals;
    const int64_t across = (settings.width + kTile - 1) / kTile, down = (settings.height + kTile - 1) / kTile;
    BAS_Progress progress("Rendering");
    std::atomic<int64_t> finished{0};
    host::parallelFor(across * down, 1, [&](int64_t tile) {
        const int left = int(tile % across) * kTile, top = int(tile / across) * kTile;
        const int bottom = std::min(top + kTile, settings.height), right = std::min(left + kTile, settings.width);
        for (int y = top; y < bottom; ++y)
        {
            if (progress.interrupted(double(finished.load(std::memory_order_relaxed)) / double(across * down)))
                return;
            for (int x = left; x < right; ++x)
                film->at(x, y) = tracer.pixel(x, y);
        }
        ++finished;
    });
    if (progress.isInterrupted())
        film.reset();
    return film;
}
}  // namespace rq::offline
