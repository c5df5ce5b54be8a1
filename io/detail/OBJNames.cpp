#include <io/detail/OBJNames.h>

#include <algorithm>

#include <fmt/format.h>

namespace rq::io
{
namespace
{
bool isControl(char c) { return uint8_t(c) < 0x20; }

// Whether it can be one of many words; the default group is none.
bool isTellableWord(std::string_view text) { return isTellable(text) && text.find(' ') == text.npos && text != "default"; }
}  // namespace

bool isTellable(std::string_view text)
{
    return !text.empty() && text.front() != '#' && text.front() != ' ' && text.back() != ' ' && text.back() != '\\' &&
           std::none_of(text.begin(), text.end(), isControl);
}

OBJNames::OBJNames(const MSH_Detail &detail, std::string &text) : detail_(detail), text_(text)
{
    for (const ELM_Attribute &attribute : detail.attributes(ELM_OWNER_PRIMITIVE))
    {
        const std::string_view name = attribute.name().view();
        const bool isName = (name == "object" || name == "material") && attribute.strings();
        const bool isNumber = name == "smoothing" && attribute.pages<int32_t>();
        if ((isName || isNumber) && attribute.scope() == ELM_SCOPE_PUBLIC && attribute.tupleSize() == 1)
            told_.push_back({isNumber ? "s" : name == "object" ? "o" : "usemtl", &attribute, 0});
    }
    for (int64_t i = 0; i < detail.groups(ELM_OWNER_PRIMITIVE).size(); ++i)
    {
        const ELM_Group &group = detail.groups(ELM_OWNER_PRIMITIVE)[i];
        if (isTellableWord(group.name().view()))
            groups_.push_back(&group);
        else
            warnings_.push_back(fmt::format("group \"{}\" of primitives is left out", group.name().c_str()));
    }
    for (Told &told : told_)
    {
        write(told, detail.primitiveCount() > 0 ? valueOf(told, 0) : told.attribute->strings() ? -1 : 0);
        const ELM_StringTuple *names = told.attribute->strings();
        for (size_t i = 0; names && i < names->table().size(); ++i)
            if (!isTellable(names->table()[i].view()))
                warnings_.push_back(fmt::format("\"{}\" of attribute \"{}\" is left out", names->table()[i].c_str(),
                                                told.attribute->name().c_str()));
    }
    members_.resize(groups_.size(), true);
    if (!groups_.empty())
    {
        text_ += 'g';
        for (const ELM_Group *group : groups_)
            text_ += ' ' + std::string(group->name().view());
        text_ += '\n';
    }
}

bool OBJNames::holds(const ELM_Attribute &attribute) const
{
    return std::any_of(told_.begin(), told_.end(), [&](const Told &told) { return told.attribute == &attribute; });
}

int32_t OBJNames::valueOf(const Told &told, ELM_Offset primitive) const
{
    const ELM_StringTuple *names = told.attribute->strings();
    return names ? names->index(primitive) : told.attribute->pages<int32_t>()->value(primitive);
}

void OBJNames::write(Told &told, int32_t value)
{
    text_ += told.word;
    told.last = value;
    if (!told.attribute->strings())
        text_ += ' ' + std::to_string(value);
    else if (const std::string_view name =
                 value < 0 ? std::string_view() : told.attribute->strings()->table()[size_t(value)].view();
             isTellable(name))
        (text_ += ' ') += name;
    text_ += '\n';
}

void OBJNames::write(ELM_Offset primitive)
{
    for (Told &told : told_)
        if (const int32_t value = valueOf(told, primitive); value != told.last)
            write(told, value);
    writeGroups(primitive);
}

void OBJNames::writeGroups(ELM_Offset primitive)
{
    bool changed = false, any = false;
    for (size_t i = 0; i < groups_.size(); ++i)
    {
        const bool isMember = groups_[i]->contains(primitive);
        changed |= isMember != members_[i];
        any |= isMember;
        members_[i] = isMember;
    }
    if (!changed)
        return;
    text_ += 'g';
    for (size_t i = 0; i < groups_.size(); ++i)
        if (members_[i])
            text_ += ' ' + std::string(groups_[i]->name().view());
    text_ += any ? "\n" : " default\n";
}
}  // namespace rq::io
