#include <vtkPolyData.h>
#include <vtkSTLReader.h>
#include <vtkSmartPointer.h>

#include <bench/io/gridFile.h>

namespace
{
const bool registered = [] {
    bench::addSTLRead("vtk", 1, [](const std::string &path) {
        const auto reader = vtkSmartPointer<vtkSTLReader>::New();
        reader->SetFileName(path.c_str());
        reader->MergingOn();
        reader->Update();
        return std::pair(int64_t(reader->GetOutput()->GetNumberOfPoints()), bench::keep(reader));
    });
    return true;
}();
}  // namespace
