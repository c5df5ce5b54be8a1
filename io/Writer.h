#pragma once

#include <string>

#include <host/fwd.h>
#include <io/Message.h>

namespace rq::io
{
/// Write a detail to a file.
///
/// Shape    what kind of file it becomes follows from the end of its name, in any case: ".rqg.json" and ".rqg" hold
///          everything (see docs/files.md), ".obj" polygons and what OBJ files can say of them
/// Failure  false with an error among the messages; a file that was there before is then as it was.  Warnings tell what the
///          file cannot hold
RQ_API bool save(const std::string &path, const MOD_ConstDetailHandle &detail, Messages &messages);

/// False, with an error, when `save` does not know what kind of file a name stands for.
RQ_API bool canSave(const std::string &path, Messages &messages);
}  // namespace rq::io
