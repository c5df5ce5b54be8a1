#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace rq::io
{
/// What the vertices of a glTF primitive are joined to.
struct GLTFTopology
{
    enum Kind
    {
        Faces,
        Lines,
        Particles
    };

    Kind kind = Faces;
    std::vector<int32_t> corners;  ///< of each face or line
    std::vector<int32_t> points;
    int64_t left = 0;  ///< vertices at the end that make no whole line or triangle

    /// Join vertices by a mode of glTF (0 to 6), their points numbered from `firstPoint` on; `turned` lets faces look the
    /// other way.  Triangles of strips that use a vertex twice only lead to the next one, and are left out.
    void join(int mode, std::span<const uint32_t> vertices, int32_t firstPoint, bool turned);

private:
    void addFace(uint32_t a, uint32_t b, uint32_t c, int32_t firstPoint, bool turned);
};
}  // namespace rq::io
