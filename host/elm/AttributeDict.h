#pragma once

#include <vector>

#include <host/elm/Attribute.h>

/// The attributes of one owner, in order of insertion, found by scope and name.
///
/// Ownership  shares its attributes; copies of the dictionary share the same ones
/// Cost       lookup walks the attributes: there are few, and comparing names is comparing pointers or hashes
class HOST_API ELM_AttributeDict
{
public:
    int64_t size() const { return int64_t(attributes_.size()); }
    const ELM_Attribute &operator[](int64_t i) const { return *attributes_[size_t(i)]; }

    /// Null when there is none.
    const ELM_Attribute *find(ELM_Scope scope, std::string_view name) const;

    /// True when the dictionary holds this very object.
    bool holds(const ELM_Attribute &attribute) const;

    /// Add an attribute at the end, or in the place of the one of the same scope and name.
    ELM_Attribute *insert(ELM_AttributeHandle attribute);

    /// Drop an attribute.  False when there is none.
    bool remove(ELM_Scope scope, std::string_view name);

    /// An attribute to write: a copy takes its place when others share it.  Null when there is none.
    ELM_Attribute *writable(ELM_Scope scope, std::string_view name);
    ELM_Attribute *writable(int64_t i);

    /// In order: `for (const ELM_Attribute &attribute : dict)`.
    class Iterator
    {
    public:
        using Inner = std::vector<ELM_AttributeHandle>::const_iterator;
        explicit Iterator(Inner at) : at_(at) {}
        const ELM_Attribute &operator*() const { return **at_; }
        Iterator &operator++()
        {
            ++at_;
            return *this;
        }
        bool operator==(const Iterator &) const = default;

    private:
        Inner at_;
    };
    Iterator begin() const { return Iterator(attributes_.begin()); }
    Iterator end() const { return Iterator(attributes_.end()); }

private:
    int64_t place(ELM_Scope scope, std::string_view name) const;

    std::vector<ELM_AttributeHandle> attributes_;
};
