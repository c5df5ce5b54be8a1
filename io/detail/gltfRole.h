#pragma once

namespace rq::io
{
/// What an attribute of vertices stands for in glTF.
enum class GLTFRole
{
    Position,
    Normal,
    Tangent,
    UV,
    Color,
    Custom
};
}  // namespace rq::io
