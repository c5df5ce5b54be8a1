#include <vtkCellData.h>
#include <vtkPointData.h>
#include <vtkPolyDataNormals.h>

#include <bench/normalJobs.h>
#include <bench/normalReference.h>
#include <bench/peers/vtkMesh.h>

namespace
{
enum class Normals
{
    kFaces,
    kPoints,
    kCusp,
};

vtkSmartPointer<vtkPolyDataNormals> compute(const bench::VTKMesh &mesh, Normals which)
{
    const auto filter = vtkSmartPointer<vtkPolyDataNormals>::New();
    filter->SetInputData(mesh.data);
    filter->ConsistencyOff();
    filter->SetComputeCellNormals(which == Normals::kFaces);
    filter->SetComputePointNormals(which != Normals::kFaces);
    filter->SetSplitting(which == Normals::kCusp);
    filter->SetFeatureAngle(60.0);
    filter->Update();
    return filter;
}

double errorOf(const bench::VTKMesh &mesh, Normals which)
{
    const auto filter = compute(mesh, which);
    vtkPolyData *const output = filter->GetOutput();
    const auto *normals = vtkFloatArray::SafeDownCast(which == Normals::kFaces ? output->GetCellData()->GetNormals()
                                                                               : output->GetPointData()->GetNormals());
    const auto normalOf = [normals](int64_t i) { return const_cast<vtkFloatArray *>(normals)->GetPointer(3 * i); };
    if (which == Normals::kCusp)
        return bench::lengthError(normalOf(0), normals->GetNumberOfTuples());
    const bench::NormalReference reference(mesh.faces());
    return which == Normals::kFaces ? reference.faceError(normalOf) : reference.pointError(normalOf);
}

void addJob(const char *job, double outputs, Normals which)
{
    bench::addNormals(job, "vtk", 1, outputs, [which] {
        const auto mesh = std::make_shared<bench::VTKMesh>(bench::faceMesh("quads1M"));
        return bench::Work{[=] { return bench::keep(compute(*mesh, which)); }, [=] { return errorOf(*mesh, which); }};
    });
}

const bool registered = [] {
    // It gives every face the same weight.
    addJob("face-normals", bench::kNormalFaces, Normals::kFaces);
    addJob("point-normals-equal", bench::kNormalPoints, Normals::kPoints);
    addJob("cusp60-equal", 4.0 * bench::kNormalFaces, Normals::kCusp);
    return true;
}();
}  // namespace
