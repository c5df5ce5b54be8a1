#pragma once

#include <vector>

#include <io/detail/GLTFMaterials.h>

namespace rq::io
{
/// Primitives of the host that become one of glTF.
struct GLTFPart
{
    int object = -1;                  ///< which text of "object"
    int material = -1;                ///< which material
    int mode = 0;                     ///< of glTF
    std::vector<int32_t> vertices{};  ///< of the host, joined as the mode says
};

/// All that glTF can hold of the primitives, parts of one object after another.  `objects` may be null.  Notes what is left
/// out, and warns of faces that are cut.
std::vector<GLTFPart> partsOf(const MOD_ConstDetailHandle &detail, const ELM_StringTuple *objects,
                              const GLTFMaterials &materials, Leftovers &leftovers);
}  // namespace rq::io
