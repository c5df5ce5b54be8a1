#pragma once

#include <type_traits>
#include <vector>

#include <host/elm/types.h>
#include <io/detail/Source.h>

namespace rq::io
{
/// How a PLY file writes a number.
enum class PLYType : uint8_t
{
    None,
    Int8,
    UInt8,
    Int16,
    UInt16,
    Int32,
    UInt32,
    Real32,
    Real64
};

/// Call `visit` with a value of the type that the file holds, which must not be None.
template <class Visit> decltype(auto) visitPLYType(PLYType type, Visit &&visit)
{
    switch (type)
    {
    case PLYType::Int8:
        return visit(int8_t());
    case PLYType::UInt8:
        return visit(uint8_t());
    case PLYType::Int16:
        return visit(int16_t());
    case PLYType::UInt16:
        return visit(uint16_t());
    case PLYType::Int32:
        return visit(int32_t());
    case PLYType::UInt32:
        return visit(uint32_t());
    case PLYType::Real32:
        return visit(float());
    default:
        return visit(double());
    }
}

inline int sizeOf(PLYType type)
{
    return visitPLYType(type, [](auto value) { return int(sizeof(value)); });
}
inline bool isReal(PLYType type) { return type >= PLYType::Real32; }

/// The storage that holds every value of a type.
ELM_Storage storageOf(PLYType type);

struct PLYProperty
{
    std::string_view name;
    PLYType type = PLYType::None;
    PLYType countType = PLYType::None;  ///< how the length of a list is written, None for a single value

    bool isList() const { return countType != PLYType::None; }
};

/// A comment of our writer that tells what properties were: "attribute SIZE TYPE NAME" the components NAME_0, NAME_1 and so
/// on of one attribute, "corners SIZE TYPE NAME" a list of SIZE numbers for each corner of a face.
struct PLYNote
{
    std::string_view name;
    int size = 0;
    ELM_TypeInfo type = ELM_TYPE_NONE;
    bool ofCorners = false;
};

struct PLYElement
{
    std::string_view name;
    int64_t count = 0;
    std::vector<PLYProperty> properties{};
    std::vector<PLYNote> notes{};

    /// The number of a property, -1 without one.
    int find(std::string_view property) const;
    bool hasLists() const;
};

enum class PLYForm : uint8_t
{
    Text,
    LittleEndian,
    BigEndian
};

struct PLYHeader
{
    PLYForm form = PLYForm::Text;
    std::vector<PLYElement> elements;
    const char *end = nullptr;  ///< where the body begins

    /// Read the header.  False after an error.
    bool read(const Source &source);

    const PLYElement *find(std::string_view element) const;
};
}  // namespace rq::io
