#include <algorithm>
#include <unordered_map>
#include <vector>

#include <host/bas/Parallel.h>
#include <rq/data/DANumeric.h>
#include <rq/data/Values.h>
#include <rq/surface/detail/meshPiece.h>

namespace
{
using FaceList = BAS_IntrusivePtr<RQ_DANumeric<int64_t>>;

/// The faces of each material, in order.
struct Material
{
    int64_t id;
    int64_t faces = 0;
    FaceList list;
};

class Partition
{
public:
    explicit Partition(const rq::Values<int64_t> &ids) : slots_(size_t(ids.entries()))
    {
        // Neighbours mostly share a material.
        int64_t lastId = -1;
        int32_t lastSlot = -1;
        for (int64_t face = 0; face < ids.entries(); ++face)
        {
            const int64_t id = std::max<int64_t>(ids(face, 0), -1);
            if (lastSlot < 0 || id != lastId)
            {
                lastId = id;
                lastSlot = slot(id);
            }
            slots_[size_t(face)] = lastSlot;
            ++materials_[size_t(lastSlot)].faces;
        }
        fillLists();
        std::sort(materials_.begin(), materials_.end(), [](const auto &a, const auto &b) { return a.id < b.id; });
    }

    /// In increasing order of their ids.
    const std::vector<Material> &materials() const { return materials_; }

private:
    int32_t slot(int64_t id)
    {
        const auto [at, isNew] = slotOf_.try_emplace(id, int32_t(materials_.size()));
        if (isNew)
            materials_.push_back({id, 0, nullptr});
        return at->second;
    }

    void fillLists()
    {
        std::vector<int64_t *> ends;
        for (Material &material : materials_)
        {
            material.list = new RQ_DANumeric<int64_t>(material.faces, 1, RQ_TYPE_NONE);
            ends.push_back(material.list->data());
        }
        for (size_t face = 0; face < slots_.size(); ++face)
            *ends[size_t(slots_[face])]++ = int64_t(face);
    }

    std::vector<int32_t> slots_;  // of each face
    std::unordered_map<int64_t, int32_t> slotOf_;
    std::vector<Material> materials_;
};
}  // namespace

bool RQ_PrimPolygonMesh::partitionByMaterial(const RQ_DataArrayHandle &materials, BAS_Array<RQ_PrimitiveHandle> &out,
                                             BAS_Array<int64_t> *ids, bool harden) const
{
    if (!materials || !RQisNumeric(materials->getStorage()) || materials->entries() != getFaceCount() || !vertexList_)
        return false;
    const Partition partition{rq::Values<int64_t>(materials)};
    const std::vector<Material> &parts = partition.materials();
    if (ids)
    {
        ids->clear();
        for (const Material &part : parts)
            ids->push_back(part.id);
    }
    out.assign(parts.size(), nullptr);
    if (parts.size() == 1)
    {
        out[0] = harden ? this->harden() : RQ_PrimitiveHandle(const_cast<RQ_PrimPolygonMesh *>(this));
        return true;
    }
    const RQ_DataArrayHandle counts = getFaceCounts();
    host::parallelFor(int64_t(parts.size()), 1, [&](int64_t part) {
        out[size_t(part)] = makePiece(Piece::list(*this, counts, parts[size_t(part)].list), harden);
    });
    return true;
}
