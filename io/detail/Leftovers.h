#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include <fmt/format.h>

#include <host/msh/Detail.h>
#include <io/Message.h>

namespace rq::io
{
/// What a kind of file cannot hold of a detail: warned of once for each thing, by its name.
class Leftovers
{
public:
    /// `name` is what messages call the file.
    Leftovers(const MSH_Detail &detail, const std::string &name, Messages &messages)
        : detail_(detail), name_(name), messages_(messages)
    {}

    /// Note that the file holds an attribute; null is none.
    void hold(const ELM_Attribute *attribute);
    bool holds(const ELM_Attribute &attribute) const;

    /// Note that a primitive, or a vertex without a point, is not in the file.
    void leaveOut(ELM_Offset primitive);
    void leaveOutLooseVertex() { ++looseVertices_; }

    void warn(std::string what) { messages_.warn(name_, {}, std::move(what)); }

    /// Warn of the attributes that nobody noted, of the groups of some owners, and of what was left out.
    void warnOfAttributes();
    void warnOfGroups(std::initializer_list<ELM_Owner> owners);
    void warnOfElements();

    /// "points" and so on.
    static const char *nameOf(ELM_Owner owner);

private:
    const MSH_Detail &detail_;
    const std::string &name_;
    Messages &messages_;
    std::vector<const ELM_Attribute *> held_;
    std::vector<int64_t> leftOut_;  // primitives of each type
    int64_t looseVertices_ = 0;
};
}  // namespace rq::io
