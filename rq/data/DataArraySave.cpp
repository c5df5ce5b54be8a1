#include <cinttypes>
#include <cstdio>

#include <host/bas/JSONWriter.h>
#include <rq/data/detail/blocks.h>
#include <rq/data/detail/savedClass.h>

namespace
{
/// The type that values are written as: their own, or the next wider one that the writer has.
template <class T>
using Written = std::conditional_t<
    std::same_as<T, int64_t> || std::same_as<T, double>, T,
    std::conditional_t<std::same_as<T, PLT_Half>, float, std::conditional_t<std::is_integral_v<T>, int32_t, T>>>;

bool writeValue(BAS_JSONWriter &writer, int32_t value) { return writer.writeInt(value); }
bool writeValue(BAS_JSONWriter &writer, int64_t value) { return writer.writeInt(value); }
bool writeValue(BAS_JSONWriter &writer, float value) { return writer.writeReal32(value); }
bool writeValue(BAS_JSONWriter &writer, double value) { return writer.writeReal64(value); }

template <class T> bool writeNumbers(BAS_JSONWriter &writer, const RQ_DataArray &array)
{
    const int64_t tuple = array.getTupleSize();
    return rq::visitBlocks<T>(array, 0, array.entries(), [&](const T *values, int64_t, int64_t count) {
        bool good = true;
        for (int64_t i = 0; i < count && good; ++i)
            good = tuple == 1 ? writeValue(writer, values[i]) : writer.uniformArray(values + i * tuple, tuple);
        return good;
    });
}

template <class T> bool writeNumberArrays(BAS_JSONWriter &writer, const RQ_DataArray &array)
{
    BAS_ValArray<T> values;
    bool good = true;
    for (int64_t i = 0; i < array.entries() && good; ++i)
    {
        values.clear();
        array.import(i, values);
        good = writer.uniformArray(values.data(), int64_t(values.size()));
    }
    return good;
}

bool writeText(BAS_JSONWriter &writer, const BAS_StringHolder &text) { return writer.writeString(text.view()); }
bool writeText(BAS_JSONWriter &writer, const BAS_OptionsHolder &options) { return options.options().save(writer); }

template <class Value> bool writeTexts(BAS_JSONWriter &writer, const RQ_DataArray &array)
{
    const bool nested = array.hasArrayEntries() || array.getTupleSize() != 1;
    BAS_Array<Value> values;
    bool good = true;
    for (int64_t i = 0; i < array.entries() && good; ++i)
    {
        rq::readTexts(array, i, values);
        good = !nested || writer.beginArray();
        for (const Value &value : values)
            good = good && writeText(writer, value);
        good = good && (!nested || writer.endArray());
    }
    return good;
}

bool writeEntries(BAS_JSONWriter &writer, const RQ_DataArray &array)
{
    const RQ_Storage storage = array.getStorage();
    if (storage == RQ_STORAGE_STRING)
        return writeTexts<BAS_StringHolder>(writer, array);
    if (storage == RQ_STORAGE_DICTIONARY)
        return writeTexts<BAS_OptionsHolder>(writer, array);
    bool good = true;
    rq::dispatchStorage(storage, [&](auto tag) {
        using T = Written<typename decltype(tag)::type>;
        good = array.hasArrayEntries() ? writeNumberArrays<T>(writer, array) : writeNumbers<T>(writer, array);
    });
    return good;
}
}  // namespace

bool RQ_DataArray::save(BAS_JSONWriter &writer, bool describe) const
{
    bool good = true;
    if (describe)
    {
        const char *storage = RQstorage(getStorage());
        good = writer.beginMap() && writer.writeKeyString("class", rq::savedClass(*this)) &&
               writer.writeKeyString("storage", storage ? storage : "") &&
               writer.writeKeyString("type", RQtype(getTypeInfo())) && writer.writeKeyInt("size", getTupleSize()) &&
               writer.key("values");
    }
    good = good && writer.beginArray() && writeEntries(writer, *this) && writer.endArray();
    return good && (!describe || writer.endMap());
}

void RQ_DataArray::dumpValues(const char *label) const
{
    if (label)
    {
        std::printf("%s", label);
        std::fflush(stdout);
    }
    std::fprintf(stderr, "[id:%" PRId64 "]", getDataId());
    {
        BAS_JSONWriter writer(stdout);
        save(writer, true);
    }
    if (label)
        std::printf("\n");
    std::fflush(stdout);
}
