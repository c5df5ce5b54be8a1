#include <vtkPointData.h>
#include <vtkPolyDataNormals.h>
#include <vtkTriangleFilter.h>

#include <bench/drawnJobs.h>
#include <bench/peers/vtkMesh.h>

namespace
{
/// The triangles, whose points lie twice where edges are sharp.
vtkSmartPointer<vtkPolyData> draw(const bench::VTKMesh &mesh)
{
    const auto triangles = vtkSmartPointer<vtkTriangleFilter>::New();
    triangles->SetInputData(mesh.data);
    triangles->PassLinesOff();
    triangles->PassVertsOff();
    const auto normals = vtkSmartPointer<vtkPolyDataNormals>::New();
    normals->SetInputConnection(triangles->GetOutputPort());
    normals->ConsistencyOff();
    normals->SplittingOn();
    normals->SetFeatureAngle(bench::kDrawnCusp);
    normals->Update();
    return normals->GetOutput();
}

double errorOf(const bench::QuadMesh &quads, vtkPolyData &drawn)
{
    auto *const positions = vtkFloatArray::SafeDownCast(drawn.GetPoints()->GetData());
    auto *const normals = vtkFloatArray::SafeDownCast(drawn.GetPointData()->GetNormals());
    vtkCellArray *const triangles = drawn.GetPolys();
    const auto pointAt = [corners = triangles->GetConnectivityArray()](int64_t i) {
        return vtkIdType(corners->GetComponent(i, 0));
    };
    return bench::DrawnReference(quads).error(
        triangles->GetNumberOfCells(), [&](int64_t i) { return positions->GetPointer(3 * pointAt(i)); },
        [&](int64_t i) { return normals->GetPointer(3 * pointAt(i)); });
}

const bool registered = [] {
    for (const int cells : {1000, 2000})
        bench::addDrawn(bench::kNormalsJob, "vtk", cells, 1, [cells] {
            const auto mesh =
                std::make_shared<bench::VTKMesh>(std::make_shared<const bench::FaceMesh>(bench::quadFaces(cells)));
            return bench::Work{[=] { return bench::keep(draw(*mesh)); },
                               [=] { return errorOf(bench::QuadMesh(cells), *draw(*mesh)); }};
        });
    return true;
}();
}  // namespace
