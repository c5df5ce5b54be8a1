#pragma once

#include <string>
#include <string_view>
#include <type_traits>

#include <rq/surface/PrimPolygonMesh.h>

namespace rq
{
/// What a result was made from, as bytes: equal for equal inputs, and, but for `addFaces`, for nothing else.
class KeyText
{
public:
    /// `kind` tells results of different operations apart.
    explicit KeyText(char kind) : text_(1, kind) {}

    template <class T>
    requires std::is_scalar_v<T> KeyText &add(T value)
    {
        text_.append(reinterpret_cast<const char *>(&value), sizeof(value));
        return *this;
    }
    KeyText &add(std::string_view text)
    {
        add(text.size());
        text_.append(text);
        return *this;
    }

    /// The faces of a mesh: the points of its corners by the id of their list, and what is known at once of how they are
    /// shared out.  Faces of several sizes in another order have the same text.
    KeyText &addFaces(const RQ_PrimPolygonMesh &mesh)
    {
        return add(mesh.getVertexList()->getDataId())
            .add(mesh.getFaceCount())
            .add(mesh.getVertexCount())
            .add(mesh.getMinVertexCount())
            .add(mesh.getMaxVertexCount());
    }

    const std::string &text() const { return text_; }

private:
    std::string text_;
};
}  // namespace rq
