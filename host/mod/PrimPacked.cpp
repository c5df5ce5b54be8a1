#include <host/mod/PrimPacked.h>

const MOD_PackedPayload *MOD_PrimPacked::packedPayload() const
{
    const ELM_PrimitiveDefinition *definition = ELM_PrimitiveFactory::find(type());
    if (!definition || !definition->isPacked)
        return nullptr;
    return dynamic_cast<const MOD_PackedPayload *>(detail().payload(offset()));
}

BAS_Mat4d MOD_PrimPacked::fullTransform() const
{
    BAS_Mat4d toPivot;
    toPivot.setTranslation(-pivot());
    return toPivot * placement();
}
