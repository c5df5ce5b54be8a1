#include <host/mod/DetailFiles.h>

#include <algorithm>
#include <map>
#include <mutex>

#include <fmt/format.h>

namespace
{
struct Files
{
    std::mutex lock;
    std::map<std::string, MOD_DetailFiles::Reader, std::less<>> readers;  // by suffix in lower case
    std::map<std::string, std::weak_ptr<const MOD_ConstDetailHandle>> loaded;
};

Files &files()
{
    static Files theFiles;
    return theFiles;
}

std::string lowered(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
    return result;
}

// The reader of the longest suffix that the path ends in.
MOD_DetailFiles::Reader readerOf(const std::string &path)
{
    const std::string name = lowered(path);
    const std::pair<const std::string, MOD_DetailFiles::Reader> *best = nullptr;
    for (const auto &entry : files().readers)
        if (name.ends_with(entry.first) && (!best || entry.first.size() > best->first.size()))
            best = &entry;
    return best ? best->second : nullptr;
}
}  // namespace

void MOD_DetailFiles::registerReader(std::string_view suffix, Reader reader)
{
    const std::lock_guard lock(files().lock);
    files().readers.insert_or_assign(lowered(suffix), std::move(reader));
}

std::shared_ptr<const MOD_ConstDetailHandle> MOD_DetailFiles::load(const std::string &path, std::string &why)
{
    Reader reader;
    {
        const std::lock_guard lock(files().lock);
        const auto known = files().loaded.find(path);
        if (known != files().loaded.end())
            if (std::shared_ptr<const MOD_ConstDetailHandle> alive = known->second.lock())
                return alive;
        reader = readerOf(path);
    }
    if (!reader)
    {
        why = fmt::format("no reader for \"{}\"", path);
        return nullptr;
    }
    const MOD_ConstDetailHandle detail = reader(path, why);
    if (!detail)
        return nullptr;
    auto made = std::make_shared<const MOD_ConstDetailHandle>(detail);
    const std::lock_guard lock(files().lock);
    std::erase_if(files().loaded, [](const auto &entry) { return entry.second.expired(); });
    std::weak_ptr<const MOD_ConstDetailHandle> &entry = files().loaded[path];
    if (std::shared_ptr<const MOD_ConstDetailHandle> first = entry.lock())
        return first;
    entry = made;
    return made;
}

void MOD_DetailFiles::forget(const std::string &path)
{
    const std::lock_guard lock(files().lock);
    files().loaded.erase(path);
}
