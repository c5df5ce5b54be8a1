#pragma once

namespace rq::app
{
/// Make packed geometry of all details refine to instances: primitives that place the same geometry share it, with their
/// primitive attributes as those of the instances.
void bindPackedInstances();
}  // namespace rq::app
