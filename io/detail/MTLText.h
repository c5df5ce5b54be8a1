#pragma once

#include <host/bas/Options.h>
#include <io/detail/Source.h>

namespace rq::io
{
/// Read the text of a material file of OBJ into the dictionary "materials"; names that it has already stay what they are.
///
/// A coat is told by "Pr", or else by a highlight "Ks" that is not black: its exponent "Ns" as roughness (2 / (Ns +
/// 2))^(1/4). Lines that cannot be read, unknown words and pictures are warned of, once each.
void readMTL(const Source &source, BAS_Options &materials);
}  // namespace rq::io
