#pragma once

#include <algorithm>
#include <cstring>
#include <limits>

#include <io/detail/GLTFModel.h>

namespace rq::io
{
/// Call `visit` with a value of the type that components of an accessor have, which is one of them.
template <class Visit> decltype(auto) visitGLTFComponent(int type, Visit &&visit)
{
    switch (type)
    {
    case TINYGLTF_COMPONENT_TYPE_BYTE:
        return visit(int8_t());
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE:
        return visit(uint8_t());
    case TINYGLTF_COMPONENT_TYPE_SHORT:
        return visit(int16_t());
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT:
        return visit(uint16_t());
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT:
        return visit(uint32_t());
    default:
        return visit(float());
    }
}

/// The rows of an accessor, known to lie within their buffers.
///
/// Ownership  none: valid while the model lives
class GLTFAccessor
{
public:
    /// Find accessor `number`.  False with what is wrong with it.
    bool open(const tinygltf::Model &model, int number, std::string &error);

    int64_t count() const { return count_; }
    int components() const { return components_; }

    /// True when rows are whole numbers that do not stand for fractions.
    bool isInteger() const { return type_ != TINYGLTF_COMPONENT_TYPE_FLOAT && !normalized_; }
    int componentType() const { return type_; }

    /// Write the first `components` of every row, side by side; those that rows do not have are left alone.
    template <class T> void read(T *to, int components) const
    {
        visitGLTFComponent(type_, [&]<class From>(From) {
            const int shared = std::min(components, components_);
            const auto copyRow = [&](const unsigned char *from, T *row) {
                for (int c = 0; c < shared; ++c)
                    row[c] = convert<T, From>(from + size_t(c) * sizeof(From));
            };
            for (int64_t row = 0; row < count_; ++row)
                if (first_)
                    copyRow(first_ + row * stride_, to + row * components);
                else
                    std::fill_n(to + row * components, shared, T(0));
            for (int64_t i = 0; i < sparse_; ++i)
                copyRow(sparseValues_ + i * components_ * int64_t(sizeof(From)), to + sparseRow(i) * components);
        });
    }

private:
    bool openSparse(const tinygltf::Model &model, const tinygltf::Accessor &accessor, int64_t rowBytes, std::string &error);
    int64_t sparseRow(int64_t i) const;

    template <class T, class From> T convert(const unsigned char *from) const
    {
        From value;
        std::memcpy(&value, from, sizeof(From));
        if constexpr (std::is_integral_v<From> && std::is_floating_point_v<T>)
            if (normalized_)
                return std::max(T(value) / T(std::numeric_limits<From>::max()), T(-1));
        return T(value);
    }

    const unsigned char *first_ = nullptr;  // null: zeros
    int64_t count_ = 0;
    int64_t stride_ = 0;
    int components_ = 0;
    int type_ = 0;
    bool normalized_ = false;

    int64_t sparse_ = 0;  // rows that are told apart
    const unsigned char *sparseRows_ = nullptr;
    int sparseRowType_ = 0;
    const unsigned char *sparseValues_ = nullptr;
};
}  // namespace rq::io
