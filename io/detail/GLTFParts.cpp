#include <io/detail/GLTFParts.h>

#include <algorithm>
#include <map>
#include <tuple>

#include <host/mod/DetailHandle.h>
#include <io/detail/Tally.h>
#include <io/detail/faceTriangles.h>

namespace rq::io
{
namespace
{
constexpr int kPoints = 0, kLines = 1, kLineStrip = 3, kTriangles = 4;

/// Puts primitives to those of the same object, material and mode.
class GLTFSorter
{
public:
    GLTFSorter(const MSH_Detail &detail, const ELM_StringTuple *objects, const GLTFMaterials &materials,
               Leftovers &leftovers)
        : detail_(detail), objects_(objects), materials_(materials), leftovers_(leftovers)
    {}

    void addTriangles(const std::vector<int32_t> &triangles)
    {
        const ELM_IndexColumn &owners = detail_.vertexPrimitive();
        std::vector<bool> cut(size_t(detail_.primitiveCount()));
        for (size_t i = 0; i < triangles.size(); i += 3)
        {
            const int64_t face = owners.value(triangles[i]);
            cut[size_t(face)] = true;
            std::vector<int32_t> &to = find(face, kTriangles);
            to.insert(to.end(), triangles.begin() + int64_t(i), triangles.begin() + int64_t(i) + 3);
        }
        int64_t large = 0, flat = 0;
        for (ELM_Offset primitive = 0; primitive < detail_.primitiveCount(); ++primitive)
            if (isFace(primitive))
            {
                large += cut[size_t(primitive)] && detail_.vertexRun(primitive).count > 3;
                flat += !cut[size_t(primitive)];
            }
        if (large > 0)
            leftovers_.warn(counted(large, "face is", "faces are") + " cut into triangles");
        if (flat > 0)
            leftovers_.warn(counted(flat, "face without a triangle is", "faces without a triangle are") + " left out");
    }

    void addOther(ELM_Offset primitive)
    {
        const bool isLine = detail_.typeOf(primitive) == ELM_PRIMITIVE_POLYGON;
        if (isFace(primitive))
            return;
        if (!isLine && detail_.typeOf(primitive) != ELM_PRIMITIVE_PARTICLES)
            return leftovers_.leaveOut(primitive);
        std::vector<int32_t> run;
        const auto [start, count] = detail_.vertexRun(primitive);
        for (ELM_Offset vertex = start; vertex < start + count; ++vertex)
            if (detail_.vertexPoint(vertex) >= 0)
                run.push_back(int32_t(vertex));
            else
                leftovers_.leaveOutLooseVertex();
        if (isLine && run.size() < 2)
            return leftovers_.leaveOut(primitive);
        // A strip is a part of its own.
        std::vector<int32_t> &to =
            isLine && run.size() > 2 ? add(primitive, kLineStrip) : find(primitive, isLine ? kLines : kPoints);
        to.insert(to.end(), run.begin(), run.end());
    }

    std::vector<GLTFPart> finish()
    {
        std::erase_if(parts_, [](const GLTFPart &part) { return part.vertices.empty(); });
        std::ranges::stable_sort(parts_, {}, [](const GLTFPart &part) { return part.object; });
        return std::move(parts_);
    }

private:
    bool isFace(ELM_Offset primitive) const
    {
        return detail_.typeOf(primitive) == ELM_PRIMITIVE_POLYGON && detail_.isClosed(primitive);
    }
    int objectOf(ELM_Offset primitive) const { return objects_ ? objects_->index(primitive) : -1; }

    std::vector<int32_t> &add(ELM_Offset primitive, int mode)
    {
        return parts_.emplace_back(GLTFPart{objectOf(primitive), materials_.of(primitive), mode}).vertices;
    }

    std::vector<int32_t> &find(ELM_Offset primitive, int mode)
    {
        const std::tuple key(objectOf(primitive), materials_.of(primitive), mode);
        const auto [known, isNew] = known_.emplace(key, parts_.size());
        return isNew ? add(primitive, mode) : parts_[known->second].vertices;
    }

    const MSH_Detail &detail_;
    const ELM_StringTuple *objects_;
    const GLTFMaterials &materials_;
    Leftovers &leftovers_;
    std::vector<GLTFPart> parts_;
    std::map<std::tuple<int, int, int>, size_t> known_;
};
}  // namespace

std::vector<GLTFPart> partsOf(const MOD_ConstDetailHandle &detail, const ELM_StringTuple *objects,
                              const GLTFMaterials &materials, Leftovers &leftovers)
{
    const MSH_Detail &d = *detail.readLock();
    GLTFSorter sorter(d, objects, materials, leftovers);
    sorter.addTriangles(faceTriangles(detail));
    for (ELM_Offset primitive = 0; primitive < d.primitiveCount(); ++primitive)
        sorter.addOther(primitive);
    return sorter.finish();
}
}  // namespace rq::io
