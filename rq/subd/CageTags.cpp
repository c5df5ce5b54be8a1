#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>
#include <unordered_map>

#include <fmt/format.h>

#include <rq/subd/detail/cage.h>
#include <rq/surface/detail/subdivisionTags.h>

namespace
{
using Tag = RQ_PrimSubdivisionMesh::Tag;

// From here on a crease never wears off.
constexpr double kInfinitelySharp = 10.0;

/// Complaints of one kind, of which the first is told in full.
class Complaint
{
public:
    Complaint(RQ_SubdFaultCode code, RQ_Owner owner, RQ_SubdFaults &faults) : fault_{code, owner, 0, 0, {}}, faults_(faults)
    {}
    ~Complaint()
    {
        if (fault_.count > 1)
            fault_.message += fmt::format(" ({} such)", fault_.count);
        if (fault_.count > 0)
            faults_.push_back(fault_);
    }
    Complaint(const Complaint &) = delete;
    Complaint &operator=(const Complaint &) = delete;

    template <class... Arguments> void add(int64_t element, fmt::format_string<Arguments...> text, Arguments &&...arguments)
    {
        if (fault_.count++ > 0)
            return;
        fault_.element = element;
        fault_.message = fmt::format(text, std::forward<Arguments>(arguments)...);
    }

private:
    RQ_SubdFault fault_;
    RQ_SubdFaults &faults_;
};

/// Read a tag of indices with sharpnesses, complaining of numbers that do not fit.
rq::ElementTag readElements(const RQ_PrimSubdivisionMesh &mesh, const char *name, int width, RQ_SubdFaults &faults)
{
    const Tag *tag = mesh.findTag(name);
    rq::ElementTag elements = rq::ElementTag::read(tag, width);
    if (!tag)
        return elements;
    int64_t indices = 0, reals = 0;
    for (const RQ_DataArrayHandle &array : tag->getAllInt())
        indices += array->entries() * array->getTupleSize();
    for (const RQ_DataArrayHandle &array : tag->getAllReal())
        reals += array->entries() * array->getTupleSize();
    if (reals == 0 || indices % width != 0 || (reals > 1 && reals != indices / width))
        faults.push_back({RQ_SUBD_TAG_LENGTH, RQ_OWNER_DETAIL, 0, 1,
                          fmt::format("tag {} has {} indices and {} sharpnesses", name, indices, reals)});
    if (elements.sharpnesses.empty())
        elements.indices.clear();
    return elements;
}

/// A sharpness as the evaluation takes it; nothing for one that must be left out.
std::optional<float> usable(double sharpness, int64_t element, Complaint &complaint)
{
    if (sharpness >= 0.0)
        return float(std::min(sharpness, kInfinitelySharp));
    complaint.add(element, "sharpness {} at point {} is not 0 or more", sharpness, element);
    return {};
}

uint64_t edgeKey(int64_t a, int64_t b) { return uint64_t(std::min(a, b)) << 32 | uint64_t(std::max(a, b)); }

/// The creases, each edge once with its largest sharpness.
void readCreases(const RQ_PrimSubdivisionMesh &mesh, rq::Cage &cage, RQ_SubdFaults &faults)
{
    const rq::ElementTag tag = readElements(mesh, rq::kCreaseTag, 2, faults);
    if (tag.indices.empty())
        return;
    Complaint noEdge(RQ_SUBD_CREASE_EDGE, RQ_OWNER_POINT, faults);
    Complaint badSharpness(RQ_SUBD_SHARPNESS, RQ_OWNER_POINT, faults);
    struct Crease
    {
        float sharpness = 0.0f;
        bool isEdge = false;
    };
    std::unordered_map<uint64_t, Crease> creases;
    const auto isPoint = [&](int64_t point) { return point >= 0 && point < cage.pointCount; };
    for (size_t i = 0; i < tag.sharpnesses.size(); ++i)
        if (const int64_t a = tag.indices[2 * i], b = tag.indices[2 * i + 1]; isPoint(a) && isPoint(b))
            creases[edgeKey(a, b)];
    for (size_t face = 0, corner = 0; face < cage.counts.size(); corner += size_t(cage.counts[face++]))
        for (size_t i = 0, n = size_t(cage.counts[face]); i < n; ++i)
            if (const auto at = creases.find(edgeKey(cage.points[corner + i], cage.points[corner + (i + 1) % n]));
                at != creases.end())
                at->second.isEdge = true;

    for (size_t i = 0; i < tag.sharpnesses.size(); ++i)
    {
        const int64_t a = tag.indices[2 * i], b = tag.indices[2 * i + 1];
        const auto at = isPoint(a) && isPoint(b) && a != b ? creases.find(edgeKey(a, b)) : creases.end();
        if (at == creases.end() || !at->second.isEdge)
            noEdge.add(a, "crease from point {} to point {} lies on no edge", a, b);
        else if (const auto sharpness = usable(tag.sharpnesses[i], a, badSharpness);
                 sharpness && *sharpness > at->second.sharpness)
            at->second.sharpness = *sharpness;
    }
    for (size_t i = 0; i < tag.sharpnesses.size(); ++i)
        if (const auto at = creases.find(edgeKey(tag.indices[2 * i], tag.indices[2 * i + 1]));
            at != creases.end() && at->second.sharpness > 0.0f)
        {
            cage.creases.insert(cage.creases.end(), {int32_t(tag.indices[2 * i]), int32_t(tag.indices[2 * i + 1])});
            cage.creaseSharpness.push_back(at->second.sharpness);
            creases.erase(at);
        }
}

void readCorners(const RQ_PrimSubdivisionMesh &mesh, rq::Cage &cage, RQ_SubdFaults &faults)
{
    const rq::ElementTag tag = readElements(mesh, rq::kCornerTag, 1, faults);
    Complaint noPoint(RQ_SUBD_CORNER_POINT, RQ_OWNER_POINT, faults);
    Complaint badSharpness(RQ_SUBD_SHARPNESS, RQ_OWNER_POINT, faults);
    for (size_t i = 0; i < tag.sharpnesses.size(); ++i)
        if (const int64_t point = tag.indices[i]; point < 0 || point >= cage.pointCount)
            noPoint.add(point, "corner {} is no point of a face", point);
        else if (const auto sharpness = usable(tag.sharpnesses[i], point, badSharpness); sharpness && *sharpness > 0.0f)
        {
            cage.corners.push_back(int32_t(point));
            cage.cornerSharpness.push_back(*sharpness);
        }
}

void readHoles(const RQ_PrimSubdivisionMesh &mesh, rq::Cage &cage, RQ_SubdFaults &faults)
{
    Complaint noFace(RQ_SUBD_HOLE_FACE, RQ_OWNER_UNIFORM, faults);
    for (const int64_t face : rq::ElementTag::read(mesh.findTag(rq::kHoleTag), 1).indices)
        if (face < 0 || face >= cage.faces())
            noFace.add(face, "hole {} is no face", face);
        else
            cage.holes.push_back(int32_t(face));
    std::sort(cage.holes.begin(), cage.holes.end());
    cage.holes.erase(std::unique(cage.holes.begin(), cage.holes.end()), cage.holes.end());
}

/// A method by its number or its name, `standard` without the tag and, with a fault, where the value means nothing.
template <class Method, size_t N>
Method readMethod(const RQ_PrimSubdivisionMesh &mesh, const char *name, const char *const (&names)[N],
                  const Method (&methods)[N], Method standard, RQ_SubdFaults &faults)
{
    const Tag *tag = mesh.findTag(name);
    if (!tag)
        return standard;
    std::string found = "nothing";
    if (const RQ_DataArrayHandle text = tag->stringArray(0); text && text->entries() > 0)
    {
        found = std::string(text->getS(0).view());
        if (const auto at = std::find(std::begin(names), std::end(names), found); at != std::end(names))
            return methods[at - std::begin(names)];
    }
    for (const RQ_DataArrayHandle &array : {tag->intArray(0), tag->realArray(0)})
        if (array && array->entries() > 0 && RQisNumeric(array->getStorage()))
        {
            const double value = array->getF64(0);
            found = fmt::format("{}", value);
            for (size_t i = 0; i < N; ++i)
                if (value == double(i))
                    return methods[i];
        }
    faults.push_back({RQ_SUBD_METHOD, RQ_OWNER_DETAIL, 0, 1,
                      fmt::format("tag {}: expected {}, found {}", name, fmt::join(names, ", "), found)});
    return standard;
}

void readMethods(const RQ_PrimSubdivisionMesh &mesh, rq::Cage &cage, RQ_SubdFaults &faults)
{
    using Boundary = rq::VertexBoundary;
    using Linear = rq::FaceVaryingLinear;

    // The older tags count differently; the newer ones win.
    cage.boundary = readMethod(mesh, "interpolateboundary", {"none", "edgeAndCorner", "edgeOnly"},
                               {Boundary::None, Boundary::EdgeAndCorner, Boundary::EdgeOnly}, cage.boundary, faults);
    cage.boundary = readMethod(mesh, "osd_vtxboundaryinterpolation", {"none", "edgeOnly", "edgeAndCorner"},
                               {Boundary::None, Boundary::EdgeOnly, Boundary::EdgeAndCorner}, cage.boundary, faults);
    cage.linear = readMethod(mesh, "facevaryinginterpolateboundary", {"all", "cornersPlus1", "none", "boundaries"},
                             {Linear::All, Linear::CornersPlus1, Linear::None, Linear::Boundaries}, cage.linear, faults);
    cage.linear = readMethod(
        mesh, "osd_fvarlinearinterpolation", {"none", "cornersOnly", "cornersPlus1", "cornersPlus2", "boundaries", "all"},
        {Linear::None, Linear::CornersOnly, Linear::CornersPlus1, Linear::CornersPlus2, Linear::Boundaries, Linear::All},
        cage.linear, faults);
    cage.chaikin = readMethod(mesh, "osd_creasingmethod", {"uniform", "chaikin"}, {false, true}, false, faults);
    cage.smoothTriangles = readMethod(mesh, "osd_trianglesubdiv", {"catmullClark", "smooth"}, {false, true}, false, faults);
}
}  // namespace

void rq::readCageTags(const RQ_PrimSubdivisionMesh &mesh, Cage &cage, RQ_SubdFaults &faults)
{
    readMethods(mesh, cage, faults);
    readCreases(mesh, cage, faults);
    readCorners(mesh, cage, faults);
    readHoles(mesh, cage, faults);
}
