// The two-node rod alone with the elastic law: logarithmic strain at constant
// volume and the axial force it pulls with, rigid motion, lumped mass and
// inertia, the bar-wave stable step and the radius of the edge contact line it
// hands over.
// Deck-line mistakes are whole decks under decks/malformed.
#include "Rod2.h"
#include "ContactFixtures.h"
#include "ContactLine.h"
#include "Elastic.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

using contact_test::tokens;

namespace {

using Point = std::array<double, 3>;

// Nodes numbered 1, 2, ... at the given places; steel with E = 2e5, rho = 8e-9.
struct Rods : contact_test::NodeSet {
    explicit Rods(const std::vector<Point>& places) {
        material("STEEL", "E 2.0E5 NU 0.3 RHO 8.0E-9 DAMPING 4");
        for (const auto& p : places)
            add(p[0], p[1], p[2]);
    }
    void material(std::string name, const std::string& parameters) {
        auto m = std::make_shared<Elastic>();
        m->setName(name);
        m->parseOstrel(tokens(parameters));
        materials.push_back(m);
    }
    std::shared_ptr<Rod2> ready(const std::string& line = "NODES 1 2 MATERIAL STEEL D 0.1") {
        auto r = make<Rod2>(line, false);
        r->assembleMassMatrix();
        r->setInitialConditions();
        return r;
    }
};

void stepRod(Rod2& r) {
    r.updateLocalCoordinateSystem();
    r.computeStrain(1e-6, 0);
    r.computeStress(1e-6, 0);
    r.computeInternalForces(1e-6, 0);
    r.computeExternalForces(1e-6); // no loads nor contact: these add nothing
    r.computeContactForces();
}

} // namespace

// A rod moved from (a0, b0) to (a, b) and stepped twice (the strain is not
// accumulated): the logarithmic strain e = ln(L / L0) at constant volume,
// A = A0 L0 / L, and the axial force N = E e A pulling node 1 towards node 2
// along the current axis (pushing in compression, nothing in a rigid motion).
TEST(Rod2Test, MovedRodGivesLogStrainAtConstantVolumeAndAxialForces) {
    const struct {
        Point a0, b0, a, b;
    } cases[] = {
        {{1, -1, 0.5}, {2, 1, 2.5}, {1, -1, 0.5}, {2.1, 1.2, 2.7}}, // along (1, 2, 2)/3 to 1.1 L0
        {{0, 0, 0}, {2, 0, 0}, {0, 0, 0}, {1.8, 0, 0}},             // compressed to 0.9 L0
        {{0, 0, 0}, {0, 3, 4}, {1, 1, 1}, {6, 1, 1}},               // translated and turned
        {{0, 0, 0}, {1, 1, -1}, {0, 0, 0}, {1.1, 1.1, -1.1}},       // its frame is not finite, its force is
    };
    const double A0 = M_PI * 0.1 * 0.1 / 4.0;
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.b[0] << " " << c.b[1] << " " << c.b[2]);
        Rods f({c.a0, c.b0});
        auto r = f.ready();
        f.moveTo(f.list[0], c.a[0], c.a[1], c.a[2]);
        f.moveTo(f.list[1], c.b[0], c.b[1], c.b[2]);
        stepRod(*r);
        f.clearForces();
        stepRod(*r);
        const double L0 = std::hypot(c.b0[0] - c.a0[0], c.b0[1] - c.a0[1], c.b0[2] - c.a0[2]);
        const double L = std::hypot(c.b[0] - c.a[0], c.b[1] - c.a[1], c.b[2] - c.a[2]);
        const double e = std::log(L / L0), N = 2.0e5 * e * A0 * L0 / L, tol = 1e-9 * (std::fabs(N) + 1);
        EXPECT_NEAR(r->getLength(), L, 1e-12);
        EXPECT_NEAR(r->getStrain()[0], e, 1e-12);
        EXPECT_NEAR(r->getArea(), A0 * L0 / L, 1e-15);
        EXPECT_NEAR(r->getStress()[0], 2.0e5 * e, 1e-7);
        for (int k = 1; k < 6; ++k) {
            EXPECT_EQ(r->getStrain()[k], 0.0);
            EXPECT_EQ(r->getStress()[k], 0.0);
        }
        const auto f1 = f.list[0]->getForce(), f2 = f.list[1]->getForce();
        for (int j = 0; j < 3; ++j) {
            EXPECT_NEAR(f1[j], N * (c.b[j] - c.a[j]) / L, tol);
            EXPECT_EQ(f1[j] + f2[j], 0.0);
        }
    }
}

TEST(Rod2Test, LumpedMassFullInertiaAndDamping) {
    Rods f({{0, 0, 0}, {0, 0, 2}, {0, 0, 2.01}});
    auto r = f.make<Rod2>("NODES 1 2 MATERIAL STEEL D 0.1", false);
    r->assembleMassMatrix();
    // Each node starts with the tiny mass 1e-15 of a node without elements.
    const double m = 8.0e-9 * M_PI * 0.0025 * 2.0;
    EXPECT_DOUBLE_EQ(f.list[0]->getMass(), 0.5 * m + 1e-15);
    EXPECT_DOUBLE_EQ(f.list[1]->getMass(), 0.5 * m + 1e-15);
    EXPECT_EQ(f.list[0]->getRayleighDamping(), 4.0);
    EXPECT_EQ(f.list[1]->getRayleighDamping(), 4.0);
    // A slender rod: I = m L0^2 / 12, the full value on each node.
    for (int node = 0; node < 2; ++node)
        for (int a = 0; a < 3; ++a)
            for (int b = 0; b < 3; ++b)
                EXPECT_DOUBLE_EQ(f.list[node]->getInertia()[a][b], a == b ? m * 4.0 / 12.0 : 0.0);

    // A stubby rod (L0 = 0.01 < D): I = m D^2 / 8.
    auto stub = f.make<Rod2>("NODES 2 3 MATERIAL STEEL D 0.1", false);
    stub->assembleMassMatrix();
    const double ms = 8.0e-9 * M_PI * 0.0025 * 0.01;
    EXPECT_NEAR(f.list[2]->getInertia()[1][1], ms * 0.01 / 8.0, 1e-12 * ms);
    EXPECT_NEAR(f.list[2]->getMass(), 0.5 * ms + 1e-15, 1e-20);
}

TEST(Rod2Test, CriticalStepIsLengthOverBarWaveSpeed) {
    Rods f({{0, 0, 0}, {0.5, 0, 0}});
    auto r = f.ready();
    const double c = std::sqrt(2.0e5 / 8.0e-9);
    EXPECT_DOUBLE_EQ(r->checkTimestep(1.0), 0.5 / c);
    EXPECT_EQ(r->checkTimestep(1e-9), 1e-9);
    // The current length counts, not the initial one.
    f.moveTo(f.list[1], 0.25, 0, 0);
    EXPECT_DOUBLE_EQ(r->checkTimestep(1.0), 0.25 / c);
    // Nodes that meet: infinite compressive strain and a zero step.
    f.moveTo(f.list[1], 0, 0, 0);
    EXPECT_EQ(r->checkTimestep(1.0), 0.0);
    r->computeStrain(0, 0);
    r->computeStress(0, 0);
    EXPECT_EQ(r->getStrain()[0], -INFINITY);

    // An undefined wave speed (negative modulus) leaves the step as it is.
    f.moveTo(f.list[1], 0.5, 0, 0);
    f.material("ODD", "E -1 NU 0 RHO 1");
    EXPECT_EQ(f.ready("NODES 1 2 MATERIAL ODD D 0.1")->checkTimestep(0.7), 0.7);
}

// The edge line gets half the diameter as radius and the factor, both as
// six-decimal text (a radius below 5e-7 reads 0: a deck case).
TEST(Rod2Test, ContactEdgeHandsItsLineRadiusAndFactorAsSixDecimalText) {
    Rods f({{0, 0, 0}, {1, 0, 0}});
    auto r = f.make<Rod2>("NODES 1 2 FACTOR 25.1234567 D 0.0123456789 MATERIAL STEEL CONTACT EDGE", false);
    EXPECT_EQ(r->getContactLine()->getRadius(), 0.006173);
    EXPECT_EQ(r->getContactLine()->getFactor(), 25.123457);
}
