#include <tiny_obj_loader.h>

#include <bench/io/OBJFile.h>

namespace
{
struct Contents
{
    tinyobj::attrib_t values;
    std::vector<tinyobj::shape_t> shapes;
    std::vector<tinyobj::material_t> materials;
};

std::shared_ptr<Contents> read(const std::string &path)
{
    auto contents = std::make_shared<Contents>();
    std::string warnings, errors;
    tinyobj::LoadObj(&contents->values, &contents->shapes, &contents->materials, &warnings, &errors, path.c_str(), nullptr,
                     false);
    return contents;
}

double errorOf(const Contents &contents)
{
    size_t faces = 0, corners = 0;
    for (const tinyobj::shape_t &shape : contents.shapes)
    {
        faces += shape.mesh.num_face_vertices.size();
        corners += shape.mesh.indices.size();
    }
    return bench::OBJFile::error(double(contents.values.vertices.size() / 3), double(faces), double(corners));
}

// It reads on one thread; the second row stands beside ours of as much wall time.
const bool registered = [] {
    for (const int threads : {1, 2})
        bench::addOBJReading("tinyobjloader", threads, [] {
            const auto file = std::make_shared<bench::OBJFile>();
            return bench::Work{[file] { return read(file->path()); }, [file] { return errorOf(*read(file->path())); }};
        });
    return true;
}();
}  // namespace
