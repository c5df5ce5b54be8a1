#include <host/mod/PackedDisk.h>

#include <cmath>

#include <fmt/format.h>

#include <host/bas/Parallel.h>
#include <host/mod/DetailFiles.h>
#include <host/mod/Edit.h>

namespace
{
const BAS_StringHolder kType = BAS_StringHolder::literal("type");
const BAS_StringHolder kPath = BAS_StringHolder::literal("path");

// Blending a point costs a few nanoseconds.
constexpr int64_t kPointsPerTask = 8192;

MOD_PackedContent loadFile(const BAS_StringHolder &path, std::string &why)
{
    const std::shared_ptr<const MOD_ConstDetailHandle> file = MOD_DetailFiles::load(std::string(path.view()), why);
    return file ? MOD_PackedContent{*file, file} : MOD_PackedContent{};
}

/// The first detail with points on the way to those of the second.
MOD_ConstDetailHandle blended(const MOD_ConstDetailHandle &from, const MOD_ConstDetailHandle &to, double share)
{
    const ELM_Attribute &start = from.readLock()->positions(), &end = to.readLock()->positions();
    if (start.size() != end.size() || start.size() == 0)
        return from;
    MOD_DetailHandle result(from);
    MOD_Edit edit(result);
    ELM_Attribute *positions = edit.attribute(ELM_OWNER_POINT, ELM_POSITION_NAME, start.storage(), 3, start.typeInfo());
    if (!positions)
        return from;
    positions->numericTuple()->visit([&](auto &pages) {
        auto *row = pages.modifyAll();
        using Value = std::remove_pointer_t<decltype(row)>;
        end.numericTuple()->visit([&](const auto &others) {
            host::parallelFor(start.size(), kPointsPerTask, [&, reader = others.reader()](int64_t point) {
                for (int axis = 0; axis < 3; ++axis)
                {
                    Value &value = row[3 * point + axis];
                    value = Value(std::lerp(double(value), double(reader.value(point, axis)), share));
                }
            });
        });
    });
    return edit.commit();
}
}  // namespace

bool MOD_PackedDiskData::check(std::string &) const { return true; }

bool MOD_PackedDiskData::instanceKey(BAS_Options &key) const
{
    key.set(kType, BAS_StringHolder::literal("PackedDisk"));
    key.set(kPath, path);
    return true;
}

MOD_PackedContent MOD_PackedDiskData::load(std::string &why) const { return loadFile(path, why); }

int64_t MOD_PackedDiskSequenceData::fileOf(double frame) const
{
    const double count = double(paths.size()), whole = std::floor(frame);
    if (paths.empty())
        return -1;
    if (whole >= 0.0 && whole < count)
        return int64_t(whole);
    switch (rule)
    {
    case MOD_SEQUENCE_HOLD:
        return whole < 0.0 ? 0 : int64_t(paths.size()) - 1;
    case MOD_SEQUENCE_CYCLE: {
        const double turn = std::fmod(whole, count);
        return int64_t(turn < 0.0 ? turn + count : turn);
    }
    case MOD_SEQUENCE_MIRROR: {
        // 0 1 2 2 1 0 | 0 1 2 ...
        const double turn = std::fmod(whole, 2.0 * count), at = turn < 0.0 ? turn + 2.0 * count : turn;
        return int64_t(at < count ? at : 2.0 * count - 1.0 - at);
    }
    default:
        return -1;
    }
}

bool MOD_PackedDiskSequenceData::check(std::string &why) const
{
    if (!std::isfinite(index))
        why = "the index of a sequence is not finite";
    else if (rule < 0 || rule >= MOD_SEQUENCE_RULES)
        why = fmt::format("{} is no rule of sequences", rule);
    else
        return true;
    return false;
}

bool MOD_PackedDiskSequenceData::instanceKey(BAS_Options &key) const
{
    const int64_t file = fileOf(index), next = fileOf(index + 1.0);
    if (file < 0)
        return false;
    key.set(kType, BAS_StringHolder::literal("PackedDiskSequence"));
    key.set(kPath, paths[size_t(file)]);
    if (const double share = index - std::floor(index); blends && share > 0.0 && next >= 0)
    {
        key.set(BAS_StringHolder::literal("next"), paths[size_t(next)]);
        key.set(BAS_StringHolder::literal("share"), share);
    }
    return true;
}

MOD_PackedContent MOD_PackedDiskSequenceData::load(std::string &why) const
{
    const int64_t file = fileOf(index), next = fileOf(index + 1.0);
    if (file < 0)
    {
        why = fmt::format("frame {} lies outside of a sequence of {} files", index, paths.size());
        return {};
    }
    MOD_PackedContent content = loadFile(paths[size_t(file)], why);
    const double share = index - std::floor(index);
    if (!content.detail || !blends || share == 0.0 || next < 0 || next == file)
        return content;
    const MOD_PackedContent other = loadFile(paths[size_t(next)], why);
    if (other.detail)
        content.detail = blended(content.detail, other.detail, share);
    return content;
}
