#include <io/detail/RQGPayload.h>

#include <io/detail/RQGDict.h>
#include <io/detail/RQGNames.h>

namespace rq::io
{
namespace
{
/// Writes a field by its type.
struct FieldWriter
{
    RQGOutput &output;

    void operator()(bool value) const { output.json().writeBool(value); }
    void operator()(int32_t value) const { output.json().writeInt(value); }
    void operator()(int64_t value) const { output.json().writeInt(value); }
    void operator()(double value) const { output.json().writeReal64(value); }
    void operator()(const BAS_Vec3d &value) const { output.json().uniformArray(&value.x, 3); }
    void operator()(const BAS_StringHolder &value) const { output.text(value.view()); }
    void operator()(const BAS_OptionsHolder &value) const { writeDict(output, value); }
    void operator()(const ELM_PackedIndices &value) const { output.row(value.unpacked()); }
    template <RQ_NumericValue T> void operator()(const std::vector<T> &value) const { output.row(std::span(value)); }

    void operator()(const std::vector<BAS_StringHolder> &value) const
    {
        output.json().beginArray();
        for (const BAS_StringHolder &text : value)
            output.text(text.view());
        output.json().endArray();
    }
    void operator()(const MSH_ElementRefs &value) const
    {
        output.json().beginMap();
        output.keyText("owner", kRQGOwners[value.owner]);
        output.key("offsets");
        output.row(std::span(value.offsets));
        output.json().endMap();
    }
    void operator()(const MSH_OpaqueHandle &value) const
    {
        std::vector<uint8_t> bytes;
        if (!value)
        {
            output.json().writeNull();
            return;
        }
        if (!value->save(bytes))
            output.failure = fmt::format("an object of kind \"{}\" cannot be saved", value->kind());
        output.json().beginMap();
        output.keyText("kind", value->kind());
        output.key("bytes");
        output.row(std::move(bytes));
        output.json().endMap();
    }
    void operator()(const MSH_DetailList &value) const
    {
        std::vector<int64_t> numbers;
        for (const auto &detail : value)
            numbers.push_back(detail ? output.numbers.at(detail.get()) : -1);
        output.json().uniformArray(numbers.data(), std::ssize(numbers));
    }
};

/// Reads a field by its type.
struct FieldReader
{
    RQGInput &input;
    JSONText value;

    template <class T> bool operator()(T &to) const { return input.read(value, to); }
    bool operator()(BAS_Vec3d &to) const
    {
        RQGRow row;
        return row.open(input, value) && (row.size() == 3 ? row.copyTo(&to.x) : input.failAt(value, "three numbers"));
    }
    bool operator()(BAS_OptionsHolder &to) const { return readDict(input, value, to); }
    bool operator()(ELM_PackedIndices &to) const
    {
        std::vector<int32_t> indices;
        const bool good = input.read(value, indices);
        to.assign(indices);
        return good;
    }
    bool operator()(std::vector<BAS_StringHolder> &to) const
    {
        if (!value.isArray())
            return input.failAt(value, "a list of strings");
        to.clear();
        return value.forEach([&](JSONText text) { return input.read(text, to.emplace_back()); });
    }
    bool operator()(MSH_ElementRefs &to) const
    {
        RQGMap map;
        if (!map.open(input, value) || !readRQGName(input, map.find("owner"), kRQGOwners, to.owner))
            return false;
        const JSONText offsets = map.find("offsets");
        map.close();
        return !offsets || input.read(offsets, to.offsets);
    }
    bool operator()(MSH_OpaqueHandle &to) const
    {
        RQGMap map;
        std::string kind, why;
        std::vector<uint8_t> bytes;
        if (value.raw() == "null")
            return to = nullptr, true;
        if (!map.open(input, value) || !map.read("kind", kind))
            return false;
        const JSONText content = map.find("bytes");
        map.close();
        if (content && !input.read(content, bytes))
            return false;
        to = MSH_Opaque::load(kind, bytes, why);
        return to || input.fail(value, why);
    }
    bool operator()(MSH_DetailList &to) const
    {
        std::vector<int64_t> numbers;
        if (!input.read(value, numbers))
            return false;
        to.clear();
        for (const int64_t number : numbers)
        {
            if (number < -1 || number >= std::ssize(input.details))
                return input.fail(value,
                                  fmt::format("expected the number of one of the {} details before this one, found {}",
                                              input.details.size(), number));
            to.push_back(number < 0 ? nullptr : input.details[size_t(number)].readLock());
            input.depth = std::max(input.depth, number < 0 ? 0 : input.depths[size_t(number)] + 1);
        }
        return true;
    }
};
}  // namespace

void writePayload(RQGOutput &output, const MSH_Payload &payload)
{
    output.json().beginMap();
    for (const MSH_ConstField &field : payload.fields())
    {
        output.key(field.name);
        std::visit([&](const auto *value) { FieldWriter{output}(*value); }, field.value);
    }
    output.json().endMap();
}

bool readPayload(RQGInput &input, JSONText map, MSH_Payload &payload)
{
    RQGMap members;
    if (!members.open(input, map))
        return false;
    for (const MSH_Field &field : payload.writableFields())
    {
        const JSONText value = members.find(field.name);
        if (value && !std::visit([&](auto *to) { return FieldReader{input, value}(*to); }, field.value))
            return false;
    }
    members.close();
    return true;
}
}  // namespace rq::io
