#include <rq/data/loadArray.h>

#include <cmath>
#include <cstring>

#include <fmt/format.h>

#include <host/bas/JSONValue.h>
#include <rq/data/DABool.h>
#include <rq/data/DAConstantText.h>
#include <rq/data/DAConstantValue.h>
#include <rq/data/DAIndexedText.h>
#include <rq/data/DANumericArray.h>
#include <rq/data/DARange.h>
#include <rq/data/DAText.h>
#include <rq/data/DATextArray.h>
#include <rq/data/detail/readOptions.h>
#include <rq/data/detail/savedClass.h>

namespace
{
/// What a description says, and the first thing that is wrong with it.
struct Record
{
    RQ_Storage storage = RQ_STORAGE_INVALID;
    RQ_Type type = RQ_TYPE_NONE;
    int64_t tuple = 1;
    const BAS_JSONValue::Array *entries = nullptr;
    std::string error;
};

template <class T> bool readValue(const BAS_JSONValue &json, T &value)
{
    if constexpr (std::is_integral_v<T>)
    {
        int64_t wide;
        if (!json.integer(wide) || wide < std::numeric_limits<T>::min() || wide > std::numeric_limits<T>::max())
            return false;
        value = T(wide);
        return true;
    }
    else
    {
        double wide;
        if (!json.number(wide))
            return false;
        if constexpr (std::same_as<T, PLT_Half>)
            value = PLT_Half(float(wide));
        else
            value = T(wide);
        return std::isfinite(double(value)) || !std::isfinite(wide);
    }
}

bool readValue(const BAS_JSONValue &json, BAS_OptionsHolder &value) { return rq::readOptions(json, value); }

bool readValue(const BAS_JSONValue &json, BAS_StringHolder &value)
{
    if (const std::string *text = json.string())
        value = *text;
    return json.string();
}

/// Read the values of all entries end to end: tuples, or arrays of any length when `counts` is given.
template <class Value> bool readEntries(Record &record, BAS_Array<Value> &values, BAS_ValArray<int64_t> *counts = nullptr)
{
    const bool nested = counts || record.tuple != 1;
    for (size_t i = 0; i < record.entries->size(); ++i)
    {
        const BAS_JSONValue &entry = (*record.entries)[i];
        const BAS_JSONValue::Array *row = entry.array();
        if (nested && (!row || (!counts && int64_t(row->size()) != record.tuple)))
        {
            record.error = counts ? fmt::format("values[{}]: expected an array", i)
                                  : fmt::format("values[{}]: expected an array of {} values", i, record.tuple);
            return false;
        }
        const size_t count = nested ? row->size() : 1;
        for (size_t c = 0; c < count; ++c)
            if (!readValue(nested ? (*row)[c] : entry, values.emplace_back()))
            {
                record.error = fmt::format("values[{}]{}: expected a value of storage {}", i,
                                           nested ? fmt::format("[{}]", c) : "", RQstorage(record.storage));
                return false;
            }
        if (counts)
            counts->push_back(int64_t(count));
    }
    return true;
}

RQ_CountArray makeCounts(const BAS_ValArray<int64_t> &counts)
{
    return RQ_CountArray(RQ_DataArrayHandle(new RQ_DANumeric<int64_t>(counts.data(), int64_t(counts.size()))));
}

RQ_DataArrayHandle loadNumeric(Record &record)
{
    RQ_DataArrayHandle array;
    rq::dispatchStorage(record.storage, [&](auto tag) {
        using T = typename decltype(tag)::type;
        BAS_Array<T> values;
        if (readEntries(record, values))
            array = new RQ_DANumeric<T>(values.data(), int64_t(record.entries->size()), record.tuple, record.type);
    });
    return array;
}

RQ_DataArrayHandle loadNumericArray(Record &record)
{
    RQ_DataArrayHandle array;
    rq::dispatchStorage(record.storage, [&](auto tag) {
        using T = typename decltype(tag)::type;
        BAS_Array<T> values;
        BAS_ValArray<int64_t> counts;
        if (!readEntries(record, values, &counts))
            return;
        const BAS_IntrusivePtr<RQ_DANumeric<T>> all(new RQ_DANumeric<T>(values.data(), int64_t(values.size())));
        array = new RQ_DANumericArray<T>(all, makeCounts(counts), record.tuple, record.type);
    });
    return array;
}

RQ_DataArrayHandle loadConstantValue(Record &record)
{
    RQ_DataArrayHandle array;
    rq::dispatchStorage(record.storage, [&](auto tag) {
        using T = typename decltype(tag)::type;
        BAS_Array<T> values;
        if (!readEntries(record, values))
            return;
        const T value = values.empty() ? T(0.0f) : values[0];
        for (const T &other : values)
            if (std::memcmp(&other, &value, sizeof(T)) != 0)
                return;
        array = new RQ_DAConstantValue<T>(int64_t(record.entries->size()), value, record.tuple, record.type);
    });
    return array;
}

RQ_DataArrayHandle loadBool(Record &record)
{
    BAS_Array<uint8_t> values;
    if (record.storage != RQ_STORAGE_UINT8 || !readEntries(record, values))
        return {};
    const int64_t size = int64_t(record.entries->size());
    const BAS_IntrusivePtr<RQ_DABool> array(new RQ_DABool(size, record.tuple, record.type));
    for (size_t i = 0; i < values.size(); ++i)
    {
        if (values[i] > 1)
            return {};
        array->setBit(int64_t(i) / record.tuple, values[i], int(int64_t(i) % record.tuple));
    }
    return array;
}

RQ_DataArrayHandle loadRange(Record &record)
{
    BAS_Array<int64_t> values;
    if (record.tuple != 1 || !readEntries(record, values))
        return {};
    // The end is not written, and it takes part in the choice of the storage: try the ends that give these entries.
    constexpr uint64_t kFar = uint64_t(1) << 27;
    const uint64_t first = values.empty() ? 0 : uint64_t(values.front()),
                   last = values.empty() ? 0 : uint64_t(values.back());
    const uint64_t step = values.size() > 1 ? uint64_t(values[1]) - first : 0;
    const uint64_t side = int64_t(step) < 0 ? uint64_t(-1) : 1;
    const uint64_t candidates[][3] = {{first, last + side, step},
                                      {first, last + step, step},
                                      {first, first + 1, 1},
                                      {first, first - 1, uint64_t(-1)},
                                      {first, kFar, 2 * kFar},
                                      {first, -kFar, -2 * kFar},
                                      {0, 0, 1},
                                      {kFar, kFar, 1}};
    for (const auto &[start, end, by] : candidates)
    {
        const RQ_DataArrayHandle range(new RQ_DARange(int64_t(start), int64_t(end), int64_t(by), record.type));
        bool same = range->getStorage() == record.storage && range->entries() == int64_t(values.size());
        for (size_t i = 0; i < values.size() && same; ++i)
            same = range->getI64(int64_t(i)) == values[i];
        if (same)
            return range;
    }
    return {};
}

/// True when texts of this kind are of the record's storage.
template <class Value> bool isStorageOf(const Record &record)
{
    return record.storage == (std::same_as<Value, BAS_StringHolder> ? RQ_STORAGE_STRING : RQ_STORAGE_DICTIONARY) &&
           record.tuple > 0;
}

template <class Value> RQ_DataArrayHandle loadText(Record &record)
{
    BAS_Array<Value> values;
    if (!isStorageOf<Value>(record) || !readEntries(record, values))
        return {};
    return RQ_DataArrayHandle(new RQ_DAText<Value>(std::move(values), record.tuple, record.type));
}

template <class Value> RQ_DataArrayHandle loadIndexedText(Record &record)
{
    BAS_Array<Value> values;
    if (!isStorageOf<Value>(record) || !readEntries(record, values))
        return {};
    return RQ_DAIndexedText<Value>::createIndexed(values.data(), int64_t(record.entries->size()), record.tuple, record.type);
}

template <class Value> RQ_DataArrayHandle loadConstantText(Record &record)
{
    BAS_Array<Value> values;
    if (!isStorageOf<Value>(record) || !readEntries(record, values))
        return {};
    for (const Value &value : values)
        if (!(value == values[0]))
            return {};
    return RQ_DataArrayHandle(new RQ_DAConstantText<Value>(int64_t(record.entries->size()),
                                                           values.empty() ? Value() : values[0], record.tuple, record.type));
}

template <class Value> RQ_DataArrayHandle loadTextArray(Record &record)
{
    BAS_Array<Value> values;
    BAS_ValArray<int64_t> counts;
    if (!isStorageOf<Value>(record) || !readEntries(record, values, &counts))
        return {};
    return RQ_DataArrayHandle(new RQ_DATextArray<Value>(std::move(values), makeCounts(counts), record.tuple, record.type));
}

struct Loader
{
    std::string_view className;
    RQ_DataArrayHandle (*load)(Record &);
};

const Loader kLoaders[] = {
    {"RQ_DANumeric", loadNumeric},
    {"RQ_DAConstantValue", loadConstantValue},
    {"RQ_DARange", loadRange},
    {"RQ_DABool", loadBool},
    {"RQ_DAString", loadText<BAS_StringHolder>},
    {"RQ_DADict", loadText<BAS_OptionsHolder>},
    {"RQ_DAIndexedString", loadIndexedText<BAS_StringHolder>},
    {"RQ_DAIndexedDict", loadIndexedText<BAS_OptionsHolder>},
    {"RQ_DAConstantString", loadConstantText<BAS_StringHolder>},
    {"RQ_DAConstantDict", loadConstantText<BAS_OptionsHolder>},
    {"RQ_DANumericArray", loadNumericArray},
    {"RQ_DAStringArray", loadTextArray<BAS_StringHolder>},
    {"RQ_DADictArray", loadTextArray<BAS_OptionsHolder>},
};

const Loader *findLoader(std::string_view className)
{
    for (const Loader &loader : kLoaders)
        if (loader.className == className)
            return &loader;
    return nullptr;
}

bool readText(const BAS_JSONValue &value, const char *name, std::string &text, std::string &error)
{
    const BAS_JSONValue *member = value.find(name);
    if (const std::string *found = member ? member->string() : nullptr)
        text = *found;
    else
        error = fmt::format("{}: expected a text", name);
    return error.empty();
}
}  // namespace

namespace rq
{
RQ_DataArrayHandle loadArray(const BAS_JSONValue &value, std::string &error)
{
    error.clear();
    Record record;
    std::string className, storage, type;
    if (!readText(value, "class", className, error) || !readText(value, "storage", storage, error) ||
        !readText(value, "type", type, error))
        return {};
    const Loader *loader = findLoader(className);
    record.storage = RQstorage(storage.c_str());
    record.type = RQtype(type.c_str());
    const BAS_JSONValue *size = value.find("size"), *values = value.find("values");
    record.entries = values ? values->array() : nullptr;
    if (!loader)
        error = fmt::format("class: expected a class of arrays, found '{}'", className);
    else if (record.storage < 0)
        error = fmt::format("storage: expected a storage, found '{}'", storage);
    else if (record.type < 0 && !type.empty())
        error = fmt::format("type: expected a type or nothing, found '{}'", type);
    else if (!size || !size->integer(record.tuple) || record.tuple < 0 || record.tuple > std::numeric_limits<int>::max())
        error = "size: expected the number of components";
    else if (!record.entries)
        error = "values: expected an array";
    if (!error.empty())
        return {};
    const RQ_DataArrayHandle array = loader->load(record);
    if (!array)
        error =
            record.error.empty() ? fmt::format("values: not what {} of storage {} holds", className, storage) : record.error;
    return array;
}

const char *savedClass(const RQ_DataArray &array)
{
    if (findLoader(array.className()))
        return array.className();
    const bool arrays = array.hasArrayEntries();
    switch (array.getStorage())
    {
    case RQ_STORAGE_STRING:
        return arrays ? "RQ_DAStringArray" : "RQ_DAString";
    case RQ_STORAGE_DICTIONARY:
        return arrays ? "RQ_DADictArray" : "RQ_DADict";
    default:
        return arrays ? "RQ_DANumericArray" : "RQ_DANumeric";
    }
}
}  // namespace rq
