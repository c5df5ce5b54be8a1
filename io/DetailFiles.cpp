#include <io/DetailFiles.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <set>

#include <fmt/format.h>

#include <host/bas/Diagnostics.h>
#include <host/mod/DetailFiles.h>
#include <host/msh/Detail.h>
#include <io/Reader.h>

namespace rq::io
{
namespace
{
/// The files that a detail, or one that it embeds, places.
class PlacedFiles
{
public:
    explicit PlacedFiles(const MSH_Detail &detail) { add(detail); }

    std::set<std::string> paths;

private:
    void add(const MSH_Detail &detail)
    {
        const MSH_PayloadTable &payloads = detail.data().payloads;
        if (!seen_.insert(&detail).second)
            return;
        for (int64_t i = 0; i < payloads.size(); ++i)
        {
            const auto &[type, payload] = payloads[i];
            for (const MSH_ConstField &field : payload->fields())
                if (const auto *embedded = std::get_if<const MSH_DetailList *>(&field.value))
                {
                    for (const auto &part : **embedded)
                        if (part)
                            add(*part);
                }
                else if (type == ELM_PRIMITIVE_PACKED_DISK || type == ELM_PRIMITIVE_PACKED_DISK_SEQUENCE)
                    addTexts(field);
        }
    }

    // All texts of these types are paths.
    void addTexts(const MSH_ConstField &field)
    {
        if (const auto *path = std::get_if<const BAS_StringHolder *>(&field.value))
            paths.emplace((*path)->view());
        else if (const auto *list = std::get_if<const std::vector<BAS_StringHolder> *>(&field.value))
            for (const BAS_StringHolder &each : **list)
                paths.emplace(each.view());
    }

    std::set<const MSH_Detail *> seen_;
};

/// Which files place which, as far as they were read.
class Placings
{
public:
    /// Note what a file places.  False with the reason when that leads back to it, so that unpacking would never end, or
    /// when it lies deeper than stacks are.
    bool note(const std::string &path, std::set<std::string> placed, std::string &why)
    {
        constexpr int kDeepest = 64;
        const std::lock_guard lock(lock_);
        const int depth = depth_[path];
        if (depth > kDeepest)
            return why = fmt::format("\"{}\" lies more than {} files deep", path, kDeepest), false;
        if (leadsTo(path, placed))
            return why = fmt::format("\"{}\" places itself", path), false;
        // What is refused leads nowhere, or files in a circle would sink with every reading.
        for (const std::string &next : placed)
            depth_[next] = std::max(depth_[next], depth + 1);
        placed_[path] = std::move(placed);
        return true;
    }

private:
    bool leadsTo(const std::string &path, const std::set<std::string> &placed) const
    {
        std::vector<std::string> open(placed.begin(), placed.end());
        for (std::set<std::string> seen; !open.empty();)
        {
            const std::string next = std::move(open.back());
            open.pop_back();
            if (next == path)
                return true;
            if (const auto known = placed_.find(next); known != placed_.end() && seen.insert(next).second)
                open.insert(open.end(), known->second.begin(), known->second.end());
        }
        return false;
    }

    std::mutex lock_;
    std::map<std::string, std::set<std::string>> placed_;  // by files that were taken
    std::map<std::string, int> depth_;                     // how many files lead to one, at the most
};

MOD_ConstDetailHandle read(const std::string &path, std::string &why)
{
    static Placings placings;
    MOD_DetailHandle handle;
    Messages messages;
    const bool isRead = path == "-" ? messages.fail("<stdin>", {}, "cannot be placed") : load(path, handle, messages);
    for (const Message &message : messages.all())
        if (message.severity == Message::Error)
            why = message.toString();
        else
            BAS_Diagnostics::warn(message.toString());
    if (!isRead)
        return {};
    const MOD_ConstDetailHandle detail = handle.read();
    return placings.note(path, PlacedFiles(*detail.readLock()).paths, why) ? detail : MOD_ConstDetailHandle();
}
}  // namespace

// What a file is follows from how it begins, so that every name will do.
void registerDetailFiles() { MOD_DetailFiles::registerReader("", read); }
}  // namespace rq::io
