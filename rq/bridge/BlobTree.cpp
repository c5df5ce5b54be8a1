#include <rq/bridge/detail/BlobTree.h>

#include <algorithm>

#include <host/bas/JSONWriter.h>
#include <host/elm/PrimitiveFactory.h>

std::shared_ptr<const rq::BlobTree> rq::BlobTree::make(const MSH_Detail &detail, const RQ_MSHOffsetList &primitives)
{
    const auto tree = std::make_shared<BlobTree>();
    const int64_t count = primitives.entries();
    std::vector<ELM_Offset> offsets;
    for (int64_t i = 0; i < count; ++i)
        offsets.push_back(primitives[i]);
    std::vector<bool> isChild(offsets.size(), false);
    int64_t placements = 0;
    for (const ELM_Offset offset : offsets)
    {
        const MSH_Meta meta(detail, offset);
        BlobNode &node = tree->nodes.emplace_back();
        node.type = meta.type();
        if (!node.isExpression())
        {
            node.blob = meta.blob();
            node.placement = placements++;
            continue;
        }
        node.operation = meta.expression().operation;
        for (const ELM_Offset child : meta.expression().children.offsets)
            if (const auto found = std::lower_bound(offsets.begin(), offsets.end(), child);
                found != offsets.end() && *found == child)
            {
                node.children.push_back(int32_t(found - offsets.begin()));
                isChild[size_t(node.children.back())] = true;
            }
    }
    BlobNode whole;
    whole.type = ELM_PRIMITIVE_BLOB_EXPRESSION;
    for (size_t i = 0; i < isChild.size(); ++i)
        if (!isChild[i])
            whole.children.push_back(int32_t(i));
    tree->nodes.push_back(std::move(whole));
    return tree;
}

int64_t rq::BlobTree::memoryUsage() const
{
    int64_t bytes = int64_t(sizeof(*this) + nodes.capacity() * sizeof(BlobNode));
    for (const BlobNode &node : nodes)
        bytes += int64_t(node.children.capacity() * sizeof(int32_t));
    return bytes;
}

bool rq::BlobTree::save(BAS_JSONWriter &writer) const
{
    bool isWritten = writer.beginArray();
    const auto writeField = [&](const char *name, const auto &value) {
        isWritten = isWritten && writer.writeKeyReal(name, double(value));
    };
    for (size_t i = 0; i + 1 < nodes.size() && isWritten; ++i)
    {
        const BlobNode &node = nodes[i];
        isWritten = writer.beginMap() && writer.writeKeyString("type", ELM_PrimitiveFactory::find(node.type)->name.view());
        if (!node.isExpression())
            MSH_BlobData::describe(node.blob, writeField);
        else
            isWritten = isWritten && writer.writeKeyInt("operation", node.operation) && writer.key("children") &&
                        writer.uniformArray(node.children.data(), int64_t(node.children.size()));
        isWritten = isWritten && writer.endMap();
    }
    return isWritten && writer.endArray();
}
