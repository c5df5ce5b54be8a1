#include <vtkCellArray.h>
#include <vtkNew.h>
#include <vtkPolyData.h>
#include <vtkSphereSource.h>
#include <vtkTexturedSphereSource.h>

#include <bench/spheres.h>

namespace
{
template <class Source> void configure(Source &source)
{
    source.SetThetaResolution(bench::kSphereSamples);
    source.SetPhiResolution(bench::kSphereSamples);
    source.SetRadius(1.0);
}

/// Quads, as ours, but without texture coordinates.
vtkSmartPointer<vtkPolyData> makePlain()
{
    vtkNew<vtkSphereSource> source;
    configure(*source);
    source->LatLongTessellationOn();
    source->Update();
    return source->GetOutput();
}

/// Triangles.
vtkSmartPointer<vtkPolyData> makeTextured()
{
    vtkNew<vtkTexturedSphereSource> source;
    configure(*source);
    source->Update();
    return source->GetOutput();
}

void addSphere(const char *who, vtkSmartPointer<vtkPolyData> (*make)())
{
    bench::addSphere(who, 1, [make] {
        return bench::Work{[make] { return bench::keep(make()); },
                           [make] {
                               const auto sphere = make();
                               const auto *points = static_cast<const float *>(sphere->GetPoints()->GetVoidPointer(0));
                               return bench::radiusError(points, sphere->GetNumberOfPoints());
                           }};
    });
}

const bool registered = [] {
    addSphere("vtk", makePlain);
    addSphere("vtk textured", makeTextured);
    return true;
}();
}  // namespace
