#include <rq/subd/detail/refiner.h>

#include <opensubdiv/far/topologyDescriptor.h>

#include <rq/subd/detail/osd.h>

namespace
{
using Factory = OpenSubdiv::Far::TopologyRefinerFactory<OpenSubdiv::Far::TopologyDescriptor>;
using SdcOptions = OpenSubdiv::Sdc::Options;

OpenSubdiv::Sdc::SchemeType schemeOf(RQ_Scheme scheme)
{
    return scheme == RQ_SCHEME_LOOP       ? OpenSubdiv::Sdc::SCHEME_LOOP
           : scheme == RQ_SCHEME_BILINEAR ? OpenSubdiv::Sdc::SCHEME_BILINEAR
                                          : OpenSubdiv::Sdc::SCHEME_CATMARK;
}

SdcOptions optionsOf(const rq::Cage &cage)
{
    constexpr SdcOptions::VtxBoundaryInterpolation kBoundaries[] = {
        SdcOptions::VTX_BOUNDARY_NONE, SdcOptions::VTX_BOUNDARY_EDGE_ONLY, SdcOptions::VTX_BOUNDARY_EDGE_AND_CORNER};
    constexpr SdcOptions::FVarLinearInterpolation kLinear[] = {
        SdcOptions::FVAR_LINEAR_NONE,          SdcOptions::FVAR_LINEAR_CORNERS_ONLY, SdcOptions::FVAR_LINEAR_CORNERS_PLUS1,
        SdcOptions::FVAR_LINEAR_CORNERS_PLUS2, SdcOptions::FVAR_LINEAR_BOUNDARIES,   SdcOptions::FVAR_LINEAR_ALL};
    SdcOptions options;
    options.SetVtxBoundaryInterpolation(kBoundaries[int(cage.boundary)]);
    options.SetFVarLinearInterpolation(kLinear[int(cage.linear)]);
    options.SetCreasingMethod(cage.chaikin ? SdcOptions::CREASE_CHAIKIN : SdcOptions::CREASE_UNIFORM);
    options.SetTriangleSubdivision(cage.smoothTriangles ? SdcOptions::TRI_SUB_SMOOTH : SdcOptions::TRI_SUB_CATMARK);
    return options;
}
}  // namespace

void rq::RefinerDeleter::operator()(Refiner *refiner) const { delete refiner; }

rq::RefinerHandle rq::makeRefiner(const Cage &cage)
{
    Far::TopologyDescriptor descriptor;
    descriptor.numVertices = cage.pointCount;
    descriptor.numFaces = cage.faces();
    descriptor.numVertsPerFace = cage.counts.data();
    descriptor.vertIndicesPerFace = cage.points.data();
    descriptor.numCreases = int(cage.creaseSharpness.size());
    descriptor.creaseVertexIndexPairs = cage.creases.data();
    descriptor.creaseWeights = cage.creaseSharpness.data();
    descriptor.numCorners = int(cage.corners.size());
    descriptor.cornerVertexIndices = cage.corners.data();
    descriptor.cornerWeights = cage.cornerSharpness.data();
    descriptor.numHoles = int(cage.holes.size());
    descriptor.holeIndices = cage.holes.data();

    std::vector<Far::TopologyDescriptor::FVarChannel> channels(cage.channels.size());
    for (size_t i = 0; i < channels.size(); ++i)
    {
        channels[i].numValues = int(cage.channels[i].sources.size());
        channels[i].valueIndices = cage.channels[i].values.data();
    }
    descriptor.numFVarChannels = int(channels.size());
    descriptor.fvarChannels = channels.data();
    RefinerHandle refiner(new Refiner);
    refiner->far.reset(Factory::Create(descriptor, Factory::Options(schemeOf(cage.scheme), optionsOf(cage))));
    return refiner->far ? std::move(refiner) : nullptr;
}

rq::RefinerHandle rq::copyRefiner(const Refiner &base)
{
    RefinerHandle refiner(new Refiner);
    refiner->far.reset(Factory::Create(*base.far));
    return refiner;
}

std::vector<int32_t> rq::holesOf(const Refiner &refiner)
{
    std::vector<int32_t> holes;
    const Far::TopologyLevel &level = refiner.far->GetLevel(0);
    for (int face = 0; refiner.far->HasHoles() && face < level.GetNumFaces(); ++face)
        if (level.IsFaceHole(face))
            holes.push_back(face);
    return holes;
}

int64_t rq::memoryOf(const Refiner &refiner)
{
    // Measured: neighbourhoods, sharpness and tags, and the numbers of the children.
    constexpr int64_t kBytesPerFace = 280;
    return refiner.far->GetNumFacesTotal() * kBytesPerFace;
}
