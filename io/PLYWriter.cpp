#include <io/PLYWriter.h>

#include <algorithm>

#include <io/detail/Leftovers.h>
#include <io/detail/PLYColumns.h>
#include <io/detail/materialColours.h>
#include <io/detail/writeWhole.h>

namespace rq::io
{
namespace
{
/// Turns a detail without vacant offsets into elements.
class PLYBytes
{
public:
    PLYBytes(const MSH_Detail &detail, NumberForm form, Leftovers &leftovers)
        : detail_(detail), isText_(form == NumberForm::Text), leftovers_(leftovers)
    {}

    std::string write()
    {
        findFaces();
        PLYColumns points(detail_, leftovers_), faces(detail_, leftovers_);
        points.take(ELM_OWNER_POINT);
        faces.takeCorners(largestFace_);
        faces.take(ELM_OWNER_PRIMITIVE);

        PLYOutput out{isText_, fmt::format("ply\nformat {} 1.0\n", isText_ ? "ascii" : "binary_little_endian")};
        points.declare(out.bytes, "vertex", detail_.pointCount());
        if (!faces_.empty())
            faces.declare(out.bytes, "face", std::ssize(faces_));
        out.bytes += "end_header\n";
        for (int64_t point = 0; point < detail_.pointCount(); ++point)
            points.writeRow(out, point);
        for (const ELM_Offset face : faces_)
            faces.writeRow(out, face);
        leftovers_.warnOfAttributes();
        leftovers_.warnOfGroups({ELM_OWNER_VERTEX, ELM_OWNER_POINT, ELM_OWNER_PRIMITIVE});
        leftovers_.warnOfElements();
        return std::move(out.bytes);
    }

private:
    void findFaces()
    {
        for (ELM_Offset primitive = 0; primitive < detail_.primitiveCount(); ++primitive)
        {
            if (detail_.typeOf(primitive) != ELM_PRIMITIVE_POLYGON || !detail_.isClosed(primitive))
            {
                leftovers_.leaveOut(primitive);
                continue;
            }
            faces_.push_back(primitive);
            const auto [start, count] = detail_.vertexRun(primitive);
            largestFace_ = std::max(largestFace_, count);
            for (ELM_Offset vertex = start; vertex < start + count; ++vertex)
                if (detail_.vertexPoint(vertex) < 0)
                    leftovers_.leaveOutLooseVertex();
        }
    }

    const MSH_Detail &detail_;
    bool isText_;
    Leftovers &leftovers_;
    std::vector<ELM_Offset> faces_;
    int64_t largestFace_ = 0;
};
}  // namespace

bool writePLY(const MOD_ConstDetailHandle &detail, NumberForm form, const std::string &name, std::string &bytes,
              Messages &messages)
{
    return writeUnpacked(detail, name, messages, [&](const MOD_ConstDetailHandle &whole) {
        const MOD_ConstDetailHandle coloured = withMaterialColours(whole);
        const MSH_Detail &d = *coloured.readLock();
        Leftovers leftovers(d, name, messages);
        bytes = PLYBytes(d, form, leftovers).write();
        return true;
    });
}
}  // namespace rq::io
