#include <host/msh/Opaque.h>

#include <map>
#include <mutex>

#include <fmt/format.h>

namespace
{
struct Kinds
{
    std::mutex lock;
    std::map<std::string, MSH_Opaque::Loader, std::less<>> loaders;
};

Kinds &kinds()
{
    static Kinds theKinds;
    return theKinds;
}
}  // namespace

MSH_Opaque::~MSH_Opaque() = default;

bool MSH_Opaque::isEqual(const MSH_Opaque &other) const
{
    if (this == &other)
        return true;
    std::vector<uint8_t> mine, theirs;
    return std::string_view(kind()) == other.kind() && save(mine) && other.save(theirs) && mine == theirs;
}

void MSH_Opaque::registerKind(std::string_view kind, Loader loader)
{
    const std::lock_guard lock(kinds().lock);
    kinds().loaders.insert_or_assign(std::string(kind), std::move(loader));
}

MSH_OpaqueHandle MSH_Opaque::load(std::string_view kind, std::span<const uint8_t> bytes, std::string &why)
{
    Loader loader;
    {
        const std::lock_guard lock(kinds().lock);
        const auto known = kinds().loaders.find(kind);
        if (known != kinds().loaders.end())
            loader = known->second;
    }
    if (loader)
        return loader(bytes, why);
    why = fmt::format("objects of kind \"{}\" cannot be loaded", kind);
    return nullptr;
}
