#pragma once

#include <string>

#include <host/bas/Options.h>

namespace rq::io
{
/// The text of a material file of OBJ that tells what the dictionary "materials" does; empty when it tells nothing that such
/// a file can.
std::string writeMTL(const BAS_Options &materials);
}  // namespace rq::io
