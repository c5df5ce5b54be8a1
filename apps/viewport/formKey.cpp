#include <apps/viewport/Form.h>

#include <bit>

#include <host/bas/hashBytes.h>

namespace rq::viewport
{
namespace
{
// A running hash of data ids; an array without an id makes the whole worthless.
class Key
{
public:
    Key() = default;
    explicit Key(const Preparation &preparation)
    {
        add(uint64_t(preparation.shading));
        add(std::bit_cast<uint64_t>(preparation.cuspDegrees));
        add(uint64_t(preparation.subdivisionLevel + 1));
    }

    void add(uint64_t word) { hash_ = host::hashWord(hash_, word); }
    void add(const RQ_DataArrayHandle &array)
    {
        const int64_t id = array ? array->getDataId() : 0;
        valid_ = valid_ && id >= 0;
        add(uint64_t(id));
    }
    void spoil() { valid_ = false; }

    uint64_t value() const { return valid_ ? hash_ | 1 : 0; }

private:
    uint64_t hash_ = 0x5CE7E;
    bool valid_ = true;
};
}  // namespace

uint64_t topologyKey(const RQ_PrimPolygonMesh &mesh)
{
    Key key;
    const RQ_CountArray &counts = mesh.getFaceCountArray();
    key.add(uint64_t(counts.entries()));
    key.add(uint64_t(counts.isUniform() ? counts.getMaxCount() : 0));
    if (!counts.isUniform())
        key.add(counts.rawOffsets());
    key.add(mesh.getVertexList());
    return key.value();
}

uint64_t meshKey(const RQ_PrimPolygonMesh &mesh, const Preparation &preparation)
{
    const uint64_t topology = topologyKey(mesh);
    if (topology == 0)
        return 0;
    Key key(preparation);
    key.add(topology);
    RQ_Owner owner;
    for (const char *name : {"P", "N"})
    {
        key.add(mesh.findAttribute(name, owner, 0));
        key.add(uint64_t(owner));
    }
    key.add(uint64_t(std::bit_cast<uintptr_t>(mesh.faceSetMap().get())));
    return key.value();
}

uint64_t wholeKey(const RQ_Primitive &primitive, const RQ_DataArrayHandle &topology, const Preparation &preparation,
                  uint64_t options)
{
    Key key(preparation);
    key.add(options);
    key.add(topology);
    uint64_t hash = 0;
    if (!primitive.getDataIdHash(hash, 0, false))
        key.spoil();
    key.add(hash);
    return key.value();
}
}  // namespace rq::viewport
