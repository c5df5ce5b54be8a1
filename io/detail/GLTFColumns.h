#pragma once

#include <map>
#include <vector>

#include <host/mod/Edit.h>
#include <io/detail/GLTFAccessor.h>
#include <io/detail/GLTFScene.h>
#include <io/detail/gltfRole.h>

namespace rq::io
{
/// Points that primitives of a placed mesh share: those of one set of attributes.
struct GLTFPoints
{
    const std::map<std::string, int> *attributes = nullptr;
    const BAS_Mat4d *matrix = nullptr;
    int64_t first = 0;
    int64_t count = 0;
};

/// The attributes of points that all sets together give.
class GLTFColumns
{
public:
    /// Take the attributes of a set.  False with what is wrong with one.
    bool take(const tinygltf::Model &model, const GLTFPoints &points, std::string &error);

    /// Make the attributes and write the rows of all sets that were taken, in order from point 0 on.  False, with the reason
    /// in the edit, when one cannot be made.
    bool write(MOD_Edit &edit) const;

    /// The names that were passed over, each once.
    const std::vector<std::string> &unknown() const { return unknown_; }

private:
    using Role = GLTFRole;
    struct Piece
    {
        GLTFAccessor values;
        GLTFPoints points;
    };
    struct Column
    {
        std::string name;
        Role role;
        int size;
        ELM_TypeInfo type = ELM_TYPE_NONE;
        bool isInteger = false;
        std::vector<Piece> pieces{};
    };

    static bool plan(const std::string &semantic, const GLTFAccessor &values, Column &column);
    void add(Column column, const Piece &piece);
    bool writeIntegers(MOD_Edit &edit, const Column &column) const;
    bool writeReals(MOD_Edit &edit, const Column &column) const;
    static void place(const Column &column, const Piece &piece, float *values);

    std::vector<Column> columns_;
    std::vector<std::string> unknown_;
};
}  // namespace rq::io
