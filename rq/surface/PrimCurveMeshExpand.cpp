#include <rq/surface/PrimCurveMesh.h>

RQ_CurveMeshHandle RQ_PrimCurveMesh::expandUniformVarying() const
{
    BAS_Array<BAS_StringHolder> expanded;
    if (uniform_)
        for (const BAS_StringHolder &name : uniform_->getNames())
            if (!vertex_ || !vertex_->hasName(name))
                expanded.push_back(name);
    if (expanded.empty())
        return const_cast<RQ_PrimCurveMesh *>(this);
    const RQ_AttributeListHandle repeated = uniform_->createIndirect(counts_.buildRepeatList());
    const RQ_AttributeListHandle rest = uniform_->removeAttributes(expanded);
    return clone(vertex_ ? vertex_->mergeNewAttributes(repeated) : repeated, rest->entries() > 0 ? rest : nullptr, detail_);
}
