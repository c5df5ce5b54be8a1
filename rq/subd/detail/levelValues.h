#pragma once

#include <cstdint>

namespace rq
{
struct Refiner;
struct StepPoints;

/// How many points and faces a refined level has.
struct LevelSize
{
    int64_t points;
    int64_t faces;
};

/// The size of the level that one more step makes of the refiner's level `level`, which need not exist.
LevelSize sizeOfChild(const Refiner &refiner, int level);

/// Refine to `level`, every level with the neighbourhoods that `interpolateLevel` and `childPoints` read.  With face-varying
/// data one level more, with nothing but its values.
void refineUniformly(Refiner &refiner, int level, bool faceVarying);

/// Values of the points that the next step makes of level `level`, all or `only` some: `tuple` components a point.
///
/// Shape    a child level numbers the children of points first, then of faces, then of edges, in their order
/// Threads  runs in parallel over points
void interpolateLevel(const Refiner &refiner, int level, const float *from, int64_t tuple, float *to,
                      const StepPoints *only = nullptr);
void interpolateLevel(const Refiner &refiner, int level, const double *from, int64_t tuple, double *to,
                      const StepPoints *only = nullptr);

/// The points of the corners of the faces that the next step makes of level `level`: four a face, or three under the Loop
/// scheme.  Children of a face follow each other, that of corner i with the corner at place i (of faces that are no quads:
/// at place 0); under the Loop scheme the middle comes last.
void childPoints(const Refiner &refiner, int level, int32_t *points);

/// For each point of the child level a point of this one that lies next to it.
void childSources(const Refiner &refiner, int level, int32_t *sources);
}  // namespace rq
