#include <rq/data/detail/readOptions.h>

#include <host/bas/JSONValue.h>
#include <host/bas/OptionsHolder.h>

namespace
{
/// Read an array of numbers: of integers when all of them are.
bool readNumbers(const BAS_JSONValue::Array &array, BAS_Options::Value &value)
{
    std::vector<int64_t> integers;
    std::vector<double> reals;
    for (const BAS_JSONValue &item : array)
    {
        double real;
        if (!item.number(real))
            return false;
        reals.push_back(real);
        if (const int64_t *integer = std::get_if<int64_t>(&item.content))
            integers.push_back(*integer);
    }
    if (integers.size() == reals.size())
        value = std::move(integers);
    else
        value = std::move(reals);
    return true;
}

bool readMember(const BAS_JSONValue &member, BAS_Options::Value &value)
{
    return std::visit(
        [&](const auto &content) {
            using T = std::decay_t<decltype(content)>;
            if constexpr (std::is_same_v<T, BAS_JSONValue::Array>)
                return readNumbers(content, value);
            else if constexpr (std::is_same_v<T, std::string>)
                value = BAS_StringHolder(content);
            else if constexpr (std::is_arithmetic_v<T>)
                value = content;
            else
                return false;
            return true;
        },
        member.content);
}
}  // namespace

namespace rq
{
bool readOptions(const BAS_JSONValue &value, BAS_OptionsHolder &options)
{
    const BAS_JSONValue::Map *map = value.map();
    if (!map)
        return false;
    BAS_Options read;
    for (const auto &[name, member] : *map)
    {
        BAS_Options::Value content;
        if (!readMember(member, content))
            return false;
        read.set(name, std::move(content));
    }
    options = BAS_OptionsHolder(std::move(read));
    return true;
}
}  // namespace rq
