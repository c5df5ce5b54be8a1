#pragma once

#include <host/msh/Detail.h>

/// True when two snapshots have the same elements connected in the same way, whether or not one was made from the other.
HOST_API bool MSHhasSameTopology(const MSH_Detail &a, const MSH_Detail &b);
