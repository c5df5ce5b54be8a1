#include <apps/nameDiagnostics.h>

#include <cstdio>

#include <fmt/format.h>

#include <host/bas/Diagnostics.h>

namespace rq::app
{
namespace
{
std::string named;

void warn(std::string_view message) { fmt::print(stderr, "{}: warning: {}\n", named, message); }
}  // namespace

void nameDiagnostics(const std::string &file)
{
    named = file == "-" ? "<stdin>" : file;
    BAS_Diagnostics::setSink(&warn);
}
}  // namespace rq::app
