#include <io/detail/RQGAttribute.h>

#include <cstring>
#include <tuple>

#include <io/detail/RQGNames.h>
#include <io/detail/RQGTable.h>
#include <io/detail/visitValues.h>

namespace rq::io
{
namespace
{
// The largest tuples of an attribute whose rows do not show it: they take memory, but no place in the file.
constexpr int32_t kLargestUnseenTuple = 1 << 12;

bool isPosition(ELM_Owner owner, std::string_view name) { return owner == ELM_OWNER_POINT && name == ELM_POSITION_NAME; }

// What values mean when nothing is said of it: positions must not lose it by an oversight.
ELM_TypeInfo typeUnlessTold(ELM_Owner owner, std::string_view name)
{
    return isPosition(owner, name) ? ELM_TYPE_POINT : ELM_TYPE_NONE;
}

template <class T> bool repeatsOneRow(const ELM_PageArray<T> &pages)
{
    const size_t bytes = size_t(pages.tupleSize()) * sizeof(T);
    bool same = pages.size() > 1;
    pages.forEachRun(0, pages.size(), [&](const T *row, int64_t rows, bool repeated) {
        for (int64_t i = 0; same && i < (repeated ? 1 : rows); ++i)
            same = std::memcmp(static_cast<const void *>(row + i * pages.tupleSize()), pages.tuple(0), bytes) == 0;
    });
    return same;
}

template <class T> void writeRows(RQGOutput &output, const ELM_PageArray<T> &pages, bool mayRepeat)
{
    const int tupleSize = pages.tupleSize();
    if (mayRepeat && repeatsOneRow(pages))
    {
        output.key("value");
        return output.row(std::vector<T>(pages.tuple(0), pages.tuple(0) + tupleSize));
    }
    output.key("values");
    const int64_t rows = pages.size();
    if (const T *values = pages.contiguous())
        return output.row(std::span(values, size_t(rows * tupleSize)));
    std::vector<T> values(size_t(rows * tupleSize));
    pages.copyOut(values.data(), ELM_OffsetList(0, rows), 0, rows, tupleSize, tupleSize);
    output.row(std::move(values));
}

/// What a file says about an attribute.
struct Declaration
{
    JSONText at;
    std::string name;
    ELM_Scope scope = ELM_SCOPE_PUBLIC;
    ELM_Storage storage = ELM_STORAGE_INVALID;
    ELM_TypeInfo typeInfo = ELM_TYPE_NONE;
    int32_t size = 1;
    bool isArray = false;
    JSONText table, values, value;

    bool read(RQGInput &input, JSONText map, ELM_Owner owner);
    bool readType(const RQGInput &input, JSONText type, ELM_Owner owner);
    ELM_Attribute *make(MOD_Edit &edit, ELM_Owner owner) const;
    JSONText rows() const { return value ? value : values; }
    bool check(const RQGInput &input, const RQGRow &row, int64_t elements) const;
};

bool Declaration::readType(const RQGInput &input, JSONText type, ELM_Owner owner)
{
    int32_t number = typeUnlessTold(owner, name);
    const bool isWord = type && type.isString();
    if (isWord ? !readRQGName(input, type, kRQGTypeInfos, number) : type && !input.read(type, number))
        return false;
    typeInfo = ELM_TypeInfo(isWord ? number - 1 : number);
    return true;
}

bool Declaration::read(RQGInput &input, JSONText map, ELM_Owner owner)
{
    RQGMap members;
    if (!members.open(input, map))
        return false;
    at = map;
    table = members.find("table");
    values = members.find("values");
    value = members.find("value");
    const JSONText stored = members.find("storage");
    if (!members.read("name", name) || !members.read("size", size) || !members.read("arrays", isArray) ||
        !readRQGName(input, members.find("scope"), kRQGScopes, scope) ||
        !readRQGName(input, stored, kRQGStorages, storage) || !readType(input, members.find("type"), owner))
        return false;
    members.close();
    return stored || input.fail(map, fmt::format("expected a storage of attribute \"{}\", found none", name));
}

ELM_Attribute *Declaration::make(MOD_Edit &edit, ELM_Owner owner) const
{
    if (isArray)
        return edit.arrayAttribute(owner, name, storage, size, typeInfo, scope);
    if (storage == ELM_STORAGE_STRING)
        return edit.stringAttribute(owner, name, size, scope);
    if (storage == ELM_STORAGE_DICTIONARY)
        return edit.dictAttribute(owner, name, size, scope);
    return edit.attribute(owner, name, storage, size, typeInfo, scope);
}

// Before room is made for the rows, they must be there.
bool Declaration::check(const RQGInput &input, const RQGRow &row, int64_t elements) const
{
    const bool isNumeric = ELMisNumeric(storage) && !isArray, isSeen = elements > 0 && (isNumeric || !value);
    if (size < 1 || (!isSeen && size > kLargestUnseenTuple))
        return input.fail(at, fmt::format("{} is no size of attribute \"{}\"", size, name));
    const int64_t components = isArray || (value && !isNumeric) ? 1 : size, wanted = value ? 1 : elements;
    if (row.size() % components == 0 && row.size() / components == wanted)
        return true;
    return input.fail(row.at(), fmt::format("expected {} times {} values of attribute \"{}\", found {}", wanted, components,
                                            name, row.size()));
}

template <class T> bool readRows(const RQGInput &, const Declaration &declared, const RQGRow &row, ELM_PageArray<T> &pages)
{
    const int64_t rows = pages.size();
    if (declared.value)
    {
        std::vector<T> tuple(size_t(row.size()));
        const bool good = row.copyTo(tuple.data());
        pages.fill(0, rows, tuple.data());
        return good;
    }
    if (const T *lying = row.inPlace<T>())
        return pages.write(0, rows, lying), true;
    return rows == 0 || row.copyTo(pages.writeAll());
}

// Let the host read the column where it lies.
bool adopt(const RQGInput &input, const Declaration &declared, const RQGRow &row, ELM_Owner owner, MOD_Edit &edit)
{
    const bool isNumeric = ELMisNumeric(declared.storage) && !declared.isArray && declared.scope == ELM_SCOPE_PUBLIC;
    if (!input.owner || !isNumeric || declared.value || edit.capacity(owner) == 0)
        return false;
    const void *memory = nullptr;
    int64_t stride = declared.size;
    dispatchStorage(RQ_Storage(declared.storage), [&](auto type) {
        using T = typename decltype(type)::type;
        memory = row.inPlace<T>();
        stride *= int64_t(sizeof(T));
    });
    return memory && edit.adopt(owner, declared.name, declared.storage, declared.size, declared.typeInfo, memory, stride,
                                edit.capacity(owner), [keep = input.owner] {});
}

/// Read a table, and the numbers of its entries as their places in the host.
template <class Values>
bool readPlaces(const RQGInput &input, JSONText table, JSONText row, Values &values, std::vector<int32_t> &places)
{
    constexpr int32_t first = kFirstPlace<Values>;
    std::vector<int32_t> entries;
    if (!readTable(input, table, values, entries) || !input.read(row, places))
        return false;
    for (int32_t &place : places)
    {
        if (place < first - 1 || place >= first + std::ssize(entries))
            return input.fail(
                row, fmt::format("expected the numbers of entries of a table of {}, found {}", entries.size(), place));
        place = place < first ? place : entries[size_t(place - first)];
    }
    return true;
}

template <class Values> bool readRows(const RQGInput &input, const Declaration &declared, const RQGRow &row, Values &values)
{
    std::vector<int32_t> places;
    if (!(declared.table ? readPlaces(input, declared.table, row.at(), values, places)
                         : readValues(input, row.at(), values, places)))
        return false;
    if (declared.value)
        return values.fill(0, values.size(), places[0]), true;
    return values.writeIndices(0, values.size(), places.data());
}
}  // namespace

void writeAttribute(RQGOutput &output, const ELM_Attribute &attribute)
{
    output.json().beginMap();
    output.keyText("name", attribute.name().view());
    if (attribute.scope() != ELM_SCOPE_PUBLIC)
        output.keyText("scope", kRQGScopes[attribute.scope()]);
    output.keyText("storage", kRQGStorages[attribute.storage()]);
    if (attribute.hasArrays())
        output.json().writeKeyBool("arrays", true);
    if (attribute.tupleSize() != 1)
        output.json().writeKeyInt("size", attribute.tupleSize());
    const ELM_Owner owner = attribute.owner();
    const std::string_view name = attribute.name().view();
    if (const int type = attribute.typeInfo(); type < ELM_TYPE_NONE || type > ELM_TYPE_BOX)
        output.json().writeKeyInt("type", type);
    else if (type != typeUnlessTold(owner, name))
        output.keyText("type", kRQGTypeInfos[type + 1]);

    visitValues(attribute, [&]<class Values>(const Values &values) {
        if constexpr (std::is_base_of_v<ELM_IndexedRows, Values>)
        {
            output.key("table");
            writeTable(output, values);
            writeRows(output, values.indices(), values.indices().tupleSize() == 1);
        }
        else
            // The number of points is told by nothing but their positions.
            writeRows(output, values, !isPosition(owner, name));
    });
    output.json().endMap();
}

bool readAttribute(RQGInput &input, JSONText map, ELM_Owner owner, MOD_Edit &edit)
{
    Declaration declared;
    RQGRow row;
    if (!declared.read(input, map, owner))
        return false;
    if (!declared.rows())
        return input.fail(map, fmt::format("expected values of attribute \"{}\", found none", declared.name));
    if (!row.open(input, declared.rows()) || !declared.check(input, row, edit.capacity(owner)))
        return false;
    // Primitives that are placed have made their matrices, which the file holds in their order among the others.
    std::ignore = edit.removeAttribute(owner, declared.name, declared.scope);
    if (adopt(input, declared, row, owner, edit))
        return true;
    ELM_Attribute *attribute = declared.make(edit, owner);
    if (!attribute)
        return input.fail(map, edit.message());
    return visitValues(*attribute, [&](auto &values) { return readRows(input, declared, row, values); });
}
}  // namespace rq::io
