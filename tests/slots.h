#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

/// The places of virtual operations in their table: pointers to virtual members hold 1 plus the byte offset.
template <class... Member> std::vector<int64_t> slotsOf(Member... members)
{
    const auto slotOf = [](auto member) {
        uintptr_t words[2];
        static_assert(sizeof(words) == sizeof(member));
        std::memcpy(words, &member, sizeof(words));
        return int64_t(words[0] - 1) / int64_t(sizeof(void *));
    };
    return {slotOf(members)...};
}

/// The destructor takes the first two places, `parts` must name all the others in order.
inline void expectSlotsInOrder(const std::vector<std::vector<int64_t>> &parts, int64_t operations)
{
    int64_t place = 2;
    for (const std::vector<int64_t> &part : parts)
        for (const int64_t slot : part)
        {
            EXPECT_EQ(slot, place);
            ++place;
        }
    EXPECT_EQ(place, operations + 2);
}
