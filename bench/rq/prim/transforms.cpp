#include <algorithm>
#include <cmath>

#include <bench/arrays.h>
#include <host/bas/Parallel.h>
#include <rq/prim/CompactTransformArray.h>

namespace
{
constexpr int64_t kTuples = 10'000'000;
constexpr int64_t kTransforms = 1'000'000;

BAS_Mat4d sheared()
{
    return BAS_Mat4d().setEulerAngles(BAS_Vec3d(0.3, 1.0, 2.0)) * BAS_Mat4d().setScale(BAS_Vec3d(1.0, 2.0, 0.5)) *
           BAS_Mat4d().setTranslation(BAS_Vec3d(3.0, 4.0, 5.0));
}

/// The matrix that values of a type are multiplied by.
BAS_Mat4d matrixFor(RQ_Type type)
{
    BAS_Mat4d matrix = type == RQ_TYPE_NORMAL ? sheared().inverse().transposed() : sheared();
    for (int i = 0; i < 3 && type != RQ_TYPE_POINT; ++i)
        matrix[i][3] = matrix[3][i] = 0.0;
    return matrix;
}

/// The greatest difference from one value after the other in 64 bits, over the size of the values.
template <class T> double transformError(const RQ_DANumeric<T> &from, const RQ_DataArray &to, RQ_Type type)
{
    const BAS_Mat4d matrix = matrixFor(type);
    double error = 0.0;
    for (int64_t i = 0; i < from.entries(); i += 101)
        for (int c = 0; c < 3; ++c)
        {
            double expected = matrix[3][c];
            for (int k = 0; k < 3; ++k)
                expected += double(from.data()[3 * i + k]) * matrix[k][c];
            error = std::max(error, std::abs(to.getF64(i, c) - expected) / 100.0);
        }
    return error;
}

template <class T> void addTransform(const char *what, RQ_Type type, int threads)
{
    bench::add({std::string("transform/") + what, "10M", "ours", threads, double(kTuples), double(kTuples) * 6.0 * sizeof(T),
                false, [type] {
                    const BAS_IntrusivePtr<RQ_DANumeric<T>> from(new RQ_DANumeric<T>(kTuples, 3, type));
                    from->copyFrom(bench::makeNumbers<T>(kTuples, 3)->data());
                    const BAS_Mat4d matrix = sheared();
                    const RQ_TransformHandle transform(new RQ_Transform(&matrix, 1));
                    return bench::Work{[=] { return bench::keep(transform->transform(from, 0)); },
                                       [=] { return transformError(*from, *transform->transform(from, 0), type); }};
                }});
}

/// The same by Imath alone, in 32 bits, into memory that is there.
void addImath()
{
    bench::add({"transform/points", "10M", "Imath", 1, double(kTuples), double(kTuples) * 24.0, false, [] {
                    const auto from = bench::makeNumbers<float>(kTuples, 3);
                    const auto to = std::make_shared<std::vector<BAS_Vec3f>>(size_t(kTuples));
                    return bench::Work{[=] {
                                           const auto *points = reinterpret_cast<const BAS_Vec3f *>(from->data());
                                           const BAS_Mat4f matrix(sheared());
                                           for (int64_t i = 0; i < kTuples; ++i)
                                               matrix.multVecMatrix(points[i], (*to)[size_t(i)]);
                                           return std::shared_ptr<void>();
                                       },
                                       {}};
                }});
}

std::vector<BAS_Mat4d> manyMatrices()
{
    std::vector<BAS_Mat4d> matrices(static_cast<size_t>(kTransforms));
    bench::Random random(5);
    for (BAS_Mat4d &matrix : matrices)
        for (int i = 0; i < 16; ++i)
            matrix[i / 4][i % 4] = i % 4 == 3 ? double(i == 15) : double(random.symmetric());
    return matrices;
}

/// The greatest entry, but for ones, of what a matrix and its inverse make together.
double inverseError(const std::vector<BAS_Mat4d> &matrices, const RQ_TransformArray &array)
{
    double error = 0.0;
    for (size_t i = 0; i < matrices.size(); i += 101)
    {
        BAS_Mat4d inverse;
        array.getInverse(inverse, int64_t(i), 0);
        const BAS_Mat4d both = matrices[i] * inverse;
        const double determinant = std::abs(matrices[i].determinant());
        for (int k = 0; k < 16; ++k)
            error = std::max(error, std::abs(both[k / 4][k % 4] - double(k % 5 == 0)) * determinant);
    }
    return error;
}

void addInverse(int threads)
{
    bench::add({"computeInverse", "1M transforms", "ours", threads, double(kTransforms), 0.0, false, [] {
                    const auto matrices = std::make_shared<std::vector<BAS_Mat4d>>(manyMatrices());
                    const BAS_IntrusivePtr<RQ_CompactTransformArray> array(
                        new RQ_CompactTransformArray(matrices->data(), kTransforms));
                    const RQ_TransformHandle first = array->get(0);
                    return bench::Work{[=] {
                                           array->set(0, first);  // forgets the inverses
                                           array->computeInverse();
                                           return std::shared_ptr<void>();
                                       },
                                       [=] { return inverseError(*matrices, *array); }};
                }});
    bench::add({"computeInverse", "1M transforms", "Imath", threads, double(kTransforms), 0.0, false, [] {
                    const auto matrices = std::make_shared<std::vector<BAS_Mat4d>>(manyMatrices());
                    const auto inverses = std::make_shared<std::vector<BAS_Mat4d>>(matrices->size());
                    return bench::Work{[=] {
                                           host::parallelFor(kTransforms, 1024, [&](int64_t i) {
                                               (*inverses)[size_t(i)] = (*matrices)[size_t(i)].inverse();
                                           });
                                           return std::shared_ptr<void>();
                                       },
                                       {}};
                }});
}

const bool registered = [] {
    for (const int threads : {1, 2})
    {
        addTransform<float>("points", RQ_TYPE_POINT, threads);
        addTransform<float>("vectors", RQ_TYPE_VECTOR, threads);
        addTransform<float>("normals", RQ_TYPE_NORMAL, threads);
        addInverse(threads);
    }
    addTransform<PLT_Half>("points_F16", RQ_TYPE_POINT, 1);
    addTransform<double>("points_F64", RQ_TYPE_POINT, 1);
    addImath();
    return true;
}();
}  // namespace
