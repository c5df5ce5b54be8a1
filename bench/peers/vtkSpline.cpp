#include <vtkCellArray.h>
#include <vtkFloatArray.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkSplineFilter.h>
#include <vtkTypeInt32Array.h>

#include <bench/curves.h>

namespace
{
struct Input
{
    Input() : positions(bench::hairPositions(bench::kHairs))
    {
        vtkNew<vtkFloatArray> values;
        values->SetNumberOfComponents(3);
        values->SetArray(positions.data(), vtkIdType(positions.size()), 1);
        vtkNew<vtkPoints> points;
        points->SetData(values);
        mesh->SetPoints(points);
        for (int64_t vertex = 0; vertex < bench::kHairs * bench::kHairVertices; ++vertex)
            corners.push_back(int32_t(vertex));
        for (int64_t hair = 0; hair <= bench::kHairs; ++hair)
            offsets.push_back(int32_t(hair * bench::kHairVertices));
        vtkNew<vtkTypeInt32Array> ends, connectivity;
        ends->SetArray(offsets.data(), vtkIdType(offsets.size()), 1);
        connectivity->SetArray(corners.data(), vtkIdType(corners.size()), 1);
        vtkNew<vtkCellArray> lines;
        lines->SetData(ends, connectivity);
        mesh->SetLines(lines);
    }

    /// As many points a curve as ours, along a spline through the vertices.
    vtkSmartPointer<vtkSplineFilter> refine() const
    {
        const auto filter = vtkSmartPointer<vtkSplineFilter>::New();
        filter->SetInputData(mesh);
        filter->SetSubdivideToSpecified();
        filter->SetNumberOfSubdivisions(int(bench::kHairPoints) - 1);
        filter->SetGenerateTCoordsToOff();
        filter->Update();
        return filter;
    }

    std::vector<float> positions;
    std::vector<int32_t> corners, offsets;
    vtkNew<vtkPolyData> mesh;
};

const bool registered = [] {
    bench::addHair("curves-to-linear", "hair100k-catmullrom", "VTK", 1, bench::kHairs, bench::kHairPoints, 3, [] {
        const auto input = std::make_shared<Input>();
        return bench::Work{[input] { return bench::keep(input->refine()); },
                           [input] {
                               const vtkIdType points = input->refine()->GetOutput()->GetNumberOfPoints();
                               return points == bench::kHairs * bench::kHairPoints ? 0.0 : 1.0;
                           }};
    });
    return true;
}();
}  // namespace
