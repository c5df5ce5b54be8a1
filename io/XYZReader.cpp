#include <io/XYZReader.h>

#include <algorithm>
#include <new>

#include <host/mod/Edit.h>
#include <io/detail/TextRecords.h>

namespace rq::io
{
namespace
{
// Where values of a line begin behind the coordinates, -1 for none; `numbers` is how many there are.
struct XYZLayout
{
    int numbers = 0;
    int intensity = -1;
    int normal = -1;
    int color = -1;
};

XYZLayout layoutFor(int numbers)
{
    switch (numbers)
    {
    case 0:
    case 2:
        return {};
    case 1:
        return {.numbers = 1, .intensity = 0};
    case 3:
        return {.numbers = 3, .color = 0};
    case 4:
    case 5:
        return {.numbers = 4, .intensity = 0, .color = 1};
    default:
        return {.numbers = 6, .normal = 0, .color = 3};
    }
}

// How many numbers the line has on which a scanner stands; -1 when there is something else.
int numbersOfLine(Scanner scanner)
{
    int count = 0;
    for (double number; scanner.toWord(); ++count)
        if (!scanner.real(number))
            return -1;
    return count;
}

class XYZAssembly
{
public:
    explicit XYZAssembly(const Source &source) : source_(source), lines_(source, source.text) {}

    bool build(MOD_DetailHandle &detail)
    {
        if (!lines_.count() || !readHead())
            return false;
        positions_.resize(size_t(3 * count_));
        rest_.resize(size_t(layout_.numbers * count_));
        if (!lines_.forEach(first_, count_, [&](TextCursor &cursor) { return readPoint(cursor); }))
            return false;
        lines_.warnOfSurplus(first_ + count_);

        MOD_DetailHandle result;
        MOD_Edit edit(result);
        if (!edit.appendPoints(count_))
            return source_.messages.fail(source_.name, {}, edit.message());
        edit.attribute(ELM_OWNER_POINT, ELM_POSITION_NAME, ELM_STORAGE_REAL64, 3, ELM_TYPE_POINT)
            ->write(0, count_, positions_.data());
        write(edit, "N", layout_.normal, 3, ELM_TYPE_NORMAL);
        scaleColors();
        write(edit, "Cd", layout_.color, 3, ELM_TYPE_COLOR);
        write(edit, "intensity", layout_.intensity, 1, ELM_TYPE_NONE);
        edit.commit();
        detail = result;
        return true;
    }

private:
    bool readHead()
    {
        if (lines_.size() == 0)
            return source_.failAtWord(source_.end(), "the coordinates of a point");
        Scanner scanner({lines_.find(0), size_t(source_.end() - lines_.find(0))});
        count_ = lines_.size();
        if (numbersOfLine(scanner) == 1)
        {
            const char *at = scanner.at();
            if (!scanner.integer(count_) || !scanner.atWordEnd() || count_ < 0)
                return source_.failAtWord(at, "the number of points");
            if (count_ > lines_.size() - 1)
                return source_.fail(at, fmt::format("expected {} points, found {} lines", count_, lines_.size() - 1));
            first_ = 1;
        }
        if (count_ > INT32_MAX)
            return source_.fail(lines_.find(0), fmt::format("expected at most {} points, found {}", INT32_MAX, count_));
        if (count_ > 0)
            layout_ =
                layoutFor(numbersOfLine(Scanner({lines_.find(first_), size_t(source_.end() - lines_.find(first_))})) - 3);
        return true;
    }

    bool readPoint(TextCursor &cursor)
    {
        const auto read = [&](auto *numbers, int count) {
            for (int c = 0; c < count; ++c)
            {
                cursor.scanner.toWord();
                if (!cursor.scanner.real(numbers[c]))
                    return cursor.fail(cursor.scanner.at(), "a number");
            }
            return true;
        };
        const int64_t row = cursor.record - first_;
        return read(positions_.data() + 3 * row, 3) && read(rest_.data() + layout_.numbers * row, layout_.numbers);
    }

    void scaleColors()
    {
        float largest = 0.0f;
        const auto forEachColor = [&](auto &&visit) {
            for (int64_t i = 0; layout_.color >= 0 && i < count_; ++i)
                for (int c = 0; c < 3; ++c)
                    visit(rest_[size_t(layout_.numbers * i + layout_.color + c)]);
        };
        forEachColor([&](float value) { largest = std::max(largest, value); });
        if (largest > 1.0f)
            forEachColor([](float &value) { value /= 255.0f; });
    }

    void write(MOD_Edit &edit, const char *name, int begin, int size, ELM_TypeInfo type)
    {
        if (begin < 0 || count_ == 0)
            return;
        float *values = edit.attribute(ELM_OWNER_POINT, name, ELM_STORAGE_REAL32, size, type)->writeAll<float>();
        for (int64_t i = 0; i < count_; ++i)
            std::copy_n(rest_.data() + layout_.numbers * i + begin, size, values + size * i);
    }

    const Source &source_;
    TextRecords lines_;
    XYZLayout layout_;
    int64_t first_ = 0;  // the line of the first point
    int64_t count_ = 0;
    std::vector<double> positions_;
    std::vector<float> rest_;
};
}  // namespace

bool isXYZ(std::string_view text)
{
    Scanner scanner(text);
    while (!scanner.toWord() && !scanner.atEnd())
        scanner.toNextLine();
    const int numbers = numbersOfLine(scanner);
    return numbers == 1 || numbers >= 3;
}

bool readXYZ(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages)
{
    try
    {
        const Source source{text, name, messages};
        return XYZAssembly(source).build(detail);
    }
    catch (const std::bad_alloc &)
    {
        return messages.fail(name, {}, "needs more memory than there is");
    }
}
}  // namespace rq::io
