#pragma once

#include <string>
#include <string_view>

namespace rq::io
{
/// A value of a JSON text, seen where it lies.  Nothing is built: lists of millions of numbers cost a look at their text.
///
/// The text must be well-formed (see `BAS_JSONValue::check`) and begin with a map: then nothing of this can fail.
class JSONText
{
public:
    /// No value.
    JSONText() = default;
    explicit JSONText(const char *first) : at_(first) {}

    explicit operator bool() const { return at_; }
    const char *at() const { return at_; }

    bool isMap() const { return *at_ == '{'; }
    bool isArray() const { return *at_ == '['; }
    bool isString() const { return *at_ == '"'; }

    /// The characters of the value; those of a string within its quotes, as they are written.
    std::string_view raw() const;

    /// What a string holds: any bytes (see `toJSONText`).
    std::string string() const;

    /// Call `visit(JSONText)` with the values of an array, or `visit(JSONText key, JSONText)` with the members of a map,
    /// until one call answers false.  Answers whether none did.
    template <class Visit> bool forEach(Visit &&visit) const
    {
        for (const char *p = blanks(at_ + 1); *p != ']';)
        {
            if (!visit(JSONText(p)))
                return false;
            p = next(p);
        }
        return true;
    }
    template <class Visit> bool forEachMember(Visit &&visit) const
    {
        for (const char *p = blanks(at_ + 1); *p != '}';)
        {
            const char *value = blanks(blanks(behind(p)) + 1);
            if (!visit(JSONText(p), JSONText(value)))
                return false;
            p = next(value);
        }
        return true;
    }

private:
    static const char *blanks(const char *p)
    {
        while (*p == ' ' || *p == '\n' || *p == '\t' || *p == '\r')
            ++p;
        return p;
    }
    static const char *behindString(const char *p);
    static const char *behind(const char *value);
    static const char *next(const char *value);

    const char *at_ = nullptr;
};

/// Any bytes as a text that JSON can hold, and `JSONText::string` turns back: a byte that is not UTF-8 is the character
/// U+EF00 plus the byte.  So are the bytes of the characters from U+EF80 to U+EFFF themselves.
std::string toJSONText(std::string_view bytes);
}  // namespace rq::io
