#include <vtkTriangleFilter.h>

#include <bench/peers/vtkMesh.h>

namespace
{
vtkSmartPointer<vtkTriangleFilter> triangulate(const bench::VTKMesh &mesh)
{
    const auto filter = vtkSmartPointer<vtkTriangleFilter>::New();
    filter->SetInputData(mesh.data);
    filter->PassLinesOff();
    filter->PassVertsOff();
    filter->Update();
    return filter;
}

double errorOf(const bench::VTKMesh &mesh)
{
    const auto filter = triangulate(mesh);
    vtkCellArray *const polygons = filter->GetOutput()->GetPolys();
    std::vector<int64_t> corners;
    for (vtkIdType cell = 0; cell < polygons->GetNumberOfCells(); ++cell)
    {
        vtkIdType count;
        const vtkIdType *points;
        polygons->GetCellAtId(cell, count, points);
        corners.insert(corners.end(), points, points + count);
    }
    return bench::areaErrorOfPoints(mesh.faces(), int64_t(corners.size()), [&](int64_t i) { return corners[size_t(i)]; });
}

bench::Work prepare(const bench::FaceMeshPtr &faces)
{
    const auto mesh = std::make_shared<bench::VTKMesh>(faces);
    return {[mesh] { return bench::keep(triangulate(*mesh)); }, [mesh] { return errorOf(*mesh); }};
}

bench::Work prepareSmall(const bench::FaceMeshPtr &faces)
{
    const auto mesh = std::make_shared<bench::VTKMesh>(faces);
    return {bench::repeated([mesh] { return bench::keep(triangulate(*mesh)); }), [mesh] { return errorOf(*mesh); }};
}

const bool registered = [] {
    bench::addTriangulation({"quads1M", "quads4M", "mixed1M"}, {"vtk", 1, true}, prepare);
    bench::addSmallJob("convex3", {"vtk"}, prepareSmall);
    return true;
}();
}  // namespace
