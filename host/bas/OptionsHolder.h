#pragma once

#include <memory>

#include <host/bas/Options.h>

/// A shared option dictionary, edited by copy on write.
///
/// Shape    32 bytes a handle: the shared options (two words), their content hash and their size in bytes
/// Threads  handles may be copied and dropped on any thread; `edit` belongs to one thread
class HOST_API BAS_OptionsHolder
{
public:
    /// The empty dictionary.
    BAS_OptionsHolder() = default;
    explicit BAS_OptionsHolder(BAS_Options options);

    /// The one shared empty dictionary that arrays without dictionaries answer.
    static const BAS_OptionsHolder &empty();

    const BAS_Options &options() const;

    /// Change the content: `change(BAS_Options &)` works on a copy that this handle then owns.
    template <class Change> void edit(Change &&change)
    {
        BAS_Options copy = options();
        change(copy);
        *this = BAS_OptionsHolder(std::move(copy));
    }

    bool isEmpty() const { return !options_; }
    uint64_t hash() const { return hash_; }
    int64_t getMemoryUsage() const { return memory_; }

    bool operator==(const BAS_OptionsHolder &other) const;

private:
    std::shared_ptr<const BAS_Options> options_;
    uint64_t hash_ = 0;
    int64_t memory_ = 0;
};

static_assert(sizeof(BAS_OptionsHolder) == 32, "storage sizes are part of the interface");
