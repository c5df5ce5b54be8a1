#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include <apps/viewport/OrbitCamera.h>

using namespace rq::viewport;

TEST(OrbitCamera, KeepsWhatItFramesInThePicture)
{
    const BAS_BoundingBox kBoxes[] = {{{-1, -1, -1}, {1, 1, 1}},
                                      {{0, 0, 0}, {100, 1, 3}},
                                      {{4e6f, 0, 0}, {4e6f + 8, 2, 2}},
                                      {{-1e-12f, 0, 0}, {1e-12f, 1e-12f, 0}},
                                      {{5, 5, 5}, {5, 5, 5}}};
    for (const BAS_BoundingBox &box : kBoxes)
        for (const double aspect : {0.3, 1.0, 2.5})
            for (int view = 0; view < 16; ++view)
            {
                SCOPED_TRACE(testing::Message() << box.size().x << " wide, aspect " << aspect << ", view " << view);
                OrbitCamera camera;
                camera.setUpAxis(view % 2 ? UpAxis::Z : UpAxis::Y);
                camera.setAngles(0.0, -90.0 + 12.0 * view);
                camera.frame(box, aspect);
                camera.orbit(25.0 * view, 0.0);
                const BAS_Mat4d toClip = camera.view() * camera.projection(aspect);
                for (int corner = 0; corner < 8; ++corner)
                {
                    BAS_Vec3d point, seen;
                    for (int axis = 0; axis < 3; ++axis)
                        point[axis] = (corner >> axis & 1 ? box.maximum() : box.minimum())[axis];
                    toClip.multVecMatrix(point, seen);
                    EXPECT_LT(std::max({std::abs(seen.x), std::abs(seen.y), std::abs(seen.z)}), 1.0);
                }
            }
}

TEST(OrbitCamera, MovesTheObjectAsTheMouseGoes)
{
    OrbitCamera camera;
    const auto seen = [&] {
        BAS_Vec3d point;
        (camera.view() * camera.projection(1.0)).multVecMatrix(BAS_Vec3d(0.0), point);
        return point;
    };
    camera.pan(0.25, -0.125);
    EXPECT_NEAR(seen().x, 0.5, 1e-9) << "a quarter of the height to the right";
    EXPECT_NEAR(seen().y, -0.25, 1e-9);
    const double before = camera.distance();
    camera.zoom(2.0);
    EXPECT_NEAR(camera.distance(), before / 2.0, 1e-9);
}
