#include <host/elm/OffsetList.h>

#include <algorithm>

namespace
{
constexpr bool isNarrow(ELM_Offset offset) { return offset >= -ELM_INDEX32_LIMIT && offset < ELM_INDEX32_LIMIT; }

template <class Offset> bool isRun(std::span<const Offset> offsets)
{
    for (size_t i = 1; i < offsets.size(); ++i)
        if (int64_t(offsets[i]) != int64_t(offsets[0]) + int64_t(i))
            return false;
    return true;
}

template <class Offset> bool allNarrow(std::span<const Offset> offsets)
{
    bool narrow = true;
    for (const Offset offset : offsets)
        narrow &= isNarrow(offset);
    return narrow;
}
}  // namespace

// Become the run that the offsets are.  False, with the count alone set, when they are none.
template <class Offset> bool ELM_OffsetList::assignRun(std::span<const Offset> offsets)
{
    count_ = int64_t(offsets.size());
    if (!isRun(offsets))
        return false;
    start_ = offsets.empty() ? 0 : offsets[0];
    return true;
}

template <class Offset> void ELM_OffsetList::assign(std::span<const Offset> offsets)
{
    if (assignRun(offsets))
        return;
    explicit_ = new Explicit;
    explicit_->isWide = !allNarrow(offsets);
    if (explicit_->isWide)
        explicit_->wide.assign(offsets.begin(), offsets.end());
    else
        explicit_->narrow.assign(offsets.begin(), offsets.end());
    refresh();
}

ELM_OffsetList::ELM_OffsetList(std::span<const int64_t> offsets) { assign(offsets); }

ELM_OffsetList::ELM_OffsetList(std::span<const int32_t> offsets) { assign(offsets); }

ELM_OffsetList::ELM_OffsetList(Values<int32_t> &&offsets)
{
    if (assignRun(std::span<const int32_t>(offsets)))
        return;
    explicit_ = new Explicit;
    explicit_->narrow = std::move(offsets);
    refresh();
}

ELM_OffsetList::ELM_OffsetList(Values<int64_t> &&offsets)
{
    if (assignRun(std::span<const int64_t>(offsets)))
        return;
    explicit_ = new Explicit;
    explicit_->isWide = true;
    explicit_->wide = std::move(offsets);
    refresh();
}

ELM_OffsetList::ELM_OffsetList(const ELM_Range &range) : start_(range.nextBlock(range.begin()).begin), count_(range.size())
{
    if (range.slice(start_, start_ + count_).size() == count_)
        return;
    explicit_ = new Explicit;
    explicit_->isWide = !isNarrow(range.end());
    const auto fill = [&](auto &offsets) {
        offsets.reserve(size_t(count_));
        for (const auto [begin, end] : range.blocks())
            for (ELM_Offset offset = begin; offset < end; ++offset)
                offsets.push_back(typename std::remove_reference_t<decltype(offsets)>::value_type(offset));
    };
    explicit_->isWide ? fill(explicit_->wide) : fill(explicit_->narrow);
    refresh();
}

// Have an explicit array of our own, in this width or the wide one it already has, with room for `capacity` entries.
void ELM_OffsetList::makeWritable(int64_t capacity, bool wide)
{
    wide = wide || data64_ || (isTrivial() && count_ > 0 && !(isNarrow(start_) && isNarrow(start_ + count_ - 1)));
    if (!explicit_ || explicit_->use_count() > 1 || explicit_->isWide != wide)
    {
        const BAS_IntrusivePtr<Explicit> copy(new Explicit);
        copy->isWide = wide;
        const auto fill = [&](auto &offsets) {
            offsets.reserve(size_t(std::max({capacity, count_, reserved_})));
            for (int64_t i = 0; i < count_; ++i)
                offsets.push_back(typename std::remove_reference_t<decltype(offsets)>::value_type(get(i)));
        };
        if (wide)
            fill(copy->wide);
        else
            fill(copy->narrow);
        explicit_ = copy;
    }
    refresh();
}

void ELM_OffsetList::refresh()
{
    data32_ = explicit_->isWide ? nullptr : explicit_->narrow.data();
    data64_ = explicit_->isWide ? explicit_->wide.data() : nullptr;
}

void ELM_OffsetList::reserve(int64_t count)
{
    reserved_ = count;
    if (explicit_)
        makeWritable(count, explicit_->isWide);
    if (data32_)
        explicit_->narrow.reserve(size_t(std::max(count, count_)));
    else if (data64_)
        explicit_->wide.reserve(size_t(std::max(count, count_)));
    if (explicit_)
        refresh();
}

void ELM_OffsetList::append(ELM_Offset offset)
{
    if (isTrivial() && (count_ == 0 || offset == start_ + count_))
    {
        start_ = count_ == 0 ? offset : start_;
        ++count_;
        return;
    }
    makeWritable(count_ + 1, !isNarrow(offset));
    if (explicit_->isWide)
        explicit_->wide.push_back(offset);
    else
        explicit_->narrow.push_back(int32_t(offset));
    refresh();
    ++count_;
}

void ELM_OffsetList::append(const ELM_OffsetList &other)
{
    if (isEmpty())
        *this = other;
    else if (isTrivial() && other.isTrivial() && (other.isEmpty() || other.start_ == start_ + count_))
        count_ += other.count_;
    else
    {
        const ELM_OffsetList kept = other;  // which may be this list
        const bool narrow = kept.data32_ || (kept.isTrivial() && isNarrow(kept.start_) && isNarrow(kept.start_ + kept.count_ - 1));
        makeWritable(count_ + kept.count_, !narrow);
        const auto add = [&](auto &to) {
            kept.visit([&](auto offsets) {
                to.resize(size_t(count_ + kept.count_));
                for (int64_t i = 0; i < kept.count_; ++i)
                    to[size_t(count_ + i)] = typename std::remove_reference_t<decltype(to)>::value_type(offsets[i]);
            });
        };
        if (explicit_->isWide)
            add(explicit_->wide);
        else
            add(explicit_->narrow);
        refresh();
        count_ += kept.count_;
    }
}

void ELM_OffsetList::set(int64_t i, ELM_Offset offset)
{
    if (get(i) == offset)
        return;
    if (isTrivial() && count_ == 1)
    {
        start_ = offset;
        return;
    }
    makeWritable(count_, !isNarrow(offset));
    if (explicit_->isWide)
        explicit_->wide[size_t(i)] = offset;
    else
        explicit_->narrow[size_t(i)] = int32_t(offset);
}

ELM_OffsetList ELM_OffsetList::subList(int64_t first, int64_t count) const
{
    if (first == 0 && count == count_)
        return *this;
    if (isTrivial())
        return ELM_OffsetList(start_ + first, count);
    return data32_ ? ELM_OffsetList(std::span(data32_ + first, size_t(count)))
                   : ELM_OffsetList(std::span(data64_ + first, size_t(count)));
}

int64_t ELM_OffsetList::memoryUsage() const
{
    if (!explicit_)
        return 0;
    return int64_t(sizeof(Explicit) + explicit_->narrow.capacity() * sizeof(int32_t) +
                   explicit_->wide.capacity() * sizeof(int64_t));
}

bool ELM_OffsetList::operator==(const ELM_OffsetList &other) const
{
    if (count_ != other.count_)
        return false;
    if (isTrivial() && other.isTrivial())
        return isEmpty() || start_ == other.start_;
    for (int64_t i = 0; i < count_; ++i)
        if (get(i) != other.get(i))
            return false;
    return true;
}
