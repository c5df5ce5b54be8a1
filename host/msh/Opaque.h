#pragma once

#include <functional>
#include <span>
#include <string>
#include <vector>

#include <host/bas/Intrusive.h>
#include <host/bas/StringHolder.h>

class MSH_Opaque;
using MSH_OpaqueHandle = BAS_IntrusivePtr<const MSH_Opaque>;

/// An object that a payload holds without knowing its type: a sparse grid of some library, an application's own data.
///
/// Its kind names the function that makes it again from bytes, so that files can hold it.
///
/// Threads  immutable once a payload holds it; the registry is safe from any thread
class HOST_API MSH_Opaque : public BAS_IntrusiveRefCounter<MSH_Opaque>
{
public:
    virtual ~MSH_Opaque();

    /// The name under which `registerKind` knows how to load it.
    virtual const char *kind() const = 0;

    /// Append the content as bytes that `load` reads on any machine.  False when it cannot be saved.
    virtual bool save(std::vector<uint8_t> &bytes) const = 0;

    virtual int64_t memoryUsage() const = 0;

    /// Same content.  The base compares what `save` writes.
    virtual bool isEqual(const MSH_Opaque &other) const;

    /// Makes an object from bytes, which may be anything; null with a reason when they are wrong.
    using Loader = std::function<MSH_OpaqueHandle(std::span<const uint8_t> bytes, std::string &why)>;

    /// Tell how objects of a kind are loaded; the last registration of a kind wins.
    static void registerKind(std::string_view kind, Loader loader);

    /// Make an object again.  Null with a reason for an unknown kind and for bytes that its loader refuses.
    static MSH_OpaqueHandle load(std::string_view kind, std::span<const uint8_t> bytes, std::string &why);
};
