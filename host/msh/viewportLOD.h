#pragma once

#include <string>

#include <host/plt/types.h>

// How much of a primitive that stands for other geometry a viewport draws, as a small signed number and as a name:
// -1 "unset", 0 "off", 1 "centroid", 2 "box", 3 "points", 4 "full", 5 "smooth", 6 "on-demand", 7 "own".

/// The number of a name, or of a decimal number between -16 and 15; -1 for null and anything else.
HOST_API int MSHviewportLOD(const char *name);

/// The name of a level; the number as text when it has none.
HOST_API std::string MSHviewportLOD(int level);
