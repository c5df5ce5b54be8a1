#include <gtest/gtest.h>

#include <rq/attrib/AttributeBuilder.h>
#include <rq/prim/Transform.h>

TEST(AttributeListTransform, GivesEverySegmentItsMatrix)
{
    RQ_BuilderStatus status;
    RQ_AttributeBuilder builder(status);
    const float values[] = {1, 2, 3};
    for (const char *declaration : {"point point P", "point vector v", "point color Cd", "point int64 id[3]"})
        ASSERT_TRUE(builder.add(declaration, values, 3));
    const RQ_AttributeListHandle list = builder.build(RQ_OWNER_POINT);

    BAS_Mat4d moves[3];
    moves[1].setTranslation(BAS_Vec3d(5, 0, 0));
    moves[2].setTranslation(BAS_Vec3d(6, 0, 0));
    const RQ_TransformHandle three(new RQ_Transform(moves, 3)), one(new RQ_Transform(moves + 1, 1));
    const RQ_AttributeListHandle moving = list->transform(three), still = list->transform(one);
    EXPECT_EQ(moving->getSegments(), 3);
    EXPECT_EQ(still->getSegments(), 1);
    EXPECT_EQ(moving->get("P", 0), list->get("P"));
    EXPECT_EQ(moving->get("P", 1)->getF32(0), 6.0f);
    EXPECT_EQ(moving->get("P", 2)->getF32(0), 7.0f);
    EXPECT_EQ(still->get("P")->getF32(0), 6.0f);
    for (int segment = 0; segment < 3; ++segment)
        for (int i = 1; i < 4; ++i)
            EXPECT_EQ(moving->get(i, segment), list->get(i)) << "no matrix changes it";

    EXPECT_EQ(list->transform(nullptr), list);
    EXPECT_EQ(list->transform(RQ_Transform::identity()), list);
    EXPECT_EQ(still->transform(one->invert())->get("P")->getF32(0), 1.0f);
    EXPECT_EQ(moving->get("P", 1)->getDataId(), still->get("P")->getDataId()) << "the same values made the same way";
    EXPECT_NE(moving->get("P", 2)->getDataId(), still->get("P")->getDataId());
    EXPECT_EQ(moving->transform(one)->get("P", 2)->getF32(0), 12.0f);
}
