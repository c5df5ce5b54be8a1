#include <rq/subd/SubdTopology.h>

#include <new>

#include <host/bas/Published.h>
#include <rq/subd/detail/topologyData.h>

namespace
{
RQ_SubdTopologyHandle refused(RQ_SubdFaults *faults, RQ_SubdFaults &found)
{
    if (faults)
        *faults = std::move(found);
    return nullptr;
}
}  // namespace

RQ_SubdTopology::RQ_SubdTopology(std::unique_ptr<Data> data) : data_(std::move(data)) {}
RQ_SubdTopology::~RQ_SubdTopology() = default;

RQ_SubdTopologyHandle RQ_SubdTopology::create(const RQ_PrimSubdivisionMesh &mesh, RQ_SubdFaults *faults)
try
{
    RQ_SubdFaults found;
    if (!rq::checkCage(mesh, found))
        return refused(faults, found);
    auto data = std::make_unique<Data>();
    data->counts = mesh.getFaceCountArray();
    data->vertexList = mesh.getVertexList();
    data->meshPoints = mesh.getPointCount();
    rq::readCage(mesh, data->cage, found);
    const RQ_DataArrayHandle used = mesh.getUsedPointList();
    if (used->entries() < mesh.getPointCount())
    {
        data->usedPoints = used;
        rq::renumberPoints(data->cage, used);
    }
    data->refiner = rq::makeRefiner(data->cage);
    if (!data->refiner)
    {
        found.push_back({RQ_SUBD_REFUSED, RQ_OWNER_DETAIL, 0, 1, "the faces do not make a surface"});
        return refused(faults, found);
    }
    data->holes = rq::holesOf(*data->refiner);
    data->channelPatches = std::vector<host::Published<rq::PatchTables>>(data->cage.channels.size());
    if (faults)
        *faults = std::move(found);
    return new RQ_SubdTopology(std::move(data));
}
catch (const std::bad_alloc &)
{
    if (faults)
        faults->push_back({RQ_SUBD_SIZE, RQ_OWNER_DETAIL, 0, 1, "memory does not suffice"});
    return nullptr;
}

bool RQ_SubdTopology::fits(const RQ_PrimSubdivisionMesh &mesh) const
{
    const RQ_DataArrayHandle &list = mesh.getVertexList();
    if (!list || !data_->vertexList || mesh.scheme() != data_->cage.scheme)
        return false;
    // Frames of one topology mostly bring the same array, or one of the same id.
    const bool sameList = list == data_->vertexList ||
                          (list->getDataId() != -1 && list->getDataId() == data_->vertexList->getDataId()) ||
                          list->isEqual(*data_->vertexList);
    return sameList && mesh.getFaceCountArray().isEqual(data_->counts);
}

RQ_Scheme RQ_SubdTopology::scheme() const { return data_->cage.scheme; }
int64_t RQ_SubdTopology::faces() const { return data_->cage.faces(); }
int64_t RQ_SubdTopology::points() const { return data_->cage.pointCount; }
const RQ_DataArrayHandle &RQ_SubdTopology::usedPoints() const { return data_->usedPoints; }

const rq::PatchTables *RQ_SubdTopology::patchTables() const
try
{
    return &data_->patches.getOrBuild(
        [this] { return BAS_IntrusivePtr<const rq::PatchTables>(new rq::PatchTables(data_->cage, *data_->refiner)); });
}
catch (const std::bad_alloc &)
{
    return nullptr;
}

BAS_IntrusivePtr<const rq::PatchTables> RQ_SubdTopology::patchTables(const rq::CageChannel &seams) const
{
    using Tables = BAS_IntrusivePtr<const rq::PatchTables>;
    const std::vector<rq::CageChannel> &known = data_->cage.channels;
    for (size_t channel = 0; channel < known.size(); ++channel)
        if (known[channel].values == seams.values)
            return &data_->channelPatches[channel].getOrBuild(
                [&] { return Tables(new rq::PatchTables(data_->cage, *data_->refiner, int(channel))); });
    rq::Cage cage = data_->cage;
    cage.channels = {seams};
    return Tables(new rq::PatchTables(cage, *rq::makeRefiner(cage), 0));
}

int64_t RQ_SubdTopology::getMemoryUsage() const
{
    int64_t bytes = int64_t(sizeof(*this) + sizeof(Data)) + rq::memoryOf(*data_->refiner);
    for (const auto &level : data_->levels)
        if (level.get())
            bytes += level.get()->getMemoryUsage();
    if (data_->patches.get())
        bytes += data_->patches.get()->getMemoryUsage();
    for (const auto &patches : data_->channelPatches)
        if (patches.get())
            bytes += patches.get()->getMemoryUsage();
    return bytes;
}
