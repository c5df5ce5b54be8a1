#include <io/detail/PLYBody.h>

#include <cstring>
#include <limits>

#include <io/detail/LineBlocks.h>
#include <io/detail/PLYValues.h>
#include <io/detail/TextRecords.h>

namespace rq::io
{
namespace
{
/// The records of a text: one line each.
class PLYText final : public PLYBody
{
public:
    PLYText(const Source &source, const PLYHeader &header)
        : source_(source), header_(header), records_(source, {header.end, size_t(source.end() - header.end)})
    {}

    bool locate() override;
    bool readValues(size_t element, std::span<const PLYTarget> targets) override;
    bool readList(size_t element, int property, ELM_Storage storage, PLYList &list) override;
    const char *find(size_t element, int64_t record, int property, int64_t item) override;
    void warnOfSurplus() const override { records_.warnOfSurplus(first_.back()); }

private:
    const Source &source_;
    const PLYHeader &header_;
    TextRecords records_;
    std::vector<int64_t> first_;  // record of every element, and the end
};

template <class T> bool parse(TextCursor &cursor, T &value)
{
    const char *at = cursor.scanner.at();
    if constexpr (std::is_floating_point_v<T>)
        return cursor.scanner.real(value) || cursor.fail(at, "a number");
    else
    {
        int64_t number = 0;
        constexpr int64_t kLeast = std::numeric_limits<T>::min(), kMost = std::numeric_limits<T>::max();
        const bool isNumber = cursor.scanner.integer(number) && cursor.scanner.atWordEnd();
        value = T(number);
        return (isNumber && number >= kLeast && number <= kMost) ||
               cursor.fail(at, fmt::format("a whole number from {} to {}", kLeast, kMost));
    }
}

// Step over what a property has written.
bool pass(TextCursor &cursor, const PLYProperty &property)
{
    int64_t words = 1;
    if (property.isList())
    {
        cursor.scanner.toWord();
        const char *at = cursor.scanner.at();
        if (!cursor.scanner.integer(words) || !cursor.scanner.atWordEnd() || words < 0)
            return cursor.fail(at, fmt::format("the length of the list \"{}\"", property.name));
    }
    for (; words > 0; --words)
    {
        if (!cursor.scanner.toWord())
            return cursor.fail(cursor.scanner.at(), fmt::format("a value of \"{}\"", property.name));
        cursor.scanner.word();
    }
    return true;
}

bool PLYText::locate()
{
    if (!records_.count())
        return false;
    first_ = {0};
    for (const PLYElement &element : header_.elements)
    {
        const int64_t count = element.properties.empty() ? 0 : element.count;
        const int64_t left = records_.size() - first_.back();
        if (count > left)
            return source_.fail(source_.end(),
                                fmt::format("expected {} lines of \"{}\", found {}", count, element.name, left));
        first_.push_back(first_.back() + count);
    }
    return true;
}

bool PLYText::readValues(size_t element, std::span<const PLYTarget> targets)
{
    struct Field
    {
        bool (*read)(TextCursor &cursor, void *values, int64_t index, double divisor) = nullptr;
        char *values = nullptr;
        int64_t stride = 0;
        double divisor = 1.0;
    };
    const std::vector<PLYProperty> &properties = header_.elements[element].properties;
    std::vector<Field> fields(properties.size());
    for (const PLYTarget &target : targets)
    {
        for (int c = 0; c < target.components; ++c)
        {
            Field &field = fields[size_t(target.property + c)];
            visitPLYConversion(properties[size_t(target.property)].type, target.storage, [&](auto from, auto to) {
                using From = decltype(from);
                using To = decltype(to);
                field.read = [](TextCursor &cursor, void *values, int64_t index, double divisor) {
                    From value;
                    if (!parse(cursor, value))
                        return false;
                    static_cast<To *>(values)[index] = convertPLY<To>(value, divisor);
                    return true;
                };
                field.values = static_cast<char *>(target.values) + c * int(sizeof(To));
            });
            field.stride = target.stride;
            field.divisor = target.divisor;
        }
    }
    return records_.forEach(first_[element], first_[element + 1] - first_[element], [&](TextCursor &cursor) {
        const int64_t row = cursor.record - first_[element];
        for (size_t p = 0; p < fields.size(); ++p)
        {
            const Field &field = fields[p];
            cursor.scanner.toWord();
            if (!(field.read ? field.read(cursor, field.values, row * field.stride, field.divisor)
                             : pass(cursor, properties[p])))
                return false;
        }
        return true;
    });
}

bool PLYText::readList(size_t element, int property, ELM_Storage storage, PLYList &list)
{
    list.storage = storage;
    const std::vector<PLYProperty> &properties = header_.elements[element].properties;
    return visitPLYConversion(properties[size_t(property)].type, storage, [&](auto from, auto to) {
        using From = decltype(from);
        using To = decltype(to);
        const int64_t first = first_[element], count = first_[element + 1] - first;
        list.counts.resize(size_t(count));
        std::vector<std::vector<To>> blocks(size_t(records_.blocks()));
        const bool good = records_.forEach(first, count, [&](TextCursor &cursor) {
            for (int p = 0; p < int(properties.size()); ++p)
            {
                if (p != property && !pass(cursor, properties[size_t(p)]))
                    return false;
                if (p != property)
                    continue;
                int64_t items = 0;
                cursor.scanner.toWord();
                const char *at = cursor.scanner.at();
                if (!cursor.scanner.integer(items) || !cursor.scanner.atWordEnd() || items < 0 || items > INT32_MAX)
                    return cursor.fail(at, fmt::format("the length of the list \"{}\"", properties[size_t(p)].name));
                list.counts[size_t(cursor.record - first)] = int32_t(items);
                for (; items > 0; --items)
                {
                    From value;
                    cursor.scanner.toWord();
                    if (!parse(cursor, value))
                        return false;
                    blocks[size_t(cursor.block)].push_back(To(value));
                }
            }
            return true;
        });
        if (!good)
            return false;
        std::vector<size_t> before{0};
        for (const std::vector<To> &block : blocks)
            before.push_back(before.back() + block.size() * sizeof(To));
        list.bytes.resize(before.back());
        return forEachBlock(int64_t(blocks.size()), [&](int64_t b) {
            const std::vector<To> &block = blocks[size_t(b)];
            if (!block.empty())
                std::memcpy(list.bytes.data() + before[size_t(b)], block.data(), block.size() * sizeof(To));
        });
    });
}

const char *PLYText::find(size_t element, int64_t record, int property, int64_t item)
{
    const char *at = records_.find(first_[element] + record);
    TextCursor cursor{Scanner({at, size_t(source_.end() - at)})};
    for (int p = 0; p < property; ++p)
        pass(cursor, header_.elements[element].properties[size_t(p)]);
    for (; item >= 0; --item)
    {
        cursor.scanner.toWord();
        cursor.scanner.word();
    }
    cursor.scanner.toWord();
    return cursor.scanner.at();
}
}  // namespace

std::unique_ptr<PLYBody> makePLYText(const Source &source, const PLYHeader &header)
{
    return std::make_unique<PLYText>(source, header);
}
}  // namespace rq::io
