#pragma once

#include <limits>
#include <utility>

#include <host/bas/StringHolder.h>
#include <host/mod/DetailHandle.h>
#include <rq/data/NumericTypes.h>
#include <io/detail/JSONText.h>
#include <io/detail/RQGFile.h>
#include <io/detail/Tally.h>

namespace rq::io
{
/// A file of either form while it is read: where its lists of numbers are, and what was read so far.
struct RQGInput
{
    const Source &source;
    RQGFile file = {};
    std::shared_ptr<const void> owner = {};  ///< keeps the columns where they are; null when nothing may stay there

    std::vector<MOD_ConstDetailHandle> details = {};  ///< those that packed primitives refer to by number
    std::vector<int> depths = {};                     ///< how many levels of them each has, itself included
    int depth = 1;                                    ///< of the detail that is being read
    Tally unknown = {};                               ///< keys

    /// Always false.
    bool fail(JSONText at, std::string what) const { return source.fail(at.at(), std::move(what)); }
    bool failAt(JSONText at, std::string_view expected) const { return source.failAtWord(at.at(), expected); }

    // Read one value of a kind; false with a message when it is of another.
    bool read(JSONText value, bool &to) const;
    bool read(JSONText value, std::string &to) const;
    bool read(JSONText value, BAS_StringHolder &to) const;
    template <RQ_NumericValue T> bool read(JSONText value, T &to) const;
    template <RQ_NumericValue T> bool read(JSONText list, std::vector<T> &to) const;
};

/// The members of a map, by their names.
class RQGMap
{
public:
    /// False with a message when the value is no map.
    bool open(RQGInput &input, JSONText map);

    JSONText at() const { return map_; }
    bool has(std::string_view name) const { return bool(find(name)); }

    /// The value of a name, which counts as known from then on; none when it is absent.
    JSONText find(std::string_view name) const;

    /// Read a value; one that is absent leaves what is there.
    template <class T> bool read(std::string_view name, T &to) const
    {
        const JSONText value = find(name);
        return !value || input_->read(value, to);
    }

    /// Count the members that nobody asked for.
    void close() const;

private:
    struct Member
    {
        std::string name;
        JSONText key, value;
        mutable bool known = false;
    };

    RQGInput *input_ = nullptr;
    JSONText map_;
    std::vector<Member> members_;
};

/// A list of numbers: an array of the text, or a column.
class RQGRow
{
public:
    /// False with a message when the value is neither.
    bool open(const RQGInput &input, JSONText value);

    JSONText at() const { return at_; }
    int64_t size() const { return size_; }

    /// Read them all.  False with a message at the first that T does not hold, or when the column is of another storage.
    template <RQ_NumericValue T> bool copyTo(T *to) const;

    /// The numbers where they lie; null when they are text, or of another storage.
    template <RQ_NumericValue T> const T *inPlace() const
    {
        return column_ && column_->storage == RQstorageOf<T> ? reinterpret_cast<const T *>(column_->values) : nullptr;
    }

private:
    const RQGInput *input_ = nullptr;
    JSONText at_;
    const RQGColumn *column_ = nullptr;
    int64_t size_ = 0;
};

template <RQ_NumericValue T> bool RQGInput::read(JSONText list, std::vector<T> &to) const
{
    RQGRow row;
    if (!row.open(*this, list))
        return false;
    to.resize(size_t(row.size()));
    return row.copyTo(to.data());
}
}  // namespace rq::io
