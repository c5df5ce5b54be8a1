#include <io/RQGWriter.h>

#include <algorithm>
#include <new>

#include <fmt/format.h>

#include <io/detail/RQGDetail.h>
#include <io/detail/compacted.h>

namespace rq::io
{
namespace
{
/// The details that packed primitives hold, each after those that it refers to.
class Embedded
{
public:
    /// Add all that a detail refers to, and answer how many levels there are; more than the deepest when there are too many.
    int collect(const MSH_Detail &detail, int level = 1);

    std::vector<MOD_ConstDetailHandle> details;
    std::unordered_map<const MSH_Detail *, int64_t> numbers;

private:
    int add(const MSH_Detail &detail, int level);

    std::unordered_map<const MSH_Detail *, int> levels_;
};

int Embedded::collect(const MSH_Detail &detail, int level)
{
    int levels = 1;
    const MSH_Payload *last = nullptr;
    for (ELM_Offset i = 0; i < detail.primitiveCount() && level <= kRQGDeepest; ++i)
    {
        const MSH_Payload *payload = detail.payload(i);
        if (!payload || payload == last)
            continue;
        last = payload;
        for (const MSH_ConstField &field : payload->fields())
            if (const auto *list = std::get_if<const MSH_DetailList *>(&field.value))
                for (const auto &embedded : **list)
                    levels = std::max(levels, embedded ? 1 + add(*embedded, level + 1) : 1);
    }
    return level > kRQGDeepest ? level : levels;
}

int Embedded::add(const MSH_Detail &detail, int level)
{
    const auto known = levels_.find(&detail);
    if (known != levels_.end())
        return known->second;
    const MOD_ConstDetailHandle compact = compacted(MOD_ConstDetailHandle(&detail));
    const int levels = collect(*compact.readLock(), level);
    levels_[&detail] = levels;
    numbers[&detail] = std::ssize(details);
    details.push_back(compact);
    return levels;
}

bool write(const MOD_ConstDetailHandle &detail, RQGForm form, const std::string &name, std::string &bytes,
           Messages &messages)
{
    if (!detail)
        return messages.fail(name, {}, "there is nothing to write");
    const MOD_ConstDetailHandle whole = compacted(detail);
    Embedded embedded;
    if (embedded.collect(*whole.readLock()) > kRQGDeepest)
        return messages.fail(name, {}, fmt::format("packed geometry lies more than {} levels deep", kRQGDeepest));

    RQGOutput output(form);
    output.numbers = std::move(embedded.numbers);
    output.json().beginMap();
    output.json().writeKeyInt("rqg", 1);
    if (!embedded.details.empty())
    {
        output.key("details");
        output.json().beginArray();
        for (const MOD_ConstDetailHandle &part : embedded.details)
        {
            output.json().beginMap();
            writeDetail(output, *part.readLock());
            output.json().endMap();
        }
        output.json().endArray();
    }
    writeDetail(output, *whole.readLock());
    output.json().endMap();
    if (!output.failure.empty())
        return messages.fail(name, {}, output.failure);
    bytes = output.finish();
    return true;
}
}  // namespace

bool writeRQG(const MOD_ConstDetailHandle &detail, RQGForm form, const std::string &name, std::string &bytes,
              Messages &messages)
{
    try
    {
        return write(detail, form, name, bytes, messages);
    }
    catch (const std::bad_alloc &)
    {
        return messages.fail(name, {}, "needs more memory than there is");
    }
}
}  // namespace rq::io
