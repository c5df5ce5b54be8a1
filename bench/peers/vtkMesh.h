#pragma once

#include <vtkCellArray.h>
#include <vtkFloatArray.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkSmartPointer.h>
#include <vtkTypeInt32Array.h>

#include <bench/faceJobs.h>

namespace bench
{
/// The mesh as VTK sees it, in the memory of the given one.
class VTKMesh
{
public:
    explicit VTKMesh(const FaceMeshPtr &faces) : faces_(faces)
    {
        // VTK takes what it is lent as not const, but its filters leave their input alone.
        vtkNew<vtkFloatArray> values;
        values->SetNumberOfComponents(3);
        values->SetArray(const_cast<float *>(faces->positions.data()), vtkIdType(faces->positions.size()), 1);
        vtkNew<vtkPoints> points;
        points->SetData(values);
        data->SetPoints(points);
        vtkNew<vtkTypeInt32Array> starts, corners;
        starts->SetArray(const_cast<int32_t *>(faces->starts.data()), vtkIdType(faces->starts.size()), 1);
        corners->SetArray(const_cast<int32_t *>(faces->corners.data()), vtkIdType(faces->corners.size()), 1);
        vtkNew<vtkCellArray> cells;
        cells->SetData(starts, corners);
        data->SetPolys(cells);
    }

    const FaceMesh &faces() const { return *faces_; }

    const vtkNew<vtkPolyData> data;

private:
    FaceMeshPtr faces_;
};
}  // namespace bench
