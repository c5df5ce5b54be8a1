#include <CGAL/Polygon_mesh_processing/compute_normal.h>

#include <bench/normalJobs.h>
#include <bench/normalReference.h>
#include <bench/peers/cgalMesh.h>

namespace
{
using bench::CGALMesh;
using Vector = CGAL::Simple_cartesian<double>::Vector_3;

struct Faces
{
    using Map = CGALMesh::Property_map<CGALMesh::Face_index, Vector>;

    static Map add(CGALMesh &mesh) { return mesh.add_property_map<CGALMesh::Face_index, Vector>("normal").first; }
    static void compute(const CGALMesh &mesh, Map &normals)
    {
        CGAL::Polygon_mesh_processing::compute_face_normals(mesh, normals);
    }
    static double error(const bench::NormalReference &reference, const Map &normals)
    {
        return reference.faceError([&](int64_t i) { return normals[CGALMesh::Face_index(unsigned(i))]; });
    }
};

struct Points
{
    using Map = CGALMesh::Property_map<CGALMesh::Vertex_index, Vector>;

    static Map add(CGALMesh &mesh) { return mesh.add_property_map<CGALMesh::Vertex_index, Vector>("normal").first; }
    static void compute(const CGALMesh &mesh, Map &normals)
    {
        CGAL::Polygon_mesh_processing::compute_vertex_normals(mesh, normals);
    }
    static double error(const bench::NormalReference &reference, const Map &normals)
    {
        return reference.pointError([&](int64_t i) { return normals[CGALMesh::Vertex_index(unsigned(i))]; });
    }
};

template <class What> void addJob(const char *job, double outputs)
{
    bench::addNormals(job, "cgal", 1, outputs, [] {
        const bench::FaceMeshPtr faces = bench::faceMesh("quads1M");
        const auto mesh = std::make_shared<CGALMesh>(bench::makeCGALMesh(*faces));
        const auto normals = std::make_shared<typename What::Map>(What::add(*mesh));
        const auto run = [=]() -> std::shared_ptr<void> {
            What::compute(*mesh, *normals);
            return normals;
        };
        const auto check = [=] {
            run();
            return What::error(bench::NormalReference(*faces), *normals);
        };
        return bench::Work{run, check};
    });
}

const bool registered = [] {
    addJob<Faces>("face-normals", bench::kNormalFaces);
    // It looks for the normal that all faces around see best: nearest to weights by angle.
    addJob<Points>("point-normals-angle", bench::kNormalPoints);
    return true;
}();
}  // namespace
