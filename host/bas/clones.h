#pragma once

// Put before a plain loop function: it is compiled for processors with and without wide integer vectors, and the loader
// picks.  Results have the same bits either way.  The thread sanitizer is not ready when the loader asks, and clang does not
// know the attribute on templates.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_THREAD__)
#define HOST_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define HOST_CLONES
#endif
