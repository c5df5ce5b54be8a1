#pragma once

#include <array>

#include <host/plt/types.h>

/// Why attribute values were copied.
enum BAS_CopyCause
{
    BAS_COPY_CONVERT,  ///< another storage was asked for
    BAS_COPY_GATHER,   ///< values were read through an indirection or from scattered pages
    BAS_COPY_HARDEN,   ///< an owning copy was asked for
    BAS_COPY_CAUSES
};

/// Bytes of attribute values that the library copied, by cause, for the whole process.
///
/// Threads  every operation is safe from any thread
class HOST_API BAS_CopyCounter
{
public:
    using Totals = std::array<int64_t, BAS_COPY_CAUSES>;

    static void add(BAS_CopyCause cause, int64_t bytes);
    static Totals totals();
    static const char *name(BAS_CopyCause cause);
};
