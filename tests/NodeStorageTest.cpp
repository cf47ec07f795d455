// A node's TNT arrays are views of storage inside the node: views handed out
// write through to the node, and a copied node owns its own storage.
#include "Node.h"

#include <gtest/gtest.h>

TEST(NodeStorage, CopyHasItsOwnState) {
    Node original;
    original.setNumber(7);
    original.setXPositionOrigin(1.5);
    original.addInternalForce(2.0, -1.0, 0.5);
    TNT::Array2D<double> I(3, 3, 0.0);
    I[0][0] = I[1][1] = I[2][2] = 4.0;
    original.addInertia(I);

    Node copy(original);
    EXPECT_EQ(copy.getNumber(), 7);
    EXPECT_EQ(copy.getX_pos(), 1.5);
    EXPECT_EQ(copy.getXForce(), 2.0);
    EXPECT_EQ(copy.getInertia()[1][1], 4.0);

    copy.getPos()[0] = 9.0;
    copy.addInternalForce(1.0, 0.0, 0.0);
    copy.getVel()[2] = 3.0;
    EXPECT_EQ(copy.getX_pos(), 9.0);
    EXPECT_EQ(copy.getXForce(), 3.0);
    EXPECT_EQ(original.getX_pos(), 1.5);
    EXPECT_EQ(original.getXForce(), 2.0);
    EXPECT_EQ(original.getZ_vel(), 0.0);

    Node assigned;
    assigned = original;
    assigned.getRotVel()[1] = 0.25;
    EXPECT_EQ(assigned.getY_rot_vel(), 0.25);
    EXPECT_EQ(original.getY_rot_vel(), 0.0);
    EXPECT_EQ(assigned.getX_pos(), 1.5);
}

TEST(NodeStorage, InverseInertiaFollowsTheAssembledInertia) {
    Node n;
    TNT::Array2D<double> I(3, 3, 0.0);
    I[0][0] = 2.0;
    I[1][1] = 4.0;
    I[2][2] = 8.0;
    I[0][1] = I[1][0] = 1.0;
    n.addInertia(I);
    n.determineMassMatrix();
    // J K = identity
    const auto& J = n.getInertia();
    const auto& K = n.getInverseInertia();
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) {
            double s = 0.0;
            for (int k = 0; k < 3; ++k)
                s += J[r][k] * K[k][c];
            EXPECT_NEAR(s, r == c ? 1.0 : 0.0, 1e-15) << r << c;
        }
}
