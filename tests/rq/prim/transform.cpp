#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include <Imath/ImathMatrixAlgo.h>

#include <host/bas/JSONValue.h>
#include <host/bas/Parallel.h>

#include "TestPrimitive.h"

namespace
{
const BAS_Mat4d kIdentity;
const double kNaN = std::nan("");

BAS_Mat4d scale(double x, double y, double z) { return BAS_Mat4d().setScale(BAS_Vec3d(x, y, z)); }
BAS_Mat4d turn(double x, double y, double z) { return BAS_Mat4d().setEulerAngles(BAS_Vec3d(x, y, z)); }
BAS_Mat4d move(double x, double y, double z) { return BAS_Mat4d().setTranslation(BAS_Vec3d(x, y, z)); }
BAS_Mat4d shear(double xy) { return BAS_Mat4d(1, xy, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1); }

RQ_TransformHandle transformOf(std::initializer_list<BAS_Mat4d> matrices)
{
    return RQ_TransformHandle(new RQ_Transform(matrices.begin(), int(matrices.size())));
}

BAS_Mat4d matrixOf(const RQ_Transform &transform, int segment)
{
    BAS_Mat4d matrix;
    transform.getMatrix(matrix, segment);
    return matrix;
}

BAS_Mat4d inverseOf(const RQ_Transform &transform, int segment)
{
    BAS_Mat4d inverse(7.0);
    transform.getInverse(inverse, segment);
    return inverse;
}

TEST(Transform, ClampsSegments)
{
    const RQ_TransformHandle two = transformOf({move(1, 0, 0), move(2, 0, 0)});
    for (const int segment : {std::numeric_limits<int>::min(), -1, 0, 1, 5})
    {
        const int read = segment > 0;
        EXPECT_EQ(matrixOf(*two, segment), move(read + 1, 0, 0)) << segment;
        EXPECT_EQ(inverseOf(*two, segment), move(-read - 1, 0, 0)) << segment;
        RQ_Transform changed(*two);
        changed.setMatrix(move(7, 0, 0), segment);
        EXPECT_EQ(matrixOf(changed, read), move(7, 0, 0)) << segment;
    }
}

TEST(Transform, IdentityFlagFollowsAllSegments)
{
    RQ_Transform none;
    none.setMatrix(move(1, 2, 3), 0);
    EXPECT_FALSE(none.isIdentity()) << "without segments it reads as the identity but is not marked";
    EXPECT_EQ(inverseOf(none, 0), kIdentity);
    EXPECT_EQ(matrixOf(none, 3), kIdentity);

    const RQ_TransformHandle transform = transformOf({kIdentity, kIdentity});
    EXPECT_TRUE(transform->isIdentity());
    transform->setMatrix(move(1, 0, 0), 0);
    EXPECT_FALSE(transform->isIdentity());
    transform->setMatrix(kIdentity, 0);
    EXPECT_TRUE(transform->isIdentity());
}

TEST(Transform, CombiningWithTheIdentitySharesTheOther)
{
    const RQ_TransformHandle moved = translation(1, 2, 3), &identity = RQ_Transform::identity();
    for (const RQ_TransformHandle &same :
         {moved->multiply(identity), identity->multiply(moved), moved->preMultiply(identity), identity->preMultiply(moved),
          moved->multiply(RQ_TransformHandle())})
        EXPECT_EQ(same, moved);
    EXPECT_EQ(identity->invert(), identity);
}

TEST(Transform, MultiplyAppliesThisFirst)
{
    const RQ_TransformHandle one = transformOf({scale(2, 2, 2)});
    const RQ_TransformHandle three = transformOf({move(1, 0, 0), move(2, 0, 0), move(3, 0, 0)});
    const RQ_TransformHandle after = one->multiply(three), before = one->preMultiply(three);
    ASSERT_EQ(after->getSegments(), 3);
    ASSERT_EQ(before->getSegments(), 3);
    for (int s = 0; s < 3; ++s)
    {
        EXPECT_EQ(matrixOf(*after, s), scale(2, 2, 2) * move(s + 1, 0, 0));
        EXPECT_EQ(matrixOf(*before, s), move(s + 1, 0, 0) * scale(2, 2, 2));
    }
    EXPECT_TRUE(*RQ_TransformHandle(three->preMultiply(scale(2, 2, 2))) == *after) << "a bare matrix";
    EXPECT_TRUE(*RQ_TransformHandle(RQ_Transform().multiply(scale(2, 2, 2))) == *one) << "without segments";
    EXPECT_TRUE(*RQ_TransformHandle(three->multiply(BAS_Mat3f(2, 0, 0, 0, 2, 0, 0, 0, 2))) == *before) << "without offset";
}

TEST(Transform, InverseOfASingularSegmentIsTheIdentity)
{
    const struct
    {
        const char *what;
        BAS_Mat4d matrix;
        bool singular;
    } cases[] = {{"zero", BAS_Mat4d(0.0), true},
                 {"flattened", scale(1, 0, 1), true},
                 {"infinite", scale(INFINITY, 1, 1), true},
                 {"not a number", scale(kNaN, 1, 1), true},
                 {"tiny", scale(1e-60, 1e-60, 1e-60), false},
                 {"mirrored", scale(-2, 1, 1), false},
                 {"sheared and moved", shear(3) * move(1, 2, 3), false}};
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        const RQ_TransformHandle transform = transformOf({c.matrix, move(1, 0, 0)});
        const BAS_Mat4d inverse = matrixOf(*transform->invert(), 0);
        EXPECT_EQ(inverseOf(*transform, 0), inverse) << "the cached inverse differs from a fresh one";
        EXPECT_EQ(inverse == kIdentity, c.singular);
        EXPECT_TRUE(c.singular || (c.matrix * inverse).equalWithAbsError(kIdentity, 1e-12));
        transform->setMatrix(move(1, 0, 0), 0);
        EXPECT_EQ(inverseOf(*transform, 0), move(-1, 0, 0)) << "the cache outlived its matrix";
    }
}

TEST(Transform, ManyThreadsShareOneInverse)
{
    const RQ_TransformHandle transform = transformOf({scale(2, 4, 8), move(1, 2, 3)});
    std::vector<BAS_Mat4d> seen(64);
    host::parallelFor(64, 1, [&](int64_t i) { seen[size_t(i)] = inverseOf(*transform, 0); });
    EXPECT_EQ(std::count(seen.begin(), seen.end(), scale(0.5, 0.25, 0.125)), 64);
}

template <class T> class TransformValues : public testing::Test
{
protected:
    // What one operation on values of about 1 may lose.
    static constexpr double kTolerance = std::is_same_v<T, PLT_Half> ? 2e-2 : std::is_same_v<T, float> ? 1e-5 : 1e-12;

    static RQ_DataArrayHandle normal(const BAS_Vec3d &n) { return numbers<T>({n.x, n.y, n.z}, 3, RQ_TYPE_NORMAL); }

    static void expectDirection(const RQ_DataArrayHandle &array, const BAS_Vec3d &expected)
    {
        const BAS_Vec3d n(array->getF64(0, 0), array->getF64(0, 1), array->getF64(0, 2));
        EXPECT_TRUE(std::isfinite(n.length()));
        EXPECT_LT((n.normalized() - expected).length(), 4 * kTolerance);
    }
};
using FloatTypes = testing::Types<PLT_Half, float, double>;
TYPED_TEST_SUITE(TransformValues, FloatTypes);

TYPED_TEST(TransformValues, FollowTheirType)
{
    const struct
    {
        const char *what;
        RQ_DataArrayHandle array;
        std::vector<double> expected;
    } cases[] = {{"point", numbers<TypeParam>({1, 2, 3}, 3, RQ_TYPE_POINT), {4, 8, 12}},
                 {"vector", numbers<TypeParam>({1, 2, 3}, 3, RQ_TYPE_VECTOR), {2, 4, 6}},
                 {"normal", numbers<TypeParam>({1, 2, 3}, 3, RQ_TYPE_NORMAL), {0.5, 1, 1.5}},
                 {"homogeneous point, w and all behind it kept",
                  numbers<TypeParam>({1, 2, 3, 2, 7, 4, 5, 6, 0, 8}, 5, RQ_TYPE_HPOINT),
                  {4, 8, 12, 2, 7, 10, 14, 18, 0, 8}}};
    const RQ_TransformHandle transform = transformOf({kIdentity, scale(2, 2, 2) * move(2, 4, 6)});
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        const RQ_DataArrayHandle result = transform->transform(c.array, 9);
        EXPECT_EQ(result->getTypeInfo(), c.array->getTypeInfo());
        EXPECT_EQ(result->getStorage(), RQstorageOf<TypeParam>);
        EXPECT_NE(result->getDataId(), c.array->getDataId());
        const int tupleSize = int(c.array->getTupleSize());
        for (int i = 0; i < int(c.expected.size()); ++i)
            EXPECT_EQ(result->getF64(i / tupleSize, i % tupleSize), c.expected[size_t(i)]) << "value " << i;
    }
}

TYPED_TEST(TransformValues, AreTheSameArrayWhenNothingChanges)
{
    const RQ_DataArrayHandle point = numbers<TypeParam>({1, 2, 3}, 3, RQ_TYPE_POINT);
    const RQ_TransformHandle moved = translation(1, 2, 3), turned = transformOf({turn(1, 2, 3)});
    const struct
    {
        const char *what;
        RQ_TransformHandle transform;
        RQ_DataArrayHandle array;
    } cases[] = {{"nothing", turned, nullptr},
                 {"identity", RQ_Transform::identity(), point},
                 {"identity in this segment", transformOf({kIdentity, move(1, 0, 0)}), point},
                 {"moved vector", moved, numbers<TypeParam>({1, 2, 3}, 3, RQ_TYPE_VECTOR)},
                 {"moved normal", moved, numbers<TypeParam>({1, 2, 3}, 3, RQ_TYPE_NORMAL)},
                 {"moved turn", moved, numbers<TypeParam>({0, 0, 0, 1}, 4, RQ_TYPE_QUATERNION)},
                 {"color", turned, numbers<TypeParam>({1, 2, 3}, 3, RQ_TYPE_COLOR)},
                 {"point of two", turned, numbers<TypeParam>({1, 2}, 2, RQ_TYPE_POINT)},
                 {"turn of three", turned, numbers<TypeParam>({0, 0, 1}, 3, RQ_TYPE_QUATERNION)},
                 {"integers", turned, numbers<int32_t>({1, 2, 3}, 3, RQ_TYPE_POINT)}};
    for (const auto &c : cases)
        EXPECT_EQ(c.transform->transform(c.array, 0), c.array) << c.what;
}

// A normal must stay across the surface, on the same side, whatever the matrix does to it.
TYPED_TEST(TransformValues, NormalsStayAcrossTheSurface)
{
    const BAS_Vec3d a(0.3, -0.8, 0.5), b(-0.4, 0.1, 0.9);
    for (const BAS_Mat4d &matrix : {turn(0.3, 1, 2), shear(2), scale(1, 2, 4), shear(-1) * turn(1, 0, 1) * scale(0.5, 1, 2)})
    {
        SCOPED_TRACE(testing::Message() << matrix);
        BAS_Vec3d movedA, movedB;
        matrix.multDirMatrix(a, movedA);
        matrix.multDirMatrix(b, movedB);
        const RQ_DataArrayHandle result = transformOf({matrix})->transform(this->normal(a.cross(b).normalized()), 0);
        this->expectDirection(result, movedA.cross(movedB).normalized());
    }
}

TYPED_TEST(TransformValues, NormalsSurviveFlattening)
{
    const struct
    {
        const char *what;
        BAS_Mat4d matrix;
        BAS_Vec3d normal, direction;
    } cases[] = {{"flattened along the normal", scale(2, 2, 0), {0, 0, 1}, {0, 0, 1}},
                 {"flattened and turned", scale(1, 1, 0) * turn(0, 0, 1), {0, 0, -1}, {0, 0, -1}},
                 {"mirrored", scale(1, 1, -1), {0, 0, 1}, {0, 0, -1}},
                 {"flattened to nearly nothing", scale(1e-30, 1e-30, 0), {0, 0, 1}, {0, 0, 1}},
                 {"flattened from afar", scale(1e200, 1e200, 0), {0, 0, 1}, {0, 0, 1}},
                 {"an inverse beyond all floats", scale(1e-60, 1e-60, 1e-60), {0, 1, 0}, {0, 1, 0}},
                 {"the same, mirrored", scale(1e-60, 1e-60, -1e-60), {0, 0, 1}, {0, 0, -1}},
                 {"everything to a point", BAS_Mat4d(0.0), {0, 1, 0}, {0, 0, 0}},
                 {"not a number", scale(kNaN, 1, 1), {0, 1, 0}, {0, 1, 0}}};
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        this->expectDirection(transformOf({c.matrix})->transform(this->normal(c.normal), 0), c.direction);
    }
}

// Turning by q and then by the matrix is turning by the transformed q.
TYPED_TEST(TransformValues, QuaternionsTurnLikeTheMatrix)
{
    const BAS_Quatd q = Imath::extractQuat(turn(0.2, -0.5, 1.1));
    const RQ_DataArrayHandle array = numbers<TypeParam>({q.v.x, q.v.y, q.v.z, q.r}, 4, RQ_TYPE_QUATERNION);
    const struct
    {
        const char *what;
        BAS_Mat4d matrix, rotation;
    } cases[] = {{"scale does not count", scale(3, 5, 2) * turn(1, 2, 3), turn(1, 2, 3)},
                 {"half a turn", turn(M_PI, 0, 0), turn(M_PI, 0, 0)},
                 {"a mirror has its third row turned round", scale(-1, 1, 1), scale(-1, 1, -1)},
                 {"a row that is nothing is made up", scale(0, 1, 1), kIdentity},
                 {"nothing at all", BAS_Mat4d(0.0), kIdentity}};
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        const RQ_DataArrayHandle result = transformOf({c.matrix})->transform(array, 0);
        const BAS_Quatd turned(result->getF64(0, 3), result->getF64(0, 0), result->getF64(0, 1), result->getF64(0, 2));
        const BAS_Vec3d v(0.3, -0.4, 0.5);
        EXPECT_LT((v * turned.toMatrix44() - v * q.toMatrix44() * c.rotation).length(), this->kTolerance);
    }
}

TEST(Transform, LoadsWhatItSavedAndNothingElse)
{
    const std::string matrix = "[1,0,0,0,0,1,0,0,0,0,1,0,0,0,0,1]";
    const RQ_TransformHandle saved = transformOf({turn(1, 2, 3), scale(1e300, -1e-300, INFINITY)});
    const struct
    {
        const char *what;
        std::string text;
        RQ_TransformHandle expected;
    } cases[] = {{"a map", "{}", nullptr},
                 {"a bare matrix", matrix, nullptr},
                 {"an empty one behind", "[" + matrix + ",[]]", nullptr},
                 {"three numbers", "[[1,2,3]]", nullptr},
                 {"a text", "[[1,0,0,0,0,1,0,0,0,0,1,0,0,0,0,\"x\"]]", nullptr},
                 {"a number too many", "[[1,0,0,0,0,1,0,0,0,0,1,0,0,0,0,1,0]]", nullptr},
                 {"as saved", jsonOf(*saved), saved}};
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        RQ_TransformHandle transform = RQ_Transform::identity();
        std::string error;
        BAS_JSONValue value;
        ASSERT_TRUE(BAS_JSONValue::parse(c.text, value, error)) << error;
        EXPECT_EQ(RQ_Transform::load(transform, value), bool(c.expected));
        EXPECT_TRUE(*transform == *(c.expected ? c.expected : RQ_Transform::identity()));
    }
    testing::internal::CaptureStdout();
    saved->dump("label");
    RQ_Transform::identity()->dump();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "label: " + jsonOf(*saved) + "[" + matrix + "]");
}
}  // namespace
