#pragma once

#include <rq/api.h>

namespace rq::io
{
/// Let packed geometry come from files: what "PackedDisk" and "PackedDiskSequence" name is read as `load` reads it.
///
/// Failure  a file that cannot be read, or that places itself, be it through others, is missing, with the reason.  Warnings
///          go to `BAS_Diagnostics`
/// Threads  call it before such geometry is asked for; files may then be read by any thread
RQ_API void registerDetailFiles();
}  // namespace rq::io
