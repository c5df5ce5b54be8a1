#pragma once

#include <functional>
#include <memory>
#include <string>

#include <host/mod/DetailHandle.h>

/// The files that packed geometry is loaded from.
///
/// The host knows no file format: readers are registered by whoever has one.  A file that is in use is loaded once.
///
/// Threads  every operation is safe from any thread; two threads that need a file at the same time may both read it, and
///          then share what the first one got
class HOST_API MOD_DetailFiles
{
public:
    /// Reads a file; an empty handle and a reason when it cannot.
    using Reader = std::function<MOD_ConstDetailHandle(const std::string &path, std::string &why)>;

    /// Read files whose names end in `suffix` (as ".obj", in any case) by `reader`; the last registration wins.
    static void registerReader(std::string_view suffix, Reader reader);

    /// The detail of a file, which is kept for others as long as somebody holds the pointer.  Null with a reason when no
    /// reader fits or the reader fails.
    static std::shared_ptr<const MOD_ConstDetailHandle> load(const std::string &path, std::string &why);

    /// Read a file anew when it is asked for next.  Who holds the old detail keeps it.
    static void forget(const std::string &path);
};
