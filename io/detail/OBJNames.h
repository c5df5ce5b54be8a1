#pragma once

#include <string>
#include <vector>

#include <host/msh/Detail.h>

namespace rq::io
{
/// Whether a line can end with this text as a name.
bool isTellable(std::string_view text);

/// The lines that tell the groups of primitives, and their attributes "object", "material" and "smoothing".
///
/// The reader gives every primitive what was told last before it, so a line is due where something changes.  What is told
/// before the first primitive also fixes the order of attributes and groups.
class OBJNames
{
public:
    /// Writes go to the end of `text`.
    OBJNames(const MSH_Detail &detail, std::string &text);

    /// Write the lines that are due before a primitive.
    void write(ELM_Offset primitive);

    bool holds(const ELM_Attribute &attribute) const;

    /// What names cannot be told.
    const std::vector<std::string> &warnings() const { return warnings_; }

private:
    struct Told
    {
        const char *word;
        const ELM_Attribute *attribute;
        int32_t last;  // the number, or the place of the text
    };

    void writeGroups(ELM_Offset primitive);
    void write(Told &told, int32_t value);
    int32_t valueOf(const Told &told, ELM_Offset primitive) const;

    const MSH_Detail &detail_;
    std::string &text_;
    std::vector<Told> told_;
    std::vector<const ELM_Group *> groups_;
    std::vector<bool> members_;  // whether the last primitive was, of each group
    std::vector<std::string> warnings_;
};
}  // namespace rq::io
