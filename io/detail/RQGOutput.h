#pragma once

#include <span>
#include <unordered_map>

#include <host/bas/JSONWriter.h>
#include <host/mod/DetailHandle.h>
#include <rq/data/NumericTypes.h>
#include <io/RQGWriter.h>
#include <io/detail/JSONText.h>
#include <io/detail/RQGFile.h>

namespace rq::io
{
/// A file of either form while it is written.
class RQGOutput
{
public:
    explicit RQGOutput(RQGForm form);

    BAS_JSONWriter &json() { return json_; }

    void key(std::string_view name) { json_.key(name); }
    void text(std::string_view bytes) { json_.writeString(toJSONText(bytes)); }
    void keyText(std::string_view name, std::string_view bytes)
    {
        key(name);
        text(bytes);
    }

    /// Write a list of numbers: as an array, or as a column.  Numbers of a span must stay where they are until `finish`.
    template <RQ_NumericValue T> void row(std::span<const T> values);
    template <RQ_NumericValue T> void row(std::vector<T> values);

    /// The bytes of the file.
    std::string finish();

    std::unordered_map<const MSH_Detail *, int64_t> numbers;  ///< of the details that packed primitives refer to
    std::string failure;                                      ///< why something cannot be saved, empty when all can be

private:
    RQGForm form_;
    std::string structure_;
    BAS_JSONWriter json_;
    std::vector<RQGColumn> columns_;
};
}  // namespace rq::io
