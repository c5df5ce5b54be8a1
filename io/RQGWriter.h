#pragma once

#include <string>

#include <host/fwd.h>
#include <io/Message.h>

namespace rq::io
{
/// The two forms of RQG files, which hold the same.
enum class RQGForm
{
    Text,    ///< JSON, for people
    Binary,  ///< columns that can be read where they lie
};

/// Write everything that a detail holds: see docs/files.md.  `name` is what messages call the file.
///
/// Shape    vacant offsets are left out, so elements get their number in order.  Equal details give equal bytes
/// Failure  false with an error, when a primitive holds an object that cannot be saved or packed geometry is nested too deep
RQ_API bool writeRQG(const MOD_ConstDetailHandle &detail, RQGForm form, const std::string &name, std::string &bytes,
                     Messages &messages);
}  // namespace rq::io
