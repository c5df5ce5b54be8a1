#pragma once

#include <fmt/format.h>

/// A growable text buffer with room for 2000 bytes before it allocates.
using BAS_WorkBuffer = fmt::basic_memory_buffer<char, 2000>;
