#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include <benchmark/benchmark.h>
#include <vtkDoubleArray.h>
#include <vtkFloatArray.h>
#include <vtkIntArray.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkSmartPointer.h>

#include <bench/arrays.h>

namespace
{
/// A deep copy between two kinds of arrays, which converts.
template <class From, class Value> void addDeepCopy(const char *job)
{
    const double bytes = double(bench::kValues) * double(sizeof(Value) + sizeof(float));
    bench::add({job, "values16M", "vtk", 1, double(bench::kValues), bytes, true, [] {
                    const auto values = bench::makeNumbers<Value>(bench::kValues);
                    const auto from = vtkSmartPointer<From>::New();
                    from->SetArray(values->data(), vtkIdType(bench::kValues), 1);
                    const auto copy = [from, values] {
                        const auto to = vtkSmartPointer<vtkFloatArray>::New();
                        to->DeepCopy(from);
                        return to;
                    };
                    return bench::Work{[copy] { return bench::keep(copy()); },
                                       [copy, values] {
                                           const auto to = copy();
                                           int64_t wrong = 0;
                                           for (int64_t i = 0; i < bench::kValues; ++i)
                                               wrong += to->GetValue(vtkIdType(i)) != float(values->data()[i]);
                                           return double(wrong);
                                       }};
                }});
}

using Bounds = std::array<double, 6>;

Bounds computeBounds(vtkFloatArray *values)
{
    vtkNew<vtkPoints> points;
    points->SetData(values);
    Bounds bounds;
    points->GetBounds(bounds.data());
    return bounds;
}

/// How far the bounds are from ours.
double boundsError(const Bounds &bounds, const RQ_DataArray &positions)
{
    double min[3], max[3], error = 0.0;
    positions.getMinMax(min, max);
    for (size_t axis = 0; axis < 3; ++axis)
        error = std::max({error, std::abs(bounds[2 * axis] - min[axis]), std::abs(bounds[2 * axis + 1] - max[axis])});
    return error;
}

void addBounds(int threads)
{
    bench::add(
        {"bounds", "positions16M", "vtk", threads, double(bench::kValues), double(bench::kValues) * 12.0, false, [threads] {
             // Its header that asks for one thread is no C++20.
             if (threads == 1)
                 setenv("VTK_SMP_BACKEND_IN_USE", "Sequential", 1);
             const auto positions = bench::makeNumbers<float>(bench::kValues, 3);
             const auto values = vtkSmartPointer<vtkFloatArray>::New();
             values->SetNumberOfComponents(3);
             values->SetArray(positions->data(), vtkIdType(3 * bench::kValues), 1);
             const auto run = [positions, values] {
                 benchmark::DoNotOptimize(computeBounds(values));
                 return std::shared_ptr<void>();
             };
             return bench::Work{run, [positions, values] { return boundsError(computeBounds(values), *positions); }};
         }});
}

const bool registered = [] {
    addDeepCopy<vtkIntArray, int32_t>("convert/I32_to_F32");
    addDeepCopy<vtkDoubleArray, double>("convert/F64_to_F32");
    addBounds(1);
    addBounds(2);
    return true;
}();
}  // namespace
