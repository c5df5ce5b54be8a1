#include <vtkCellData.h>
#include <vtkCleanPolyData.h>
#include <vtkIntArray.h>
#include <vtkThreshold.h>
#include <vtkUnstructuredGrid.h>

#include <bench/meshJobs.h>
#include <bench/peers/vtkMesh.h>

namespace
{
vtkSmartPointer<vtkCleanPolyData> removeUnused(const bench::VTKMesh &mesh)
{
    const auto filter = vtkSmartPointer<vtkCleanPolyData>::New();
    filter->SetInputData(mesh.data);
    filter->PointMergingOff();
    filter->Update();
    return filter;
}

bench::Work prepareUnused(const bench::FaceMeshPtr &faces)
{
    const auto mesh = std::make_shared<bench::VTKMesh>(faces);
    return {[mesh] { return bench::keep(removeUnused(*mesh)); },
            [=] { return bench::unusedError(*faces, removeUnused(*mesh)->GetOutput()->GetNumberOfPoints()); }};
}

using Pieces = std::vector<vtkSmartPointer<vtkThreshold>>;

Pieces partition(const bench::VTKMesh &mesh, int kinds)
{
    Pieces pieces;
    for (int material = 0; material < kinds; ++material)
    {
        const auto filter = vtkSmartPointer<vtkThreshold>::New();
        filter->SetInputData(mesh.data);
        filter->SetInputArrayToProcess(0, 0, 0, vtkDataObject::FIELD_ASSOCIATION_CELLS, "material");
        filter->SetLowerThreshold(material);
        filter->SetUpperThreshold(material);
        filter->Update();
        pieces.push_back(filter);
    }
    return pieces;
}

template <int kinds> bench::Work preparePartition(const bench::FaceMeshPtr &faces)
{
    const auto mesh = std::make_shared<bench::VTKMesh>(faces);
    const std::vector<int32_t> materials = bench::materialsOf(*faces, kinds);
    vtkNew<vtkIntArray> values;
    values->SetName("material");
    for (const int32_t material : materials)
        values->InsertNextValue(material);
    mesh->data->GetCellData()->AddArray(values);
    const auto check = [=] {
        int64_t sum = 0;
        for (const auto &piece : partition(*mesh, kinds))
            sum += piece->GetOutput()->GetNumberOfCells();
        return bench::piecesError(*faces, sum, kinds, kinds);
    };
    return {[mesh] { return bench::keep(partition(*mesh, kinds)); }, check};
}

const bool registered = [] {
    bench::addRemoveUnused("remove-unused", {"quads1M", "tris2M"}, {"vtk"}, prepareUnused);
    bench::addPieces("partition-8", {"vtk"}, preparePartition<8>);
    bench::addPieces("partition-64", {"vtk"}, preparePartition<64>);
    return true;
}();
}  // namespace
