#include <io/STLWriter.h>

#include <algorithm>

#include <host/bas/Vector.h>
#include <io/detail/Leftovers.h>
#include <io/detail/Tally.h>
#include <io/detail/bytes.h>
#include <io/detail/faceTriangles.h>
#include <io/detail/rowReader.h>
#include <io/detail/writeWhole.h>

namespace rq::io
{
namespace
{
constexpr size_t kHeaderBytes = 80;

/// Turns triangles into facets.
class STLBytes
{
public:
    STLBytes(const MSH_Detail &detail, Leftovers &leftovers) : detail_(detail), leftovers_(leftovers)
    {
        const ELM_Attribute *normals = detail.find(ELM_OWNER_PRIMITIVE, "N");
        if (normals && normals->numericTuple() && normals->tupleSize() == 3)
            normals_ = normals;
        const ELM_Attribute *words = detail.find(ELM_OWNER_PRIMITIVE, "attribute");
        if (words && words->pages<int32_t>() && words->tupleSize() == 1)
            words_ = words;
        for (const ELM_Attribute *held : {normals_, words_, &detail.positions()})
            leftovers.hold(held);
    }

    std::string write(const std::vector<int32_t> &triangles)
    {
        std::string bytes("binary STL");
        bytes.resize(kHeaderBytes);
        appendBytes(bytes, uint32_t(triangles.size() / 3));
        bytes.reserve(bytes.size() + 50 * triangles.size() / 3);
        const ELM_IndexColumn &owners = detail_.vertexPrimitive();
        for (size_t first = 0; first < triangles.size(); first += 3)
            writeFacet(bytes, triangles.data() + first, owners.value(triangles[first]));
        if (cutWords_ > 0)
            leftovers_.warn(
                fmt::format("{} of attribute \"attribute\" cut to 16 bits", counted(cutWords_, "value is", "values are")));
        return bytes;
    }

private:
    void writeFacet(std::string &bytes, const int32_t *corners, ELM_Offset primitive)
    {
        BAS_Vec3f normal, p[3];
        for (int i = 0; i < 3; ++i)
            readRow(detail_.positions(), detail_.vertexPoint(corners[i]), &p[i].x, 3);
        if (normals_)
            readRow(*normals_, primitive, &normal.x, 3);
        else
            normal = (p[1] - p[0]).cross(p[2] - p[0]).normalized();
        for (const BAS_Vec3f &vector : {normal, p[0], p[1], p[2]})
            for (int c = 0; c < 3; ++c)
                appendBytes(bytes, vector[c]);
        const int32_t word = words_ ? words_->pages<int32_t>()->value(primitive) : 0;
        cutWords_ += word != uint16_t(word);
        appendBytes(bytes, uint16_t(word));
    }

    const MSH_Detail &detail_;
    Leftovers &leftovers_;
    const ELM_Attribute *normals_ = nullptr;
    const ELM_Attribute *words_ = nullptr;
    int64_t cutWords_ = 0;
};

void warnOfElements(const MSH_Detail &detail, const std::vector<int32_t> &triangles, Leftovers &leftovers)
{
    std::vector<bool> used(size_t(detail.pointCount())), cut(size_t(detail.primitiveCount()));
    for (const int32_t vertex : triangles)
        used[size_t(detail.vertexPoint(vertex))] = cut[size_t(detail.vertexPrimitive().value(vertex))] = true;
    int64_t large = 0, flat = 0;
    for (ELM_Offset primitive = 0; primitive < detail.primitiveCount(); ++primitive)
    {
        const bool isFace = detail.typeOf(primitive) == ELM_PRIMITIVE_POLYGON && detail.isClosed(primitive);
        if (!isFace)
            leftovers.leaveOut(primitive);
        else if (!cut[size_t(primitive)])
            ++flat;
        else
            large += detail.vertexRun(primitive).count > 3;
    }
    leftovers.warnOfElements();
    if (large > 0)
        leftovers.warn(counted(large, "face is", "faces are") + " cut into triangles");
    if (flat > 0)
        leftovers.warn(counted(flat, "face without a triangle is", "faces without a triangle are") + " left out");
    if (const int64_t unused = std::count(used.begin(), used.end(), false); unused > 0)
        leftovers.warn(counted(unused, "point without a face is", "points without a face are") + " left out");
}
}  // namespace

bool writeSTL(const MOD_ConstDetailHandle &detail, const std::string &name, std::string &bytes, Messages &messages)
{
    return writeUnpacked(detail, name, messages, [&](const MOD_ConstDetailHandle &whole) {
        const MSH_Detail &d = *whole.readLock();
        const std::vector<int32_t> triangles = faceTriangles(whole);
        if (triangles.size() / 3 > UINT32_MAX)
            return messages.fail(name, {}, fmt::format("expected at most {} triangles, found more", UINT32_MAX));
        Leftovers leftovers(d, name, messages);
        bytes = STLBytes(d, leftovers).write(triangles);
        if (d.positions().storage() == ELM_STORAGE_REAL64)
            leftovers.warn("attribute \"P\" has 64 bits, of which 32 are kept");
        leftovers.warnOfAttributes();
        leftovers.warnOfGroups({ELM_OWNER_VERTEX, ELM_OWNER_POINT, ELM_OWNER_PRIMITIVE});
        warnOfElements(d, triangles, leftovers);
        return true;
    });
}
}  // namespace rq::io
