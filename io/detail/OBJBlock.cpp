#include <io/detail/OBJBlock.h>

#include <algorithm>

#include <io/Scanner.h>

namespace rq::io
{
namespace
{
class OBJParser
{
public:
    explicit OBJParser(OBJBlock &block) : block_(block), scanner_(block.text) {}

    bool parse()
    {
        for (; !scanner_.atEnd(); scanner_.toNextLine())
        {
            if (scanner_.toWord() && !record())
                return false;
        }
        return true;
    }

private:
    bool record();
    bool otherRecord(std::string_view word, const char *first);
    bool position();
    bool uv();
    bool normal();
    bool corners(OBJKind kind, const char *first);
    bool corner();
    bool index(int64_t seen, int32_t &encoded);
    bool smoothing();
    void groups();
    void name(OBJChange::What what);
    int numbers(float *values, int least, int most);
    void change(OBJChange change);
    bool fail(const char *at, const char *expected);

    OBJBlock &block_;
    Scanner scanner_;
    bool hasKind_ = false;
    OBJKind kind_ = OBJKind::Face;
};

bool OBJParser::fail(const char *at, const char *expected)
{
    block_.failedAt = at;
    block_.expected = expected;
    return false;
}

bool OBJParser::record()
{
    const char *first = scanner_.at();
    const std::string_view word = scanner_.word();
    if (word == "v")
        return position();
    if (word == "vt")
        return uv();
    if (word == "vn")
        return normal();
    if (word == "f")
        return corners(OBJKind::Face, first);
    return otherRecord(word, first);
}

bool OBJParser::otherRecord(std::string_view word, const char *first)
{
    if (word == "l")
        return corners(OBJKind::Line, first);
    if (word == "p")
        return corners(OBJKind::Points, first);
    if (word == "s")
        return smoothing();
    if (word.find('\0') != word.npos)
        return fail(first, "a text");

    if (word == "g")
        groups();
    else if (word == "o")
        name(OBJChange::Object);
    else if (word == "usemtl")
        name(OBJChange::Material);
    else if (word == "mtllib" && scanner_.toWord())
        block_.materialFiles.push_back(scanner_.restOfLine());
    else if (word == "t" && scanner_.toWord())
        block_.tags.push_back(scanner_.restOfLine());
    else if (word != "t" && word != "mtllib")
        block_.unknownWords.add(first);
    return true;
}

// Read `least` to `most` numbers and answer how many there were, -1 after a failure.  What follows them is counted as
// surplus.
int OBJParser::numbers(float *values, int least, int most)
{
    int count = 0;
    while (count < most && scanner_.toWord())
    {
        if (!scanner_.real(values[count]))
        {
            fail(scanner_.at(), count < least ? "a number" : "a number or the end of the line");
            return -1;
        }
        ++count;
    }
    if (count < least)
    {
        fail(scanner_.at(), "a number");
        return -1;
    }
    if (scanner_.toWord())
        block_.surplusNumbers.add(scanner_.at());
    return count;
}

// x y z, perhaps a weight (which has no meaning for polygons), perhaps a colour.
bool OBJParser::position()
{
    float values[7];
    const int count = numbers(values, 3, 7);
    if (count < 0)
        return false;
    if (count == 5)
        block_.surplusNumbers.add(scanner_.at());
    if (count >= 6)
    {
        block_.colors.resize(block_.positions.size(), 1.0f);
        block_.colors.insert(block_.colors.end(), values + count - 3, values + count);
    }
    block_.positions.insert(block_.positions.end(), values, values + 3);
    return true;
}

bool OBJParser::uv()
{
    float values[3] = {};
    const int count = numbers(values, 1, 3);
    if (count < 0)
        return false;
    block_.uvs.insert(block_.uvs.end(), values, values + 3);
    block_.uvSize = std::max(block_.uvSize, count);
    return true;
}

bool OBJParser::normal()
{
    float values[3];
    if (numbers(values, 3, 3) < 0)
        return false;
    block_.normals.insert(block_.normals.end(), values, values + 3);
    return true;
}

bool OBJParser::corners(OBJKind kind, const char *first)
{
    if (!hasKind_ || kind != kind_)
        change({.what = OBJChange::Kind, .kind = kind});
    hasKind_ = true;
    kind_ = kind;

    const size_t before = block_.pointIndices.size();
    while (scanner_.toWord())
    {
        if (!corner())
            return false;
    }
    const size_t count = block_.pointIndices.size() - before;
    block_.counts.push_back(int32_t(count));
    if (kind == OBJKind::Face && count < 3)
        block_.smallFaces.add(first);
    return true;
}

// point, point/uv, point//normal or point/uv/normal; slashes that nothing follows are tolerated.
bool OBJParser::corner()
{
    const char *first = scanner_.at();
    int32_t point, uvIndex = objIndex::kNone, normalIndex = objIndex::kNone;
    const auto isNext = [&] { return scanner_.skip('/') && !scanner_.atWordEnd(); };

    bool valid = index(int64_t(block_.positions.size() / 3), point);
    if (valid && isNext())
    {
        const bool skipped = scanner_.skip('/');
        valid = skipped || index(int64_t(block_.uvs.size() / 3), uvIndex);
        if (valid && (skipped ? !scanner_.atWordEnd() : isNext()))
            valid = index(int64_t(block_.normals.size() / 3), normalIndex);
    }
    if (!valid || !scanner_.atWordEnd())
        return block_.failedAt ? false : fail(first, "a corner as point/uv/normal");

    const size_t corners = block_.pointIndices.size();
    block_.pointIndices.push_back(point);
    if (uvIndex != objIndex::kNone)
    {
        block_.uvIndices.resize(corners, objIndex::kNone);
        block_.uvIndices.push_back(uvIndex);
    }
    if (normalIndex != objIndex::kNone)
    {
        block_.normalIndices.resize(corners, objIndex::kNone);
        block_.normalIndices.push_back(normalIndex);
    }
    return true;
}

bool OBJParser::index(int64_t seen, int32_t &encoded)
{
    const char *first = scanner_.at();
    int64_t number;
    if (!scanner_.integer(number))
        return false;
    if (number == 0)
        return fail(first, "a number from 1 up, or a relative one from -1 down");
    encoded = objIndex::encode(number, seen);
    return true;
}

bool OBJParser::smoothing()
{
    int64_t number = 0;
    const bool hasValue = scanner_.toWord();
    const char *first = scanner_.at();
    if (hasValue && !(scanner_.integer(number) && scanner_.atWordEnd()))
    {
        const std::string_view word = Scanner(block_.text.substr(size_t(first - block_.text.data()))).word();
        if (word != "off" && word != "on")
            return fail(first, "the number of a smoothing group or off");
        number = word == "on";
    }
    change({.what = OBJChange::Smoothing, .smoothing = int32_t(std::clamp<int64_t>(number, INT32_MIN, INT32_MAX))});
    return true;
}

void OBJParser::groups()
{
    scanner_.toWord();
    const char *first = scanner_.at();
    while (scanner_.toWord())
        scanner_.word();
    change({.what = OBJChange::Groups, .text = {first, size_t(scanner_.at() - first)}});
}

void OBJParser::name(OBJChange::What what)
{
    change({.what = what, .text = scanner_.toWord() ? scanner_.restOfLine() : std::string_view()});
}

void OBJParser::change(OBJChange change)
{
    change.primitive = int64_t(block_.counts.size());
    block_.changes.push_back(change);
}

constexpr int64_t kRelativeBase = objIndex::kMost + 2;
}  // namespace

int32_t objIndex::encode(int64_t number, int64_t seen)
{
    if (number > 0)
        return int32_t(std::min(number - 1, kRelativeBase));
    return int32_t(std::max(seen + number, 2 - kRelativeBase) - kRelativeBase - 1);
}

bool objIndex::resolve(int32_t encoded, int64_t before, int64_t total, int32_t &element)
{
    element = encoded;
    if (encoded == kNone)
        return true;
    const int64_t found = encoded >= 0 ? encoded : before + encoded + kRelativeBase + 1;
    element = int32_t(found);
    return found >= 0 && found < total;
}

const char *findCorner(std::string_view text, int64_t corner, int slot)
{
    Scanner scanner(text);
    for (; !scanner.atEnd(); scanner.toNextLine())
    {
        const std::string_view record = scanner.toWord() ? scanner.word() : std::string_view();
        if (record != "f" && record != "l" && record != "p")
            continue;
        for (; scanner.toWord(); --corner)
        {
            const char *place = scanner.at();
            scanner.word();
            if (corner > 0)
                continue;
            for (; slot > 0; --slot)
                place = std::find(place, scanner.at(), '/') + 1;
            return place;
        }
    }
    return scanner.at();
}

bool OBJBlock::parse() { return OBJParser(*this).parse(); }
}  // namespace rq::io
