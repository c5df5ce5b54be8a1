#include <vtkCellArray.h>
#include <vtkFloatArray.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkTriangleFilter.h>
#include <vtkTypeInt32Array.h>

#include <bench/meshAreas.h>

namespace
{
struct Input
{
    explicit Input(int cells) : quads(cells)
    {
        vtkNew<vtkFloatArray> values;
        values->SetNumberOfComponents(3);
        values->SetArray(quads.positions.data(), vtkIdType(quads.positions.size()), 1);
        vtkNew<vtkPoints> points;
        points->SetData(values);
        mesh->SetPoints(points);
        for (int64_t face = 0; face <= quads.faces(); ++face)
            offsets.push_back(int32_t(4 * face));
        vtkNew<vtkTypeInt32Array> ends, corners;
        ends->SetArray(offsets.data(), vtkIdType(offsets.size()), 1);
        corners->SetArray(quads.indices.data(), vtkIdType(quads.indices.size()), 1);
        vtkNew<vtkCellArray> cells_;
        cells_->SetData(ends, corners);
        mesh->SetPolys(cells_);
    }

    vtkSmartPointer<vtkTriangleFilter> triangulate() const
    {
        const auto filter = vtkSmartPointer<vtkTriangleFilter>::New();
        filter->SetInputData(mesh);
        filter->PassLinesOff();
        filter->PassVertsOff();
        filter->Update();
        return filter;
    }

    bench::QuadMesh quads;
    std::vector<int32_t> offsets;
    vtkNew<vtkPolyData> mesh;
};

double errorOf(const Input &input)
{
    const auto filter = input.triangulate();
    vtkCellArray *const polygons = filter->GetOutput()->GetPolys();
    std::vector<int64_t> corners;
    for (vtkIdType cell = 0; cell < polygons->GetNumberOfCells(); ++cell)
    {
        vtkIdType count;
        const vtkIdType *points;
        polygons->GetCellAtId(cell, count, points);
        corners.insert(corners.end(), points, points + count);
    }
    return bench::areaErrorOfPoints(input.quads, int64_t(corners.size()), [&](int64_t i) { return corners[size_t(i)]; });
}

const bool registered = [] {
    bench::addTriangulation("vtk", 1, true, [] {
        const auto input = std::make_shared<Input>(bench::kTriangulationCells);
        return bench::Work{[input] { return bench::keep(input->triangulate()); }, [input] { return errorOf(*input); }};
    });
    return true;
}();
}  // namespace
