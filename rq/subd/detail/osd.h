#pragma once

// OpenSubdiv's headers are heavy: only the few sources that talk to it include this.
#include <memory>

#include <opensubdiv/far/topologyRefiner.h>

namespace rq
{
namespace Far = OpenSubdiv::Far;
namespace Sdc = OpenSubdiv::Sdc;

/// Refined topology; the unrefined one lends itself to any number of refined ones.
struct Refiner
{
    std::unique_ptr<Far::TopologyRefiner> far;
};
}  // namespace rq
