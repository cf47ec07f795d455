// The energy balance of a run against closed forms: a spring under a
// constant load (W = F u, U = k u^2 / 2, swinging at the period of its lumped
// mass), the same spring damped (the dissipation is what the load did beyond
// the stored energy), a rod pulled at constant velocity (the reaction's work is the strain and kinetic
// energy), a rigid body on a spring (its members' forces counted once); and the tracker rows of TRACK EVERY
// against the prints of a whole run. (The layout of the energy history and its agreement with the log are the
// output blocks bar_energy.csv and bar.md of docs/outputs.md.)
#include "EnergyBalance.h"
#include "Model.h"
#include "Node.h"
#include "QuietModel.h"
#include "ResultReadBack.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace testutil;

namespace {

// One rod along x from node 1 (fixed, x = -L) to node 2 (x = 0): k = E A / L,
// the free node carries m = rho A L / 2. Node 2 takes the load LOAD.
std::string springDeck(const std::string& material, const std::string& controls) {
    return "TITLE\nCONTROLS\n" + controls +
           "LOADS\nLOAD FX 785.3981633974483\nCONSTRAINTS TYPE BOUNDARY_CONDITION\nFIXED VX 0 VY 0 VZ 0\n"
           "MATERIALS TYPE ELASTIC\n" +
           material +
           "\nNODES\n1 X -1 CONSTRAINT FIXED\n2 X 0 LOAD LOAD\n"
           "ELEMENTS TYPE ROD_2\n1 NODES 1 2 MATERIAL BAR D 0.1\n";
}
std::string controls(const std::string& step, const std::string& end) {
    return "RUN FROM 0 TO " + end + "\nSTEP " + step + "\nPRINT EVERY 1\n";
}
const double F = 785.3981633974483;         // N: a strain of about 1e-3 at rest
const double k = 1.0e8 * M_PI * 0.01 / 4.0; // E A / L
const double m2 = 1000.0 * M_PI * 0.01 / 4.0 / 2.0;

// Strain energy of a rod of stiffness k and length L stretched by u: the
// axial force E ln(l/L) A L/l integrates to k L^2 ln^2(l/L) / 2, which is
// k u^2 / 2 for small stretches.
double rodEnergy(double stiffness, double L, double u) {
    const double e = std::log1p(u / L);
    return 0.5 * stiffness * L * L * e * e;
}

// Increments before the balance is judged, as the run monitor waits: over
// the first ones the work of a single increment is a fair share of all.
const long settled = 100;

// Steps a model to its end time; `each` sees it before every increment and
// after it, with the node positions of the start of the increment.
template <typename Each> void run(contact_test::QuietModel& m, Each each) {
    double candidate = 90000.0;
    while (!(m->getEndTime() < m->getCurrentTime())) {
        const double t = m->getCurrentTime();
        const auto& nodes = m->getNodeMap();
        std::vector<double> x(nodes.size() + 1);
        for (const auto& [number, node] : nodes)
            x[static_cast<std::size_t>(number)] = node->getX_pos();
        m->step(candidate, true);
        m->advanceTime(true);
        each(t, x, m->getEnergyBalance());
    }
}

} // namespace

TEST(EnergyBalanceTest, ConstantLoadOnASpringDoesFuStoresKu2Over2AndTheBalanceCloses) {
    contact_test::QuietModel m("energy_spring",
                               springDeck("BAR E 1E8 NU 0.3 RHO 1000", controls("1E-6", "0.02")));
    double largestError = 0.0, largestU = 0.0, timeOfLargestU = 0.0;
    run(m, [&](double t, const std::vector<double>& x, const EnergyBalance& e) {
        const EnergyBalance::Totals& s = e.totals();
        const double u = x[2];
        // The trapezoidal work of a constant force is F times the displacement.
        EXPECT_NEAR(s.external, F * u, 1e-9 * F * 2e-3);
        if (u > 2e-4) {
            EXPECT_NEAR(s.internal, rodEnergy(k, 1.0, u), 1e-5 * rodEnergy(k, 1.0, u));
        }
        EXPECT_EQ(s.prescribed, 0.0); // the fixed node does not move
        EXPECT_EQ(s.damping, 0.0);
        if (e.increments() > settled) largestError = std::max(largestError, std::fabs(e.errorPercent()));
        if (u > largestU) largestU = u, timeOfLargestU = t;
    });
    // Undamped: the free end swings between 0 and 2 F / k, at the period of
    // the lumped mass, T = 2 pi sqrt(m / k): the first turn is at T / 2 and
    // the next would be at 3 T / 2, after the end.
    const double period = 2.0 * M_PI * std::sqrt(m2 / k);
    ASSERT_LT(period, 0.02);
    ASSERT_GT(1.5 * period, 0.02);
    EXPECT_NEAR(largestU, 2.0 * F / k, 0.01 * 2.0 * F / k);
    EXPECT_NEAR(timeOfLargestU, 0.5 * period, 0.005 * period);
    EXPECT_LT(largestError, 1e-4);
}

TEST(EnergyBalanceTest, DampedSpringDissipatesWhatTheLoadDidBeyondTheStoredEnergy) {
    // a = F/m - c v: c = 2 zeta omega with zeta = 0.2, settled after ~25 periods.
    const double omega = std::sqrt(k / m2), c = 0.4 * omega;
    contact_test::QuietModel m(
        "energy_damped",
        springDeck("BAR E 1E8 NU 0.3 RHO 1000 DAMPING " + std::to_string(c), controls("1E-5", "0.35")));
    double largestError = 0.0;
    double u = 0.0;
    run(m, [&](double, const std::vector<double>& x, const EnergyBalance& e) {
        if (e.increments() > settled) largestError = std::max(largestError, std::fabs(e.errorPercent()));
        u = x[2];
    });
    const EnergyBalance::Totals& s = m->getEnergyBalance().totals();
    EXPECT_NEAR(u, F / k, 2e-3 * F / k);
    EXPECT_LT(s.kinetic, 1e-8 * s.external);
    EXPECT_NEAR(s.external, F * u, 1e-9 * F * u);
    EXPECT_NEAR(s.internal, rodEnergy(k, 1.0, u), 1e-5 * s.internal);
    // What the load did beyond the stored energy went into the damping.
    EXPECT_NEAR(s.damping, s.external - s.internal, 1e-5 * s.external);
    EXPECT_NEAR(s.damping, 0.5 * F * u, 3e-3 * 0.5 * F * u);
    EXPECT_LT(largestError, 1e-2);
}

TEST(EnergyBalanceTest, ReactionOfAPulledRodDoesTheStrainAndKineticEnergy) {
    // Four rods along x, node 1 fixed, node 5 pulled at 1 m/s from the start.
    const std::string deck =
        "CONTROLS\nRUN FROM 0 TO 0.004\nSTEP 5E-6\nPRINT EVERY 1\nCONSTRAINTS TYPE BOUNDARY_CONDITION\n"
        "FIXED VX 0 VY 0 VZ 0\nPULL VX 1 VY 0 VZ 0\nMATERIALS TYPE ELASTIC\nSTEEL E 2.1E11 NU 0.3 RHO 7850\n"
        "NODES\n1 X 0 CONSTRAINT FIXED\n2 X 0.25\n3 X 0.5\n4 X 0.75\n5 X 1 CONSTRAINT PULL\n"
        "ELEMENTS TYPE ROD_2\n1 NODES 1 2 MATERIAL STEEL D 0.01\n2 NODES 2 3 MATERIAL STEEL D 0.01\n"
        "3 NODES 3 4 MATERIAL STEEL D 0.01\n4 NODES 4 5 MATERIAL STEEL D 0.01\n";
    contact_test::QuietModel m("energy_pulled", deck);
    const double kRod = 2.1e11 * M_PI * 1e-4 / 4.0 / 0.25;
    double largestError = 0.0;
    int compared = 0;
    run(m, [&](double t, const std::vector<double>& x, const EnergyBalance& e) {
        const EnergyBalance::Totals& s = e.totals();
        if (e.increments() > settled) largestError = std::max(largestError, std::fabs(e.errorPercent()));
        if (t < 0.001) return;
        // The strain energy from the rods' stretches.
        double stored = 0.0;
        for (int r = 1; r <= 4; ++r)
            stored += rodEnergy(kRod, 0.25,
                                x[static_cast<std::size_t>(r + 1)] - x[static_cast<std::size_t>(r)] - 0.25);
        EXPECT_NEAR(s.internal, stored, 1e-4 * stored);
        EXPECT_NEAR(s.prescribed, s.internal + s.kinetic - s.initialKinetic, 1e-4 * s.prescribed);
        ++compared;
    });
    EXPECT_GT(compared, 100);
    // The pulled node moved from the start: its kinetic energy was there at time 0.
    EXPECT_GT(m->getEnergyBalance().totals().initialKinetic, 0.0);
    EXPECT_LT(largestError, 2e-2);
}

TEST(EnergyBalanceTest, RigidBodyOnASpringCountsItsMembersOnce) {
    // A body (reference node 4, members 2 and 3) pulled along x by a load on
    // its reference node and held back by a rod on member 2: the rod's force
    // reaches the body only through the reference node, and turns it.
    const std::string deck =
        "CONTROLS\nRUN FROM 0 TO 0.05\nSTEP 1E-5\nPRINT EVERY 1\nLOADS\nPULL FX 100\n"
        "CONSTRAINTS TYPE BOUNDARY_CONDITION\nFIXED VX 0 VY 0 VZ 0\nMATERIALS TYPE ELASTIC\n"
        "CORD E 1E7 NU 0.3 RHO 100\nRIGID_BODIES\nBODY REFERENCE 4 NODES 2 3 MASS 1 INERTIA 1 1 1\n"
        "NODES\n1 X -1 Y 0 Z 0 CONSTRAINT FIXED\n2 X 0 Y 0 Z 0\n3 X 0 Y 1 Z 0\n4 X 0 Y 0.5 Z 0 LOAD PULL\n"
        "ELEMENTS TYPE ROD_2\n1 NODES 1 2 MATERIAL CORD D 0.01\n";
    contact_test::QuietModel m("energy_rigid", deck);
    double largestError = 0.0, largestInternal = 0.0;
    run(m, [&](double, const std::vector<double>&, const EnergyBalance& e) {
        if (e.increments() > settled) largestError = std::max(largestError, std::fabs(e.errorPercent()));
        largestInternal = std::max(largestInternal, e.totals().internal);
    });
    const EnergyBalance::Totals& s = m->getEnergyBalance().totals();
    EXPECT_GT(s.external, 0.0);
    EXPECT_GT(largestInternal, 0.1 * s.external);
    EXPECT_LT(largestError, 1e-4);
}

TEST(EnergyBalanceTest, TrackEveryWritesTrackerRowsOnItsOwnScheduleAndPrintsKeepTheirs) {
    // Fixed step 1e-4: prints at 0 and 0.01, tracker rows every 0.002.
    const std::string deck =
        springDeck("BAR E 1E8 NU 0.3 RHO 1000", "RUN FROM 0 TO 0.0101\nSTEP 1E-4\n"
                                                "PRINT EVERY 0.01\nTRACK EVERY 0.002\n") +
        "TRACKERS TYPE NODE\nTIP NODES 2 DIRECTION X TYPE FORCE\n";
    fs::path path;
    const RunResult r = runDeck("track_every", deck, &path);
    ASSERT_EQ(r.err, "");
    const auto rows = readback::csvRows(path.parent_path() / "TIP.csv");
    ASSERT_EQ(rows.size(), 6u);
    // Each row at the first increment whose time, a sum of steps, reaches k 0.002.
    double t = 0.0;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        while (t < 0.002 * static_cast<double>(i))
            t += 1e-4;
        EXPECT_NEAR(rows[i][0], t, 1e-6);
    }
    // The forces of a tracked step are kept for the tracker: the load, then
    // the load less the rod's pull.
    EXPECT_NEAR(rows[0][1], F, 1e-3);
    EXPECT_LT(rows[5][1], F);
    const auto times = readback::printTimes(path);
    ASSERT_EQ(times.size(), 2u);
    EXPECT_TRUE(fs::exists(readback::resultFile(path, 1)));
    EXPECT_FALSE(fs::exists(readback::resultFile(path, 2)));
}
