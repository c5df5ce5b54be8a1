#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include <Imath/ImathMatrixAlgo.h>

#include <host/bas/JSONValue.h>
#include <host/bas/Parallel.h>

#include "TestPrimitive.h"

namespace
{
const BAS_Mat4d kIdentity;

BAS_Mat4d scale(double x, double y, double z)
{
    BAS_Mat4d matrix;
    return matrix.setScale(BAS_Vec3d(x, y, z));
}

BAS_Mat4d turn(double x, double y, double z)
{
    BAS_Mat4d matrix;
    return matrix.setEulerAngles(BAS_Vec3d(x, y, z));
}

BAS_Mat4d move(double x, double y, double z)
{
    BAS_Mat4d matrix;
    return matrix.setTranslation(BAS_Vec3d(x, y, z));
}

BAS_Mat4d shear(double xy)
{
    BAS_Mat4d matrix;
    matrix[0][1] = xy;
    return matrix;
}

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

BAS_Vec3d tuple(const RQ_DataArrayHandle &array, int64_t i)
{
    return BAS_Vec3d(array->getF64(i, 0), array->getF64(i, 1), array->getF64(i, 2));
}

double distance(const BAS_Vec3d &a, const BAS_Vec3d &b) { return (a - b).length(); }
}  // namespace

TEST(Transform, ClampsSegments)
{
    const RQ_TransformHandle two = transformOf({move(1, 0, 0), move(2, 0, 0)});
    for (const int segment : {std::numeric_limits<int>::min(), -1, 0, 1, 5})
    {
        const int read = segment > 0;
        EXPECT_EQ(matrixOf(*two, segment), move(read + 1, 0, 0)) << segment;
        BAS_Mat4d inverse;
        two->getInverse(inverse, segment);
        EXPECT_EQ(inverse, move(-read - 1, 0, 0)) << segment;
        RQ_Transform changed(*two);
        changed.setMatrix(move(7, 0, 0), segment);
        EXPECT_EQ(matrixOf(changed, read), move(7, 0, 0)) << segment;
    }
}

TEST(Transform, WithoutSegmentsReadsAsTheIdentityButIsNotMarked)
{
    RQ_Transform none;
    EXPECT_EQ(none.getSegments(), 0);
    EXPECT_FALSE(none.isIdentity());
    none.setMatrix(move(1, 2, 3), 0);
    BAS_Mat4d inverse = move(1, 1, 1);
    none.getInverse(inverse, 0);
    EXPECT_EQ(inverse, kIdentity);
    EXPECT_EQ(matrixOf(none, 3), kIdentity);

    none.alloc(2);
    EXPECT_FALSE(none.isIdentity());
    EXPECT_EQ(matrixOf(none, 1), kIdentity);
}

TEST(Transform, IdentityFlagFollowsAllSegments)
{
    const RQ_TransformHandle transform = transformOf({kIdentity, kIdentity});
    EXPECT_TRUE(transform->isIdentity());
    transform->setMatrix(move(1, 0, 0), 0);
    EXPECT_FALSE(transform->isIdentity());
    transform->setMatrix(kIdentity, 1);
    EXPECT_FALSE(transform->isIdentity());
    transform->setMatrix(kIdentity, 0);
    EXPECT_TRUE(transform->isIdentity());
}

TEST(Transform, CombiningWithTheIdentitySharesTheOther)
{
    const RQ_TransformHandle moved = translation(1, 2, 3);
    const RQ_TransformHandle &identity = RQ_Transform::identity();
    EXPECT_EQ(moved->multiply(identity), moved);
    EXPECT_EQ(identity->multiply(moved), moved);
    EXPECT_EQ(moved->preMultiply(identity), moved);
    EXPECT_EQ(identity->preMultiply(moved), moved);
    EXPECT_EQ(moved->multiply(RQ_TransformHandle()), moved);
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
    const RQ_TransformHandle bare(three->multiply(BAS_Mat3f(2, 0, 0, 0, 2, 0, 0, 0, 2)));
    EXPECT_EQ(matrixOf(*bare, 2), move(3, 0, 0) * scale(2, 2, 2));
    const RQ_TransformHandle bareBefore(three->preMultiply(scale(2, 2, 2)));
    EXPECT_TRUE(*bareBefore == *after);
}

TEST(Transform, InverseOfASingularSegmentIsTheIdentity)
{
    const double inf = std::numeric_limits<double>::infinity();
    const struct
    {
        const char *what;
        BAS_Mat4d matrix;
        bool singular;
    } cases[] = {{"zero", BAS_Mat4d(0.0), true},
                 {"flattened", scale(1, 0, 1), true},
                 {"infinite", scale(inf, 1, 1), true},
                 {"not a number", scale(std::nan(""), 1, 1), true},
                 {"tiny", scale(1e-60, 1e-60, 1e-60), false},
                 {"mirrored", scale(-2, 1, 1), false},
                 {"sheared and moved", shear(3) * move(1, 2, 3), false}};
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        const RQ_TransformHandle transform = transformOf({c.matrix, move(1, 0, 0)});
        const RQ_TransformHandle fresh = transform->invert();
        BAS_Mat4d inverse;
        transform->getInverse(inverse, 0);
        EXPECT_TRUE(*fresh == *transform->invert()) << "the cached inverse differs from a fresh one";
        EXPECT_EQ(matrixOf(*fresh, 0), inverse);
        if (c.singular)
            EXPECT_EQ(inverse, kIdentity);
        else
            EXPECT_TRUE((c.matrix * inverse).equalWithAbsError(kIdentity, 1e-12));
        transform->setMatrix(move(1, 0, 0), 0);
        transform->getInverse(inverse, 0);
        EXPECT_EQ(inverse, move(-1, 0, 0)) << "the cache outlived its matrix";
    }
}

TEST(Transform, ManyThreadsShareOneInverse)
{
    const RQ_TransformHandle transform = transformOf({scale(2, 4, 8), move(1, 2, 3)});
    std::vector<BAS_Mat4d> seen(64);
    host::parallelFor(64, 1, [&](int64_t i) { transform->getInverse(seen[size_t(i)], 0); });
    for (const BAS_Mat4d &matrix : seen)
        EXPECT_EQ(matrix, scale(0.5, 0.25, 0.125));
}

template <class T> class TransformValues : public testing::Test
{
protected:
    // What one operation on values of about 1 may lose.
    static constexpr double kTolerance = std::is_same_v<T, PLT_Half> ? 2e-2 : std::is_same_v<T, float> ? 1e-5 : 1e-12;
};
using FloatTypes = testing::Types<PLT_Half, float, double>;
TYPED_TEST_SUITE(TransformValues, FloatTypes);

TYPED_TEST(TransformValues, FollowTheirType)
{
    const struct
    {
        const char *what;
        RQ_Type type;
        std::vector<double> expected;
    } cases[] = {{"point", RQ_TYPE_POINT, {4, 8, 12}},
                 {"vector", RQ_TYPE_VECTOR, {2, 4, 6}},
                 {"normal", RQ_TYPE_NORMAL, {0.5, 1, 1.5}}};
    const RQ_TransformHandle transform = transformOf({kIdentity, scale(2, 2, 2) * move(2, 4, 6)});
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        const RQ_DataArrayHandle result = transform->transform(numbers<TypeParam>({1, 2, 3}, 3, c.type), 9);
        EXPECT_EQ(result->getTypeInfo(), c.type);
        EXPECT_EQ(result->getStorage(), RQstorageOf<TypeParam>);
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(result->getF64(0, i), c.expected[size_t(i)]) << "component " << i;
    }
}

TYPED_TEST(TransformValues, KeepComponentsBehindTheOnesTransformed)
{
    const RQ_DataArrayHandle array = numbers<TypeParam>({1, 2, 3, 2, 7, 4, 5, 6, 0, 8}, 5, RQ_TYPE_HPOINT);
    const RQ_DataArrayHandle result = translation(10, 20, 30)->transform(array, 0);
    const double expected[] = {11, 22, 33, 2, 7, 14, 25, 36, 0, 8};
    ASSERT_EQ(result->entries(), 2);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(result->getF64(i / 5, i % 5), expected[i]) << "value " << i;
    EXPECT_NE(result->getDataId(), array->getDataId());
}

TYPED_TEST(TransformValues, AreTheSameArrayWhenNothingChanges)
{
    const RQ_DataArrayHandle point = numbers<TypeParam>({1, 2, 3}, 3, RQ_TYPE_POINT);
    const RQ_DataArrayHandle vector = numbers<TypeParam>({1, 2, 3}, 3, RQ_TYPE_VECTOR);
    const RQ_DataArrayHandle normal = numbers<TypeParam>({1, 2, 3}, 3, RQ_TYPE_NORMAL);
    const RQ_DataArrayHandle quaternion = numbers<TypeParam>({0, 0, 0, 1}, 4, RQ_TYPE_QUATERNION);
    const RQ_DataArrayHandle color = numbers<TypeParam>({1, 2, 3}, 3, RQ_TYPE_COLOR);
    const RQ_DataArrayHandle flat = numbers<TypeParam>({1, 2}, 2, RQ_TYPE_POINT);
    const RQ_DataArrayHandle shortTurn = numbers<TypeParam>({0, 0, 1}, 3, RQ_TYPE_QUATERNION);
    const RQ_DataArrayHandle integers(new RQ_DANumeric<int32_t>(1, 3, RQ_TYPE_POINT));
    const RQ_TransformHandle moved = translation(1, 2, 3), turned = transformOf({turn(1, 2, 3)});

    EXPECT_EQ(RQ_Transform::identity()->transform(point, 0), point);
    EXPECT_EQ(transformOf({kIdentity, move(1, 0, 0)})->transform(point, 0), point);
    for (const RQ_DataArrayHandle &array : {vector, normal, quaternion})
        EXPECT_EQ(moved->transform(array, 0), array) << RQtype(array->getTypeInfo());
    for (const RQ_DataArrayHandle &array : {color, flat, shortTurn, integers, RQ_DataArrayHandle()})
        EXPECT_EQ(turned->transform(array, 0), array);
}

// A normal must stay across the surface, on the same side, whatever the matrix does to it.
TYPED_TEST(TransformValues, NormalsStayAcrossTheSurface)
{
    const BAS_Mat4d matrices[] = {turn(0.3, 1, 2), shear(2), scale(1, 2, 4), shear(-1) * turn(1, 0, 1) * scale(0.5, 1, 2)};
    std::mt19937 random(7);
    std::uniform_real_distribution<double> coordinate(-1.0, 1.0);
    for (const BAS_Mat4d &matrix : matrices)
    {
        BAS_Vec3d a(coordinate(random), coordinate(random), coordinate(random));
        BAS_Vec3d b(coordinate(random), coordinate(random), coordinate(random));
        const BAS_Vec3d n = a.cross(b).normalized();
        const RQ_DataArrayHandle normal =
            transformOf({matrix})->transform(numbers<TypeParam>({n.x, n.y, n.z}, 3, RQ_TYPE_NORMAL), 0);
        BAS_Vec3d movedA, movedB;
        matrix.multDirMatrix(a, movedA);
        matrix.multDirMatrix(b, movedB);
        const BAS_Vec3d expected = movedA.cross(movedB).normalized();
        EXPECT_LT(distance(tuple(normal, 0).normalized(), expected), 4 * this->kTolerance);
    }
}

TYPED_TEST(TransformValues, NormalsSurviveFlattening)
{
    const struct
    {
        const char *what;
        BAS_Mat4d matrix;
        BAS_Vec3d normal;
        BAS_Vec3d direction;
    } cases[] = {{"flattened along the normal", scale(2, 2, 0), {0, 0, 1}, {0, 0, 1}},
                 {"flattened and turned", scale(1, 1, 0) * turn(0, 0, 1), {0, 0, -1}, {0, 0, -1}},
                 {"mirrored", scale(1, 1, -1), {0, 0, 1}, {0, 0, -1}},
                 {"everything to a point", BAS_Mat4d(0.0), {0, 1, 0}, {0, 0, 0}},
                 {"not a number", scale(std::nan(""), 1, 1), {0, 1, 0}, {0, 1, 0}}};
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        const BAS_Vec3d n =
            tuple(transformOf({c.matrix})
                      ->transform(numbers<TypeParam>({c.normal.x, c.normal.y, c.normal.z}, 3, RQ_TYPE_NORMAL), 0),
                  0);
        EXPECT_LT(distance(n.normalized(), c.direction), this->kTolerance);
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
        BAS_Mat4d matrix;
        BAS_Mat4d rotation;
    } cases[] = {{"a turn", turn(1, 0.5, 2), turn(1, 0.5, 2)},
                 {"scale does not count", scale(3, 5, 2) * turn(1, 2, 3), turn(1, 2, 3)},
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
        EXPECT_LT(distance(v * turned.toMatrix44(), v * q.toMatrix44() * c.rotation), this->kTolerance);
    }
}

TEST(TransformSave, ReadsBackWhatItWrote)
{
    RQ_TransformHandle read;
    std::string error;
    BAS_JSONValue value;
    const RQ_TransformHandle transform = transformOf({turn(1, 2, 3), scale(1e300, -1e-300, INFINITY)});
    ASSERT_TRUE(BAS_JSONValue::parse(jsonOf(*transform), value, error)) << error;
    ASSERT_TRUE(RQ_Transform::load(read, value));
    EXPECT_TRUE(*read == *transform);
    EXPECT_FALSE(*read == *RQ_Transform::identity());
}

TEST(TransformSave, RefusesAnythingElse)
{
    const std::string matrix = "[1,0,0,0,0,1,0,0,0,0,1,0,0,0,0,1]";
    for (const std::string &text :
         {std::string("{}"), matrix, "[" + matrix + ",[]]", std::string("[[1,2,3]]"),
          std::string("[[1,0,0,0,0,1,0,0,0,0,1,0,0,0,0,\"x\"]]"), std::string("[[1,0,0,0,0,1,0,0,0,0,1,0,0,0,0,1,0]]")})
    {
        SCOPED_TRACE(text);
        RQ_TransformHandle transform = RQ_Transform::identity();
        std::string error;
        BAS_JSONValue value;
        ASSERT_TRUE(BAS_JSONValue::parse(text, value, error)) << error;
        EXPECT_FALSE(RQ_Transform::load(transform, value));
        EXPECT_EQ(transform, RQ_Transform::identity());
    }
}
