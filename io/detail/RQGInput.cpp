#include <io/detail/RQGInput.h>

#include <algorithm>
#include <charconv>

#include <rq/data/detail/numericTypes.h>

namespace rq::io
{
namespace
{
template <RQ_NumericValue T> bool parse(JSONText value, T &to)
{
    if (value.isMap() || value.isArray())
        return false;
    const std::string_view text = value.raw();
    if constexpr (std::same_as<T, PLT_Half>)
    {
        float real;
        const bool good = parse(value, real);
        to = good ? PLT_Half(real) : to;
        return good;
    }
    else if constexpr (std::floating_point<T>)
    {
        Scanner scanner(text);
        const bool isWord = value.isString() && text != "nan" && text != "inf" && text != "-inf";
        return !isWord && scanner.real(to) && scanner.atEnd();
    }
    else
    {
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), to);
        return !value.isString() && error == std::errc() && end == text.data() + text.size();
    }
}

template <RQ_NumericValue T> std::string expectation()
{
    if constexpr (std::integral<T>)
        return fmt::format("a whole number from {} to {}", int64_t(std::numeric_limits<T>::min()),
                           int64_t(std::numeric_limits<T>::max()));
    else
        return "a number";
}
}  // namespace

bool RQGInput::read(JSONText value, bool &to) const
{
    to = value.raw() == "true";
    return !value.isString() && (to || value.raw() == "false") ? true : failAt(value, "true or false");
}

bool RQGInput::read(JSONText value, std::string &to) const
{
    if (!value.isString())
        return failAt(value, "a string");
    to = value.string();
    return true;
}

bool RQGInput::read(JSONText value, BAS_StringHolder &to) const
{
    std::string text;
    const bool good = read(value, text);
    to = text;
    return good;
}

template <RQ_NumericValue T> bool RQGInput::read(JSONText value, T &to) const
{
    return parse(value, to) || failAt(value, expectation<T>());
}

bool RQGMap::open(RQGInput &input, JSONText map)
{
    input_ = &input;
    map_ = map;
    return map.isMap() ? map.forEachMember([this](JSONText key, JSONText value) {
        members_.push_back({key.string(), key, value});
        return true;
    })
                       : input.failAt(map, "a map");
}

JSONText RQGMap::find(std::string_view name) const
{
    // The last counts where a name comes twice, as everywhere in JSON.
    JSONText found;
    for (const Member &member : members_)
        if (member.name == name)
        {
            member.known = true;
            found = member.value;
        }
    return found;
}

void RQGMap::close() const
{
    for (const Member &member : members_)
        if (!member.known)
            input_->unknown.add(member.key.at());
}

bool RQGRow::open(const RQGInput &input, JSONText value)
{
    input_ = &input;
    at_ = value;
    if (value.isArray())
        return value.forEach([this](JSONText) { return ++size_ > 0; });
    int64_t number = -1;
    bool isColumn = false;
    if (value.isMap())
        value.forEachMember(
            [&](JSONText key, JSONText content) { return !(isColumn = key.raw() == "column" && parse(content, number)); });
    if (!isColumn)
        return input.failAt(value, "a list of numbers");
    if (number < 0 || number >= std::ssize(input.file.columns))
        return input.fail(value, fmt::format("expected a column, of which the file has {}, found number {}",
                                             input.file.columns.size(), number));
    column_ = &input.file.columns[size_t(number)];
    size_ = column_->count;
    return true;
}

template <RQ_NumericValue T> bool RQGRow::copyTo(T *to) const
{
    if (!column_)
        return at_.forEach([&](JSONText value) { return input_->read(value, *to++); });
    if (const T *values = inPlace<T>())
        return std::copy_n(values, size_, to), true;
    if constexpr (std::same_as<T, int64_t>)
        if (const int32_t *narrow = inPlace<int32_t>())
            return std::copy_n(narrow, size_, to), true;
    return input_->fail(at_, fmt::format("expected a column of {}, found one of {}", RQstorage(RQstorageOf<T>),
                                         RQstorage(column_->storage)));
}

#define RQ_INSTANTIATE(T, NAME, ARRAY)                                                                                      \
    template bool RQGInput::read(JSONText, T &) const;                                                                      \
    template bool RQGRow::copyTo(T *) const;
RQ_NUMERIC_TYPES(RQ_INSTANTIATE)
#undef RQ_INSTANTIATE
}  // namespace rq::io
