#pragma once

#include <host/bas/Options.h>
#include <io/Message.h>
#include <io/detail/OBJBlock.h>

namespace rq::io
{
/// Read the material files that an OBJ file names and that lie beside it, into the dictionary "materials".  What a name
/// means in the first file that has it, counts.  Missing files are warned of.
BAS_Options readOBJMaterials(const OBJSource &source, const std::vector<OBJBlock> &blocks, Messages &messages);
}  // namespace rq::io
