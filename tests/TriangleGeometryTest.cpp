// The frame of a triangle: its in-plane coordinates, area and axes by hand and
// after a rigid motion, an obtuse and a clockwise one, and a collinear one
// without a frame. Mass, stable step and pressure built on it are checked
// through the membrane and the shell.
#include "TriangleGeometry.h"
#include "Node.h"

#include <gtest/gtest.h>

#include <cmath>

// The triangle (0,0,0) (4,0,0) (1,3,0): local coordinates x2 = 4, x3 = 1,
// y3 = 3, area 6. The rigid motion (x, y, z) -> (z, x, y) + (5, -2, 7) sends
// the global x, y, z axes to y, z, x.
TEST(TriangleGeometry, FrameCoordinatesAndAreaByHandAndAfterARigidMotion) {
    const double places[2][3][3] = {{{0, 0, 0}, {4, 0, 0}, {1, 3, 0}}, {{5, -2, 7}, {5, 2, 7}, {5, -1, 10}}};
    const double axes[2][3][3] = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, {{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}};
    for (int move = 0; move < 2; ++move) {
        SCOPED_TRACE(move);
        Node n[3];
        for (int a = 0; a < 3; ++a) {
            n[a].setX_pos(places[move][a][0]);
            n[a].setY_pos(places[move][a][1]);
            n[a].setZ_pos(places[move][a][2]);
        }
        TriangleGeometry g;
        g.update(n[0], n[1], n[2]);
        EXPECT_DOUBLE_EQ(g.x2(), 4.0);
        EXPECT_DOUBLE_EQ(g.x3(), 1.0);
        EXPECT_DOUBLE_EQ(g.y3(), 3.0);
        EXPECT_DOUBLE_EQ(g.area(), 6.0);
        for (int r = 0; r < 3; ++r)
            for (int c = 0; c < 3; ++c)
                EXPECT_NEAR(g.basis()[r][c], axes[move][r][c], 1e-15) << r << c;
    }
}

TEST(TriangleGeometry, ObtuseTriangleHasANegativeX3AndAClockwiseOneAFlippedNormal) {
    TriangleGeometry g;
    g.update({2, 0, 0}, {-1, 1, 0});
    EXPECT_DOUBLE_EQ(g.x3(), -1.0);
    EXPECT_DOUBLE_EQ(g.y3(), 1.0);
    EXPECT_DOUBLE_EQ(g.area(), 1.0);
    g.update({2, 0, 0}, {1, -1, 0});
    EXPECT_DOUBLE_EQ(g.basis()[2][2], -1.0);
    EXPECT_DOUBLE_EQ(g.basis()[1][1], -1.0);
    EXPECT_DOUBLE_EQ(g.y3(), 1.0);
    // Collinear points have no normal: the frame is not a number.
    g.update({2, 0, 0}, {1, 0, 0});
    EXPECT_TRUE(std::isnan(g.basis()[2][0]));
}
