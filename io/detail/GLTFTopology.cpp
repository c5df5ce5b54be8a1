#include <io/detail/GLTFTopology.h>

#include <io/detail/GLTFModel.h>

namespace rq::io
{
void GLTFTopology::addFace(uint32_t a, uint32_t b, uint32_t c, int32_t firstPoint, bool turned)
{
    corners.push_back(3);
    for (const uint32_t vertex : {a, turned ? c : b, turned ? b : c})
        points.push_back(firstPoint + int32_t(vertex));
}

void GLTFTopology::join(int mode, std::span<const uint32_t> vertices, int32_t firstPoint, bool turned)
{
    const size_t count = vertices.size();
    const auto addRun = [&](std::span<const uint32_t> run) {
        for (const uint32_t vertex : run)
            points.push_back(firstPoint + int32_t(vertex));
    };
    switch (mode)
    {
    case TINYGLTF_MODE_POINTS:
        kind = Particles;
        return addRun(vertices);
    case TINYGLTF_MODE_LINE:
        kind = Lines;
        left = int64_t(count % 2);
        corners.assign(count / 2, 2);
        return addRun(vertices.first(count - count % 2));
    case TINYGLTF_MODE_LINE_LOOP:
    case TINYGLTF_MODE_LINE_STRIP:
        kind = Lines;
        left = count == 1;
        if (count < 2)
            return;
        addRun(vertices);
        if (mode == TINYGLTF_MODE_LINE_LOOP)
            addRun(vertices.first(1));
        corners.push_back(int32_t(points.size()));
        return;
    case TINYGLTF_MODE_TRIANGLE_STRIP:
        for (size_t i = 2; i < count; ++i)
        {
            const uint32_t a = vertices[i - 2], b = vertices[i - 1], c = vertices[i];
            if (a != b && b != c && c != a)
                addFace(a, b, c, firstPoint, turned != (i % 2 == 1));
        }
        left = count < 3 ? int64_t(count) : 0;
        return;
    case TINYGLTF_MODE_TRIANGLE_FAN:
        for (size_t i = 2; i < count; ++i)
            addFace(vertices[0], vertices[i - 1], vertices[i], firstPoint, turned);
        left = count < 3 ? int64_t(count) : 0;
        return;
    default:
        for (size_t i = 2; i < count; i += 3)
            addFace(vertices[i - 2], vertices[i - 1], vertices[i], firstPoint, turned);
        left = int64_t(count % 3);
    }
}
}  // namespace rq::io
