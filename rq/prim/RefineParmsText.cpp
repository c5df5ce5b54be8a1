#include <cstdio>
#include <string>

#include <host/bas/JSONWriter.h>
#include <host/msh/viewportLOD.h>
#include <rq/prim/RefineParms.h>

namespace
{
BAS_Options::Value valueOf_Bool(bool value) { return value; }

BAS_Options::Value valueOf_Int(int64_t value) { return value; }

BAS_Options::Value valueOf_Float(double value) { return value; }

BAS_Options::Value valueOf_Angle(double value) { return value; }

BAS_Options::Value valueOf_Text(const char *value) { return BAS_StringHolder(value); }

// A flag as `load` and `dump` see it.
struct Flag
{
    int bit;
    const char *key;
};

#define RQ_FLAG(bit, stem, key, fallback, meaning) {bit, key},
constexpr Flag kFlags[] = {RQ_FLAG_REFINE_OPTIONS(RQ_FLAG)};
#undef RQ_FLAG
}  // namespace

std::span<const RQ_RefineOption> RQ_RefineParms::options()
{
#define RQ_STORED(kind, stem, key, fallback, meaning) {key, #stem, valueOf_##kind(fallback), meaning},
#define RQ_FLAG(bit, stem, key, fallback, meaning) {key, #stem, valueOf_Bool(fallback), meaning},
    static const std::vector<RQ_RefineOption> table = [] {
        std::vector<RQ_RefineOption> all = {RQ_STORED_REFINE_OPTIONS(RQ_STORED) RQ_FLAG_REFINE_OPTIONS(RQ_FLAG){
            RQ_OVERRIDE_LOD_KEY, "OverridePackedViewportLOD", BAS_StringHolder(MSHviewportLOD(-1)),
            "name of the level of detail that packed geometry is shown at instead of its own"}};
        std::erase_if(all, [](const RQ_RefineOption &option) { return !option.key; });
        return all;
    }();
#undef RQ_STORED
#undef RQ_FLAG
    return table;
}

const RQ_RefineOption *RQ_RefineParms::findOption(const BAS_StringHolder &key)
{
    for (const RQ_RefineOption &option : options())
        if (key.view() == option.key)
            return &option;
    return nullptr;
}

bool RQ_RefineParms::load(const BAS_Options &options)
{
    store_.merge(options);
    for (const auto &[key, value] : options)
    {
        // Text does not tell 45 from 45.0: a whole number is what the option wants it to be.
        const RQ_RefineOption *option = findOption(key);
        const int64_t *whole = std::get_if<int64_t>(&value);
        if (option && whole && std::holds_alternative<double>(option->defaultValue))
            store_.set(key, double(*whole));
    }
    for (const Flag &flag : kFlags)
    {
        const BAS_Options::Value *value = flag.key ? options.find(flag.key) : nullptr;
        if (const bool *on = value ? std::get_if<bool>(value) : nullptr)
            setFlag(flag.bit, *on);
    }
    const BAS_Options::Value *level = options.find(RQ_OVERRIDE_LOD_KEY);
    if (const auto *name = level ? std::get_if<BAS_StringHolder>(level) : nullptr)
        setOverridePackedViewportLOD(MSHviewportLOD(name->c_str()));
    return true;
}

bool RQ_RefineParms::dump(BAS_WorkBuffer &text) const
{
    std::string json;
    BAS_JSONWriter writer(json);
    bool good = writer.beginMap();
    for (const auto &[key, value] : store_)
        good = good && writer.key(key.view()) && BAS_Options::saveValue(writer, value);
    for (const Flag &flag : kFlags)
        if (flag.key)
            good = good && writer.writeKeyBool(flag.key, (flags_ >> flag.bit & 1u) != 0);
    good = good && writer.writeKeyString(RQ_OVERRIDE_LOD_KEY, MSHviewportLOD(int(getOverridePackedViewportLOD())));
    if (material_)
        good = good && writer.key("viewport:material_attribute") && material_->save(writer, true);
    good = good && writer.endMap() && writer.flush();
    text.append(json);
    return good;
}

void RQ_RefineParms::dump() const
{
    BAS_WorkBuffer text;
    dump(text);
    text.push_back('\n');
    std::fwrite(text.data(), 1, text.size(), stdout);
}
