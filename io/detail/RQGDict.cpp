#include <io/detail/RQGDict.h>

#include <algorithm>
#include <array>

namespace rq::io
{
namespace
{
// In the order of the types of `BAS_Options::Value`.
constexpr std::array<std::string_view, 6> kTypes = {"bool", "int", "float", "string", "intarray", "floatarray"};

// The type that a key names.
size_t typeOf(std::string_view key)
{
    const size_t blank = key.find(' ');
    return blank == key.npos ? kTypes.size()
                             : size_t(std::find(kTypes.begin(), kTypes.end(), key.substr(0, blank)) - kTypes.begin());
}

// The type of a number, or of numbers, by what they look like.
size_t typeOf(JSONText value)
{
    const bool isReal = value.raw().find_first_of(".eEni") != std::string_view::npos;
    return value.isArray() ? 4 + isReal : value.isString() ? 3 : *value.at() == 't' || *value.at() == 'f' ? 0 : 1 + isReal;
}

template <size_t type = 0> bool readOption(const RQGInput &input, JSONText value, size_t wanted, BAS_Options::Value &to)
{
    if constexpr (type < kTypes.size())
        return type == wanted ? input.read(value, to.emplace<type>()) : readOption<type + 1>(input, value, wanted, to);
    else
        return false;
}
}  // namespace

void writeDict(RQGOutput &output, const BAS_OptionsHolder &dict)
{
    output.json().beginMap();
    for (const auto &[key, value] : dict.options())
    {
        output.key(std::string(kTypes[value.index()]) + ' ' + toJSONText(key.view()));
        if (const BAS_StringHolder *text = std::get_if<BAS_StringHolder>(&value))
            output.text(text->view());
        else
            BAS_Options::saveValue(output.json(), value);
    }
    output.json().endMap();
}

bool readDict(const RQGInput &input, JSONText map, BAS_OptionsHolder &to)
{
    if (!map.isMap())
        return input.failAt(map, "a map");
    BAS_Options options;
    const bool good = map.forEachMember([&](JSONText key, JSONText value) {
        const std::string name = key.string();
        const size_t named = typeOf(name);
        BAS_Options::Value read;
        if (!readOption(input, value, named < kTypes.size() ? named : typeOf(value), read))
            return false;
        options.set(name, std::move(read));
        return true;
    });
    to = BAS_OptionsHolder(std::move(options));
    return good;
}
}  // namespace rq::io
