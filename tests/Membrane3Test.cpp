#include "Membrane3.h"
#include "ContactLine.h"
#include "ContactTriangle.h"
#include "ElementLibrary.h"
#include "Load.h"
#include "Material.h"
#include "Node.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <initializer_list>
#include <stdexcept>

namespace {

// Objective stub law of F: Cauchy stress sigma = mu (F F^T - I), thickness
// ratio 1/det F (volume kept). A rigid rotation gives zero stress.
class LeftCauchyGreenStub : public Material {
public:
    explicit LeftCauchyGreenStub(double mu_, double rho = 2.0, double c = 5.0) : mu(mu_), speed(c) {
        std::string n = "STUB";
        setName(n);
        density = rho;
        type = "STUB";
    }
    void parseOstrel(std::vector<Token>) override {}
    void setInitialConditions(TNT::Array2D<double>&) override { ++initialised; }
    double wavespeed1D() override { return speed; }
    double wavespeed2D() override { return speed; }
    void computeStress1D(double&, double&, double&) override {}
    void computeStress2D(const TNT::Array2D<double>& F, TNT::Array1D<double>& strain,
                         TNT::Array1D<double>& stress, const TNT::Array2D<double>&) override {
        const double b00 = F[0][0] * F[0][0] + F[0][1] * F[0][1];
        const double b11 = F[1][0] * F[1][0] + F[1][1] * F[1][1];
        const double b01 = F[0][0] * F[1][0] + F[0][1] * F[1][1];
        stress[0] = mu * (b00 - 1.0);
        stress[1] = mu * (b11 - 1.0);
        stress[2] = 0.0;
        stress[3] = mu * b01;
        strain[2] = 1.0 / (F[0][0] * F[1][1] - F[0][1] * F[1][0]);
    }
    std::shared_ptr<Material> copyMat() override { return std::make_shared<LeftCauchyGreenStub>(*this); }
    void setAlpha(double a) { alpha = a; }

    double mu;
    double speed;
    int initialised = 0;
};

// Stub law that returns a fixed stress and thickness ratio whatever F is.
class FixedStressStub : public Material {
public:
    FixedStressStub(double s11_, double s22_, double s12_, double ratio_)
        : s11(s11_), s22(s22_), s12(s12_), ratio(ratio_) {
        std::string n = "FIXED";
        setName(n);
        density = 1.0;
    }
    void parseOstrel(std::vector<Token>) override {}
    void setInitialConditions(TNT::Array2D<double>&) override {}
    double wavespeed1D() override { return 1.0; }
    double wavespeed2D() override { return 1.0; }
    void computeStress1D(double&, double&, double&) override {}
    void computeStress2D(const TNT::Array2D<double>&, TNT::Array1D<double>& strain,
                         TNT::Array1D<double>& stress, const TNT::Array2D<double>&) override {
        stress[0] = s11;
        stress[1] = s22;
        stress[3] = s12;
        strain[2] = ratio;
    }
    std::shared_ptr<Material> copyMat() override { return std::make_shared<FixedStressStub>(*this); }

    double s11, s22, s12, ratio;
};

struct Mesh {
    std::vector<std::shared_ptr<Node>> nodes;
    std::unordered_map<int, std::shared_ptr<Node>> byNumber;
    std::vector<std::shared_ptr<Material>> materials;
    std::vector<std::shared_ptr<Load>> loads;

    void node(int n, double x, double y, double z = 0.0) {
        auto p = std::make_shared<Node>();
        p->setNumber(n);
        p->setXPositionOrigin(x);
        p->setYPositionOrigin(y);
        p->setZPositionOrigin(z);
        nodes.push_back(p);
        byNumber[n] = p;
    }
    void move(int n, double x, double y, double z) {
        auto& p = byNumber.at(n);
        p->setX_pos(x);
        p->setY_pos(y);
        p->setZ_pos(z);
    }
    std::shared_ptr<Membrane3> element(int number, const std::string& line) {
        auto e = std::make_shared<Membrane3>();
        e->setNumber(number);
        e->parseOstrel(tokens(line), nodes, byNumber, materials, loads);
        return e;
    }
    static std::vector<Token> tokens(const std::string& line) {
        std::vector<Token> out;
        std::size_t pos = 0;
        while ((pos = line.find_first_not_of(' ', pos)) != std::string::npos) {
            const std::size_t end = line.find(' ', pos);
            out.emplace_back(line.substr(pos, end - pos));
            pos = end;
        }
        return out;
    }
};

template <class E> std::string messageOf(const std::function<void()>& f) {
    try {
        f();
    } catch (const E& e) {
        return e.what();
    }
    return "<no exception>";
}

// Runs one step of the element without the node update.
void step(Membrane3& e, double dt = 1e-3) {
    e.updateLocalCoordinateSystem();
    e.computeStrain(dt, 0);
    e.computeStress(dt, 0);
    e.computeInternalForces(dt, 0);
}

void prepare(Membrane3& e) {
    e.assembleMassMatrix();
    e.setInitialConditions();
}

// Rotation by angle about a unit axis (Rodrigues).
void rotate(const double axis[3], double angle, const double in[3], double out[3]) {
    const double c = std::cos(angle), s = std::sin(angle);
    const double kx = axis[0], ky = axis[1], kz = axis[2];
    const double dot = kx * in[0] + ky * in[1] + kz * in[2];
    const double cx = ky * in[2] - kz * in[1], cy = kz * in[0] - kx * in[2], cz = kx * in[1] - ky * in[0];
    out[0] = in[0] * c + cx * s + kx * dot * (1 - c);
    out[1] = in[1] * c + cy * s + ky * dot * (1 - c);
    out[2] = in[2] * c + cz * s + kz * dot * (1 - c);
}

} // namespace

TEST(Membrane3Factory, KeywordMakesAMembraneWithTriangleCells) {
    auto e = ElementLibrary::getElementOstrel("MEMBRANE_3");
    ASSERT_NE(dynamic_cast<Membrane3*>(e.get()), nullptr);
    EXPECT_EQ(e->getNumberOfNodes(), 3);
    EXPECT_EQ(e->getNumberOfIntegrationPoints(), 1);
    EXPECT_EQ(e->printVTK(0, 0), "5\n");
    EXPECT_EQ(messageOf<std::invalid_argument>([] { ElementLibrary::getElementOstrel("MEMBRANE3"); }),
              "Element Type MEMBRANE3 is not recognized");
}

TEST(Membrane3Parse, ReadsNodesMaterialLoadAndThicknessInAnyOrder) {
    Mesh m;
    m.node(4, 0, 0);
    m.node(5, 1, 0);
    m.node(6, 0, 1);
    m.materials.push_back(std::make_shared<LeftCauchyGreenStub>(1.0));
    auto load = std::make_shared<Load>();
    std::string name = "PUSH";
    load->setName(name);
    m.loads.push_back(load);
    auto e = m.element(9, "T 0.25 LOAD PUSH NODES 4 5.9 6 MATERIAL STUB");
    EXPECT_EQ(e->getNumber(), 9);
    EXPECT_DOUBLE_EQ(e->getThickness(), 0.25);
    EXPECT_EQ(e->getLoad(), load);
    EXPECT_EQ(e->getMaterial(), m.materials[0]);
    EXPECT_EQ(e->printVTK(1, 0), "3\t4\t5\t6\n");
    EXPECT_EQ(e->getContactType(), 300);
    EXPECT_EQ(e->getContactTriangle(), nullptr);
}

TEST(Membrane3Parse, ReportsEachInputErrorWithItsMessage) {
    Mesh m;
    m.node(1, 0, 0);
    m.node(2, 1, 0);
    m.node(3, 0, 1);
    m.materials.push_back(std::make_shared<LeftCauchyGreenStub>(1.0));
    auto bad = [&](const std::string& line) {
        return messageOf<std::invalid_argument>([&] { m.element(1, line); });
    };
    EXPECT_EQ(bad("NODES 1 2 X"), "Not enough nodes inputs for Element Membrane3");
    EXPECT_EQ(bad("NODES 1 7 3"), "Node 7 is not found");
    EXPECT_EQ(bad("NODES 1 2 1E30"), "Node 1e+30 is not found");
    EXPECT_EQ(bad("NODES NAN 2 3"), "Node nan is not found");
    EXPECT_EQ(bad("NODES 1 2 3 MATERIAL STEEL"), "Material name STEEL is not found");
    EXPECT_EQ(bad("NODES 1 2 3 CONTACT SIDE"), "Invalid CONTACT type");
    EXPECT_EQ(bad("NODES 1 2 3 T THICK"), "Input T is not recognized");
    EXPECT_EQ(bad("NODES 1 2 3 MATERIAL 4"), "Input MATERIAL is not recognized");
    EXPECT_EQ(bad("NODES 1 2 3 FACTOR HIGH"), "Input FACTOR is not recognized");
    EXPECT_EQ(bad("NODES 1 2 3 D 0.1"), "Input D is not recognized");
    // An unknown load met before any material speaks of a material name.
    EXPECT_EQ(bad("NODES 1 2 3 LOAD WIND MATERIAL STUB"), "Material name WIND is not found");
    EXPECT_EQ(bad("NODES 1 2 3 MATERIAL STUB LOAD WIND"), "Load name WIND is not found");
    // Too few node numbers at the end of the line: bounds-checked access.
    EXPECT_THROW(m.element(1, "MATERIAL STUB NODES 1 2"), std::out_of_range);
}

TEST(Membrane3Parse, BasicContactMakesOnlyTheFaceTriangle) {
    Mesh m;
    m.node(1, 0, 0);
    m.node(2, 1, 0);
    m.node(3, 0, 1);
    m.materials.push_back(std::make_shared<LeftCauchyGreenStub>(1.0));
    auto e = m.element(1, "NODES 1 2 3 MATERIAL STUB T 0.5 CONTACT BASIC FACTOR 20 FRICTION 0.1");
    EXPECT_EQ(e->getContactType(), 301);
    ASSERT_NE(e->getContactTriangle(), nullptr);
    EXPECT_EQ(e->getContactTriangle()->getNumber(), -1);
    for (int i = 1; i <= 3; ++i)
        EXPECT_EQ(e->getContactLine(i), nullptr);
}

TEST(Membrane3Parse, EdgeContactMakesTheFaceAndThreeNumberedEdgeLines) {
    Mesh m;
    m.node(1, 0, 0);
    m.node(2, 1, 0);
    m.node(3, 0, 1);
    m.materials.push_back(std::make_shared<LeftCauchyGreenStub>(1.0));
    auto e = m.element(1, "NODES 1 2 3 MATERIAL STUB T 0.5 CONTACT EDGE");
    EXPECT_EQ(e->getContactType(), 302);
    ASSERT_NE(e->getContactTriangle(), nullptr);
    EXPECT_EQ(e->getContactTriangle()->getNumber(), -1);
    for (int i = 1; i <= 3; ++i) {
        ASSERT_NE(e->getContactLine(i), nullptr);
        EXPECT_EQ(e->getContactLine(i)->getNumber(), -i);
    }
}

TEST(Membrane3Geometry, JacobianOfATiltedTriangle) {
    // Right triangle with legs 3 (node 1 -> 2) and 4 (node 1 -> 3), tilted
    // out of the xy plane: J = [[3, 0], [0, 4]], det J = 2A = 12.
    Mesh m;
    const double s = std::sqrt(0.5);
    m.node(1, 1, 1, 1);
    m.node(2, 1 + 3 * s, 1, 1 + 3 * s);
    m.node(3, 1, 5, 1);
    m.materials.push_back(std::make_shared<LeftCauchyGreenStub>(1.0));
    auto e = m.element(1, "NODES 1 2 3 MATERIAL STUB");
    e->computeJacobian();
    EXPECT_NEAR(e->getArea(), 6.0, 1e-12);
    EXPECT_NEAR(e->getDetJacobian(), 12.0, 1e-12);
    EXPECT_NEAR(e->getJacobian()[0][0], 3.0, 1e-12);
    EXPECT_NEAR(e->getJacobian()[0][1], 0.0, 1e-12);
    EXPECT_EQ(e->getJacobian()[1][0], 0.0);
    EXPECT_NEAR(e->getJacobian()[1][1], 4.0, 1e-12);
    // Node 3 off the first edge: J01 = b.e1.
    m.move(3, 1 + 2 * s, 5, 1 + 2 * s);
    e->computeJacobian();
    EXPECT_NEAR(e->getJacobian()[0][1], 2.0, 1e-12);
    EXPECT_NEAR(e->getJacobian()[1][1], 4.0, 1e-12);
}

TEST(Membrane3Mass, LumpedMassesSumToDensityTimesAreaWithInertiaAndDamping) {
    Mesh m;
    m.node(1, 0, 0, 0);
    m.node(2, 2, 0, 1);
    m.node(3, 0.5, 3, -1);
    auto law = std::make_shared<LeftCauchyGreenStub>(1.0, 7.5);
    law->setAlpha(0.3);
    m.materials.push_back(law);
    auto e = m.element(1, "NODES 1 2 3 MATERIAL STUB T 0.2");
    e->assembleMassMatrix();
    // A = |a x b| / 2 with a = (2, 0, 1), b = (0.5, 3, -1).
    const double A = 0.5 * std::sqrt(3.0 * 3.0 + 2.5 * 2.5 + 6.0 * 6.0);
    double total = 0.0;
    for (auto& n : m.nodes) {
        total += n->getMass();
        EXPECT_DOUBLE_EQ(n->getRayleighDamping(), 0.3);
        const double I = 7.5 * A / 3.0 * (0.2 * 0.2 / 12.0 + A / 12.0);
        EXPECT_NEAR(n->getInertia()[0][0], I, 1e-12);
        EXPECT_NEAR(n->getInertia()[2][2], I, 1e-12);
        EXPECT_EQ(n->getInertia()[0][1], 0.0);
    }
    EXPECT_NEAR(total, 7.5 * A, 1e-12);
}

TEST(Membrane3Mass, ZeroDensityOrCollinearNodesStopAssembly) {
    Mesh m;
    m.node(1, 0, 0);
    m.node(2, 1, 0);
    m.node(3, 0, 1);
    m.node(4, 2, 0);
    m.materials.push_back(std::make_shared<LeftCauchyGreenStub>(1.0, 0.0));
    auto light = m.element(3, "NODES 1 2 3 MATERIAL STUB");
    EXPECT_EQ(messageOf<std::invalid_argument>([&] { light->assembleMassMatrix(); }),
              "Error in Membrane element 3. Element mass is zero or negative");
    m.materials[0] = std::make_shared<LeftCauchyGreenStub>(1.0, 1.0);
    auto flat = m.element(8, "NODES 1 2 4 MATERIAL STUB");
    EXPECT_EQ(messageOf<std::invalid_argument>([&] { flat->assembleMassMatrix(); }),
              "Error in Membrane element 8. Element mass is zero or negative");
}

TEST(Membrane3Step, EquilateralTriangleHasOneTenthOfItsAltitudeOverTheWaveSpeed) {
    const double side = 0.3, c = 40.0;
    Mesh m;
    m.node(1, 0, 0);
    m.node(2, side, 0);
    m.node(3, side / 2, side * std::sqrt(3.0) / 2);
    m.materials.push_back(std::make_shared<LeftCauchyGreenStub>(1.0, 1.0, c));
    auto e = m.element(1, "NODES 1 2 3 MATERIAL STUB");
    prepare(*e);
    const double expected = 0.1 * (std::sqrt(3.0) / 2.0) * side / c;
    EXPECT_NEAR(e->checkTimestep(1.0), expected, 1e-15);
    EXPECT_EQ(e->checkTimestep(1e-9), 1e-9);
}

TEST(Membrane3Step, CriticalLengthUsesTheLongestCurrentEdge) {
    // Right triangle 3-4-5: smallest altitude 2A/5 = 12/5.
    Mesh m;
    m.node(1, 0, 0);
    m.node(2, 3, 0);
    m.node(3, 0, 4);
    m.materials.push_back(std::make_shared<LeftCauchyGreenStub>(1.0, 1.0, 2.0));
    auto e = m.element(1, "NODES 1 2 3 MATERIAL STUB");
    prepare(*e);
    EXPECT_NEAR(e->checkTimestep(1.0), 0.1 * 2.4 / 2.0, 1e-15);
}

TEST(Membrane3Forces, ConstantStressGivesTheConstantStrainTriangleForces) {
    // Unit right triangle, thickness 0.1, uniaxial stress s along x: the
    // vertical edge 1-3 and the hypotenuse share the load s t / 2 on x.
    Mesh m;
    m.node(1, 0, 0);
    m.node(2, 1, 0);
    m.node(3, 0, 1);
    m.materials.push_back(std::make_shared<FixedStressStub>(10.0, 0.0, 0.0, 1.0));
    auto e = m.element(1, "NODES 1 2 3 MATERIAL FIXED T 0.1");
    prepare(*e);
    step(*e);
    EXPECT_NEAR(m.nodes[0]->getXForce(), 0.5, 1e-12);
    EXPECT_NEAR(m.nodes[1]->getXForce(), -0.5, 1e-12);
    EXPECT_NEAR(m.nodes[2]->getXForce(), 0.0, 1e-12);
    for (auto& n : m.nodes) {
        EXPECT_NEAR(n->getYForce(), 0.0, 1e-12);
        EXPECT_NEAR(n->getZForce(), 0.0, 1e-12);
    }
    // Pure shear s12 = 4: node 2 is pulled along -y, node 3 along -x.
    auto shear = std::make_shared<FixedStressStub>(0.0, 0.0, 4.0, 1.0);
    m.materials[0] = shear;
    for (auto& n : m.nodes)
        n->clearNodalForces();
    auto e2 = m.element(2, "NODES 1 2 3 MATERIAL FIXED T 0.1");
    prepare(*e2);
    step(*e2);
    EXPECT_NEAR(m.nodes[0]->getXForce(), 0.2, 1e-12);
    EXPECT_NEAR(m.nodes[0]->getYForce(), 0.2, 1e-12);
    EXPECT_NEAR(m.nodes[1]->getXForce(), 0.0, 1e-12);
    EXPECT_NEAR(m.nodes[1]->getYForce(), -0.2, 1e-12);
    EXPECT_NEAR(m.nodes[2]->getXForce(), -0.2, 1e-12);
    EXPECT_NEAR(m.nodes[2]->getYForce(), 0.0, 1e-12);
}

TEST(Membrane3Forces, InternalForcesAreSelfEquilibratedOnADistortedTriangle) {
    Mesh m;
    m.node(1, 0.1, -0.2, 0.3);
    m.node(2, 1.7, 0.4, -0.5);
    m.node(3, 0.3, 1.9, 0.8);
    m.materials.push_back(std::make_shared<FixedStressStub>(3.0, -1.5, 2.2, 0.9));
    auto e = m.element(1, "NODES 1 2 3 MATERIAL FIXED T 0.05");
    prepare(*e);
    step(*e);
    double f[3] = {0, 0, 0}, moment[3] = {0, 0, 0};
    for (auto& n : m.nodes) {
        const double fx = n->getXForce(), fy = n->getYForce(), fz = n->getZForce();
        const double x = n->getX_pos(), y = n->getY_pos(), z = n->getZ_pos();
        f[0] += fx;
        f[1] += fy;
        f[2] += fz;
        moment[0] += y * fz - z * fy;
        moment[1] += z * fx - x * fz;
        moment[2] += x * fy - y * fx;
        // In-plane forces: nothing along the normal.
        const auto& b = e->getLocalBasis();
        EXPECT_NEAR(fx * b[2][0] + fy * b[2][1] + fz * b[2][2], 0.0, 1e-12);
    }
    for (int k = 0; k < 3; ++k) {
        EXPECT_NEAR(f[k], 0.0, 1e-12);
        EXPECT_NEAR(moment[k], 0.0, 1e-12);
    }
    EXPECT_GT(std::fabs(m.nodes[0]->getXForce()), 1e-3);
}

TEST(Membrane3Forces, ThicknessFollowsStrainComponentTwoOfTheMaterial) {
    Mesh m;
    m.node(1, 0, 0);
    m.node(2, 1, 0);
    m.node(3, 0, 1);
    m.materials.push_back(std::make_shared<FixedStressStub>(10.0, 0.0, 0.0, 0.8));
    auto e = m.element(1, "NODES 1 2 3 MATERIAL FIXED T 0.1");
    prepare(*e);
    EXPECT_DOUBLE_EQ(e->getInitialThickness(), 0.1);
    step(*e);
    EXPECT_DOUBLE_EQ(e->getThickness(), 0.08);
    // The forces scale with the current thickness: s A t = 10 * 0.5 * 0.08.
    EXPECT_NEAR(m.nodes[0]->getXForce(), 0.4, 1e-12);
}

TEST(Membrane3Patch, UniformStretchGivesTheSameStressInEveryElement) {
    // Unit square split along its diagonal; each triangle's first edge runs
    // along x (one forwards, one backwards).
    Mesh m;
    m.node(1, 0, 0);
    m.node(2, 1, 0);
    m.node(3, 1, 1);
    m.node(4, 0, 1);
    const double mu = 3.0, lx = 1.2, ly = 0.9;
    m.materials.push_back(std::make_shared<LeftCauchyGreenStub>(mu));
    auto lower = m.element(1, "NODES 1 2 3 MATERIAL STUB T 0.01");
    auto upper = m.element(2, "NODES 3 4 1 MATERIAL STUB T 0.01");
    prepare(*lower);
    prepare(*upper);
    for (auto& n : m.nodes)
        m.move(n->getNumber(), n->getX_pos() * lx, n->getY_pos() * ly, 0.0);
    step(*lower);
    step(*upper);
    for (auto* e : {lower.get(), upper.get()}) {
        const auto& F = e->getDeformationGradient();
        EXPECT_NEAR(F[0][0], lx, 1e-12);
        EXPECT_NEAR(F[1][1], ly, 1e-12);
        EXPECT_NEAR(F[0][1], 0.0, 1e-12);
        EXPECT_NEAR(F[1][0], 0.0, 1e-12);
        EXPECT_NEAR(e->getStress()[0], mu * (lx * lx - 1.0), 1e-12);
        EXPECT_NEAR(e->getStress()[1], mu * (ly * ly - 1.0), 1e-12);
        EXPECT_NEAR(e->getStress()[3], 0.0, 1e-12);
        EXPECT_NEAR(e->getThickness(), 0.01 / (lx * ly), 1e-15);
    }
    // Interior balance: the shared nodes 1 and 3 carry the edge loads of a
    // uniformly stressed square, so the corner forces add up to the traction
    // resultants s11 t ly on x and s22 t lx on y, half at each corner.
    const double tNow = 0.01 / (lx * ly);
    const double sx = mu * (lx * lx - 1.0), sy = mu * (ly * ly - 1.0);
    EXPECT_NEAR(m.nodes[0]->getXForce(), 0.5 * sx * tNow * ly, 1e-12);
    EXPECT_NEAR(m.nodes[0]->getYForce(), 0.5 * sy * tNow * lx, 1e-12);
    EXPECT_NEAR(m.nodes[2]->getXForce(), -0.5 * sx * tNow * ly, 1e-12);
    EXPECT_NEAR(m.nodes[2]->getYForce(), -0.5 * sy * tNow * lx, 1e-12);
}

TEST(Membrane3Patch, RigidRotationOfTheSheetLeavesNoStress) {
    Mesh m;
    const double ref[4][3] = {{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {0, 1, 0}};
    for (int i = 0; i < 4; ++i)
        m.node(i + 1, ref[i][0], ref[i][1], ref[i][2]);
    m.materials.push_back(std::make_shared<LeftCauchyGreenStub>(5.0));
    auto a = m.element(1, "NODES 1 2 3 MATERIAL STUB T 0.02");
    auto b = m.element(2, "NODES 1 3 4 MATERIAL STUB T 0.02");
    prepare(*a);
    prepare(*b);
    const double axis[3] = {1 / std::sqrt(14.0), 2 / std::sqrt(14.0), 3 / std::sqrt(14.0)};
    for (int i = 0; i < 4; ++i) {
        double out[3];
        rotate(axis, 1.1, ref[i], out);
        m.move(i + 1, out[0] + 5, out[1] - 3, out[2] + 1);
    }
    step(*a);
    step(*b);
    for (auto* e : {a.get(), b.get()}) {
        for (int c : {0, 1, 3})
            EXPECT_NEAR(e->getStress()[c], 0.0, 1e-12);
        EXPECT_NEAR(e->getThickness(), 0.02, 1e-15);
    }
    for (auto& n : m.nodes) {
        EXPECT_NEAR(n->getXForce(), 0.0, 1e-12);
        EXPECT_NEAR(n->getYForce(), 0.0, 1e-12);
        EXPECT_NEAR(n->getZForce(), 0.0, 1e-12);
    }
}

TEST(Membrane3Pressure, PressureForcesSumToPressureTimesAreaAlongTheNormal) {
    Mesh m;
    m.node(1, 0, 0, 0);
    m.node(2, 0, 2, 0);
    m.node(3, 0, 0, 3);
    m.materials.push_back(std::make_shared<LeftCauchyGreenStub>(1.0));
    auto load = std::make_shared<Load>();
    std::string name = "P1";
    load->setName(name);
    load->parseOstrel(Mesh::tokens("P 0.5"), {});
    m.loads.push_back(load);
    auto e = m.element(1, "NODES 1 2 3 MATERIAL STUB LOAD P1");
    prepare(*e);
    step(*e);
    for (auto& n : m.nodes)
        n->clearNodalForces();
    e->computeExternalForces(0.0);
    // Normal of (x2 - x1) x (x3 - x1) = (0,2,0) x (0,0,3) = +x; area 3.
    for (auto& n : m.nodes) {
        EXPECT_NEAR(n->getXForce(), 0.5 * 3.0 / 3.0, 1e-12);
        EXPECT_NEAR(n->getYForce(), 0.0, 1e-12);
        EXPECT_NEAR(n->getZForce(), 0.0, 1e-12);
    }
    // Without a load nothing is added.
    auto bare = m.element(2, "NODES 1 2 3 MATERIAL STUB");
    prepare(*bare);
    step(*bare);
    for (auto& n : m.nodes)
        n->clearNodalForces();
    bare->computeExternalForces(0.0);
    for (auto& n : m.nodes)
        EXPECT_EQ(n->getXForce(), 0.0);
}

TEST(Membrane3Strain, CollapsedTriangleStopsWithTheTimeStepInTheMessage) {
    Mesh m;
    m.node(1, 0, 0);
    m.node(2, 1, 0);
    m.node(3, 0, 1);
    m.materials.push_back(std::make_shared<LeftCauchyGreenStub>(1.0));
    auto e = m.element(12, "NODES 1 2 3 MATERIAL STUB");
    prepare(*e);
    m.move(3, 0.5, 0, 0);
    e->updateLocalCoordinateSystem();
    EXPECT_EQ(messageOf<std::runtime_error>([&] { e->computeStrain(0.0025, 0); }),
              "Error in Membrane element 12, det(Jacobian) is zero or negative. Timestep = 0.002500");
    m.move(3, NAN, 0, 0);
    EXPECT_EQ(messageOf<std::runtime_error>([&] { e->computeStrain(1e-7, 0); }),
              "Error in Membrane element 12, det(Jacobian) is +inf or NaN. Timestep = 0.000000");
    m.move(3, 0, 1e300, 0);
    m.move(2, 1e300, 0, 0);
    EXPECT_EQ(messageOf<std::runtime_error>([&] { e->computeStrain(2, 0); }),
              "Error in Membrane element 12, det(Jacobian) is +inf or NaN. Timestep = 2.000000");
}

TEST(Membrane3Output, StrainAndStressValuesPrintZeroBelowOneTenthNano) {
    Mesh m;
    m.node(1, 0, 0);
    m.node(2, 1, 0);
    m.node(3, 0, 1);
    m.materials.push_back(std::make_shared<FixedStressStub>(1e-10, -2.5, -1.1e-10, 1.0));
    auto e = m.element(1, "NODES 1 2 3 MATERIAL FIXED T 1");
    prepare(*e);
    step(*e);
    EXPECT_EQ(e->printVTK(200, 0), "0.0");
    EXPECT_EQ(e->printVTK(200, 1), "-2.500000");
    EXPECT_EQ(e->printVTK(200, 3), "-0.000000");
    EXPECT_EQ(e->printVTK(200, 4), "0.0");
    EXPECT_EQ(e->printVTK(100, 0), "1.000000");
    EXPECT_EQ(e->printVTK(100, 2), "1.000000");
    EXPECT_EQ(e->printVTK(100, 5), "0.0");
    EXPECT_EQ(e->printVTK(1, 0), "3\t1\t2\t3\n");
}

TEST(Membrane3Lifecycle, EachElementInitialisesItsOwnCopyOfTheMaterial) {
    Mesh m;
    m.node(1, 0, 0);
    m.node(2, 1, 0);
    m.node(3, 0, 1);
    auto shared = std::make_shared<LeftCauchyGreenStub>(1.0);
    m.materials.push_back(shared);
    auto a = m.element(1, "NODES 1 2 3 MATERIAL STUB");
    auto b = m.element(2, "NODES 1 2 3 MATERIAL STUB");
    prepare(*a);
    prepare(*b);
    EXPECT_NE(a->getMaterial(), shared);
    EXPECT_NE(a->getMaterial(), b->getMaterial());
    EXPECT_EQ(shared->initialised, 0);
    EXPECT_EQ(std::static_pointer_cast<LeftCauchyGreenStub>(a->getMaterial())->initialised, 1);
}
