#include <algorithm>
#include <cmath>

#include <opensubdiv/far/patchTableFactory.h>
#include <opensubdiv/far/stencilTableFactory.h>

#include <host/bas/Parallel.h>
#include <rq/subd/detail/osdPatches.h>
#include <rq/subd/detail/refiner.h>

namespace
{
using namespace rq;

/// How far irregular points are followed: four levels leave a patch of 1/16 of a face around them.  Creases that wear off
/// are followed until they have.
int isolationOf(const Cage &cage)
{
    constexpr int kStandard = 4, kDeepest = 8;
    double sharpest = 0.0;
    for (const std::vector<float> *list : {&cage.creaseSharpness, &cage.cornerSharpness})
        for (const float sharpness : *list)
            if (sharpness < float(kDeepest))
                sharpest = std::max(sharpest, double(sharpness));
    return std::clamp(int(std::ceil(sharpest)) + 1, kStandard, kDeepest);
}

using Stencils = std::unique_ptr<const Far::StencilTable>;

Stencils makeStencils(const Far::TopologyRefiner &refiner, const Far::PatchTable &patches, int channel)
{
    using Factory = Far::StencilTableFactory;
    const bool varying = channel != PatchTables::kPoints;
    Factory::Options options;
    options.generateIntermediateLevels = true;
    options.generateOffsets = true;
    if (varying)
    {
        options.interpolationMode = Factory::INTERPOLATE_FACE_VARYING;
        options.fvarChannel = unsigned(channel);
    }
    Stencils refined(Factory::Create(refiner, options));
    const Far::StencilTable *local =
        varying ? patches.GetLocalPointFaceVaryingStencilTable() : patches.GetLocalPointStencilTable();
    if (!local)
        return refined;
    Stencils all(varying ? Factory::AppendLocalPointStencilTableFaceVarying(refiner, refined.get(), local, channel)
                         : Factory::AppendLocalPointStencilTable(refiner, refined.get(), local));
    return all ? std::move(all) : std::move(refined);
}

void findRegular(PatchTables::Osd &osd, int64_t faces)
{
    const Far::PatchTable &table = *osd.table;
    osd.whole.assign(size_t(faces), -1);
    int32_t controls = 0;
    for (int array = 0; array < table.GetNumPatchArrays(); ++array)
    {
        const Far::PatchDescriptor descriptor = table.GetPatchArrayDescriptor(array);
        for (int patch = 0; patch < table.GetNumPatches(array); ++patch)
        {
            const Far::PatchParam param = table.GetPatchParam(array, patch);
            const bool regular = descriptor.GetType() == Far::PatchDescriptor::REGULAR;
            const int depth = param.GetDepth() - (param.NonQuadRoot() ? 1 : 0);
            osd.regular.push_back({regular ? controls : -1, uint16_t(param.GetU()), uint16_t(param.GetV()), uint8_t(depth),
                                   uint8_t(param.GetBoundary())});
            if (regular && depth == 0)
                osd.whole[size_t(param.GetFaceId())] = int32_t(osd.regular.size()) - 1;
            controls += descriptor.GetNumControlVertices();
        }
    }
}
}  // namespace

rq::PatchTables::PatchTables(const Cage &cage, const Refiner &base, int channel) : osd_(new Osd), faces_(cage.faces())
{
    const RefinerHandle refiner = copyRefiner(base);
    Far::PatchTableFactory::Options options(unsigned(isolationOf(cage)));
    options.useInfSharpPatch = true;
    options.generateLegacySharpCornerPatches = false;
    options.generateVaryingTables = false;
    osd_->varying = channel != kPoints;
    if (osd_->varying)
    {
        options.generateFVarTables = true;
        options.generateFVarLegacyLinearPatches = false;
        options.numFVarChannels = 1;
        options.fvarChannelIndices = &channel;
    }
    refiner->far->RefineAdaptive(options.GetRefineAdaptiveOptions());
    osd_->table.reset(Far::PatchTableFactory::Create(*refiner->far, options));
    osd_->map = std::make_unique<const Far::PatchMap>(*osd_->table);
    osd_->stencils = makeStencils(*refiner->far, *osd_->table, channel);
    osd_->cagePoints = osd_->varying ? int32_t(cage.channels[size_t(channel)].sources.size()) : cage.pointCount;

    int32_t faces = cage.faces();
    if (cage.scheme != RQ_SCHEME_LOOP && !cage.onlyQuads)
    {
        firstQuad_.push_back(0);
        for (const int32_t count : cage.counts)
            firstQuad_.push_back(firstQuad_.back() + (count == 4 ? 1 : count));
        faces = firstQuad_.back();
    }
    if (!osd_->varying)
        findRegular(*osd_, faces);
}

rq::PatchTables::~PatchTables() = default;

int32_t rq::PatchTables::faceOf(int64_t face, int64_t corner) const
{
    if (face < 0 || face >= faces_)
        return -1;
    if (firstQuad_.empty())
        return int32_t(face);
    const int32_t first = firstQuad_[size_t(face)], quads = firstQuad_[size_t(face) + 1] - first;
    return quads == 1 ? first : corner >= 0 && corner < quads ? first + int32_t(corner) : -1;
}

int64_t rq::PatchTables::controlPoints() const
{
    return osd_->cagePoints + (osd_->stencils ? osd_->stencils->GetNumStencils() : 0);
}

void rq::PatchTables::computeControls(Four *controls) const
{
    if (!osd_->stencils)
        return;
    // A control point has some 20 weights, 30 ns.
    constexpr int64_t kPointsPerTask = 2048;
    const Far::StencilTable &table = *osd_->stencils;
    Four *out = controls + osd_->cagePoints;
    host::parallelFor(table.GetNumStencils(), kPointsPerTask, [&](int64_t i) {
        const int first = table.GetOffsets()[size_t(i)], count = table.GetSizes()[size_t(i)];
        Four sum;
        for (int at = first; at < first + count; ++at)
            sum.lanes += controls[table.GetControlIndices()[size_t(at)]].lanes * table.GetWeights()[size_t(at)];
        out[i] = sum;
    });
}

int64_t rq::PatchTables::getMemoryUsage() const
{
    const auto bytesOf = [](const auto &vector) { return int64_t(vector.capacity() * sizeof(vector[0])); };
    int64_t bytes = int64_t(sizeof(*this) + sizeof(Osd)) + bytesOf(firstQuad_) + bytesOf(osd_->regular) +
                    bytesOf(osd_->whole) + bytesOf(osd_->table->GetPatchControlVerticesTable()) +
                    bytesOf(osd_->table->GetPatchParamTable());
    if (osd_->stencils)
        bytes += bytesOf(osd_->stencils->GetSizes()) + bytesOf(osd_->stencils->GetOffsets()) +
                 bytesOf(osd_->stencils->GetControlIndices()) + bytesOf(osd_->stencils->GetWeights());
    return bytes;
}
