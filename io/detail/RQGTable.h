#pragma once

#include <host/elm/Attribute.h>
#include <io/detail/RQGDict.h>

namespace rq::io
{
// The distinct values of attributes of text, dictionaries and arrays: tables, and values as people write them.

/// The place in the host of a table's first entry.  The one before means none, or the empty array.
template <class Values> constexpr int32_t kFirstPlace = 1;
template <> inline constexpr int32_t kFirstPlace<ELM_StringTuple> = 0;
template <> inline constexpr int32_t kFirstPlace<ELM_DictTuple> = 0;

// ---- Items: numbers, strings, dictionaries

inline void writeItem(RQGOutput &output, const BAS_StringHolder &item) { output.text(item.view()); }
inline void writeItem(RQGOutput &output, const BAS_OptionsHolder &item) { writeDict(output, item); }

template <class Item> void writeItems(RQGOutput &output, const std::vector<Item> &items)
{
    output.json().beginArray();
    for (const Item &item : items)
        writeItem(output, item);
    output.json().endArray();
}
template <RQ_NumericValue Item> void writeItems(RQGOutput &output, const std::vector<Item> &items)
{
    output.row(std::vector<Item>(items));
}

inline bool readItem(const RQGInput &input, JSONText item, BAS_StringHolder &to) { return input.read(item, to); }
inline bool readItem(const RQGInput &input, JSONText item, BAS_OptionsHolder &to) { return readDict(input, item, to); }

template <class Item> bool readItems(const RQGInput &input, JSONText list, std::vector<Item> &items)
{
    if (!list.isArray())
        return input.failAt(list, "a list");
    return list.forEach([&](JSONText item) { return readItem(input, item, items.emplace_back()); });
}
template <RQ_NumericValue Item> bool readItems(const RQGInput &input, JSONText list, std::vector<Item> &items)
{
    return input.read(list, items);
}

// ---- Taking in a value; its place is appended to `places`

inline bool take(const RQGInput &, JSONText, const BAS_StringHolder &text, ELM_StringTuple &to, std::vector<int32_t> &places)
{
    places.push_back(to.add(text.view()));
    return true;
}
inline bool take(const RQGInput &, JSONText, const BAS_OptionsHolder &dict, ELM_DictTuple &to, std::vector<int32_t> &places)
{
    places.push_back(to.add(dict));
    return true;
}
template <class Item>
bool take(const RQGInput &input, JSONText at, std::span<const Item> array, ELM_ArrayTuple<Item> &to,
          std::vector<int32_t> &places)
{
    places.push_back(to.add(array));
    return places.back() >= 0 || input.fail(at, fmt::format("expected arrays of a multiple of {} values, found one of {}",
                                                            to.tupleSize(), array.size()));
}

// ---- Tables: a list of entries; of arrays a map of their "lengths" and, one array after another, their "items"

template <class Item> void writeTable(RQGOutput &output, const ELM_IndexedTuple<Item> &values)
{
    writeItems(output, values.table());
}

template <class Item> void writeTable(RQGOutput &output, const ELM_ArrayTuple<Item> &arrays)
{
    std::vector<int64_t> lengths;
    std::vector<Item> items;
    for (int32_t place = 1; place < arrays.arrayCount(); ++place)
    {
        const std::span<const Item> array = arrays.array(place);
        lengths.push_back(std::ssize(array));
        items.insert(items.end(), array.begin(), array.end());
    }
    output.json().beginMap();
    output.key("lengths");
    output.row(std::move(lengths));
    output.key("items");
    writeItems(output, items);
    output.json().endMap();
}

template <class Item>
bool readTable(const RQGInput &input, JSONText table, ELM_IndexedTuple<Item> &to, std::vector<int32_t> &places)
{
    std::vector<Item> items;
    if (!readItems(input, table, items))
        return false;
    for (const Item &item : items)
        take(input, table, item, to, places);
    return true;
}

template <class Item>
bool readTable(const RQGInput &input, JSONText table, ELM_ArrayTuple<Item> &to, std::vector<int32_t> &places)
{
    JSONText lengthRow, itemRow;
    if (table.isMap())
        table.forEachMember([&](JSONText key, JSONText value) {
            (key.raw() == "lengths" ? lengthRow : itemRow) = value;
            return true;
        });
    if (!lengthRow || !itemRow)
        return input.failAt(table, "\"lengths\" and \"items\" of arrays");
    std::vector<int64_t> lengths;
    std::vector<Item> items;
    if (!input.read(lengthRow, lengths) || !readItems(input, itemRow, items))
        return false;
    std::span<const Item> left(items);
    for (const int64_t length : lengths)
    {
        if (length < 0 || length > std::ssize(left))
            return input.fail(lengthRow,
                              fmt::format("expected arrays of {} values in all, found one of {}", items.size(), length));
        if (!take(input, lengthRow, left.first(size_t(length)), to, places))
            return false;
        left = left.subspan(size_t(length));
    }
    return left.empty() ||
           input.fail(itemRow, fmt::format("expected {} values, found {}", items.size() - left.size(), items.size()));
}

// ---- Lists of values as people write them: null is none, an array is a list

template <class Item>
bool readValue(const RQGInput &input, JSONText value, ELM_IndexedTuple<Item> &to, std::vector<int32_t> &places)
{
    if (value.raw() == "null" && !value.isString())
        return places.push_back(-1), true;
    Item item;
    return readItem(input, value, item) && take(input, value, item, to, places);
}

template <class Item>
bool readValue(const RQGInput &input, JSONText value, ELM_ArrayTuple<Item> &to, std::vector<int32_t> &places)
{
    std::vector<Item> items;
    return readItems(input, value, items) && take(input, value, std::span<const Item>(items), to, places);
}

template <class Values> bool readValues(const RQGInput &input, JSONText list, Values &to, std::vector<int32_t> &places)
{
    if (!list.isArray())
        return input.failAt(list, "a list");
    return list.forEach([&](JSONText value) { return readValue(input, value, to, places); });
}
}  // namespace rq::io
