#pragma once

#include <memory>

#include <rq/subd/detail/cage.h>

namespace rq
{
struct Refiner;

struct RefinerDeleter
{
    void operator()(Refiner *refiner) const;
};
using RefinerHandle = std::unique_ptr<Refiner, RefinerDeleter>;

/// The topology of a cage, not refined yet.  Null when the evaluation refuses it.
RefinerHandle makeRefiner(const Cage &cage);

/// A refiner of its own of the same topology, which must outlive it.
RefinerHandle copyRefiner(const Refiner &base);

/// The faces of the cage that have no surface: the holes, and what a boundary without interpolation leaves out.
std::vector<int32_t> holesOf(const Refiner &refiner);

/// Bytes that the levels of a refiner take, about.
int64_t memoryOf(const Refiner &refiner);
}  // namespace rq
