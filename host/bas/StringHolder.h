#pragma once

#include <functional>
#include <string>
#include <string_view>

#include <host/plt/types.h>

/// A shared, immutable string; copying a handle costs one count.
///
/// Shape      16 bytes a handle: the characters and the counted block that owns them, which literals and "" do without
/// Ownership  copies share the block; the last one frees it
/// Threads    handles may be copied and dropped on any thread; no global table, so making strings takes no lock
class HOST_API BAS_StringHolder
{
public:
    BAS_StringHolder() = default;

    /// Copy the text, which may hold any bytes.  Null makes the empty string.
    BAS_StringHolder(const char *text);
    BAS_StringHolder(std::string_view text);
    BAS_StringHolder(const std::string &text) : BAS_StringHolder(std::string_view(text)) {}

    BAS_StringHolder(const BAS_StringHolder &other) noexcept;
    BAS_StringHolder(BAS_StringHolder &&other) noexcept;
    BAS_StringHolder &operator=(BAS_StringHolder other) noexcept;
    ~BAS_StringHolder();

    /// View a text that outlives every copy of the handle; nothing is allocated.
    static BAS_StringHolder literal(const char *text);

    const char *c_str() const { return chars_; }
    size_t length() const;
    std::string_view view() const { return {chars_, length()}; }
    size_t hash() const;

    bool isEmpty() const { return !block_ && *chars_ == '\0'; }
    explicit operator bool() const { return !isEmpty(); }

    /// Bytes of the shared block, 0 for literals.
    int64_t getMemoryUsage() const;

    friend bool operator==(const BAS_StringHolder &a, const BAS_StringHolder &b)
    {
        return a.chars_ == b.chars_ || a.equals(b);
    }
    friend bool operator<(const BAS_StringHolder &a, const BAS_StringHolder &b) { return a.view() < b.view(); }

private:
    struct Block;

    bool equals(const BAS_StringHolder &other) const;

    const char *chars_ = "";
    Block *block_ = nullptr;
};

static_assert(sizeof(BAS_StringHolder) == 16, "storage sizes are part of the interface");

template <> struct std::hash<BAS_StringHolder>
{
    size_t operator()(const BAS_StringHolder &text) const { return text.hash(); }
};
