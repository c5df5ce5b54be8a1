#include <io/detail/RQGOutput.h>

#include <rq/data/detail/numericTypes.h>

namespace rq::io
{
namespace
{
BAS_Options layoutOf(RQGForm form)
{
    BAS_Options layout;
    if (form == RQGForm::Text)
        layout.set("int json:indentstep", int64_t(1));
    return layout;
}

/// What JSON writes rows of: the type itself, or the next that holds its values.
template <class T>
using Written = std::conditional_t<std::is_same_v<T, PLT_Half>, float, std::conditional_t<(sizeof(T) < 4), int32_t, T>>;
}  // namespace

RQGOutput::RQGOutput(RQGForm form) : form_(form), json_(structure_, layoutOf(form)) {}

template <RQ_NumericValue T> void RQGOutput::row(std::span<const T> values)
{
    if (form_ == RQGForm::Binary)
    {
        json_.beginMap();
        json_.writeKeyInt("column", std::ssize(columns_));
        json_.endMap();
        columns_.push_back({RQstorageOf<T>, std::ssize(values), reinterpret_cast<const char *>(values.data())});
    }
    else if constexpr (std::is_same_v<T, Written<T>>)
        json_.uniformArray(values.data(), std::ssize(values));
    else
    {
        const std::vector<Written<T>> written(values.begin(), values.end());
        json_.uniformArray(written.data(), std::ssize(written));
    }
}

template <RQ_NumericValue T> void RQGOutput::row(std::vector<T> values)
{
    const auto kept = std::make_shared<const std::vector<T>>(std::move(values));
    row(std::span<const T>(*kept));
    if (form_ == RQGForm::Binary)
        columns_.back().owner = kept;
}

std::string RQGOutput::finish()
{
    json_.flush();
    if (form_ == RQGForm::Binary)
        return RQGFile::write(structure_, columns_);
    structure_ += '\n';
    return std::move(structure_);
}

#define RQ_INSTANTIATE(T, NAME, ARRAY)                                                                                      \
    template void RQGOutput::row(std::span<const T>);                                                                       \
    template void RQGOutput::row(std::vector<T>);
RQ_NUMERIC_TYPES(RQ_INSTANTIATE)
#undef RQ_INSTANTIATE
}  // namespace rq::io
