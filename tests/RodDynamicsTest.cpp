// Whole rod models: the stable time step chosen by the model. (The free
// vibration of a rod at its lumped period is EnergyBalanceTest's spring; the
// log's energy lines are the bar.md block of docs/outputs.md.)
#include "Element.h"
#include "Model.h"
#include "Node.h"
#include "QuietModel.h"
#include "Rod2.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

// Three rods along x of lengths 1, 0.5 and 2 with a bar wave speed of 1.
// Nodes 1, 2 and 4 are fixed; node 3 moves along x with `velocity`.
std::string threeRodDeck(const std::string& step, double velocity) {
    return "CONTROLS\nRUN FROM 0 TO 1\nSTEP " + step + "\nPRINT EVERY 1\n" +
           "CONSTRAINTS TYPE BOUNDARY_CONDITION\nFIXED VX 0 VY 0 VZ 0\nMOVE VX " + std::to_string(velocity) +
           " VY 0 VZ 0\nMATERIALS TYPE ELASTIC\nUNIT E 1 NU 0.3 RHO 1\n"
           "NODES\n1 X 0 CONSTRAINT FIXED\n2 X 1 CONSTRAINT FIXED\n3 X 1.5 CONSTRAINT MOVE\n"
           "4 X 3.5 CONSTRAINT FIXED\nELEMENTS TYPE ROD_2\n1 NODES 1 2 MATERIAL UNIT D 0.1\n"
           "2 NODES 2 3 MATERIAL UNIT D 0.1\n3 NODES 3 4 MATERIAL UNIT D 0.1\n";
}

} // namespace

// Rod 2 (0.5 long, the shortest) lengthens or shortens; the prescribed velocity
// acts on the displacement from the second step on.
TEST(RodDynamicsTest, AutomaticStepFollowsTheShortestRodDownwardOnlyAndAGivenStepIsKept) {
    for (const auto& [given, velocity] :
         {std::pair<const char*, double>{"0", 0.05}, {"0", -0.05}, {"0.123", -0.05}}) {
        SCOPED_TRACE(std::string(given) + " " + std::to_string(velocity));
        contact_test::QuietModel m("rod_step", threeRodDeck(given, velocity));
        const bool automatic = std::string(given) == "0";
        EXPECT_EQ(m->isAutomaticTimeStep(), automatic);
        double previous = m->getTimeStep(), candidate = 90000.0;
        EXPECT_DOUBLE_EQ(previous, automatic ? 0.5 : 0.123);
        ASSERT_EQ(m->getElements()[1]->getNumber(), 2);
        for (int i = 0; i < 10; ++i) {
            // One increment with the forces cleared afterwards, as the solution loop does;
            // the loop carries the candidate step from one increment to the next.
            m->step(candidate);
            for (const auto& n : m->getNodes())
                n->clearNodalForces();
            const double length = static_cast<Rod2&>(*m->getElements()[1]).getLength(), dt = m->getTimeStep();
            if (!automatic) {
                EXPECT_EQ(dt, 0.123);
            } else if (velocity > 0) {
                EXPECT_TRUE(i == 0 || length > 0.5); // its own step grows, the model's does not
                EXPECT_DOUBLE_EQ(dt, 0.5);
            } else {
                EXPECT_DOUBLE_EQ(dt, length / 1.0);
                EXPECT_TRUE(i < 2 || dt < previous);
            }
            previous = dt;
        }
    }
}
