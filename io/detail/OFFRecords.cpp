#include <io/detail/OFFRecords.h>

#include <algorithm>

namespace rq::io
{
namespace
{
// Read up to `most` numbers of a line; -1 after a failure, which fewer than `least` are too.
int readNumbers(TextCursor &cursor, float *numbers, int least, int most)
{
    int count = 0;
    for (; count < most && cursor.scanner.toWord(); ++count)
    {
        if (!cursor.scanner.real(numbers[count]))
            return cursor.fail(cursor.scanner.at(), count < least ? "a number" : "a number or the end of the line"), -1;
    }
    return count < least ? cursor.fail(cursor.scanner.at(), "a number"), -1 : count;
}

bool readInteger(TextCursor &cursor, int64_t least, int64_t most, int64_t &value, auto &&expected)
{
    cursor.scanner.toWord();
    const char *at = cursor.scanner.at();
    const bool good = cursor.scanner.integer(value) && cursor.scanner.atWordEnd() && value >= least && value <= most;
    return good || cursor.fail(at, expected());
}
}  // namespace

bool OFFHeader::find(std::string_view text)
{
    Scanner scanner(text);
    while (!scanner.toWord() && !scanner.atEnd())
        scanner.toNextLine();
    end = scanner.at();
    std::string_view word = scanner.word();
    const auto skip = [&](std::string_view letters) {
        const bool found = word.starts_with(letters);
        word.remove_prefix(found ? letters.size() : 0);
        return found;
    };
    texture = skip("ST");
    colors = skip("C");
    normals = skip("N");
    weights = skip("4");
    // Some files let the first number follow without a blank.
    const bool found = skip("OFF") && (word.empty() || (word[0] >= '0' && word[0] <= '9'));
    if (found)
        end = word.data();
    else
        *this = {.end = end};
    return found;
}

void OFFColors::set(int64_t element, const float *color, int count)
{
    numbers.resize(size_t(element));
    numbers.push_back(uint8_t(count));
    values.resize(size_t(4 * element));
    values.insert(values.end(), color, color + count);
    values.resize(size_t(4 * element + 4));
    alpha |= count == 4;
    largest = std::max(largest, *std::max_element(color, color + count));
}

bool OFFBlock::point(TextCursor &cursor, const OFFHeader &header)
{
    float numbers[13];
    const int colorsAt = 3 + header.weights + 3 * header.normals;
    const int others = colorsAt + 2 * header.texture;
    const int count = readNumbers(cursor, numbers, others + 3 * header.colors, others + 4 * header.colors);
    if (count < 0)
        return false;
    for (int c = 0; c < 3; ++c)
        positions.push_back(header.weights ? numbers[c] / numbers[3] : numbers[c]);
    if (header.normals)
        normals.insert(normals.end(), numbers + colorsAt - 3, numbers + colorsAt);
    if (header.colors)
        colors.set(std::ssize(positions) / 3 - 1, numbers + colorsAt, count - others);
    if (header.texture)
        uvs.insert(uvs.end(), numbers + count - 2, numbers + count);
    return true;
}

bool OFFBlock::face(TextCursor &cursor, int64_t points)
{
    const char *first = cursor.scanner.at();
    int64_t count = 0;
    if (!readInteger(cursor, 0, INT32_MAX, count, [] { return "the number of corners of a face"; }))
        return false;
    for (int64_t corner = 0; corner < count; ++corner)
    {
        int64_t point = 0;
        if (!readInteger(cursor, 0, points - 1, point,
                         [&] { return fmt::format("the number of a point, of which the file has {}", points); }))
            return false;
        corners.push_back(int32_t(point));
    }
    counts.push_back(int32_t(count));
    if (count < 3)
        smallFaces.add(first);

    float color[4];
    const int numbers = readNumbers(cursor, color, 0, 4);
    if (numbers >= 3)
        colors.set(std::ssize(counts) - 1, color, numbers);
    else if (numbers > 0)
        mapColors.add(first);
    return numbers >= 0;
}
}  // namespace rq::io
