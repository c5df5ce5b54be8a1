#include <host/elm/NumericArrays.h>

#include <utility>

namespace
{
// Make the alternative of a variant that has the given number.
template <class Variant, size_t... kPlaces>
void makeAlternative(Variant &variant, size_t place, int tupleSize, int64_t size, std::index_sequence<kPlaces...>)
{
    ((place == kPlaces ? void(variant.template emplace<kPlaces>(tupleSize, size)) : void()), ...);
}
}  // namespace

ELM_NumericArrays::ELM_NumericArrays(ELM_Storage storage, int tupleSize, int64_t size)
{
    makeAlternative(arrays_, size_t(storage), tupleSize, size,
                    std::make_index_sequence<std::variant_size_v<decltype(arrays_)>>());
}

int ELM_NumericArrays::tupleSize() const
{
    return visit([](const auto &arrays) { return arrays.tupleSize(); });
}

const ELM_IndexedRows &ELM_NumericArrays::rows() const
{
    return visit([](const auto &arrays) -> const ELM_IndexedRows & { return arrays; });
}

ELM_IndexedRows &ELM_NumericArrays::rows()
{
    return visit([](auto &arrays) -> ELM_IndexedRows & { return arrays; });
}

int64_t ELM_NumericArrays::memoryUsage() const
{
    return visit([](const auto &arrays) { return arrays.memoryUsage(); });
}
