#pragma once

#include <variant>
#include <vector>

#include <tsl/ordered_map.h>

#include <host/bas/StringHolder.h>

class BAS_JSONWriter;

/// A typed name-to-value map that keeps the order of insertion; replacing a value keeps its place.
///
/// Shape    a key may name its type before a blank, as "int json:indentstep"; it means the key behind the blank
/// Failure  lookups of an absent key or of another type give the caller's default, `import` answers false
/// Threads  safe to read from many threads while nobody writes
class HOST_API BAS_Options
{
public:
    using Value = std::variant<bool, int64_t, double, BAS_StringHolder, std::vector<int64_t>, std::vector<double>>;
    using Map = tsl::ordered_map<BAS_StringHolder, Value, std::hash<BAS_StringHolder>>;

    int64_t entries() const { return int64_t(map_.size()); }
    bool isEmpty() const { return map_.empty(); }
    bool has(const BAS_StringHolder &key) const { return find(key) != nullptr; }

    /// The value stored under `key`, null when absent.  Valid until the next change.
    const Value *find(const BAS_StringHolder &key) const;

    void set(const BAS_StringHolder &key, Value value);
    bool remove(const BAS_StringHolder &key);
    void clear() { map_.clear(); }

    /// Take over every entry of `other`, replacing those of the same key.
    void merge(const BAS_Options &other);

    /// Strict read: the stored value when it is a T, else the default.  No conversion.
    template <class T> T get(const BAS_StringHolder &key, T fallback) const
    {
        const Value *value = find(key);
        const T *typed = value ? std::get_if<T>(value) : nullptr;
        return typed ? *typed : fallback;
    }

    /// Read with conversion: bool to int to float, a single number to an array of one, an array of int to one of float.
    /// Returns whether the key was there and convertible; `value` is untouched otherwise.
    bool import(const BAS_StringHolder &key, bool &value) const;
    bool import(const BAS_StringHolder &key, int64_t &value) const;
    bool import(const BAS_StringHolder &key, double &value) const;
    bool import(const BAS_StringHolder &key, BAS_StringHolder &value) const;
    bool import(const BAS_StringHolder &key, std::vector<int64_t> &value) const;
    bool import(const BAS_StringHolder &key, std::vector<double> &value) const;

    /// 32-bit hash of keys and values; independent of the order of entries, the same in every process.
    uint32_t hash() const;

    /// Same keys with the same types and values; numbers may differ by `tolerance` (0.0 is exact). Order does not count.
    bool isEqual(const BAS_Options &other, double tolerance = 0.0) const;

    /// Write one entry's value, or all entries as a map.
    static bool saveValue(BAS_JSONWriter &writer, const Value &value);
    bool save(BAS_JSONWriter &writer) const;

    int64_t getMemoryUsage() const;

    Map::const_iterator begin() const { return map_.begin(); }
    Map::const_iterator end() const { return map_.end(); }

private:
    Map map_;
};
