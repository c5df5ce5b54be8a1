#pragma once

#include <host/bas/BitArray.h>
#include <host/bas/Intrusive.h>
#include <host/elm/types.h>

/// A set of offsets: a bit for each from `base`, a multiple of 64, on.  Shared by whoever needs the same set.
struct ELM_OffsetBits : BAS_IntrusiveRefCounter<ELM_OffsetBits>
{
    ELM_Offset base = 0;
    BAS_BitArray bits;

    ELM_OffsetBits() = default;
    explicit ELM_OffsetBits(int64_t size, bool value = false) : bits(size, value) {}

    /// One past the last offset that has a bit.
    ELM_Offset end() const { return base + bits.size(); }

    bool contains(ELM_Offset offset) const { return offset >= base && offset < end() && bits.get(offset - base); }

    /// The bits of the 64 offsets from `at`, a multiple of 64, on; zeros where there are none.
    uint64_t word(ELM_Offset at) const
    {
        const int64_t place = (at - base) >> 6;
        return place >= 0 && place < bits.wordCount() ? bits.words()[place] : 0;
    }
};

using ELM_OffsetBitsHandle = BAS_IntrusivePtr<ELM_OffsetBits>;
