#include <host/bas/StringHolder.h>

#include <atomic>
#include <cstring>
#include <new>
#include <utility>

#include <host/bas/hashBytes.h>

// The characters and their closing 0 follow the block.
struct BAS_StringHolder::Block
{
    explicit Block(std::string_view text) : length(text.size()), hash(host::hashBytes(text))
    {
        std::memcpy(chars(), text.data(), text.size());
        chars()[text.size()] = '\0';
    }

    char *chars() { return reinterpret_cast<char *>(this + 1); }

    std::atomic<int64_t> count{1};
    size_t length;
    size_t hash;
};

BAS_StringHolder::BAS_StringHolder(std::string_view text)
{
    if (text.empty())
        return;
    block_ = new (::operator new(sizeof(Block) + text.size() + 1)) Block(text);
    chars_ = block_->chars();
}

BAS_StringHolder::BAS_StringHolder(const char *text) : BAS_StringHolder(text ? std::string_view(text) : std::string_view())
{}

BAS_StringHolder::BAS_StringHolder(const BAS_StringHolder &other) noexcept : chars_(other.chars_), block_(other.block_)
{
    if (block_)
        block_->count.fetch_add(1, std::memory_order_relaxed);
}

BAS_StringHolder::BAS_StringHolder(BAS_StringHolder &&other) noexcept
    : chars_(std::exchange(other.chars_, "")), block_(std::exchange(other.block_, nullptr))
{}

BAS_StringHolder &BAS_StringHolder::operator=(BAS_StringHolder other) noexcept
{
    std::swap(chars_, other.chars_);
    std::swap(block_, other.block_);
    return *this;
}

BAS_StringHolder::~BAS_StringHolder()
{
    if (!block_ || block_->count.fetch_sub(1, std::memory_order_acq_rel) != 1)
        return;
    block_->~Block();
    ::operator delete(block_);
}

BAS_StringHolder BAS_StringHolder::literal(const char *text)
{
    BAS_StringHolder holder;
    if (text)
        holder.chars_ = text;
    return holder;
}

size_t BAS_StringHolder::length() const { return block_ ? block_->length : std::strlen(chars_); }

size_t BAS_StringHolder::hash() const { return block_ ? block_->hash : host::hashBytes(view()); }

int64_t BAS_StringHolder::getMemoryUsage() const { return block_ ? int64_t(sizeof(Block) + block_->length + 1) : 0; }

bool BAS_StringHolder::equals(const BAS_StringHolder &other) const
{
    if (block_ && other.block_ && block_->hash != other.block_->hash)
        return false;
    return view() == other.view();
}
