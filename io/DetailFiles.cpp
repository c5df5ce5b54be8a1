#include <io/DetailFiles.h>

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
    /// Note what a file places.  False when that leads back to it: unpacking would never end.
    bool note(const std::string &path, std::set<std::string> placed)
    {
        const std::lock_guard lock(lock_);
        std::vector<std::string> open(placed.begin(), placed.end());
        placed_[path] = std::move(placed);
        for (std::set<std::string> seen; !open.empty();)
        {
            const std::string next = std::move(open.back());
            open.pop_back();
            if (next == path)
                return false;
            if (const auto known = placed_.find(next); known != placed_.end() && seen.insert(next).second)
                open.insert(open.end(), known->second.begin(), known->second.end());
        }
        return true;
    }

private:
    std::mutex lock_;
    std::map<std::string, std::set<std::string>> placed_;
};

MOD_ConstDetailHandle read(const std::string &path, std::string &why)
{
    static Placings placings;
    MOD_DetailHandle handle;
    Messages messages;
    const bool isRead = load(path, handle, messages);
    for (const Message &message : messages.all())
        if (message.severity == Message::Error)
            why = message.toString();
        else
            BAS_Diagnostics::warn(message.toString());
    if (!isRead)
        return {};
    const MOD_ConstDetailHandle detail = handle.read();
    if (placings.note(path, PlacedFiles(*detail.readLock()).paths))
        return detail;
    why = fmt::format("\"{}\" places itself", path);
    return {};
}
}  // namespace

void registerDetailFiles()
{
    for (const std::string &ending : loadEndings())
        MOD_DetailFiles::registerReader(ending, read);
}
}  // namespace rq::io
