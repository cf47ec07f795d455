// Whole rod models: the stable time step chosen by the model and the free
// vibration of a rod read back from the result files.
#include "Element.h"
#include "Model.h"
#include "Node.h"
#include "QuietModel.h"
#include "ResultReadBack.h"
#include "Rod2.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace testutil;

namespace {

const double pi = 3.14159265358979323846;

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

// One rod, node 1 fixed at x = -1, node 2 free at the origin and kicked
// along x by a short force pulse. Lumped, the free node carries half the
// rod's mass: m = rho A L / 2, k = E A / L, T = 2 pi sqrt(m / k).
TEST(RodDynamicsTest, KickedRodVibratesWithTheLumpedPeriodAndKeepsItsEnergy) {
    const double rho = 1000.0, E = 1.0e8, L = 1.0, D = 0.1;
    const double A = pi * D * D / 4.0;
    const double period = 2.0 * pi * std::sqrt((rho * A * L / 2.0) / (E * A / L));
    const std::string deckText = "TITLE\nCONTROLS\nRUN FROM 0 TO 0.036\nSTEP 1.0E-6\nPRINT EVERY 1.0E-4\n"
                                 "AMPLITUDES TYPE TABULAR\nPULSE VALUES 0 0 0.0002 1 0.0005 1 0.0007 0\n"
                                 "LOADS\nKICK FX 3500 AMPLITUDE PULSE\nCONSTRAINTS TYPE BOUNDARY_CONDITION\n"
                                 "FIXED VX 0 VY 0 VZ 0\nMATERIALS TYPE ELASTIC\nBAR E 1.0E8 NU 0.3 RHO 1000\n"
                                 "NODES\n1 X -1 CONSTRAINT FIXED\n2 X 0 LOAD KICK\nELEMENTS TYPE ROD_2\n"
                                 "1 NODES 1 2 MATERIAL BAR D 0.1\nTRACKERS TYPE NODE\n"
                                 "TIP NODES 2 DIRECTION X TYPE POSITION\n";
    std::filesystem::path deck;
    const RunResult run = runDeck("rod_vibration", deckText, &deck);
    ASSERT_EQ(run.err, "");

    const auto log = deck.parent_path() / "rod_vibration.md";
    const auto internal = readback::logValues(log, "Internal energy: ");
    const auto kinetic = readback::logValues(log, "Kinetic energy: ");
    const auto rows = readback::csvRows(deck.parent_path() / "TIP.csv");
    ASSERT_GT(rows.size(), 300u);
    ASSERT_EQ(internal.size(), rows.size());
    std::vector<double> times, x;
    double peak = 0.0;
    for (const auto& row : rows) {
        times.push_back(row[0]);
        x.push_back(row[1]);
        peak = std::max(peak, std::fabs(row[1]));
    }

    // Upward zero crossings of the free end after the pulse.
    std::vector<double> crossings;
    for (std::size_t k = 1; k < x.size(); ++k)
        if (times[k - 1] > 0.0008 && x[k - 1] < 0.0 && x[k] >= 0.0)
            crossings.push_back(times[k - 1] + (times[k] - times[k - 1]) * (-x[k - 1]) / (x[k] - x[k - 1]));
    ASSERT_GE(crossings.size(), 2u);
    const double measured = (crossings.back() - crossings.front()) / (crossings.size() - 1);
    EXPECT_NEAR(measured, period, 0.01 * period);

    // The amplitude is about impulse / (m omega), a strain of about 1e-3.
    EXPECT_GT(peak, 5e-4);
    EXPECT_LT(peak, 2e-3);

    // After the pulse no external force acts: kinetic + internal energy stays.
    // The logged internal energy sums f(t_n) dx over each step, which loses
    // k dx^2 / 2 per step (a drift of about pi omega dt per period), hence the
    // small step.
    double low = 1e300, high = -1e300;
    for (std::size_t k = 0; k < times.size(); ++k)
        if (times[k] > 0.001) {
            const double total = internal[k] + kinetic[k];
            low = std::min(low, total);
            high = std::max(high, total);
        }
    EXPECT_GT(low, 0.1);
    EXPECT_LT(high - low, 0.01 * high);
}
