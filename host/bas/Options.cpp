#include <host/bas/Options.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <type_traits>

#include <host/bas/JSONWriter.h>
#include <host/bas/hashBytes.h>

namespace
{
/// The name in a key of the form "type name"; the whole key when its first word is no type.
std::string_view plainName(std::string_view key)
{
    static constexpr std::array<std::string_view, 6> kTypes = {"bool", "int", "float", "string", "intarray", "floatarray"};
    const size_t blank = key.find(' ');
    if (blank == std::string_view::npos || std::find(kTypes.begin(), kTypes.end(), key.substr(0, blank)) == kTypes.end())
        return key;
    return key.substr(blank + 1);
}

/// A handle for the plain name; the given handle itself in the common case.
BAS_StringHolder plainKey(const BAS_StringHolder &key)
{
    const std::string_view name = plainName(key.view());
    return name.size() == key.length() ? key : BAS_StringHolder(name);
}

// Equal numbers must hash equal: both zeros, and every not-a-number.
uint64_t bitsOf(double value)
{
    return value == 0.0 ? 0 : std::isnan(value) ? ~uint64_t(0) : std::bit_cast<uint64_t>(value);
}

uint64_t bitsOf(int64_t value) { return uint64_t(value); }

uint64_t hashValue(const BAS_Options::Value &value)
{
    return std::visit(
        [&](const auto &stored) {
            using T = std::decay_t<decltype(stored)>;
            uint64_t hash = host::hashWord(0, value.index());
            if constexpr (std::is_same_v<T, BAS_StringHolder>)
                hash = host::hashWord(hash, host::hashBytes(stored.view()));
            else if constexpr (std::is_same_v<T, bool>)
                hash = host::hashWord(hash, stored);
            else if constexpr (std::is_arithmetic_v<T>)
                hash = host::hashWord(hash, bitsOf(stored));
            else
                for (const auto item : stored)
                    hash = host::hashWord(hash, bitsOf(item));
            return hash;
        },
        value);
}

bool isClose(double a, double b, double tolerance)
{
    return a == b || std::abs(a - b) <= tolerance || (std::isnan(a) && std::isnan(b));
}

bool isClose(int64_t a, int64_t b, double tolerance) { return a == b || std::abs(double(a) - double(b)) <= tolerance; }

bool isSame(const BAS_Options::Value &a, const BAS_Options::Value &b, double tolerance)
{
    if (a.index() != b.index())
        return false;
    return std::visit(
        [&](const auto &left) {
            using T = std::decay_t<decltype(left)>;
            const T &right = std::get<T>(b);
            if constexpr (std::is_same_v<T, bool> || std::is_same_v<T, BAS_StringHolder>)
                return left == right;
            else if constexpr (std::is_arithmetic_v<T>)
                return isClose(left, right, tolerance);
            else
                return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                                  [=](auto x, auto y) { return isClose(x, y, tolerance); });
        },
        a);
}
}  // namespace

const BAS_Options::Value *BAS_Options::find(const BAS_StringHolder &key) const
{
    auto found = map_.find(key);
    if (found == map_.end() && plainName(key.view()).size() < key.length())
        found = map_.find(plainKey(key));
    return found == map_.end() ? nullptr : &found->second;
}

void BAS_Options::set(const BAS_StringHolder &key, Value value) { map_.insert_or_assign(plainKey(key), std::move(value)); }

bool BAS_Options::remove(const BAS_StringHolder &key) { return map_.erase(plainKey(key)) > 0; }

void BAS_Options::merge(const BAS_Options &other)
{
    for (const auto &[key, value] : other.map_)
        map_.insert_or_assign(key, value);
}

bool BAS_Options::import(const BAS_StringHolder &key, bool &value) const
{
    const Value *stored = find(key);
    const bool *typed = stored ? std::get_if<bool>(stored) : nullptr;
    if (typed)
        value = *typed;
    return typed != nullptr;
}

bool BAS_Options::import(const BAS_StringHolder &key, int64_t &value) const
{
    bool flag;
    if (import(key, flag))
        value = flag;
    else if (const Value *stored = find(key); stored && std::holds_alternative<int64_t>(*stored))
        value = std::get<int64_t>(*stored);
    else
        return false;
    return true;
}

bool BAS_Options::import(const BAS_StringHolder &key, double &value) const
{
    int64_t whole;
    if (import(key, whole))
        value = double(whole);
    else if (const Value *stored = find(key); stored && std::holds_alternative<double>(*stored))
        value = std::get<double>(*stored);
    else
        return false;
    return true;
}

bool BAS_Options::import(const BAS_StringHolder &key, BAS_StringHolder &value) const
{
    const Value *stored = find(key);
    const BAS_StringHolder *typed = stored ? std::get_if<BAS_StringHolder>(stored) : nullptr;
    if (typed)
        value = *typed;
    return typed != nullptr;
}

bool BAS_Options::import(const BAS_StringHolder &key, std::vector<int64_t> &value) const
{
    int64_t single;
    if (import(key, single))
        value.assign(1, single);
    else if (const Value *stored = find(key); stored && std::holds_alternative<std::vector<int64_t>>(*stored))
        value = std::get<std::vector<int64_t>>(*stored);
    else
        return false;
    return true;
}

bool BAS_Options::import(const BAS_StringHolder &key, std::vector<double> &value) const
{
    double single;
    std::vector<int64_t> whole;
    if (import(key, single))
        value.assign(1, single);
    else if (import(key, whole))
        value.assign(whole.begin(), whole.end());
    else if (const Value *stored = find(key); stored && std::holds_alternative<std::vector<double>>(*stored))
        value = std::get<std::vector<double>>(*stored);
    else
        return false;
    return true;
}

uint32_t BAS_Options::hash() const
{
    uint64_t sum = 0;
    for (const auto &[key, value] : map_)
        sum += host::hashWord(host::hashBytes(key.view()), hashValue(value));
    return uint32_t(sum ^ (sum >> 32));
}

bool BAS_Options::isEqual(const BAS_Options &other, double tolerance) const
{
    if (this == &other)
        return true;
    return entries() == other.entries() && std::all_of(map_.begin(), map_.end(), [&](const auto &entry) {
               const auto twin = other.map_.find(entry.first);
               return twin != other.map_.end() && isSame(entry.second, twin->second, tolerance);
           });
}

bool BAS_Options::saveValue(BAS_JSONWriter &writer, const Value &value)
{
    return std::visit(
        [&](const auto &stored) {
            using T = std::decay_t<decltype(stored)>;
            if constexpr (std::is_same_v<T, bool>)
                return writer.writeBool(stored);
            else if constexpr (std::is_same_v<T, int64_t>)
                return writer.writeInt(stored);
            else if constexpr (std::is_same_v<T, double>)
                return writer.writeReal64(stored);
            else if constexpr (std::is_same_v<T, BAS_StringHolder>)
                return writer.writeString(stored.view());
            else
                return writer.uniformArray(stored.data(), int64_t(stored.size()));
        },
        value);
}

bool BAS_Options::save(BAS_JSONWriter &writer) const
{
    bool good = writer.beginMap();
    for (const auto &[key, value] : map_)
        good = good && writer.key(key.view()) && saveValue(writer, value);
    return good && writer.endMap();
}

int64_t BAS_Options::getMemoryUsage() const
{
    int64_t bytes = int64_t(sizeof(*this) + map_.bucket_count() * sizeof(uint64_t));
    for (const auto &[key, value] : map_)
    {
        bytes += int64_t(sizeof(key) + sizeof(value)) + key.getMemoryUsage();
        if (const auto *text = std::get_if<BAS_StringHolder>(&value))
            bytes += text->getMemoryUsage();
        else if (const auto *whole = std::get_if<std::vector<int64_t>>(&value))
            bytes += int64_t(whole->capacity() * sizeof(int64_t));
        else if (const auto *reals = std::get_if<std::vector<double>>(&value))
            bytes += int64_t(reals->capacity() * sizeof(double));
    }
    return bytes;
}
