#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include <bench/Job.h>
#include <bench/faceMeshes.h>

namespace bench
{
using FaceMeshPtr = std::shared_ptr<const FaceMesh>;

/// Makes the input of a job from a mesh, and does it.
using FaceWork = std::function<Work(const FaceMeshPtr &)>;

/// Who does a job on a mesh, and whether that is worth timing in fresh memory.
struct Doer
{
    const char *who;
    int threads = 1;
    bool cold = false;
};

/// What nanoseconds are counted over, and the job's own input read once and output written once.
struct Traffic
{
    double items;
    double bytes;
};

inline void addFaceJob(const char *job, const char *mesh, const Doer &doer, Traffic (*trafficOf)(const FaceMesh &),
                       FaceWork prepare)
{
    const auto make = [=, name = std::string(mesh)] {
        const FaceMeshPtr input = faceMesh(name);
        Work work = prepare(input);
        const Traffic traffic = trafficOf(*input);
        work.items = traffic.items;
        work.bytes = traffic.bytes;
        return work;
    };
    add({job, mesh, doer.who, doer.threads, 0.0, 0.0, doer.cold, make});
}

/// What every job on faces reads: positions, vertex list and, where faces differ, their starts.
inline double readOnce(const FaceMesh &mesh)
{
    const bool even = int64_t(mesh.corners.size()) == mesh.count(0) * mesh.faces();
    return 12.0 * double(mesh.points()) + 4.0 * double(mesh.corners.size()) + (even ? 0.0 : 4.0 * double(mesh.faces()));
}

/// How far the triangles' areas, seen from above and taken as absolute values, are from those of the faces, and their number
/// from what it should be, whichever is worse.  `positionOf(i)` gives x and y of corner i, three to a triangle.
template <class PositionOf> double areaError(const FaceMesh &mesh, int64_t corners, PositionOf &&positionOf)
{
    double sum = 0.0;
    for (int64_t at = 0; at + 3 <= corners; at += 3)
    {
        const std::array<double, 2> a = positionOf(at), b = positionOf(at + 1), c = positionOf(at + 2);
        sum += 0.5 * std::abs((b[0] - a[0]) * (c[1] - a[1]) - (c[0] - a[0]) * (b[1] - a[1]));
    }
    const double triangles = double(mesh.triangles());
    return std::max(std::abs(sum - mesh.area) / mesh.area, std::abs(double(corners) / 3.0 - triangles) / triangles);
}

/// The same for corners that are points of the mesh.
template <class PointOf> double areaErrorOfPoints(const FaceMesh &mesh, int64_t corners, PointOf &&pointOf)
{
    return areaError(mesh, corners, [&](int64_t i) {
        const float *position = mesh.position(pointOf(i));
        return std::array<double, 2>{position[0], position[1]};
    });
}

/// Enter the rows of triangulations, for each of some meshes.  Written: three corners, their source and the source face of
/// every triangle.
inline void addTriangulation(std::initializer_list<const char *> meshes, const Doer &doer, const FaceWork &prepare)
{
    for (const char *mesh : meshes)
        addFaceJob(
            "convex3", mesh, doer,
            [](const FaceMesh &input) {
                return Traffic{double(input.triangles()), readOnce(input) + 28.0 * double(input.triangles())};
            },
            prepare);
}

/// Enter a row of cutting faces of five corners and more; its items are their corners.
inline void addLargeFaces(const char *job, const Doer &doer, const FaceWork &prepare)
{
    addFaceJob(
        job, "ngons", doer,
        [](const FaceMesh &input) {
            return Traffic{double(input.corners.size()), readOnce(input) + 28.0 * double(input.triangles())};
        },
        prepare);
}

/// A job that is too short to be timed alone is done so many times over; its item is one turn.
constexpr int kTurns = 1000;

/// Enter a job on a mesh of 100 quads, done many times over (see `repeated`).
inline void addSmallJob(const char *job, const Doer &doer, FaceWork prepare)
{
    addFaceJob(
        job, "quads100", doer,
        [](const FaceMesh &) {
            return Traffic{double(kTurns), 0.0};
        },
        std::move(prepare));
}

template <class Turn> std::function<std::shared_ptr<void>()> repeated(Turn &&turn)
{
    return [turn] {
        for (int i = 1; i < kTurns; ++i)
            turn();
        return std::shared_ptr<void>(turn());
    };
}

/// Hands out one fresh copy of an input for every turn, for peers that work in place.
template <class T> class Copies
{
public:
    /// `make` is called once for the check and once for every turn.
    template <class Make> explicit Copies(Make &&make)
    {
        for (int i = 0; i <= kRepetitions; ++i)
            waiting_.push_back(make());
    }

    std::shared_ptr<T> take()
    {
        std::shared_ptr<T> copy = std::move(waiting_.back());
        waiting_.pop_back();
        return copy;
    }

private:
    std::vector<std::shared_ptr<T>> waiting_;
};
}  // namespace bench
