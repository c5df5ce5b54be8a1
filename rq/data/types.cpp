#include <rq/data/types.h>

#include <array>
#include <cstring>

namespace
{
struct Entry
{
    const char *name;
    int32_t value;
};

// The first name of a value is its canonical one.
constexpr Entry kStorages[] = {
    {"uint8", 0},   {"unsigned char", 0}, {"int8", 1},   {"char", 1},       {"int16", 2},    {"short", 2},    {"int32", 3},
    {"int", 3},     {"int64", 4},         {"long", 4},   {"real16", 5},     {"fpreal16", 5}, {"hfloat", 5},   {"float16", 5},
    {"real32", 6},  {"fpreal32", 6},      {"float", 6},  {"float32", 6},    {"real64", 7},   {"fpreal64", 7}, {"double", 7},
    {"float64", 7}, {"double64", 7},      {"string", 8}, {"dictionary", 9},
};

constexpr Entry kTypes[] = {
    {"point", 0},        {"point16", 0},      {"point32", 0},  {"point64", 0},  {"hpoint", 1},     {"hpoint16", 1},
    {"hpoint32", 1},     {"hpoint64", 1},     {"vector", 2},   {"vector16", 2}, {"vector32", 2},   {"vector64", 2},
    {"normal", 3},       {"normal16", 3},     {"normal32", 3}, {"normal64", 3}, {"color", 4},      {"color16", 4},
    {"color32", 4},      {"color64", 4},      {"rgb", 4},      {"rgba", 4},     {"quaternion", 5}, {"quaternion16", 5},
    {"quaternion32", 5}, {"quaternion64", 5}, {"quat", 5},     {"matrix3", 6},  {"matrix3_16", 6}, {"matrix3_32", 6},
    {"matrix3_64", 6},   {"matrix", 7},       {"matrix16", 7}, {"matrix32", 7}, {"matrix64", 7},   {"box2", 10},
    {"box2_16", 10},     {"box2_32", 10},     {"box2_64", 10}, {"box", 11},     {"box_16", 11},    {"box32", 11},
    {"box64", 11},
};

constexpr Entry kOwners[] = {
    {"vertex", 0}, {"point", 1}, {"shared", 1}, {"uniform", 2}, {"primitive", 2}, {"detail", 3}, {"constant", 3},
};

template <size_t N> int32_t findValue(const Entry (&entries)[N], const char *name)
{
    if (name)
        for (const Entry &entry : entries)
            if (!std::strcmp(entry.name, name))
                return entry.value;
    return -1;
}

template <size_t N> const char *findName(const Entry (&entries)[N], int32_t value)
{
    for (const Entry &entry : entries)
        if (entry.value == value)
            return entry.name;
    return nullptr;
}
}  // namespace

RQ_Storage RQstorage(const char *name) { return RQ_Storage(findValue(kStorages, name)); }
RQ_Type RQtype(const char *name) { return RQ_Type(findValue(kTypes, name)); }
RQ_Owner RQowner(const char *name) { return RQ_Owner(findValue(kOwners, name)); }

const char *RQstorage(RQ_Storage storage) { return findName(kStorages, storage); }
const char *RQowner(RQ_Owner owner) { return findName(kOwners, owner); }

const char *RQtype(RQ_Type type)
{
    const char *name = findName(kTypes, type);
    return name ? name : "";
}

int RQsizeof(RQ_Storage storage)
{
    static constexpr std::array<int, 10> kSizes = {1, 1, 2, 4, 8, 2, 4, 8, 16, 32};
    return storage >= 0 && storage < int(kSizes.size()) ? kSizes[storage] : 0;
}
