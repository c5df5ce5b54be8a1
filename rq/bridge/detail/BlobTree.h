#pragma once

#include <memory>
#include <vector>

#include <host/msh/Meta.h>
#include <rq/bridge/MSHOffsetList.h>

class BAS_JSONWriter;

namespace rq
{
/// A blob, or an expression of others.
struct BlobNode
{
    ELM_PrimitiveTypeId type = ELM_PRIMITIVE_NONE;
    MSH_BlobData blob{};               ///< of a blob
    int64_t placement = 0;             ///< of a blob: its row among all blobs
    int32_t operation = MSH_BLOB_SUM;  ///< of an expression
    std::vector<int32_t> children{};   ///< of an expression: numbers of nodes before it

    bool isExpression() const { return type == ELM_PRIMITIVE_BLOB_EXPRESSION; }
};

/// The metaballs of one run, independent of the detail that they were read from: each node after its children, and behind
/// all of them the sum of those that are no expression's child.
///
/// Expressions combine those of their children that are of the run: what is hidden takes no part.
///
/// Threads  immutable once made
struct BlobTree
{
    std::vector<BlobNode> nodes;

    /// `primitives` are metaballs in increasing order.
    static std::shared_ptr<const BlobTree> make(const MSH_Detail &detail, const RQ_MSHOffsetList &primitives);

    int64_t memoryUsage() const;

    /// Write an array of the nodes but the last.
    bool save(BAS_JSONWriter &writer) const;
};
}  // namespace rq
