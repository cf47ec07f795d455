// MASS SCALING on a whole deck: rods and membranes of different sizes, the
// automatic step, the added mass against a count by hand, a target below
// every step, and a fixed step that diverges unless the mass is scaled.
// (Bad MASS SCALING phrases are decks under decks/malformed.)
#include "Element.h"
#include "Model.h"
#include "Node.h"
#include "QuietModel.h"
#include "ResultReadBack.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

using namespace testutil;

namespace {

// A chain of four rods along x (c = sqrt(E/rho) = 1, D = 0.1) from node 1,
// which is pulled along x, to the free node 5; and three separate right
// isosceles triangles of legs 4, 0.5 and 0.0625, membranes or shells (c = 1,
// rho 1 per unit area), each with its corner node pulled along x.
const double rodX[] = {0.0, 1.0, 1.5, 1.53125, 1.5625};
const double rodD = 0.1;
const double legs[] = {4.0, 0.5, 0.0625};
const double triangleX[] = {3.0, 8.0, 9.0};
const char* const triangleTypes[] = {"MEMBRANE_3", "S3L_C0"};

std::string deck(const std::string& type, const std::string& step, const std::string& scaling,
                 const std::string& end = "1.01") {
    std::string d = "TITLE\nCONTROLS\nRUN FROM 0 TO " + end + "\nSTEP " + step + "\nPRINT EVERY 0.25\n";
    if (!scaling.empty()) d += "MASS SCALING " + scaling + "\n";
    d += "AMPLITUDES TYPE TABULAR\nRAMP VALUES 0 0 0.5 1 1000 1\n"
         "CONSTRAINTS TYPE BOUNDARY_CONDITION\nPULL VX -0.01 VY 0 VZ 0 AMPLITUDE RAMP\n"
         "MATERIALS TYPE ELASTIC\nBAR E 1 NU 0.3 RHO 1\n"
         "MATERIALS TYPE HYPERTEXTILE\nFABRIC RHO 1 KELONGWARP 1 KELONGWEFT 1 KSHEAR 0.01 "
         "WARPORI 1 0 0 WEFTORI 0 1 0\nMATERIALS TYPE ELASTIC\nSHELL E 1 NU 0 RHO 1\nNODES\n";
    for (int r = 0; r < 5; ++r)
        d += std::to_string(r + 1) + " X " + std::to_string(rodX[r]) + " Y 0 Z 0" +
             (r == 0 ? " CONSTRAINT PULL" : "") + "\n";
    int n = 6;
    for (int t = 0; t < 3; ++t) {
        const std::string x0 = std::to_string(triangleX[t]), x1 = std::to_string(triangleX[t] + legs[t]);
        d += std::to_string(n++) + " X " + x0 + " Y 2 Z 0 CONSTRAINT PULL\n";
        d += std::to_string(n++) + " X " + x1 + " Y 2 Z 0\n";
        d += std::to_string(n++) + " X " + x0 + " Y " + std::to_string(2.0 + legs[t]) + " Z 0\n";
    }
    d += "ELEMENTS TYPE ROD_2\n";
    for (int r = 1; r < 5; ++r)
        d += std::to_string(r) + " NODES " + std::to_string(r) + " " + std::to_string(r + 1) +
             " MATERIAL BAR D 0.1\n";
    d += "ELEMENTS TYPE " + type + "\n";
    for (int t = 0; t < 3; ++t)
        d += std::to_string(5 + t) + " NODES " + std::to_string(6 + 3 * t) + " " + std::to_string(7 + 3 * t) +
             " " + std::to_string(8 + 3 * t) + (type == "S3L_C0" ? " MATERIAL SHELL" : " MATERIAL FABRIC") +
             " T 1\n";
    return d;
}

// Element number, mass and stable step from the geometry: a rod rho A L and
// L / c, a triangle rho A and 0.1 (2A / L_max) / c.
struct Piece {
    int number;
    double mass, step;
};
std::vector<Piece> pieces() {
    std::vector<Piece> p;
    for (int r = 0; r < 4; ++r) {
        const double L = rodX[r + 1] - rodX[r];
        p.push_back({r + 1, M_PI * rodD * rodD / 4.0 * L, L});
    }
    for (int t = 0; t < 3; ++t) {
        const double a = legs[t];
        p.push_back({5 + t, a * a / 2.0, 0.1 * (a * a / (a * std::sqrt(2.0)))});
    }
    return p;
}

double nodalMass(contact_test::QuietModel& m) {
    double sum = 0.0;
    for (const auto& n : m->getNodes())
        sum += n->getMass();
    return sum;
}

} // namespace

// Target 0.125: the two smallest rods (0.03125 long) and the two smaller
// triangles need mass, the rest not. (How the job log reports the scaling is
// the output block scaled.md of docs/deck-format.md.)
TEST(MassScalingTest, AutomaticStepRisesToTheTargetAndTheAddedMassIsTheHandCount) {
    const double target = 0.125;
    double handAdded = 0.0, handModel = 0.0, smallestStep = 1e300, largest = 1.0;
    int largestElement = 0, scaled = 0;
    for (const Piece& p : pieces()) {
        handModel += p.mass;
        smallestStep = std::min(smallestStep, p.step);
        if (p.step >= target) continue;
        const double s = (target / p.step) * (target / p.step);
        handAdded += (s - 1.0) * p.mass;
        ++scaled;
        if (s > largest) largest = s, largestElement = p.number;
    }
    ASSERT_EQ(scaled, 4);
    ASSERT_EQ(largestElement, 7);

    for (const std::string type : triangleTypes) {
        SCOPED_TRACE(type);
        contact_test::QuietModel plain("mass_scaling_off", deck(type, "0", ""));
        contact_test::QuietModel scaledModel("mass_scaling_on", deck(type, "0", "0.125"));
        EXPECT_NEAR(plain->getTimeStep(), smallestStep, 1e-12 * smallestStep);
        EXPECT_NEAR(scaledModel->getTimeStep(), target, 1e-12 * target);
        EXPECT_NEAR(nodalMass(plain), handModel, 1e-12 * handModel);
        EXPECT_NEAR(nodalMass(scaledModel) - nodalMass(plain), handAdded, 1e-12 * handAdded);
        for (const auto& e : scaledModel->getElements()) {
            const Piece p = pieces()[static_cast<std::size_t>(e->getNumber() - 1)];
            const double s = p.step < target ? (target / p.step) * (target / p.step) : 1.0;
            EXPECT_NEAR(e->getMassScale(), s, 1e-12 * s) << e->getNumber();
        }
        // Node 13 belongs to the smallest triangle alone: its rotational
        // inertia grows by the same factor, and its inverse is formed anew.
        const Node& before = *plain->getNodeMap().at(13);
        const Node& after = *scaledModel->getNodeMap().at(13);
        EXPECT_NEAR(after.getInertia()[2][2], largest * before.getInertia()[2][2],
                    1e-12 * after.getInertia()[2][2]);
        EXPECT_NEAR(after.getInertia()[2][2] * after.getInverseInertia()[2][2], 1.0, 1e-12);
    }
}

// A target below every stable step scales nothing: the results are those of
// the deck without the phrase, to the last digit, and the log says so.
TEST(MassScalingTest, ATargetBelowEveryStepChangesNothing) {
    std::filesystem::path plainDeck, lowDeck;
    ASSERT_EQ(runDeck("mass_scaling_plain", deck("MEMBRANE_3", "0", ""), &plainDeck).err, "");
    ASSERT_EQ(runDeck("mass_scaling_low", deck("MEMBRANE_3", "0", "1E-3"), &lowDeck).err, "");
    const std::string lowLog = readFile(lowDeck.parent_path() / "mass_scaling_low.md");
    EXPECT_TRUE(contains(lowLog,
                         "## Mass scaling\n\n - Target step: 0.001\n - No element needed added mass: every "
                         "stable step is at least the target step\n"))
        << lowLog;
    EXPECT_FALSE(contains(readFile(plainDeck.parent_path() / "mass_scaling_plain.md"), "Mass scaling"));
    const std::size_t prints = readback::printTimes(plainDeck).size();
    ASSERT_EQ(prints, 5u);
    ASSERT_EQ(readback::printTimes(lowDeck).size(), prints);
    for (std::size_t k = 0; k < prints; ++k)
        EXPECT_EQ(readFile(readback::resultFile(plainDeck, k)), readFile(readback::resultFile(lowDeck, k)))
            << k;
}

// STEP fixed at the target, 400 increments. Unscaled, the step is 28 times
// the smallest shell's estimate: the shell turns inside out and the run
// stops; the rods and membranes, whose laws soften at large strain, stay
// finite but their kinetic energy jumps by orders of magnitude. Scaled,
// every run ends with the kinetic energy of the order of the pulled
// motion's.
TEST(MassScalingTest, AFixedStepAtTheTargetRunsStableOnlyWithScaling) {
    const auto largestKineticEnergy = [](const std::filesystem::path& deck) {
        const auto k =
            readback::logValues(deck.parent_path() / (deck.stem().string() + ".md"), "Kinetic energy: ");
        return k.empty() ? std::nan("") : *std::max_element(k.begin(), k.end());
    };
    for (const std::string type : triangleTypes) {
        SCOPED_TRACE(type);
        std::filesystem::path unscaledDeck, scaledDeck;
        const RunResult unscaled =
            runDeck("mass_scaling_unstable", deck(type, "0.125", "", "50"), &unscaledDeck);
        const RunResult scaled =
            runDeck("mass_scaling_stable", deck(type, "0.125", "0.125", "50"), &scaledDeck);
        ASSERT_EQ(scaled.err, "");
        EXPECT_GE(readback::printTimes(scaledDeck).back(), 49.0);
        EXPECT_LT(largestKineticEnergy(scaledDeck), 2e-3);
        if (type == "S3L_C0")
            EXPECT_TRUE(contains(unscaled.err, "Error in C0 element 7, det(Jacobian) is zero or negative. "
                                               "Timestep = 0.125000"))
                << unscaled.err;
        else {
            // The kinetic energy outgrows the work put in: the run is stopped.
            EXPECT_TRUE(contains(unscaled.err, "The run blew up at time ")) << unscaled.err;
            EXPECT_GT(largestKineticEnergy(unscaledDeck), 100.0 * largestKineticEnergy(scaledDeck));
        }
    }
}
