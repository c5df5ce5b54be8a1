#include <io/detail/OBJCorners.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>
#include <unordered_map>

namespace rq::io
{
namespace
{
template <class T> void appendNumber(std::string &text, T value)
{
    if constexpr (std::is_same_v<T, PLT_Half>)
        return appendNumber(text, float(value));
    else if constexpr (std::is_floating_point_v<T>)
        if (std::isnan(value))
        {
            // Without a sign, which not every reader takes.
            text += "nan";
            return;
        }
    char digits[32];
    if constexpr (!std::is_same_v<T, PLT_Half>)
        text.append(digits, std::to_chars(digits, digits + sizeof(digits), value).ptr);
}
}  // namespace

void appendOBJNumbers(std::string &text, const ELM_Attribute &attribute, int64_t row)
{
    attribute.numericTuple()->visit([&](const auto &pages) {
        for (int c = 0; c < pages.tupleSize(); ++c)
        {
            text += ' ';
            appendNumber(text, pages.value(row, c));
        }
    });
}

const ELM_Attribute *OBJCorners::take(const MSH_Detail &detail, const char *name, int least, int most)
{
    for (const ELM_Owner owner : {ELM_OWNER_VERTEX, ELM_OWNER_POINT})
    {
        const ELM_Attribute *found = detail.find(owner, name);
        const bool fits = found && found->numericTuple() && found->storageClass() == ELM_STORAGE_CLASS_FLOAT &&
                          found->tupleSize() >= least && found->tupleSize() <= most;
        if (fits && !attribute_)
            attribute_ = found;
    }
    if (!attribute_)
        return nullptr;
    detail_ = &detail;
    attribute_->numericTuple()->visit([this](const auto &pages) {
        std::unordered_map<std::string_view, int64_t> known;
        const size_t bytes = size_t(pages.tupleSize()) * sizeof(pages.value(0));
        for (int64_t row = 0; row < pages.size(); ++row)
        {
            const auto *tuple = pages.tuple(row);
            const std::string_view key(reinterpret_cast<const char *>(tuple), bytes);
            const auto [place, isNew] = known.emplace(key, int64_t(rows_.size()) + 1);
            if (isNew)
            {
                rows_.push_back(row);
                zeros_.push_back(std::all_of(tuple, tuple + pages.tupleSize(), [](auto v) { return double(v) == 0.0; }));
            }
            numbers_.push_back(place->second);
        }
    });
    return attribute_;
}

int64_t OBJCorners::number(ELM_Offset vertex) const
{
    const bool isOfPoints = attribute_->owner() == ELM_OWNER_POINT;
    return numbers_[size_t(isOfPoints ? detail_->vertexPoint(vertex) : vertex)];
}

void OBJCorners::write(std::string &text, const char *word) const
{
    for (const int64_t row : rows_)
    {
        text += word;
        appendOBJNumbers(text, *attribute_, row);
        text += '\n';
    }
}
}  // namespace rq::io
