#include <apps/viewport/window/optionValues.h>

#include <host/bas/JSONValue.h>

namespace rq::viewport
{
namespace
{
/// Reads a value of the type that another one has; that one when it cannot.
struct TypedRead
{
    const BAS_JSONValue &json;

    BAS_Options::Value operator()(bool fallback) const { return json.boolean(fallback), fallback; }
    BAS_Options::Value operator()(int64_t fallback) const { return json.integer(fallback), fallback; }
    BAS_Options::Value operator()(double fallback) const { return json.number(fallback), fallback; }
    BAS_Options::Value operator()(const BAS_StringHolder &fallback) const
    {
        return json.string() ? BAS_StringHolder(*json.string()) : fallback;
    }
    template <class Number> BAS_Options::Value operator()(const std::vector<Number> &fallback) const { return fallback; }
};
}  // namespace

// Options lie in a store and in bits; what they write of themselves has both.
std::vector<BAS_Options::Value> optionValues(const RQ_RefineParms &parms)
{
    BAS_WorkBuffer text;
    parms.dump(text);
    BAS_JSONValue all;
    std::string error;
    BAS_JSONValue::parse({text.data(), text.size()}, all, error);
    std::vector<BAS_Options::Value> values;
    for (const RQ_RefineOption &option : RQ_RefineParms::options())
    {
        const BAS_JSONValue *json = all.find(option.key);
        values.push_back(json ? std::visit(TypedRead{*json}, option.defaultValue) : option.defaultValue);
    }
    return values;
}

void setOption(RQ_RefineParms &parms, const RQ_RefineOption &option, const BAS_Options::Value &value)
{
    const auto *text = std::get_if<BAS_StringHolder>(&value);
    if (text && text->view().empty() && option.key == std::string_view("geo:refinegroup"))
        return parms.setGeoRefineGroup(nullptr);  // no name is no group, not the group without a name
    BAS_Options options;
    options.set(option.key, value);
    parms.load(options);
}
}  // namespace rq::viewport
