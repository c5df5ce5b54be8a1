#include <vtkCellArray.h>
#include <vtkCellType.h>
#include <vtkFloatArray.h>
#include <vtkGeometryFilter.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkSmartPointer.h>
#include <vtkTypeInt32Array.h>
#include <vtkUnstructuredGrid.h>

#include <bench/cellMeshes.h>

namespace
{
/// Faces outside, with the points that they use and where these came from.
vtkSmartPointer<vtkGeometryFilter> findOuterFaces(vtkUnstructuredGrid *grid)
{
    const auto filter = vtkSmartPointer<vtkGeometryFilter>::New();
    filter->SetInputData(grid);
    filter->PassThroughCellIdsOn();
    filter->PassThroughPointIdsOn();
    filter->Update();
    return filter;
}

bench::Work prepare(const bench::CellMeshPtr &cells)
{
    vtkNew<vtkFloatArray> values;
    values->SetNumberOfComponents(3);
    values->SetArray(const_cast<float *>(cells->positions.data()), vtkIdType(cells->positions.size()), 1);
    vtkNew<vtkPoints> points;
    points->SetData(values);
    vtkNew<vtkTypeInt32Array> starts, corners;
    for (int64_t cell = 0; cell <= cells->cells(); ++cell)
        starts->InsertNextValue(int32_t(cell * cells->cornersOfEach));
    corners->SetArray(const_cast<int32_t *>(cells->corners.data()), vtkIdType(cells->corners.size()), 1);
    vtkNew<vtkCellArray> all;
    all->SetData(starts, corners);
    const auto grid = vtkSmartPointer<vtkUnstructuredGrid>::New();
    grid->SetPoints(points);
    grid->SetCells(cells->cornersOfEach == 4 ? VTK_TETRA : VTK_HEXAHEDRON, all);
    const auto check = [=] {
        const int64_t faces = findOuterFaces(grid)->GetOutput()->GetNumberOfCells();
        return std::abs(double(faces - cells->outerFaces)) / double(cells->outerFaces);
    };
    return {[grid, cells] { return bench::keep(findOuterFaces(grid)); }, check};
}

const bool registered = [] {
    bench::addOuterFaces("vtk", 1, prepare);
    return true;
}();
}  // namespace
