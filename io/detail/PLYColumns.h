#pragma once

#include <string>
#include <vector>

#include <host/msh/Detail.h>
#include <io/detail/Leftovers.h>
#include <io/detail/PLYHeader.h>

namespace rq::io
{
/// The body of a PLY file as it grows.
struct PLYOutput
{
    bool isText = false;
    std::string bytes;
    bool lineBegins = true;

    template <class T> void number(T value);
    void endRow();
};

/// What an element of a PLY file has: its properties, and the attributes that they come from.
class PLYColumns
{
public:
    /// What is taken is noted as held.
    PLYColumns(const MSH_Detail &detail, Leftovers &leftovers) : detail_(detail), leftovers_(leftovers) {}

    /// Take the list of corners, and a list for each attribute of vertices.
    void takeCorners(int64_t largestFace);

    /// Take the attributes of points or primitives that properties can tell.
    void take(ELM_Owner owner);

    /// Append the declaration of an element to a header.
    void declare(std::string &header, const char *element, int64_t count) const;

    /// Append all properties of one point or face.
    void writeRow(PLYOutput &out, ELM_Offset row) const;

private:
    enum class Kind
    {
        Values,
        Arrays,
        Points,
        Corners
    };
    struct Column
    {
        Kind kind;
        const ELM_Attribute *attribute = nullptr;
        PLYType type = PLYType::Int32;
        std::vector<std::string> properties{};
        PLYType countType = PLYType::None;  // of lists
        std::string note{};
        bool asBytes = false;  // colours as 255ths
    };

    bool takeRole(const ELM_Attribute &attribute);
    void takeCustom(const ELM_Attribute &attribute, Kind kind, int64_t largestFace);
    bool isFree(const std::vector<std::string> &properties) const;
    void writeCorners(PLYOutput &out, const Column &column, ELM_Offset face) const;

    const MSH_Detail &detail_;
    Leftovers &leftovers_;
    std::vector<Column> columns_;
};
}  // namespace rq::io
