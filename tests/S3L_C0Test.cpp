// The three-node shell alone: deck keywords and messages, the thickness
// integration table, rigid-motion and closed-form kinematics, the bending
// moment of a plate, equilibrium and work-conjugacy of the nodal loads, mass,
// stable step and pressure.
#include "S3L_C0.h"
#include "ContactFixtures.h"
#include "ContactLine.h"
#include "ContactTriangle.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

using contact_test::messageOf;

namespace {

constexpr double E = 210000.0, NU = 0.3, RHO = 7.8e-9;

// Incremental plane-stress law with the 5/6 transverse shear correction; with
// `fixed` set it writes a prescribed stress that changes from call to call.
class StubMaterial : public Material {
public:
    StubMaterial(const std::string& n, double rho, bool fixedStress) : fixed(fixedStress) {
        name = n;
        youngsModulus = E;
        nu = NU;
        density = rho;
        alpha = 12.5;
    }
    void parseOstrel(std::vector<Token>) override {}
    void setInitialConditions(const double (&)[3][3]) override {}
    double wavespeed1D() override { return std::sqrt(E / density); }
    double wavespeed2D() override { return std::sqrt(E / ((1.0 - NU * NU) * density)); }
    void computeStress1D(double&, double&, double&) override {}
    void computeStress2D(const double (&)[2][2], double (&de)[6], double (&s)[6],
                         const double (&)[3][3]) override {
        if (fixed) {
            const double base[6] = {3.0, -1.5, 0.0, 0.8, 2.2, -0.7};
            for (int k = 0; k < 6; ++k)
                s[k] = base[k] * (1.0 + 0.37 * calls);
            ++calls;
            return;
        }
        const double k = E / (1.0 - NU * NU), G = 0.5 * E / (1.0 + NU);
        s[0] += k * (de[0] + NU * de[1]);
        s[1] += k * (NU * de[0] + de[1]);
        s[2] = 0.0;
        s[3] += G * de[3];
        s[4] += 5.0 / 6.0 * G * de[4];
        s[5] += 5.0 / 6.0 * G * de[5];
    }
    std::shared_ptr<Material> copyMat() override { return std::make_shared<StubMaterial>(*this); }

private:
    bool fixed;
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
        materials = {std::make_shared<StubMaterial>("STEEL", RHO, false),
                     std::make_shared<StubMaterial>("FIXED", 1.0, true),
                     std::make_shared<StubMaterial>("VOID", 0.0, false)};
        auto pressure = std::make_shared<Load>();
        std::string name = "PRESS";
        pressure->setName(name);
        pressure->parseOstrel({Token("P"), Token("2.5")}, {});
        loads.push_back(pressure);
    }
    // A triangle tilted out of every coordinate plane.
    void tilted() {
        addNode(1, {0.3, -0.2, 0.1});
        addNode(2, {1.4, 0.25, 0.5});
        addNode(3, {0.1, 0.9, 0.7});
    }
    void addNode(int n, Vec3 p) {
        auto node = std::make_shared<Node>();
        node->setNumber(n);
        setPosition(*node, p);
        nodes.push_back(node);
        nodeMap[n] = node;
    }
    static void setPosition(Node& n, Vec3 p) {
        n.setXPositionOrigin(p.x);
        n.setYPositionOrigin(p.y);
        n.setZPositionOrigin(p.z);
    }
    std::shared_ptr<S3L_C0> make(const std::string& line, int number = 1) {
        auto shell = std::make_shared<S3L_C0>();
        shell->setNumber(number);
        shell->parseOstrel(contact_test::tokens(line), nodes, nodeMap, materials, loads);
        return shell;
    }
    // Unit mass and rotational inertia, nothing prescribed: a node update then
    // turns the nodal resultant into the accelerations.
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
    // One element pass of the solution loop.
    static void step(S3L_C0& shell, double dt, bool forces = true) {
        shell.updateLocalCoordinateSystem();
        for (int ip = 0; ip < shell.getNumberOfIntegrationPoints(); ++ip) {
            shell.computeStrain(dt, ip);
            shell.computeStress(dt, ip);
        }
        for (int ip = 0; forces && ip < shell.getNumberOfIntegrationPoints(); ++ip)
            shell.computeInternalForces(dt, ip);
    }

    std::vector<std::shared_ptr<Node>> nodes;
    std::unordered_map<int, std::shared_ptr<Node>> nodeMap;
    std::vector<std::shared_ptr<Material>> materials;
    std::vector<std::shared_ptr<Load>> loads;
};

TEST_F(ShellTest, DeckLineKeywordsMessagesAndContactObjects) {
    tilted();
    const struct {
        const char *line, *message;
    } cases[] = {{"NODES 1 X 3 MATERIAL STEEL", "Not enough nodes inputs for Element S3L_C0"},
                 {"NODES 1 2 7", "Node 7 is not found"},
                 {"NODES 1 2 3 MATERIAL WOOD", "Material name WOOD is not found"},
                 {"NODES 1 2 3 LOAD WIND MATERIAL STEEL", "Material name WIND is not found"},
                 {"NODES 1 2 3 MATERIAL STEEL LOAD WIND", "Load name WIND is not found"},
                 {"NODES 1 2 3 CONTACT SOLID", "Invalid CONTACT type"},
                 {"NODES 1 2 3 COLOUR RED", "Input COLOUR is not recognized"},
                 {"NODES 1 2 3 T THICK", "Input T is not recognized"},
                 {"NODES 1 2 3 MATERIAL 4", "Input MATERIAL is not recognized"},
                 {"NODES 1 2 3 2.5", "Input  is not recognized"},
                 {"NODES 1 2 3 NIP 1e6", "Error in C0 element 1. NIP 1e+06 is out of range"}};
    for (const auto& c : cases)
        EXPECT_EQ(messageOf<std::invalid_argument>([&] { make(c.line); }), c.message) << c.line;
    EXPECT_THROW(make("NODES 1 2"), std::out_of_range);

    auto shell = make("T 0.4 LOAD PRESS NIP 5.9 MATERIAL STEEL NODES 3 1 2");
    EXPECT_DOUBLE_EQ(shell->getThickness(), 0.4);
    EXPECT_EQ(shell->getNumberOfIntegrationPoints(), 5);
    EXPECT_EQ(shell->getLoad(), loads[0]);
    EXPECT_EQ(shell->printVTK(0, 0), "5\n");
    EXPECT_EQ(shell->printVTK(1, 0), "3\t3\t1\t2\n");
    EXPECT_EQ(shell->printVTK(200, 0), "0.0");
    EXPECT_EQ(shell->getContactTriangle(), nullptr);

    auto basic = make("NODES 1 2 3 MATERIAL STEEL T 0.2 CONTACT BASIC FACTOR 50");
    ASSERT_NE(basic->getContactTriangle(), nullptr);
    EXPECT_EQ(basic->getContactTriangle()->getNumber(), -1);
    EXPECT_EQ(basic->getContactLine(1), nullptr);
    EXPECT_DOUBLE_EQ(basic->getContactTriangle()->getThickness(), 0.2);
    EXPECT_DOUBLE_EQ(basic->getContactTriangle()->getFactor(), 50.0);
    auto edge = make("NODES 1 2 3 MATERIAL STEEL T 0.2 CONTACT EDGE FRICTION 0.1 FACTOR 7");
    EXPECT_EQ(edge->getContactType(), 302);
    ASSERT_NE(edge->getContactTriangle(), nullptr);
    EXPECT_DOUBLE_EQ(edge->getContactTriangle()->getFriction(), 0.1);
    const int ends[4][2] = {{0, 0}, {1, 2}, {2, 3}, {3, 1}};
    for (int i = 1; i <= 3; ++i) {
        const auto line = edge->getContactLine(i);
        ASSERT_NE(line, nullptr);
        EXPECT_EQ(line->getNumber(), -i);
        EXPECT_EQ(line->getNode(0)->getNumber(), ends[i][0]);
        EXPECT_EQ(line->getNode(1)->getNumber(), ends[i][1]);
        EXPECT_DOUBLE_EQ(line->getRadius(), 0.1); // half the thickness
        EXPECT_DOUBLE_EQ(line->getFactor(), 7.0);
    }
    // The thickness reaches the contact objects as six-decimal text.
    auto thin = make("NODES 1 2 3 MATERIAL STEEL T 0.0000008 CONTACT EDGE");
    EXPECT_EQ(thin->getContactTriangle()->getThickness(), 0.000001);
    EXPECT_EQ(thin->getContactLine(1)->getRadius(), 0.0);
}

TEST_F(ShellTest, IntegrationTableFollowsNip) {
    tilted();
    const double h = 0.2; // half of T 0.4
    auto table = [&](const std::string& nip) {
        auto s = make("NODES 1 2 3 MATERIAL STEEL T 0.4" + nip);
        s->setInitialConditions();
        return s;
    };
    auto def = table("");
    ASSERT_EQ(def->getPoints().size(), 3u);
    EXPECT_DOUBLE_EQ(def->getPoints()[0].z, h * 0.774596669241483);
    EXPECT_DOUBLE_EQ(def->getPoints()[2].z, -h * 0.774596669241483);
    EXPECT_DOUBLE_EQ(def->getPoints()[0].weight, 5.0 / 9.0);
    EXPECT_DOUBLE_EQ(def->getPoints()[1].weight, 8.0 / 9.0);
    auto five = table(" NIP 5");
    const double xi5[5] = {0.90618, 0.538469, 0.0, -0.538469, -0.90618};
    const double w5[5] = {0.236927, 0.478629, 0.568889, 0.478629, 0.236927};
    for (int i = 0; i < 5; ++i) {
        EXPECT_DOUBLE_EQ(five->getPoints()[i].z, h * xi5[i]);
        EXPECT_DOUBLE_EQ(five->getPoints()[i].weight, w5[i]);
    }
    auto one = table(" NIP 1");
    EXPECT_EQ(one->getPoints()[0].weight, 0.0);
    auto six = table(" NIP 6"); // not tabulated: the zero-filled table stays
    ASSERT_EQ(six->getPoints().size(), 6u);
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(six->getPoints()[i].weight, 0.0);
}

TEST_F(ShellTest, RigidMotionGivesNoStrainAtAnyPoint) {
    tilted();
    auto shell = make("NODES 1 2 3 MATERIAL STEEL T 0.3");
    shell->setInitialConditions();
    const Vec3 v0{0.7, -1.1, 0.4}, omega{2.0, -3.0, 1.5}, centre{0.5, 0.5, -0.2};
    for (auto& n : nodes)
        setVelocity(*n, v0 + cross(omega, position(*n) - centre), omega);
    step(*shell, 1e-3, false);
    for (int ip = 0; ip < 3; ++ip)
        for (int k = 0; k < 6; ++k)
            EXPECT_NEAR(shell->getPoints()[ip].strainIncrement[k], 0.0, 1e-15) << ip << " " << k;
}

TEST_F(ShellTest, InPlaneStretchGivesThePlaneStressOfTheElasticLaw) {
    tilted();
    auto shell = make("NODES 1 2 3 MATERIAL STEEL T 0.3");
    shell->setInitialConditions();
    const auto& B = shell->getLocalBasis();
    const Vec3 e1{B[0][0], B[0][1], B[0][2]}, e2{B[1][0], B[1][1], B[1][2]}, o = position(*nodes[0]);
    const double a = 0.02, b = -0.005, g = 0.01, dt = 0.5; // stretch rates along e1, e2; shear rate
    for (auto& n : nodes) {
        const double x = dot(position(*n) - o, e1), y = dot(position(*n) - o, e2);
        setVelocity(*n, (a * x + g * y) * e1 + (b * y) * e2, {0, 0, 0});
    }
    step(*shell, dt, false);
    const double k = E / (1 - NU * NU), s11 = k * (a + NU * b) * dt;
    for (int ip = 0; ip < 3; ++ip) {
        const auto& s = shell->getPoints()[ip].stress;
        EXPECT_NEAR(s[0], s11, 1e-9 * s11) << ip;
        EXPECT_NEAR(s[1], k * (NU * a + b) * dt, 1e-9 * s11) << ip;
        EXPECT_NEAR(s[3], E / (2 * (1 + NU)) * g * dt, 1e-9 * s11) << ip;
        EXPECT_NEAR(s[4], 0.0, 1e-9);
        EXPECT_NEAR(s[5], 0.0, 1e-9);
    }
    EXPECT_EQ(shell->printVTK(100, 0), "0.010000"); // accumulated a dt at the first point
    EXPECT_EQ(shell->printVTK(200, 2), "0.0");
}

TEST_F(ShellTest, RotationRateFieldsGiveCurvatureShearAndStrainLinearInZ) {
    addNode(1, {0, 0, 0});
    addNode(2, {2, 0, 0});
    addNode(3, {0.6, 1.7, 0});
    auto shell = make("NODES 1 2 3 MATERIAL STEEL T 0.1");
    shell->setInitialConditions();
    const double kappa = 0.3, c = -0.2, dt = 0.01, z0 = 0.05 * 0.774596669241483;
    // thy' = -kappa x bends about y (w'' = kappa): the upper fibre shortens.
    for (auto& n : nodes)
        setVelocity(*n, {0, 0, 0}, {0, -kappa * n->getX_pos(), 0});
    step(*shell, dt, false);
    EXPECT_NEAR(shell->getCurvatureRate()[0], kappa, 1e-14);
    EXPECT_NEAR(shell->getCurvatureRate()[1], 0.0, 1e-14);
    EXPECT_NEAR(shell->getPoints()[0].strainIncrement[0], -z0 * kappa * dt, 1e-16);
    EXPECT_NEAR(shell->getPoints()[1].strainIncrement[0], 0.0, 1e-16);
    EXPECT_DOUBLE_EQ(shell->getPoints()[2].strainIncrement[0], -shell->getPoints()[0].strainIncrement[0]);
    // thx' = kappa y bends about x; the twist w = c x y has kxy = 2c.
    for (auto& n : nodes)
        setVelocity(*n, {0, 0, 0}, {kappa * n->getY_pos() + c * n->getX_pos(), -c * n->getY_pos(), 0});
    step(*shell, dt, false);
    EXPECT_NEAR(shell->getCurvatureRate()[1], kappa, 1e-14);
    EXPECT_NEAR(shell->getCurvatureRate()[2], 2.0 * c, 1e-14);
    EXPECT_NEAR(shell->getPoints()[2].strainIncrement[3], z0 * 2.0 * c * dt, 1e-16);
    // Uniform rotation rates without deflection are transverse shear:
    // gxz = dw/dx + thy, gyz = dw/dy - thx.
    for (auto& n : nodes)
        setVelocity(*n, {0, 0, 0}, {0.5, 0.7, 0});
    step(*shell, dt, false);
    EXPECT_NEAR(shell->getShearStrainRate()[0], 0.7, 1e-14);
    EXPECT_NEAR(shell->getShearStrainRate()[1], -0.5, 1e-14);
    EXPECT_NEAR(shell->getCurvatureRate()[0], 0.0, 1e-14);
}

// A right triangle bent about y (w = kappa x^2 / 2, no transverse shear): node
// 2 is turned back by D kappa dt L / 2 with D = E t^3 / (12 (1 - nu^2)), and
// Poisson's ratio adds the moments about x that keep it flat across.
TEST_F(ShellTest, PlateBendingMomentMatchesTheBendingStiffness) {
    const double L = 2.0, t = 0.1, kappa = 0.3, dt = 1e-3;
    const double m = E * t * t * t / (12.0 * (1.0 - NU * NU)) * kappa * dt * L / 2.0;
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
        const double tol = nip == 5 ? 2e-5 * m : 1e-10 * m; // five-point table has six digits
        const Resultant r1 = readResultant(*nodes[0]), r2 = readResultant(*nodes[1]),
                        r3 = readResultant(*nodes[2]);
        EXPECT_NEAR(r2.moment.y, m, tol) << nip;
        EXPECT_NEAR(r1.moment.y, -m, tol) << nip;
        EXPECT_NEAR(r3.moment.y, 0.0, tol) << nip;
        EXPECT_NEAR(r1.moment.x, NU * m, tol) << nip;
        EXPECT_NEAR(r3.moment.x, -NU * m, tol) << nip;
        EXPECT_NEAR(r2.force.z, 0.0, 1e-6 * m) << nip;
        for (auto& n : nodes)
            n->clearNodalForces();
    }
}

// Any stress: the nodal loads sum to zero, balance in moment about any point,
// and their power on the nodal velocities is minus the stress power
// sum(k sigma . de/dt), each stress working on its own strain component.
TEST_F(ShellTest, NodalLoadsAreEquilibratedAndWorkConjugateToTheStrains) {
    tilted();
    const Vec3 v[3] = {{0.1, 0.2, -0.3}, {-0.4, 0.0, 0.6}, {0.2, -0.5, 0.1}};
    const Vec3 w[3] = {{1.0, 0.5, -0.2}, {0.0, -0.8, 0.3}, {0.4, 0.2, 0.9}};
    for (const std::string nip : {"2", "3", "5", "1"}) {
        auto shell = make("NODES 1 2 3 MATERIAL FIXED T 0.25 NIP " + nip);
        shell->setInitialConditions();
        prepareNodes();
        for (int i = 0; i < 3; ++i)
            setVelocity(*nodes[i], v[i], w[i]);
        const double dt = 1e-3;
        step(*shell, dt);
        double stressPower = 0.0, scale = 0.0;
        for (int ip = 0; ip < shell->getNumberOfIntegrationPoints(); ++ip) {
            const double k = shell->getArea() * 0.5 * 0.25 * shell->getPoints()[ip].weight;
            for (int c = 0; c < 6; ++c)
                stressPower +=
                    k * shell->getPoints()[ip].stress[c] * shell->getPoints()[ip].strainIncrement[c] / dt;
        }
        Vec3 sumF{0, 0, 0}, momentO{0, 0, 0}, momentP{0, 0, 0};
        double nodalPower = 0.0;
        for (int i = 0; i < 3; ++i) {
            const Vec3 at = position(*nodes[i]);
            const Resultant r = readResultant(*nodes[i]);
            sumF = sumF + r.force;
            momentO = momentO + r.moment + cross(at, r.force);
            momentP = momentP + r.moment + cross(at - Vec3{3.0, -2.0, 5.0}, r.force);
            nodalPower += dot(r.force, v[i]) + dot(r.moment, w[i]);
            scale += norm(r.force) + norm(r.moment);
        }
        if (nip == "1") { // the single point has weight 0: no resultant at all
            EXPECT_EQ(scale, 0.0);
            continue;
        }
        ASSERT_GT(scale, 0.1);
        EXPECT_LT(norm(sumF), 1e-13 * scale) << nip;
        EXPECT_LT(norm(momentO), 1e-13 * scale) << nip;
        EXPECT_LT(norm(momentP), 1e-12 * scale) << nip;
        EXPECT_NEAR(nodalPower, -stressPower, 1e-12 * scale) << nip;
        for (auto& n : nodes)
            n->clearNodalForces();
    }
}

TEST_F(ShellTest, MassStableStepAndPressure) {
    tilted();
    auto shell = make("NODES 1 2 3 MATERIAL STEEL T 0.3 LOAD PRESS");
    shell->assembleMassMatrix();
    const Vec3 p1 = position(*nodes[0]), p2 = position(*nodes[1]), p3 = position(*nodes[2]);
    const Vec3 n = cross(p2 - p1, p3 - p1);
    const double A = 0.5 * norm(n), m = RHO * A, I = m / 3.0 * (0.09 / 12.0 + A / 12.0);
    for (auto& node : nodes) {
        EXPECT_NEAR(node->getMass(), m / 3.0, 1e-14 * m);
        EXPECT_DOUBLE_EQ(node->getRayleighDamping(), 12.5);
        EXPECT_NEAR(node->getInertia()[1][1], I, 1e-14 * I);
        EXPECT_EQ(node->getInertia()[0][1], 0.0);
    }
    shell->setInitialConditions();
    const double lmax = std::max({norm(p2 - p1), norm(p3 - p2), norm(p1 - p3)});
    const double dtc = 0.1 * 2.0 * A / lmax / std::sqrt(E / ((1 - NU * NU) * RHO));
    EXPECT_NEAR(shell->checkTimestep(1.0), dtc, 1e-12 * dtc);
    EXPECT_EQ(shell->checkTimestep(dtc / 2), dtc / 2);

    shell->computeExternalForces(0.0); // p A / 3 along the unit normal
    const Vec3 share = (2.5 * A / 3.0 / norm(n)) * n;
    for (auto& node : nodes) {
        EXPECT_NEAR(node->getXForce(), share.x, 1e-14);
        EXPECT_NEAR(node->getZForce(), share.z, 1e-14);
    }
}

TEST_F(ShellTest, FailuresNameTheElement) {
    tilted();
    addNode(5, {0, 0, 0});
    addNode(6, {1, 2, 3});
    addNode(7, {2, 4, 6});
    auto message = [](const std::function<void()>& call) { return messageOf(call); };
    auto light = make("NODES 1 2 3 MATERIAL VOID T 0.1", 12);
    EXPECT_EQ(message([&] { light->assembleMassMatrix(); }),
              "Error in C0 element 12. Element mass is zero or negative");
    auto flat = make("NODES 5 6 7 MATERIAL STEEL T 0.1", 13);
    EXPECT_EQ(message([&] { flat->assembleMassMatrix(); }),
              "Error in C0 element 13. Element mass is zero or negative");
    auto bare = make("NODES 1 2 3 T 0.1", 14);
    EXPECT_EQ(message([&] { bare->assembleMassMatrix(); }), "Error in C0 element 14. Material is not set");

    addNode(8, {0, 1, 0});
    auto shell = make("NODES 5 6 8 MATERIAL STEEL T 0.1", 5);
    shell->setInitialConditions();
    setPosition(*nodeMap[8], {3, 6, 9}); // onto the line of nodes 5 and 6: no finite frame
    shell->updateLocalCoordinateSystem();
    EXPECT_EQ(message([&] { shell->computeStrain(0.001, 0); }),
              "Error in C0 element 5, det(Jacobian) is +inf or NaN. Timestep = 0.001000");

    // Node 3 mirrored across edge 1-2 while the frame is not updated: y3 < 0.
    auto turned = make("NODES 1 2 3 MATERIAL STEEL T 0.1", 6);
    turned->setInitialConditions();
    const auto& B = turned->getLocalBasis();
    const Vec3 e2{B[1][0], B[1][1], B[1][2]}, r3 = position(*nodes[2]) - position(*nodes[0]);
    setPosition(*nodes[2], position(*nodes[2]) + (-2.0 * dot(r3, e2)) * e2);
    EXPECT_EQ(message([&] { turned->computeStrain(0.5, 0); }),
              "Error in C0 element 6, det(Jacobian) is zero or negative. Timestep = 0.500000");
    EXPECT_THROW(turned->computeStress(0.5, 3), std::out_of_range);
}

} // namespace
