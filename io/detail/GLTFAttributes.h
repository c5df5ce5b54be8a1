#pragma once

#include <array>
#include <string>
#include <vector>

#include <io/detail/GLTFBuffer.h>
#include <io/detail/GLTFVertices.h>
#include <io/detail/Leftovers.h>
#include <io/detail/gltfRole.h>

namespace rq::io
{
/// The attributes of a detail that vertices of glTF can have.
class GLTFAttributes
{
public:
    /// Choose them, and note them as held: those of points, and with `hasCorners` those of vertices and `primitiveColors`,
    /// which may be null.
    GLTFAttributes(const MSH_Detail &detail, bool hasCorners, const ELM_Attribute *primitiveColors, Leftovers &leftovers);

    /// Those that not all corners of a point have in common.
    std::vector<const ELM_Attribute *> ofCorners() const;

    /// Append the values of all vertices, and note the accessors.  Warns of values that had to be changed.
    void write(const GLTFVertices &vertices, GLTFBuffer &buffer);

    /// Write the map of accessors that every primitive has.
    void writeMap(BAS_JSONWriter &json) const;

private:
    using Role = GLTFRole;
    struct Planned
    {
        std::string semantic;
        Role role;
        const ELM_Attribute *attribute;
        int components;
        const ELM_Attribute *alpha = nullptr;
        int accessor = -1;
    };

    void plan(const ELM_Attribute &attribute);
    bool isPlanned(const std::string &semantic) const;
    GLTFType typeFor(const Planned &planned) const;
    void writeReals(Planned &planned, const GLTFVertices &vertices, GLTFBuffer &buffer);
    void writeIntegers(Planned &planned, GLTFType type, const GLTFVertices &vertices, GLTFBuffer &buffer);
    void mend(Role role, float *row, int components);
    void warnOfMended(const Planned &planned);

    const MSH_Detail &detail_;
    Leftovers &leftovers_;
    std::vector<Planned> planned_;
    int64_t mended_ = 0;
};
}  // namespace rq::io
