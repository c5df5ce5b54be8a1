#include <io/detail/PLYHeader.h>

#include <algorithm>
#include <limits>

#include <io/detail/RQGNames.h>
#include <io/detail/Tally.h>

namespace rq::io
{
namespace
{
struct TypeName
{
    std::string_view name;
    PLYType type;
};

constexpr TypeName kTypes[] = {
    {"char", PLYType::Int8},    {"int8", PLYType::Int8},      {"uchar", PLYType::UInt8},   {"uint8", PLYType::UInt8},
    {"short", PLYType::Int16},  {"int16", PLYType::Int16},    {"ushort", PLYType::UInt16}, {"uint16", PLYType::UInt16},
    {"int", PLYType::Int32},    {"int32", PLYType::Int32},    {"uint", PLYType::UInt32},   {"uint32", PLYType::UInt32},
    {"float", PLYType::Real32}, {"float32", PLYType::Real32}, {"double", PLYType::Real64}, {"float64", PLYType::Real64},
};

constexpr int64_t kMostComponents = 64;

class PLYHeaderParser
{
public:
    PLYHeaderParser(const Source &source, PLYHeader &header) : source_(source), header_(header), next_(source.text.data()) {}

    bool parse()
    {
        if (!nextLine() || word() != "ply")
            return source_.failAtWord(wordAt_, "\"ply\"");
        // With bare CRs, a LF behind the last one is the body's first byte.
        bareReturns_ = next_[-1] == '\r';
        while (nextLine())
        {
            const std::string_view keyword = word();
            if (keyword == "end_header")
                return finish();
            if (!line(keyword))
                return false;
        }
        return source_.failAtWord(source_.end(), "\"end_header\"");
    }

private:
    // Take the next line that has an end, and that end.  Backslashes mean nothing here: comments hold paths.
    bool nextLine()
    {
        wordAt_ = next_;
        const std::string_view rest = source_.text.substr(size_t(next_ - source_.text.data()));
        const size_t length = rest.find_first_of("\r\n");
        if (length == rest.npos)
            return false;
        scanner_ = Scanner(rest.substr(0, length));
        next_ += length + 1;
        next_ += rest[length] == '\r' && !bareReturns_ && next_ != source_.end() && *next_ == '\n';
        return true;
    }

    std::string_view word()
    {
        const bool found = scanner_.toWord();
        wordAt_ = scanner_.at();
        return found ? scanner_.word() : std::string_view();
    }

    bool line(std::string_view keyword)
    {
        if (keyword == "format")
            return format();
        if (keyword == "element")
            return element();
        if (keyword == "property")
            return property();
        if (keyword == "comment")
            note();
        else if (!keyword.empty() && keyword != "obj_info")
            unknown_.add(wordAt_);
        return true;
    }

    // Comments of others are left alone.
    void note()
    {
        PLYNote added;
        const std::string_view kind = word();
        added.ofCorners = kind == "corners";
        if (header_.elements.empty() || !(added.ofCorners || kind == "attribute"))
            return;
        int64_t size = 0;
        scanner_.toWord();
        const bool isNumber = scanner_.integer(size);
        const auto type = std::ranges::find(kRQGTypeInfos, std::string(word()));
        added.name = word();
        if (!isNumber || size < 1 || size > kMostComponents || type == std::end(kRQGTypeInfos) || added.name.empty())
            return;
        added.size = int(size);
        added.type = ELM_TypeInfo(type - std::begin(kRQGTypeInfos) - 1);
        header_.elements.back().notes.push_back(added);
    }

    bool format()
    {
        const std::string_view name = word();
        hasFormat_ = true;
        header_.form = name == "ascii"                  ? PLYForm::Text
                       : name == "binary_little_endian" ? PLYForm::LittleEndian
                                                        : PLYForm::BigEndian;
        return header_.form != PLYForm::BigEndian || name == "binary_big_endian" ||
               source_.failAtWord(wordAt_, "ascii, binary_little_endian or binary_big_endian");
    }

    bool element()
    {
        PLYElement added;
        added.name = word();
        if (added.name.empty() || header_.find(added.name))
            return source_.failAtWord(wordAt_, "a name that no other element has");
        word();
        Scanner number(source_.text.substr(size_t(wordAt_ - source_.text.data())));
        if (!number.integer(added.count) || !number.atWordEnd() || added.count < 0)
            return source_.failAtWord(wordAt_, fmt::format("the number of elements \"{}\"", added.name));
        header_.elements.push_back(std::move(added));
        return true;
    }

    bool property()
    {
        if (header_.elements.empty())
            return source_.failAtWord(wordAt_, "an element before its properties");
        PLYProperty added;
        std::string_view typeName = word();
        if (typeName == "list")
        {
            if (!type(word(), added.countType))
                return false;
            if (isReal(added.countType))
                return source_.failAtWord(wordAt_, "a type of whole numbers for the length of a list");
            typeName = word();
        }
        if (!type(typeName, added.type))
            return false;
        added.name = word();
        PLYElement &element = header_.elements.back();
        if (added.name.empty() || element.find(added.name) >= 0)
            return source_.failAtWord(wordAt_, "a name that no other property of the element has");
        element.properties.push_back(added);
        return true;
    }

    bool type(std::string_view name, PLYType &found)
    {
        const auto known =
            std::find_if(std::begin(kTypes), std::end(kTypes), [&](const TypeName &t) { return t.name == name; });
        if (known == std::end(kTypes))
            return source_.failAtWord(wordAt_, "a type of numbers such as float or uchar");
        found = known->type;
        return true;
    }

    bool finish()
    {
        if (!hasFormat_)
            return source_.failAtWord(wordAt_, "a line format before");
        if (unknown_.count > 0)
            source_.warn(unknown_.first, fmt::format("expected a known word, found {}; {} passed over",
                                                     describe(source_.text, unknown_.first),
                                                     counted(unknown_.count, "line is", "lines are")));
        header_.end = next_;
        return true;
    }

    const Source &source_;
    PLYHeader &header_;
    const char *next_;
    const char *wordAt_ = nullptr;
    Scanner scanner_{""};
    bool bareReturns_ = false;
    bool hasFormat_ = false;
    Tally unknown_;
};
}  // namespace

ELM_Storage storageOf(PLYType type)
{
    constexpr ELM_Storage kStorages[] = {ELM_STORAGE_INVALID, ELM_STORAGE_INT8,   ELM_STORAGE_UINT8,
                                         ELM_STORAGE_INT16,   ELM_STORAGE_INT32,  ELM_STORAGE_INT32,
                                         ELM_STORAGE_INT64,   ELM_STORAGE_REAL32, ELM_STORAGE_REAL64};
    return kStorages[size_t(type)];
}

int PLYElement::find(std::string_view property) const
{
    const auto found =
        std::find_if(properties.begin(), properties.end(), [&](const PLYProperty &p) { return p.name == property; });
    return found == properties.end() ? -1 : int(found - properties.begin());
}

bool PLYElement::hasLists() const
{
    return std::any_of(properties.begin(), properties.end(), [](const PLYProperty &p) { return p.isList(); });
}

const PLYElement *PLYHeader::find(std::string_view element) const
{
    const auto found =
        std::find_if(elements.begin(), elements.end(), [&](const PLYElement &e) { return e.name == element; });
    return found == elements.end() ? nullptr : &*found;
}

bool PLYHeader::read(const Source &source) { return PLYHeaderParser(source, *this).parse(); }
}  // namespace rq::io
