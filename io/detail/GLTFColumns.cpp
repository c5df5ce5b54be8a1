#include <io/detail/GLTFColumns.h>

#include <algorithm>

#include <host/bas/Parallel.h>
#include <io/detail/screenColour.h>

namespace rq::io
{
namespace
{
// A channel costs about 30 ns.
constexpr int64_t kChannelsPerTask = 2048;

// The number behind a name such as "TEXCOORD_1"; -1 when the name is another.
int setOf(const std::string &semantic, std::string_view name)
{
    const std::string_view rest = std::string_view(semantic).substr(std::min(name.size(), semantic.size()));
    return semantic.starts_with(name) && rest.size() == 1 && rest[0] >= '0' && rest[0] <= '9' ? rest[0] - '0' : -1;
}
}  // namespace

bool GLTFColumns::plan(const std::string &semantic, const GLTFAccessor &values, Column &column)
{
    if (semantic == "POSITION")
        column = {ELM_POSITION_NAME, Role::Position, 3, ELM_TYPE_POINT};
    else if (semantic == "NORMAL")
        column = {"N", Role::Normal, 3, ELM_TYPE_NORMAL};
    else if (semantic == "TANGENT")
        column = {"tangent", Role::Tangent, 4};
    else if (const int set = setOf(semantic, "TEXCOORD_"); set >= 0)
        column = {set == 0 ? "uv" : fmt::format("uv{}", set + 1), Role::UV, 2, ELM_TYPE_TEXTURE};
    else if (const int colors = setOf(semantic, "COLOR_"); colors >= 0)
        column = {colors == 0 ? "Cd" : fmt::format("Cd{}", colors + 1), Role::Color, 3, ELM_TYPE_COLOR};
    else if (semantic.size() > 1 && semantic[0] == '_')
        column = {semantic.substr(1), Role::Custom, values.components()};
    else
        return false;
    column.isInteger = column.role == Role::Custom && values.isInteger();
    return true;
}

void GLTFColumns::add(Column column, const Piece &piece)
{
    auto known = std::ranges::find(columns_, column.name, &Column::name);
    if (known == columns_.end())
        known = columns_.insert(known, column);
    // What one part of the scene needs, all have.
    known->size = std::max(known->size, column.size);
    known->isInteger = known->isInteger && column.isInteger;
    known->pieces.push_back(piece);
}

bool GLTFColumns::take(const tinygltf::Model &model, const GLTFPoints &points, std::string &error)
{
    for (const auto &[semantic, number] : *points.attributes)
    {
        GLTFAccessor values;
        if (!values.open(model, number, error))
            return error = fmt::format("attribute \"{}\": {}", semantic, error), false;
        if (values.count() != points.count)
            return error = fmt::format("expected {} rows of attribute \"{}\", as \"POSITION\" has, found {}", points.count,
                                       semantic, values.count()),
                   false;
        Column column;
        if (!plan(semantic, values, column))
        {
            if (std::ranges::find(unknown_, semantic) == unknown_.end())
                unknown_.push_back(semantic);
            continue;
        }
        if (column.role != Role::Custom && values.components() < column.size)
            return error = fmt::format("expected {} components of attribute \"{}\", found {}", column.size, semantic,
                                       values.components()),
                   false;
        add(column, {values, points});
        if (column.name == "Cd" && values.components() > 3)
            add({"Alpha", Role::Color, 1}, {values, points});
    }
    return true;
}

bool GLTFColumns::write(MOD_Edit &edit) const
{
    return std::ranges::all_of(columns_, [&](const Column &column) {
        return column.isInteger ? writeIntegers(edit, column) : writeReals(edit, column);
    });
}

bool GLTFColumns::writeIntegers(MOD_Edit &edit, const Column &column) const
{
    const bool isWide = std::ranges::any_of(column.pieces, [](const Piece &piece) {
        return piece.values.componentType() == TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT;
    });
    ELM_Attribute *made = edit.attribute(ELM_OWNER_POINT, column.name, isWide ? ELM_STORAGE_INT64 : ELM_STORAGE_INT32,
                                         column.size, column.type);
    if (!made)
        return false;
    made->numericTuple()->visit([&](auto &pages) {
        if (auto *values = pages.modifyAll())
            for (const Piece &piece : column.pieces)
                piece.values.read(values + piece.points.first * column.size, column.size);
    });
    return true;
}

bool GLTFColumns::writeReals(MOD_Edit &edit, const Column &column) const
{
    ELM_Attribute *made = edit.attribute(ELM_OWNER_POINT, column.name, ELM_STORAGE_REAL32, column.size, column.type);
    if (!made)
        return false;
    float *values = made->modifyAll<float>();
    if (!values)
        return true;
    if (column.role == Role::Color)
        std::fill_n(values, edit.capacity(ELM_OWNER_POINT) * column.size, 1.0f);
    for (const Piece &piece : column.pieces)
    {
        float *rows = values + piece.points.first * column.size;
        if (column.name == "Alpha")
        {
            std::vector<float> colors(size_t(4 * piece.points.count));
            piece.values.read(colors.data(), 4);
            for (int64_t i = 0; i < piece.points.count; ++i)
                rows[i] = colors[size_t(4 * i + 3)];
            continue;
        }
        piece.values.read(rows, column.size);
        if (column.role == Role::Color)
            host::parallelForRange(piece.points.count * column.size, kChannelsPerTask, [rows](int64_t begin, int64_t end) {
                std::transform(rows + begin, rows + end, rows + begin, toScreenFloat);
            });
        place(column, piece, rows);
    }
    return true;
}

// Bring values to where their node is.
void GLTFColumns::place(const Column &column, const Piece &piece, float *values)
{
    const BAS_Mat4d &matrix = *piece.points.matrix;
    const bool isMoved = matrix != BAS_Mat4d();
    const BAS_Mat4d normals = column.role == Role::Normal && isMoved ? matrix.inverse().transposed() : matrix;
    for (int64_t i = 0; i < piece.points.count; ++i)
    {
        float *row = values + i * column.size;
        if (column.role == Role::UV)
            row[1] = 1.0f - row[1];
        if (!isMoved || column.role > Role::Tangent)
            continue;
        BAS_Vec3d placed(row[0], row[1], row[2]);
        if (column.role == Role::Position)
            placed = host::transformPoint(placed, matrix);
        else
        {
            normals.multDirMatrix(BAS_Vec3d(placed), placed);
            placed.normalize();
        }
        std::copy_n(&placed.x, 3, row);
    }
}
}  // namespace rq::io
