#pragma once

#include <algorithm>
#include <span>
#include <variant>
#include <vector>

#include <host/plt/types.h>

/// A short row of indices from 0 on, in the smallest of three widths that holds them all.
///
/// Shape    8, 16 or 32 bits an index, whatever `assign` found enough
/// Threads  reads are safe from any thread
class ELM_PackedIndices
{
public:
    using Rows = std::variant<std::vector<uint8_t>, std::vector<uint16_t>, std::vector<int32_t>>;

    ELM_PackedIndices() = default;
    explicit ELM_PackedIndices(std::span<const int32_t> indices) { assign(indices); }

    /// Negative indices are kept as they are, in 32 bits.
    void assign(std::span<const int32_t> indices)
    {
        uint32_t largest = 0;
        for (const int32_t index : indices)
            largest = std::max(largest, uint32_t(index));
        if (largest <= UINT8_MAX)
            rows_ = std::vector<uint8_t>(indices.begin(), indices.end());
        else if (largest <= UINT16_MAX)
            rows_ = std::vector<uint16_t>(indices.begin(), indices.end());
        else
            rows_ = std::vector<int32_t>(indices.begin(), indices.end());
    }

    int64_t size() const
    {
        return std::visit([](const auto &row) { return int64_t(row.size()); }, rows_);
    }
    int32_t operator[](int64_t i) const
    {
        return std::visit([i](const auto &row) { return int32_t(row[size_t(i)]); }, rows_);
    }

    /// The vector itself: dispatch once, then loop.
    const Rows &rows() const { return rows_; }

    std::vector<int32_t> unpacked() const
    {
        return std::visit([](const auto &row) { return std::vector<int32_t>(row.begin(), row.end()); }, rows_);
    }

    int64_t memoryUsage() const
    {
        return std::visit([](const auto &row) { return int64_t(row.capacity() * sizeof(row[0])); }, rows_);
    }

    bool operator==(const ELM_PackedIndices &) const = default;

private:
    Rows rows_;
};
