// The two-node rod alone with the elastic law: logarithmic strain at constant
// volume and the axial force it pulls with, rigid motion, lumped mass and
// inertia, the bar-wave stable step and the radius of the edge contact line it
// hands over.
// Deck-line mistakes are whole decks under decks/malformed.
#include "Rod2.h"
#include "ContactLine.h"
#include "Elastic.h"
#include "MaterialTestUtil.h"
#include "Node.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

using mattest::tokens;

namespace {

const double pi = 3.14159265358979323846;

struct RodFixture {
    std::vector<std::shared_ptr<Node>> nodes;
    std::unordered_map<int, std::shared_ptr<Node>> nodeMap;
    std::vector<std::shared_ptr<Material>> materials;
    std::vector<std::shared_ptr<Load>> loads;

    // Nodes numbered 1, 2, ... at the given places; steel with E = 2e5, rho = 8e-9.
    explicit RodFixture(std::vector<std::array<double, 3>> places) {
        addMaterial("STEEL", "E 2.0E5 NU 0.3 RHO 8.0E-9 DAMPING 4");
        for (const auto& p : places) {
            auto n = std::make_shared<Node>();
            const int k = static_cast<int>(nodes.size());
            n->setNumber(k + 1);
            n->setXPositionOrigin(p[0]);
            n->setYPositionOrigin(p[1]);
            n->setZPositionOrigin(p[2]);
            nodes.push_back(n);
            nodeMap.emplace(n->getNumber(), n);
        }
    }

    void addMaterial(std::string name, const std::string& parameters) {
        auto m = std::make_shared<Elastic>();
        m->setName(name);
        m->parseOstrel(tokens(parameters));
        materials.push_back(m);
    }

    std::shared_ptr<Rod2> rod(const std::string& line, int number = 1) {
        auto r = std::make_shared<Rod2>();
        r->setNumber(number);
        r->parseOstrel(tokens(line), nodes, nodeMap, materials, loads);
        return r;
    }

    std::shared_ptr<Rod2> ready(const std::string& line = "NODES 1 2 MATERIAL STEEL D 0.1", int number = 1) {
        auto r = rod(line, number);
        r->assembleMassMatrix();
        r->setInitialConditions();
        return r;
    }
};

// Moves a node to a new place as if it had been displaced there.
void place(Node& n, double x, double y, double z) {
    n.setX_pos(x);
    n.setY_pos(y);
    n.setZ_pos(z);
}

void stepRod(Rod2& r) {
    r.updateLocalCoordinateSystem();
    r.computeStrain(1e-6, 0);
    r.computeStress(1e-6, 0);
    r.computeInternalForces(1e-6, 0);
    r.computeExternalForces(1e-6); // no loads nor contact: these add nothing
    r.computeContactForces();
}

} // namespace

TEST(Rod2Test, StretchedToElevenTenthsGivesLogStrainConstantVolumeAndPullingForces) {
    RodFixture f({{1.0, -1.0, 0.5}, {2.0, 1.0, 2.5}}); // axis along (1, 2, 2)/3, L0 = 3
    auto r = f.ready();
    const double A0 = pi * 0.1 * 0.1 / 4.0;
    place(*f.nodes[1], 1.0 + 1.1, -1.0 + 2.2, 0.5 + 2.2);
    stepRod(*r);
    EXPECT_NEAR(r->getLength(), 3.3, 1e-12);
    EXPECT_NEAR(r->getStrain()[0], std::log(1.1), 1e-12);
    EXPECT_NEAR(r->getArea(), A0 / 1.1, 1e-15);
    EXPECT_NEAR(r->getStress()[0], 2.0e5 * std::log(1.1), 1e-7);
    for (int k = 1; k < 6; ++k) {
        EXPECT_EQ(r->getStrain()[k], 0.0);
        EXPECT_EQ(r->getStress()[k], 0.0);
    }

    const double N = 2.0e5 * std::log(1.1) * A0 / 1.1;
    const double e1[3] = {1.0 / 3.0, 2.0 / 3.0, 2.0 / 3.0};
    auto f1 = f.nodes[0]->getForce();
    auto f2 = f.nodes[1]->getForce();
    for (int j = 0; j < 3; ++j) {
        EXPECT_NEAR(f1[j], N * e1[j], 1e-9 * N);  // node 1 pulled towards node 2
        EXPECT_NEAR(f2[j], -N * e1[j], 1e-9 * N); // node 2 pulled towards node 1
        EXPECT_EQ(f1[j] + f2[j], 0.0);
    }
}

TEST(Rod2Test, CompressionPushesNodesApartAndStrainIsNotAccumulatedTwice) {
    RodFixture f({{0, 0, 0}, {2, 0, 0}});
    auto r = f.ready();
    place(*f.nodes[1], 1.8, 0, 0);
    stepRod(*r);
    stepRod(*r);
    EXPECT_NEAR(r->getStrain()[0], std::log(0.9), 1e-12);
    EXPECT_LT(f.nodes[0]->getXForce(), 0.0);
    EXPECT_GT(f.nodes[1]->getXForce(), 0.0);
}

TEST(Rod2Test, RigidMotionGivesNoStrainNorForce) {
    RodFixture f({{0, 0, 0}, {0, 3, 4}});
    auto r = f.ready();
    // Translate by (1, 1, 1) and turn the axis (0, 3, 4) into (5, 0, 0).
    place(*f.nodes[0], 1, 1, 1);
    place(*f.nodes[1], 6, 1, 1);
    stepRod(*r);
    EXPECT_NEAR(r->getStrain()[0], 0.0, 1e-15);
    EXPECT_NEAR(f.nodes[0]->getXForce(), 0.0, 1e-9);
    EXPECT_NEAR(f.nodes[1]->getXForce(), 0.0, 1e-9);
}

TEST(Rod2Test, AxisAlongOneOneMinusOneStillCarriesItsForce) {
    RodFixture f({{0, 0, 0}, {1, 1, -1}});
    auto r = f.ready();
    place(*f.nodes[1], 1.1, 1.1, -1.1);
    stepRod(*r);
    EXPECT_FALSE(std::isfinite(r->getLocalBasis()[2][0]));
    const double N = r->getStress()[0] * r->getArea();
    EXPECT_GT(N, 0.0);
    EXPECT_NEAR(f.nodes[0]->getXForce(), N / std::sqrt(3.0), 1e-9 * N);
    EXPECT_NEAR(f.nodes[0]->getZForce(), -N / std::sqrt(3.0), 1e-9 * N);
}

TEST(Rod2Test, LumpedMassFullInertiaAndDamping) {
    RodFixture f({{0, 0, 0}, {0, 0, 2}, {0, 0, 2.01}});
    auto r = f.rod("NODES 1 2 MATERIAL STEEL D 0.1");
    r->assembleMassMatrix();
    const double m = 8.0e-9 * pi * 0.0025 * 2.0;
    EXPECT_DOUBLE_EQ(f.nodes[0]->getMass(), 0.5 * m);
    EXPECT_DOUBLE_EQ(f.nodes[1]->getMass(), 0.5 * m);
    EXPECT_EQ(f.nodes[0]->getRayleighDamping(), 4.0);
    EXPECT_EQ(f.nodes[1]->getRayleighDamping(), 4.0);
    // A slender rod: I = m L0^2 / 12, the full value on each node.
    for (int node = 0; node < 2; ++node)
        for (int a = 0; a < 3; ++a)
            for (int b = 0; b < 3; ++b)
                EXPECT_DOUBLE_EQ(f.nodes[node]->getInertia()[a][b], a == b ? m * 4.0 / 12.0 : 0.0);

    // A stubby rod (L0 = 0.01 < D): I = m D^2 / 8.
    auto stub = f.rod("NODES 2 3 MATERIAL STEEL D 0.1");
    stub->assembleMassMatrix();
    const double ms = 8.0e-9 * pi * 0.0025 * 0.01;
    EXPECT_NEAR(f.nodes[2]->getInertia()[1][1], ms * 0.01 / 8.0, 1e-12 * ms);
    EXPECT_NEAR(f.nodes[2]->getMass(), 0.5 * ms, 1e-20);
}

TEST(Rod2Test, CriticalStepIsLengthOverBarWaveSpeed) {
    RodFixture f({{0, 0, 0}, {0.5, 0, 0}});
    auto r = f.ready();
    const double c = std::sqrt(2.0e5 / 8.0e-9);
    EXPECT_DOUBLE_EQ(r->checkTimestep(1.0), 0.5 / c);
    EXPECT_EQ(r->checkTimestep(1e-9), 1e-9);
    // The current length counts, not the initial one.
    place(*f.nodes[1], 0.25, 0, 0);
    EXPECT_DOUBLE_EQ(r->checkTimestep(1.0), 0.25 / c);
    // Nodes that meet: infinite compressive strain and a zero step.
    place(*f.nodes[1], 0, 0, 0);
    EXPECT_EQ(r->checkTimestep(1.0), 0.0);
    r->computeStrain(0, 0);
    r->computeStress(0, 0);
    EXPECT_EQ(r->getStrain()[0], -INFINITY);

    // An undefined wave speed (negative modulus) leaves the step as it is.
    place(*f.nodes[1], 0.5, 0, 0);
    f.addMaterial("ODD", "E -1 NU 0 RHO 1");
    EXPECT_EQ(f.ready("NODES 1 2 MATERIAL ODD D 0.1")->checkTimestep(0.7), 0.7);
}

// The edge line gets half the diameter as radius and the factor, both as
// six-decimal text (a radius below 5e-7 reads 0: a deck case).
TEST(Rod2Test, ContactEdgeHandsItsLineRadiusAndFactorAsSixDecimalText) {
    RodFixture f({{0, 0, 0}, {1, 0, 0}});
    auto r = f.rod("NODES 1 2 FACTOR 25.1234567 D 0.0123456789 MATERIAL STEEL CONTACT EDGE");
    EXPECT_EQ(r->getContactLine()->getRadius(), 0.006173);
    EXPECT_EQ(r->getContactLine()->getFactor(), 25.123457);
}
