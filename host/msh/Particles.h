#pragma once

#include <host/msh/Primitive.h>

/// A primitive seen as a particle system: its vertices are the particles.
class MSH_Particles : public MSH_Primitive
{
public:
    explicit MSH_Particles(const MSH_Primitive &primitive) : MSH_Primitive(primitive) {}
    MSH_Particles(const MSH_Detail &detail, ELM_Offset offset) : MSH_Primitive(detail, offset) {}

    /// False when the primitive is of another type; nothing else may be asked then.
    bool isValid() const { return type() == ELM_PRIMITIVE_PARTICLES; }

    int64_t particles() const { return vertexCount(); }
};
