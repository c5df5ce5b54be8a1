#pragma once

#include <string>

namespace rq::app
{
/// From now on, let warnings of the library bear the name of the file that is worked on, as those of readers do.
void nameDiagnostics(const std::string &file);
}  // namespace rq::app
