#include <io/SWCReader.h>

#include <algorithm>
#include <new>
#include <unordered_map>

#include <host/mod/Edit.h>
#include <io/detail/TextRecords.h>

namespace rq::io
{
namespace
{
constexpr int32_t kNone = -1, kTaken = -2;

class SWCAssembly
{
public:
    explicit SWCAssembly(const Source &source) : source_(source), lines_(source, source.text) {}

    bool build(MOD_DetailHandle &detail)
    {
        if (!readLines() || !connect() || !checkRings())
            return false;
        findChains();
        lines_.warnOfSurplus(lines_.size());
        if (positions_.empty())
            source_.messages.warn(source_.name, {}, "expected samples, found none");

        MOD_DetailHandle result;
        MOD_Edit edit(result);
        const int64_t count = std::ssize(kinds_);
        if (!edit.appendPoints(count) || !edit.appendPolygons(corners_, points_, false))
            return source_.messages.fail(source_.name, {}, edit.message());
        edit.attribute(ELM_OWNER_POINT, ELM_POSITION_NAME, ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)
            ->write(0, count, positions_.data());
        edit.attribute(ELM_OWNER_POINT, "width", ELM_STORAGE_REAL32)->write(0, count, widths_.data());
        edit.attribute(ELM_OWNER_POINT, "kind", ELM_STORAGE_INT32)->write(0, count, kinds_.data());
        edit.commit();
        detail = result;
        return true;
    }

private:
    bool readLines()
    {
        if (!lines_.count())
            return false;
        if (lines_.size() > INT32_MAX)
            return source_.fail(lines_.find(0), fmt::format("expected at most {} samples, found more", INT32_MAX));
        const size_t count = size_t(lines_.size());
        positions_.resize(3 * count);
        widths_.resize(count);
        for (std::vector<int32_t> *column : {&numbers_, &kinds_, &parents_})
            column->resize(count);
        return lines_.forEach(0, lines_.size(), [&](TextCursor &cursor) { return readSample(cursor); });
    }

    bool readSample(TextCursor &cursor)
    {
        const size_t row = size_t(cursor.record);
        const auto readInteger = [&](int32_t &to, const char *expected) {
            cursor.scanner.toWord();
            const char *at = cursor.scanner.at();
            int64_t value;
            if (!cursor.scanner.integer(value) || !cursor.scanner.atWordEnd() || value != int32_t(value))
                return cursor.fail(at, expected);
            to = int32_t(value);
            return true;
        };
        const auto readReal = [&](float &to) {
            cursor.scanner.toWord();
            return cursor.scanner.real(to) || cursor.fail(cursor.scanner.at(), "a number");
        };
        if (!readInteger(numbers_[row], "the number of a sample") || !readInteger(kinds_[row], "the kind of a sample") ||
            !readReal(positions_[3 * row]) || !readReal(positions_[3 * row + 1]) || !readReal(positions_[3 * row + 2]) ||
            !readReal(widths_[row]) || !readInteger(parents_[row], "the number of the sample before, or -1"))
            return false;
        widths_[row] *= 2.0f;
        return true;
    }

    // Samples may come in any order.
    bool connect()
    {
        std::unordered_map<int32_t, int32_t> rows;
        for (size_t row = 0; row < numbers_.size(); ++row)
            if (!rows.emplace(numbers_[row], int32_t(row)).second)
                return source_.fail(lines_.find(int64_t(row)),
                                    fmt::format("expected a number that no other sample has, found {}", numbers_[row]));
        children_.resize(numbers_.size());
        for (size_t row = 0; row < parents_.size(); ++row)
        {
            if (parents_[row] == kNone)
                continue;
            const auto parent = rows.find(parents_[row]);
            if (parent == rows.end())
                return source_.fail(
                    lines_.find(int64_t(row)),
                    fmt::format("expected a sample that continues one of the file, found one that continues {}",
                                parents_[row]));
            parents_[row] = parent->second;
            ++children_[size_t(parent->second)];
        }
        return true;
    }

    // Back from every end and branch to the one before.
    void findChains()
    {
        for (size_t end = 0; end < parents_.size(); ++end)
        {
            if (parents_[end] == kNone || children_[end] == 1)
                continue;
            const auto first = std::ssize(points_);
            int32_t row = int32_t(end);
            do
            {
                points_.push_back(row);
                row = parents_[size_t(row)];
            } while (children_[size_t(row)] == 1 && parents_[size_t(row)] != kNone);
            points_.push_back(row);
            std::reverse(points_.begin() + first, points_.end());
            corners_.push_back(int32_t(std::ssize(points_) - first));
        }
    }

    // What is left when ends are taken away until there are none, is a ring.
    bool checkRings()
    {
        std::vector<int32_t> left = children_;
        for (size_t end = 0; end < left.size(); ++end)
            for (int32_t row = int32_t(end); row != kNone && left[size_t(row)] == 0;)
            {
                left[size_t(row)] = kTaken;
                row = parents_[size_t(row)];
                if (row != kNone)
                    --left[size_t(row)];
            }
        const auto ring = std::ranges::find_if(left, [](int32_t children) { return children != kTaken; });
        return ring == left.end() || source_.fail(lines_.find(ring - left.begin()),
                                                  "expected a sample that begins at a root, found one of a ring");
    }

    const Source &source_;
    TextRecords lines_;
    std::vector<int32_t> numbers_, kinds_, parents_;  // parents by number, and by row once they are connected
    std::vector<int32_t> children_;                   // how many each has
    std::vector<float> positions_, widths_;
    std::vector<int32_t> corners_, points_;
};
}  // namespace

bool isSWC(std::string_view text)
{
    Scanner scanner(text);
    while (!scanner.toWord() && !scanner.atEnd())
        scanner.toNextLine();
    int64_t number;
    double real;
    const auto isWhole = [&] { return scanner.toWord() && scanner.integer(number) && scanner.atWordEnd(); };
    bool isRoot = isWhole() && isWhole();
    for (int i = 0; isRoot && i < 4; ++i)
        isRoot = scanner.toWord() && scanner.real(real);
    return isRoot && isWhole() && number == -1 && !scanner.toWord();
}

bool readSWC(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages)
{
    try
    {
        const Source source{text, name, messages};
        return SWCAssembly(source).build(detail);
    }
    catch (const std::bad_alloc &)
    {
        return messages.fail(name, {}, "needs more memory than there is");
    }
}
}  // namespace rq::io
