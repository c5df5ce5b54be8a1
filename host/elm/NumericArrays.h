#pragma once

#include <variant>

#include <host/elm/ArrayTuple.h>

/// The arrays of numbers of an attribute: an array column in one of the eight numeric storages.
///
/// Ownership, Threads  as `ELM_ArrayTuple`
class HOST_API ELM_NumericArrays
{
public:
    /// `size` empty arrays.  The storage must be numeric and the tuple size at least 1.
    ELM_NumericArrays(ELM_Storage storage, int tupleSize, int64_t size);

    ELM_Storage storage() const { return ELM_Storage(arrays_.index()); }
    int tupleSize() const;
    int64_t size() const { return rows().size(); }

    /// The arrays as values of type T; null when the storage is another.
    template <class T> const ELM_ArrayTuple<T> *as() const { return std::get_if<ELM_ArrayTuple<T>>(&arrays_); }
    template <class T> ELM_ArrayTuple<T> *as() { return std::get_if<ELM_ArrayTuple<T>>(&arrays_); }

    /// Call `visit` with the arrays in their own type: dispatch once per attribute, then loop.
    template <class Visit> decltype(auto) visit(Visit &&visit) const { return std::visit(visit, arrays_); }
    template <class Visit> decltype(auto) visit(Visit &&visit) { return std::visit(visit, arrays_); }

    /// The places of the arrays, whatever their type.
    const ELM_IndexedRows &rows() const;
    ELM_IndexedRows &rows();

    int64_t memoryUsage() const;

private:
    // In the order of the storages, so that the index is the storage.
    std::variant<ELM_ArrayTuple<uint8_t>, ELM_ArrayTuple<int8_t>, ELM_ArrayTuple<int16_t>, ELM_ArrayTuple<int32_t>,
                 ELM_ArrayTuple<int64_t>, ELM_ArrayTuple<PLT_Half>, ELM_ArrayTuple<float>, ELM_ArrayTuple<double>>
        arrays_;
};
