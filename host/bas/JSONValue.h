#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include <host/plt/types.h>

/// One value of a parsed JSON text.
///
/// Failure  lookups of an absent member or of another kind answer null or the fallback
class HOST_API BAS_JSONValue
{
public:
    using Array = std::vector<BAS_JSONValue>;
    using Map = std::vector<std::pair<std::string, BAS_JSONValue>>;
    using Content = std::variant<std::monostate, bool, int64_t, double, std::string, Array, Map>;

    BAS_JSONValue() = default;
    explicit BAS_JSONValue(Content value) : content(std::move(value)) {}

    /// Parse a whole text.  False with "byte OFFSET: what" in `error`, and a null value, when it is not JSON, is nested
    /// deeper than 1000 levels, or has anything but blanks behind the value.  Integers of up to 64 bits stay exact.  The
    /// strings "nan", "inf" and "-inf" stay strings here; `number` reads them.
    static bool parse(std::string_view text, BAS_JSONValue &value, std::string &error);

    /// Tell whether a whole text would be parsed, and build nothing of it.  Else `offset` is the byte that is wrong, and
    /// `what` tells why.
    static bool check(std::string_view text, int64_t &offset, const char *&what);

    bool isNull() const { return content.index() == 0; }
    const Array *array() const { return std::get_if<Array>(&content); }
    const Map *map() const { return std::get_if<Map>(&content); }
    const std::string *string() const { return std::get_if<std::string>(&content); }

    /// The member of a map, the last where a name comes twice; null when absent or not a map.
    const BAS_JSONValue *find(std::string_view name) const;

    /// Read a number (or "nan", "inf", "-inf").  False when it is neither.
    bool number(double &value) const;

    /// Read a whole number, also one that is written as a float.
    bool integer(int64_t &value) const;
    bool boolean(bool &value) const;

    Content content;
};
