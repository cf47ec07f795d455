// The three-node shell alone: deck keywords and messages, the thickness
// integration table, rigid-motion and closed-form kinematics, the bending
// moment of a plate strip, self-equilibrium, mass, pressure and output text.
#include "S3L_C0.h"
#include "ContactLine.h"
#include "ContactTriangle.h"
#include "ElementLibrary.h"
#include "Load.h"
#include "Material.h"
#include "Node.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <sstream>
#include <stdexcept>

namespace {

// Incremental plane-stress law with the 5/6 transverse shear correction.
class StubElastic : public Material {
public:
    StubElastic(const std::string& n, double E, double poisson, double rho, double damping = 0.0) {
        name = n;
        youngsModulus = E;
        nu = poisson;
        density = rho;
        alpha = damping;
    }
    void parseOstrel(std::vector<Token>) override {}
    void setInitialConditions(TNT::Array2D<double>&) override {}
    double wavespeed1D() override { return std::sqrt(youngsModulus / density); }
    double wavespeed2D() override { return std::sqrt(youngsModulus / ((1.0 - nu * nu) * density)); }
    void computeStress1D(double&, double&, double&) override {}
    void computeStress2D(const TNT::Array2D<double>&, TNT::Array1D<double>& de, TNT::Array1D<double>& s,
                         const TNT::Array2D<double>&) override {
        const double k = youngsModulus / (1.0 - nu * nu), G = 0.5 * youngsModulus / (1.0 + nu);
        s[0] += k * (de[0] + nu * de[1]);
        s[1] += k * (nu * de[0] + de[1]);
        s[2] = 0.0;
        s[3] += G * de[3];
        s[4] += 5.0 / 6.0 * G * de[4];
        s[5] += 5.0 / 6.0 * G * de[5];
    }
    std::shared_ptr<Material> copyMat() override { return std::make_shared<StubElastic>(*this); }
};

// Writes a prescribed stress that changes from call to call, whatever the strain.
class FixedStress : public Material {
public:
    explicit FixedStress(const std::string& n) {
        name = n;
        density = 1.0;
        nu = 0.0;
        youngsModulus = 1.0;
    }
    void parseOstrel(std::vector<Token>) override {}
    void setInitialConditions(TNT::Array2D<double>&) override {}
    double wavespeed1D() override { return 1.0; }
    double wavespeed2D() override { return 1.0; }
    void computeStress1D(double&, double&, double&) override {}
    void computeStress2D(const TNT::Array2D<double>&, TNT::Array1D<double>&, TNT::Array1D<double>& s,
                         const TNT::Array2D<double>&) override {
        static const double base[6] = {3.0, -1.5, 0.0, 0.8, 2.2, -0.7};
        for (int k = 0; k < 6; ++k)
            s[k] = base[k] * (1.0 + 0.37 * calls);
        ++calls;
    }
    std::shared_ptr<Material> copyMat() override { return std::make_shared<FixedStress>(*this); }

private:
    int calls = 0;
};

struct Vec3 {
    double x, y, z;
};
Vec3 operator-(Vec3 a, Vec3 b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
Vec3 operator+(Vec3 a, Vec3 b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
Vec3 operator*(double s, Vec3 a) {
    return {s * a.x, s * a.y, s * a.z};
}
Vec3 cross(Vec3 a, Vec3 b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
double dot(Vec3 a, Vec3 b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
double norm(Vec3 a) {
    return std::sqrt(dot(a, a));
}

class ShellTest : public ::testing::Test {
protected:
    void SetUp() override {
        materials.push_back(std::make_shared<StubElastic>("STEEL", 210000.0, 0.3, 7.8e-9, 12.5));
        materials.push_back(std::make_shared<FixedStress>("FIXED"));
        auto pressure = std::make_shared<Load>();
        std::string name = "PRESS";
        pressure->setName(name);
        pressure->parseOstrel({Token("P"), Token("2.5")}, {});
        loads.push_back(pressure);
    }

    std::shared_ptr<Node> addNode(int n, Vec3 p) {
        auto node = std::make_shared<Node>();
        node->setNumber(n);
        node->setXPositionOrigin(p.x);
        node->setYPositionOrigin(p.y);
        node->setZPositionOrigin(p.z);
        nodes.push_back(node);
        nodeMap[n] = node;
        return node;
    }

    static std::vector<Token> tokens(const std::string& line) {
        std::istringstream in(line);
        std::vector<Token> out;
        std::string word;
        while (in >> word)
            out.emplace_back(word);
        return out;
    }

    std::shared_ptr<S3L_C0> make(const std::string& line, int number = 1) {
        auto shell = std::make_shared<S3L_C0>();
        shell->setNumber(number);
        shell->parseOstrel(tokens(line), nodes, nodeMap, materials, loads);
        return shell;
    }

    std::string parseError(const std::string& line) {
        try {
            make(line);
        } catch (const std::invalid_argument& e) {
            return e.what();
        }
        return "no error";
    }

    // Unit mass, unit rotational inertia, nothing prescribed: one node update
    // then turns the nodal resultant into the accelerations.
    void prepareNodes() {
        TNT::Array2D<double> unit(3, 3, 0.0);
        unit[0][0] = unit[1][1] = unit[2][2] = 1.0;
        for (auto& n : nodes) {
            n->addMass(1.0);
            n->addInertia(unit);
            n->determineMassMatrix();
            n->setInitialConditions();
        }
    }
    struct Resultant {
        Vec3 force, moment;
    };
    static Resultant readResultant(Node& n) {
        n.computeNewPosition(1.0, 0.0);
        const double m = n.getMass(), j = n.getInertia()[0][0];
        return {{m * n.getX_acc(), m * n.getY_acc(), m * n.getZ_acc()},
                {j * n.getX_rot_acc(), j * n.getY_rot_acc(), j * n.getZ_rot_acc()}};
    }

    static void setVelocity(Node& n, Vec3 v, Vec3 w) {
        n.setX_vel(v.x);
        n.setY_vel(v.y);
        n.setZ_vel(v.z);
        n.setX_rot_vel(w.x);
        n.setY_rot_vel(w.y);
        n.setZ_rot_vel(w.z);
    }
    static Vec3 position(const Node& n) { return {n.getX_pos(), n.getY_pos(), n.getZ_pos()}; }

    // One full element pass at step dt, as the solution loop makes it.
    static void step(S3L_C0& shell, double dt, bool forces = true) {
        shell.updateLocalCoordinateSystem();
        for (int ip = 0; ip < shell.getNumberOfIntegrationPoints(); ++ip) {
            shell.computeStrain(dt, ip);
            shell.computeStress(dt, ip);
        }
        if (forces)
            for (int ip = 0; ip < shell.getNumberOfIntegrationPoints(); ++ip)
                shell.computeInternalForces(dt, ip);
    }

    std::vector<std::shared_ptr<Node>> nodes;
    std::unordered_map<int, std::shared_ptr<Node>> nodeMap;
    std::vector<std::shared_ptr<Material>> materials;
    std::vector<std::shared_ptr<Load>> loads;
};

// A triangle tilted out of every coordinate plane.
class TiltedShellTest : public ShellTest {
protected:
    void SetUp() override {
        ShellTest::SetUp();
        addNode(1, {0.3, -0.2, 0.1});
        addNode(2, {1.4, 0.25, 0.5});
        addNode(3, {0.1, 0.9, 0.7});
    }
};

TEST_F(TiltedShellTest, FactoryMakesTheShellFromItsKeyword) {
    auto e = ElementLibrary::getElementOstrel("S3L_C0");
    ASSERT_NE(std::dynamic_pointer_cast<S3L_C0>(e), nullptr);
    EXPECT_EQ(e->getNumberOfNodes(), 3);
    EXPECT_EQ(e->getNumberOfIntegrationPoints(), 3);
    EXPECT_EQ(e->printVTK(0, 0), "5\n");
}

TEST_F(TiltedShellTest, ParseErrorsUseTheShellMessages) {
    EXPECT_EQ(parseError("NODES 1 X 3 MATERIAL STEEL"), "Not enough nodes inputs for Element S3L_C0");
    EXPECT_EQ(parseError("NODES 1 2 7"), "Node 7 is not found");
    EXPECT_EQ(parseError("NODES 1 2 3 MATERIAL WOOD"), "Material name WOOD is not found");
    // Without a material yet an unknown load takes the material wording.
    EXPECT_EQ(parseError("NODES 1 2 3 LOAD WIND MATERIAL STEEL"), "Material name WIND is not found");
    EXPECT_EQ(parseError("NODES 1 2 3 MATERIAL STEEL LOAD WIND"), "Load name WIND is not found");
    EXPECT_EQ(parseError("NODES 1 2 3 MATERIAL STEEL CONTACT SOLID"), "Invalid CONTACT type");
    EXPECT_EQ(parseError("NODES 1 2 3 MATERIAL STEEL COLOUR RED"), "Input COLOUR is not recognized");
    // A value of the wrong kind leaves the keyword unrecognised.
    EXPECT_EQ(parseError("NODES 1 2 3 T THICK"), "Input T is not recognized");
    EXPECT_EQ(parseError("NODES 1 2 3 MATERIAL 4"), "Input MATERIAL is not recognized");
    EXPECT_EQ(parseError("NODES 1 2 3 NIP THREE"), "Input NIP is not recognized");
    EXPECT_EQ(parseError("NODES 1 2 3 CONTACT 1"), "Input CONTACT is not recognized");
    EXPECT_EQ(parseError("NODES 1 2 3 2.5"), "Input 2.5 is not recognized");
    EXPECT_THROW(make("NODES 1 2"), std::out_of_range);
    EXPECT_THROW(make("NODES 1 2 3 MATERIAL"), std::out_of_range);
}

TEST_F(TiltedShellTest, KeywordsAreReadInAnyOrder) {
    auto shell = make("T 0.4 LOAD PRESS NIP 5.9 MATERIAL STEEL NODES 3 1 2");
    EXPECT_DOUBLE_EQ(shell->getThickness(), 0.4);
    EXPECT_EQ(shell->getNumberOfIntegrationPoints(), 5);
    EXPECT_EQ(shell->getLoad(), loads[0]);
    EXPECT_EQ(shell->getMaterial(), materials[0]);
    EXPECT_EQ(shell->printVTK(1, 0), "3\t3\t1\t2\n");
    EXPECT_EQ(shell->getContactType(), 300);
    EXPECT_EQ(shell->getContactTriangle(), nullptr);
}

TEST_F(TiltedShellTest, ContactBasicMakesTheFaceAndEdgeAddsThreeLines) {
    auto basic = make("NODES 1 2 3 MATERIAL STEEL T 0.2 CONTACT BASIC FACTOR 50");
    EXPECT_EQ(basic->getContactType(), 301);
    ASSERT_NE(basic->getContactTriangle(), nullptr);
    EXPECT_EQ(basic->getContactTriangle()->getNumber(), -1);
    for (int i = 1; i <= 3; ++i)
        EXPECT_EQ(basic->getContactLine(i), nullptr);

    auto edge = make("NODES 1 2 3 MATERIAL STEEL T 0.2 CONTACT EDGE FRICTION 0.1");
    EXPECT_EQ(edge->getContactType(), 302);
    ASSERT_NE(edge->getContactTriangle(), nullptr);
    for (int i = 1; i <= 3; ++i) {
        ASSERT_NE(edge->getContactLine(i), nullptr);
        EXPECT_EQ(edge->getContactLine(i)->getNumber(), -i);
    }
}

TEST_F(TiltedShellTest, IntegrationTableFollowsNip) {
    const double t = 0.4, h = 0.5 * t;
    auto def = make("NODES 1 2 3 MATERIAL STEEL T 0.4");
    def->setInitialConditions();
    const auto& z = def->getIntegrationPointPositions();
    const auto& w = def->getIntegrationPointWeights();
    ASSERT_EQ(z.dim1(), 3);
    EXPECT_DOUBLE_EQ(z[0], h * 0.774596669241483);
    EXPECT_DOUBLE_EQ(z[1], 0.0);
    EXPECT_DOUBLE_EQ(z[2], -h * 0.774596669241483);
    EXPECT_DOUBLE_EQ(w[0], 5.0 / 9.0);
    EXPECT_DOUBLE_EQ(w[1], 8.0 / 9.0);
    EXPECT_DOUBLE_EQ(w[2], 5.0 / 9.0);
    EXPECT_EQ(def->getStresses().size(), 3u);

    auto five = make("NODES 1 2 3 MATERIAL STEEL T 0.4 NIP 5");
    five->setInitialConditions();
    const double xi5[5] = {0.90618, 0.538469, 0.0, -0.538469, -0.90618};
    const double w5[5] = {0.236927, 0.478629, 0.568889, 0.478629, 0.236927};
    for (int i = 0; i < 5; ++i) {
        EXPECT_DOUBLE_EQ(five->getIntegrationPointPositions()[i], h * xi5[i]);
        EXPECT_DOUBLE_EQ(five->getIntegrationPointWeights()[i], w5[i]);
    }

    // Two and four points integrate z^2 exactly: sum of w xi^2 = 2/3.
    for (int n : {2, 4}) {
        auto s = make("NODES 1 2 3 MATERIAL STEEL T 0.4 NIP " + std::to_string(n));
        s->setInitialConditions();
        double sw = 0.0, swz2 = 0.0;
        for (int i = 0; i < n; ++i) {
            sw += s->getIntegrationPointWeights()[i];
            const double xi = s->getIntegrationPointPositions()[i] / h;
            swz2 += s->getIntegrationPointWeights()[i] * xi * xi;
        }
        EXPECT_NEAR(sw, 2.0, 1e-14) << n;
        EXPECT_NEAR(swz2, 2.0 / 3.0, 1e-14) << n;
    }

    auto one = make("NODES 1 2 3 MATERIAL STEEL T 0.4 NIP 1");
    one->setInitialConditions();
    ASSERT_EQ(one->getIntegrationPointWeights().dim1(), 1);
    EXPECT_EQ(one->getIntegrationPointPositions()[0], 0.0);
    EXPECT_EQ(one->getIntegrationPointWeights()[0], 0.0);

    // Six points are not tabulated: the table stays as allocated, all zero.
    auto six = make("NODES 1 2 3 MATERIAL STEEL T 0.4 NIP 6");
    EXPECT_NO_THROW(six->setInitialConditions());
    EXPECT_EQ(six->getNumberOfIntegrationPoints(), 6);
    ASSERT_EQ(six->getIntegrationPointWeights().dim1(), 6);
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(six->getIntegrationPointPositions()[i], 0.0);
        EXPECT_EQ(six->getIntegrationPointWeights()[i], 0.0);
    }
    EXPECT_EQ(parseError("NODES 1 2 3 NIP 1e6"), "Error in C0 element 1. NIP 1e+06 is out of range");
}

TEST_F(TiltedShellTest, RigidMotionGivesNoStrainAtAnyPoint) {
    auto shell = make("NODES 1 2 3 MATERIAL STEEL T 0.3");
    shell->setInitialConditions();
    const Vec3 v0{0.7, -1.1, 0.4}, omega{2.0, -3.0, 1.5}, centre{0.5, 0.5, -0.2};
    for (auto& n : nodes)
        setVelocity(*n, v0 + cross(omega, position(*n) - centre), omega);
    step(*shell, 1e-3, false);
    for (int ip = 0; ip < 3; ++ip)
        for (int k = 0; k < 6; ++k) {
            EXPECT_NEAR(shell->getStrains()[ip][k], 0.0, 1e-15) << ip << " " << k;
            EXPECT_NEAR(shell->getStresses()[ip][k], 0.0, 1e-9) << ip << " " << k;
        }
    for (int r = 0; r < 3; ++r) {
        EXPECT_NEAR(shell->getMembraneStrainRate()[r], 0.0, 1e-12);
        EXPECT_NEAR(shell->getCurvatureRate()[r], 0.0, 1e-12);
    }
}

TEST_F(TiltedShellTest, InPlaneStretchGivesThePlaneStressOfTheElasticLaw) {
    auto shell = make("NODES 1 2 3 MATERIAL STEEL T 0.3");
    shell->setInitialConditions();
    const auto& B = shell->getLocalBasis();
    const Vec3 e1{B[0][0], B[0][1], B[0][2]}, e2{B[1][0], B[1][1], B[1][2]};
    const Vec3 o = position(*nodes[0]);
    // Stretch rates a along e1 and b along e2, plus a shear rate g.
    const double a = 0.02, b = -0.005, g = 0.01, dt = 0.5;
    for (auto& n : nodes) {
        const Vec3 r = position(*n) - o;
        const double x = dot(r, e1), y = dot(r, e2);
        setVelocity(*n, (a * x + g * y) * e1 + (b * y) * e2, {0, 0, 0});
    }
    step(*shell, dt, false);
    const double E = 210000.0, nu = 0.3, k = E / (1 - nu * nu), G = E / (2 * (1 + nu));
    const double s11 = k * (a + nu * b) * dt, s22 = k * (nu * a + b) * dt, s12 = G * g * dt;
    for (int ip = 0; ip < 3; ++ip) {
        const auto& s = shell->getStresses()[ip];
        EXPECT_NEAR(s[0], s11, 1e-9 * std::fabs(s11)) << ip;
        EXPECT_NEAR(s[1], s22, 1e-9 * std::fabs(s11)) << ip;
        EXPECT_EQ(s[2], 0.0);
        EXPECT_NEAR(s[3], s12, 1e-9 * std::fabs(s11)) << ip;
        EXPECT_NEAR(s[4], 0.0, 1e-9);
        EXPECT_NEAR(s[5], 0.0, 1e-9);
        EXPECT_NEAR(shell->getAccumulatedStrains()[ip][0], a * dt, 1e-15);
    }
    char text[64];
    std::snprintf(text, sizeof text, "%f", shell->getStresses()[0][0]);
    EXPECT_EQ(shell->printVTK(200, 0), text);
    EXPECT_EQ(shell->printVTK(200, 2), "0.0");
    EXPECT_EQ(shell->printVTK(100, 0), "0.010000");
}

TEST_F(ShellTest, RotationRateFieldsGiveTheCurvatureAndLinearStrainThroughThickness) {
    const double L = 2.0;
    addNode(1, {0, 0, 0});
    addNode(2, {L, 0, 0});
    addNode(3, {0.6, 1.7, 0});
    auto shell = make("NODES 1 2 3 MATERIAL STEEL T 0.1");
    shell->setInitialConditions();
    const double kappa = 0.3, dt = 0.01;
    // Bending about y: thy' = -kappa x (w'' = kappa, sagging upwards).
    for (auto& n : nodes)
        setVelocity(*n, {0, 0, 0}, {0, -kappa * n->getX_pos(), 0});
    step(*shell, dt, false);
    EXPECT_NEAR(shell->getCurvatureRate()[0], kappa, 1e-14);
    EXPECT_NEAR(shell->getCurvatureRate()[1], 0.0, 1e-14);
    EXPECT_NEAR(shell->getCurvatureRate()[2], 0.0, 1e-14);
    const double z0 = 0.05 * 0.774596669241483;
    EXPECT_NEAR(shell->getStrains()[0][0], -z0 * kappa * dt, 1e-16); // upper fibre shortens
    EXPECT_NEAR(shell->getStrains()[1][0], 0.0, 1e-16);
    EXPECT_NEAR(shell->getStrains()[2][0], z0 * kappa * dt, 1e-16);
    EXPECT_DOUBLE_EQ(shell->getStrains()[0][0], -shell->getStrains()[2][0]);

    // Bending about x: thx' = kappa y gives kyy; a twist w = c x y gives kxy = 2c.
    const double c = -0.2;
    for (auto& n : nodes)
        setVelocity(*n, {0, 0, 0}, {kappa * n->getY_pos() + c * n->getX_pos(), -c * n->getY_pos(), 0});
    step(*shell, dt, false);
    EXPECT_NEAR(shell->getCurvatureRate()[0], 0.0, 1e-14);
    EXPECT_NEAR(shell->getCurvatureRate()[1], kappa, 1e-14);
    EXPECT_NEAR(shell->getCurvatureRate()[2], 2.0 * c, 1e-14);
    EXPECT_NEAR(shell->getStrains()[2][1], z0 * kappa * dt, 1e-16);
    EXPECT_NEAR(shell->getStrains()[0][3], -z0 * 2.0 * c * dt, 1e-16);
}

TEST_F(ShellTest, UniformRotationRatesWithoutDeflectionAreTransverseShear) {
    addNode(1, {0, 0, 0});
    addNode(2, {1.5, 0, 0});
    addNode(3, {0.4, 1.1, 0});
    auto shell = make("NODES 1 2 3 MATERIAL STEEL T 0.1");
    shell->setInitialConditions();
    const double c = 0.7;
    for (auto& n : nodes)
        setVelocity(*n, {0, 0, 0}, {0, c, 0});
    step(*shell, 1.0, false);
    EXPECT_NEAR(shell->getShearStrainRate()[0], c, 1e-14); // gxz = dw/dx + thy
    EXPECT_NEAR(shell->getShearStrainRate()[1], 0.0, 1e-14);
    for (int r = 0; r < 3; ++r)
        EXPECT_NEAR(shell->getCurvatureRate()[r], 0.0, 1e-14);
    for (int ip = 0; ip < 3; ++ip)
        EXPECT_NEAR(shell->getStrains()[ip][4], c, 1e-14);

    for (auto& n : nodes)
        setVelocity(*n, {0, 0, 0}, {c, 0, 0});
    step(*shell, 1.0, false);
    EXPECT_NEAR(shell->getShearStrainRate()[0], 0.0, 1e-14);
    EXPECT_NEAR(shell->getShearStrainRate()[1], -c, 1e-14); // gyz = dw/dy - thx
}

// A right triangle bent about y at a curvature kappa (w = kappa x^2 / 2, no
// transverse shear): the node moments are those of the plate stiffness
// D = E t^3 / (12 (1 - nu^2)) on the triangle's edges.
TEST_F(ShellTest, PlateBendingMomentMatchesTheBendingStiffness) {
    const double L = 2.0, t = 0.1, E = 210000.0, nu = 0.3, kappa = 0.3, dt = 1e-3;
    const double D = E * t * t * t / (12.0 * (1.0 - nu * nu));
    addNode(1, {0, 0, 0});
    addNode(2, {L, 0, 0});
    addNode(3, {0, L, 0});
    for (int nip : {2, 3, 4, 5}) {
        auto shell = make("NODES 1 2 3 MATERIAL STEEL T 0.1 NIP " + std::to_string(nip));
        shell->setInitialConditions();
        prepareNodes();
        for (auto& n : nodes) {
            const double x = n->getX_pos();
            setVelocity(*n, {0, 0, 0.5 * kappa * x * x}, {0, -kappa * x, 0});
        }
        step(*shell, dt);
        EXPECT_NEAR(shell->getShearStrainRate()[0], 0.0, 1e-14);
        EXPECT_NEAR(shell->getShearStrainRate()[1], 0.0, 1e-14);
        const double m = D * kappa * dt * L / 2.0, tol = nip == 5 ? 2e-5 * m : 1e-10 * m;
        const Resultant r1 = readResultant(*nodes[0]), r2 = readResultant(*nodes[1]),
                        r3 = readResultant(*nodes[2]);
        // The bent node 2 is turned back (+y), node 1 the other way; Poisson's
        // ratio adds the moments about x that hold the strip flat across.
        EXPECT_NEAR(r2.moment.y, m, tol) << nip;
        EXPECT_NEAR(r1.moment.y, -m, tol) << nip;
        EXPECT_NEAR(r3.moment.y, 0.0, tol) << nip;
        EXPECT_NEAR(r1.moment.x, nu * m, tol) << nip;
        EXPECT_NEAR(r2.moment.x, 0.0, tol) << nip;
        EXPECT_NEAR(r3.moment.x, -nu * m, tol) << nip;
        for (const auto* r : {&r1, &r2, &r3}) {
            EXPECT_NEAR(r->force.z, 0.0, 1e-6 * m) << nip;
            EXPECT_NEAR(r->moment.z, 0.0, 1e-12) << nip;
        }
        for (auto& n : nodes)
            n->clearNodalForces();
    }
}

TEST_F(TiltedShellTest, NodalForcesAndMomentsAreSelfEquilibrated) {
    for (const std::string nip : {"3", "5", "2"}) {
        auto shell = make("NODES 1 2 3 MATERIAL FIXED T 0.25 NIP " + nip);
        shell->setInitialConditions();
        prepareNodes();
        setVelocity(*nodes[0], {0.1, 0.2, -0.3}, {1.0, 0.5, -0.2});
        setVelocity(*nodes[1], {-0.4, 0.0, 0.6}, {0.0, -0.8, 0.3});
        setVelocity(*nodes[2], {0.2, -0.5, 0.1}, {0.4, 0.2, 0.9});
        std::vector<Vec3> at;
        for (auto& n : nodes)
            at.push_back(position(*n));
        step(*shell, 1e-3);
        Vec3 sumF{0, 0, 0}, momentA{0, 0, 0}, momentB{0, 0, 0};
        const Vec3 a{0, 0, 0}, b{3.0, -2.0, 5.0};
        double scale = 0.0;
        for (int i = 0; i < 3; ++i) {
            const Resultant r = readResultant(*nodes[i]);
            sumF = sumF + r.force;
            momentA = momentA + r.moment + cross(at[i] - a, r.force);
            momentB = momentB + r.moment + cross(at[i] - b, r.force);
            scale = std::max(scale, norm(r.force) + norm(r.moment));
        }
        ASSERT_GT(scale, 0.1);
        EXPECT_LT(norm(sumF), 1e-13 * scale) << nip;
        EXPECT_LT(norm(momentA), 1e-13 * scale) << nip;
        EXPECT_LT(norm(momentB), 1e-12 * scale) << nip;
        for (auto& n : nodes)
            n->clearNodalForces();
    }
}

// The power of the nodal loads on the nodal velocities equals minus the stress
// power sum(k sigma . de/dt) over the points: forces, moments and the balancing
// out-of-plane forces are work-conjugate to the strain rates, each stress to
// its own strain component.
TEST_F(TiltedShellTest, NodalLoadsAreWorkConjugateToTheStrainRates) {
    for (const std::string nip : {"3", "4"}) {
        auto shell = make("NODES 1 2 3 MATERIAL FIXED T 0.25 NIP " + nip);
        shell->setInitialConditions();
        prepareNodes();
        const Vec3 v[3] = {{0.1, 0.2, -0.3}, {-0.4, 0.0, 0.6}, {0.2, -0.5, 0.1}};
        const Vec3 w[3] = {{1.0, 0.5, -0.2}, {0.0, -0.8, 0.3}, {0.4, 0.2, 0.9}};
        for (int i = 0; i < 3; ++i)
            setVelocity(*nodes[i], v[i], w[i]);
        const double dt = 1e-3;
        step(*shell, dt);
        double stressPower = 0.0, scale = 0.0;
        for (int ip = 0; ip < shell->getNumberOfIntegrationPoints(); ++ip) {
            const double k = shell->getArea() * 0.5 * 0.25 * shell->getIntegrationPointWeights()[ip];
            for (int c = 0; c < 6; ++c) {
                const double term = k * shell->getStresses()[ip][c] * shell->getStrains()[ip][c] / dt;
                stressPower += term;
                scale += std::fabs(term);
            }
        }
        double nodalPower = 0.0;
        for (int i = 0; i < 3; ++i) {
            const Resultant r = readResultant(*nodes[i]);
            nodalPower += dot(r.force, v[i]) + dot(r.moment, w[i]);
        }
        ASSERT_GT(scale, 0.1);
        EXPECT_NEAR(nodalPower, -stressPower, 1e-12 * scale) << nip;
        for (auto& n : nodes)
            n->clearNodalForces();
    }
}

TEST_F(TiltedShellTest, OnePointShellCarriesNoResultant) {
    auto shell = make("NODES 1 2 3 MATERIAL FIXED T 0.25 NIP 1");
    shell->setInitialConditions();
    prepareNodes();
    step(*shell, 1e-3);
    EXPECT_NE(shell->getStresses()[0][0], 0.0);
    for (auto& n : nodes) {
        const Resultant r = readResultant(*n);
        EXPECT_EQ(norm(r.force), 0.0);
        EXPECT_EQ(norm(r.moment), 0.0);
    }
}

TEST_F(TiltedShellTest, MassInertiaDampingAndStableStep) {
    auto shell = make("NODES 1 2 3 MATERIAL STEEL T 0.3");
    shell->assembleMassMatrix();
    const Vec3 p1{0.3, -0.2, 0.1}, p2{1.4, 0.25, 0.5}, p3{0.1, 0.9, 0.7};
    const double A = 0.5 * norm(cross(p2 - p1, p3 - p1));
    EXPECT_NEAR(shell->getArea(), A, 1e-15);
    const double m = 7.8e-9 * A, I = m / 3.0 * (0.09 / 12.0 + A / 12.0);
    for (auto& n : nodes) {
        EXPECT_NEAR(n->getMass(), m / 3.0, 1e-14 * m);
        EXPECT_DOUBLE_EQ(n->getRayleighDamping(), 12.5);
        EXPECT_NEAR(n->getInertia()[0][0], I, 1e-14 * I);
        EXPECT_NEAR(n->getInertia()[2][2], I, 1e-14 * I);
        EXPECT_EQ(n->getInertia()[0][1], 0.0);
    }
    shell->setInitialConditions();
    const double lmax = std::max({norm(p2 - p1), norm(p3 - p2), norm(p1 - p3)});
    const double c = std::sqrt(210000.0 / (0.91 * 7.8e-9));
    const double expected = 0.1 * 2.0 * A / lmax / c;
    EXPECT_NEAR(shell->checkTimestep(1.0), expected, 1e-12 * expected);
    EXPECT_EQ(shell->checkTimestep(expected / 2), expected / 2);
}

TEST_F(ShellTest, EquilateralTriangleStepIsATenthOfItsAltitude) {
    const double s = 3.0;
    addNode(1, {0, 0, 0});
    addNode(2, {s, 0, 0});
    addNode(3, {0.5 * s, 0.5 * std::sqrt(3.0) * s, 0});
    auto shell = make("NODES 1 2 3 MATERIAL STEEL");
    shell->assembleMassMatrix();
    shell->setInitialConditions();
    const double c = std::sqrt(210000.0 / (0.91 * 7.8e-9));
    EXPECT_NEAR(shell->checkTimestep(1e15), 0.1 * std::sqrt(3.0) / 2.0 * s / c, 1e-20);
}

TEST_F(TiltedShellTest, PressureIsSharedInThirdsAlongTheNormal) {
    auto shell = make("NODES 1 2 3 MATERIAL STEEL T 0.3 LOAD PRESS");
    shell->setInitialConditions();
    shell->updateLocalCoordinateSystem();
    shell->computeStrain(1e-3, 0);
    shell->computeExternalForces(0.0);
    const Vec3 p1{0.3, -0.2, 0.1}, p2{1.4, 0.25, 0.5}, p3{0.1, 0.9, 0.7};
    const Vec3 n = cross(p2 - p1, p3 - p1);
    const double A = 0.5 * norm(n);
    const Vec3 expected = (2.5 * A / 3.0 / norm(n)) * n;
    for (auto& node : nodes) {
        EXPECT_NEAR(node->getXForce(), expected.x, 1e-14);
        EXPECT_NEAR(node->getYForce(), expected.y, 1e-14);
        EXPECT_NEAR(node->getZForce(), expected.z, 1e-14);
    }
    auto unloaded = make("NODES 1 2 3 MATERIAL STEEL T 0.3");
    for (auto& node : nodes)
        node->clearNodalForces();
    unloaded->setInitialConditions();
    unloaded->computeExternalForces(0.0);
    unloaded->computeContactForces();
    for (auto& node : nodes)
        EXPECT_EQ(node->getZForce(), 0.0);
}

TEST_F(TiltedShellTest, AssemblyAndStrainFailuresNameTheElement) {
    materials.push_back(std::make_shared<StubElastic>("VOID", 1.0, 0.3, 0.0));
    auto light = make("NODES 1 2 3 MATERIAL VOID T 0.1", 12);
    try {
        light->assembleMassMatrix();
        FAIL();
    } catch (const std::invalid_argument& e) {
        EXPECT_STREQ(e.what(), "Error in C0 element 12. Element mass is zero or negative");
    }

    addNode(5, {0, 0, 0});
    addNode(6, {1, 2, 3});
    addNode(7, {2, 4, 6});
    addNode(8, {0, 1, 0});
    auto flat = make("NODES 5 6 7 MATERIAL STEEL T 0.1", 13);
    try {
        flat->assembleMassMatrix();
        FAIL();
    } catch (const std::invalid_argument& e) {
        EXPECT_STREQ(e.what(), "Error in C0 element 13. Element mass is zero or negative");
    }

    auto noMaterial = make("NODES 1 2 3 T 0.1", 14);
    EXPECT_THROW(noMaterial->assembleMassMatrix(), std::invalid_argument);

    auto shell = make("NODES 5 6 8 MATERIAL STEEL T 0.1", 5);
    shell->setInitialConditions();
    // Node 8 moved onto the line of nodes 5 and 6: the frame is not finite.
    nodeMap[8]->setXPositionOrigin(3.0);
    nodeMap[8]->setYPositionOrigin(6.0);
    nodeMap[8]->setZPositionOrigin(9.0);
    shell->updateLocalCoordinateSystem();
    try {
        shell->computeStrain(0.001, 0);
        FAIL();
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "Error in C0 element 5, det(Jacobian) is +inf or NaN. Timestep = 0.001000");
    }
    // Node 3 mirrored across edge 1-2 in a frame that was not updated.
    auto turned = make("NODES 1 2 3 MATERIAL STEEL T 0.1", 6);
    turned->setInitialConditions();
    const auto& B = turned->getLocalBasis();
    const Vec3 e1{B[0][0], B[0][1], B[0][2]}, e2{B[1][0], B[1][1], B[1][2]};
    const Vec3 p1 = position(*nodes[0]), r3 = position(*nodes[2]) - p1;
    const Vec3 mirrored = p1 + dot(r3, e1) * e1 + (-dot(r3, e2)) * e2;
    nodes[2]->setXPositionOrigin(mirrored.x);
    nodes[2]->setYPositionOrigin(mirrored.y);
    nodes[2]->setZPositionOrigin(mirrored.z);
    try {
        turned->computeStrain(0.5, 0);
        FAIL();
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(),
                     "Error in C0 element 6, det(Jacobian) is zero or negative. Timestep = 0.500000");
    }
    EXPECT_THROW(turned->computeStress(0.5, 3), std::out_of_range);
}

TEST_F(ShellTest, ElementWithoutNodesFailsOutOfRange) {
    S3L_C0 shell;
    EXPECT_THROW(shell.updateLocalCoordinateSystem(), std::out_of_range);
    EXPECT_EQ(shell.printVTK(100, 0), "0.0");
}

} // namespace
