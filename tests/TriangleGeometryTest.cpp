#include "TriangleGeometry.h"
#include "Node.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

// The triangle (0,0,0) (4,0,0) (1,3,0): local coordinates x2 = 4, x3 = 1,
// y3 = 3, area 6; edges 4, sqrt(18), sqrt(10).
const double P[3][3] = {{0, 0, 0}, {4, 0, 0}, {1, 3, 0}};

// A rotation and a shift: (x, y, z) -> (z, x, y) + (5, -2, 7).
void moved(const double (&p)[3], double (&q)[3]) {
    q[0] = p[2] + 5.0;
    q[1] = p[0] - 2.0;
    q[2] = p[1] + 7.0;
}

struct Triangle {
    Node n[3];
    explicit Triangle(bool move) {
        for (int a = 0; a < 3; ++a) {
            double q[3] = {P[a][0], P[a][1], P[a][2]};
            if (move) moved(P[a], q);
            n[a].setX_pos(q[0]);
            n[a].setY_pos(q[1]);
            n[a].setZ_pos(q[2]);
        }
    }
    TriangleGeometry geometry() const {
        TriangleGeometry g;
        g.update(n[0], n[1], n[2]);
        return g;
    }
};

} // namespace

TEST(TriangleGeometry, FrameCoordinatesAndAreaByHandAndAfterARigidMotion) {
    // The rigid motion sends the global x, y, z to y, z, x.
    const double axes[2][3][3] = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, {{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}};
    for (int move = 0; move < 2; ++move) {
        const TriangleGeometry g = Triangle(move).geometry();
        EXPECT_DOUBLE_EQ(g.x2(), 4.0) << move;
        EXPECT_DOUBLE_EQ(g.x3(), 1.0) << move;
        EXPECT_DOUBLE_EQ(g.y3(), 3.0) << move;
        EXPECT_DOUBLE_EQ(g.area(), 6.0) << move;
        for (int r = 0; r < 3; ++r)
            for (int c = 0; c < 3; ++c)
                EXPECT_NEAR(g.basis()[r][c], axes[move][r][c], 1e-15) << move << r << c;
        // Node 3 relative to node 1, rotated into the frame: (x3, y3, 0).
        const Triangle t(move);
        const double d[3] = {t.n[2].getX_pos() - t.n[0].getX_pos(), t.n[2].getY_pos() - t.n[0].getY_pos(),
                             t.n[2].getZ_pos() - t.n[0].getZ_pos()};
        for (int k = 0; k < 3; ++k)
            EXPECT_NEAR(g.component(k, d[0], d[1], d[2]), k == 0 ? 1.0 : k == 1 ? 3.0 : 0.0, 1e-15);
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

TEST(TriangleGeometry, LumpedInertiaStableStepAndPressure) {
    // (m/3)(t^2/12 + A/12) = 2 (0.03 + 0.5).
    EXPECT_DOUBLE_EQ(TriangleGeometry::nodalInertia(6.0, 0.6, 6.0), 1.06);
    // Smallest altitude 2A / L_max = 12 / sqrt(18) = 2 sqrt(2), over c = 2, a tenth.
    for (int move = 0; move < 2; ++move) {
        const Triangle t(move);
        EXPECT_NEAR(TriangleGeometry::stableStep(t.n[0], t.n[1], t.n[2], 6.0, 2.0), 0.1 * std::sqrt(2.0),
                    1e-15);
        // p A / 3 = 6 along the normal: global z, moved to global x.
        double f[3];
        t.geometry().pressureForce(3.0, 6.0, f);
        const double expected[2][3] = {{0, 0, 6}, {6, 0, 0}};
        for (int k = 0; k < 3; ++k)
            EXPECT_NEAR(f[k], expected[move][k], 1e-14) << move << k;
    }
}
