// The membrane alone, with a stub law of fixed stress: parsing, geometry,
// mass, stable step, force assembly, pressure, failures and output.
#include "Membrane3.h"
#include "ContactFixtures.h"
#include "ContactLine.h"
#include "ContactSearch.h"
#include "ContactTriangle.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

using contact_test::messageOf;
using contact_test::tokens;

namespace {

// Returns a fixed stress (s11, s22, s12) and thickness ratio whatever F is.
class StubLaw : public Material {
public:
    StubLaw(double rho = 1.0, double c = 1.0, double s11_ = 0, double s22_ = 0, double s12_ = 0,
            double ratio_ = 1)
        : speed(c), s11(s11_), s22(s22_), s12(s12_), ratio(ratio_) {
        std::string n = "STUB";
        setName(n);
        density = rho;
    }
    void parseOstrel(std::vector<Token>) override {}
    void setInitialConditions(const double (&)[3][3]) override { ++initialised; }
    double wavespeed1D() override { return speed; }
    double wavespeed2D() override { return speed; }
    void computeStress1D(double&, double&, double&) override {}
    void computeStress2D(const double (&)[2][2], double (&strain)[6], double (&stress)[6],
                         const double (&)[3][3]) override {
        stress[0] = s11;
        stress[1] = s22;
        stress[3] = s12;
        strain[2] = ratio;
    }
    std::shared_ptr<Material> copyMat() override { return std::make_shared<StubLaw>(*this); }
    void setAlpha(double a) { alpha = a; }

    double speed, s11, s22, s12, ratio;
    int initialised = 0;
};

struct Mesh {
    std::vector<std::shared_ptr<Node>> nodes;
    std::unordered_map<int, std::shared_ptr<Node>> byNumber;
    std::vector<std::shared_ptr<Material>> materials;
    std::vector<std::shared_ptr<Load>> loads;

    explicit Mesh(std::shared_ptr<Material> law = std::make_shared<StubLaw>()) { materials.push_back(law); }
    void node(int n, double x, double y, double z = 0.0) {
        auto p = std::make_shared<Node>();
        p->setNumber(n);
        p->setXPositionOrigin(x);
        p->setYPositionOrigin(y);
        p->setZPositionOrigin(z);
        nodes.push_back(p);
        byNumber[n] = p;
    }
    // Unit right triangle on nodes 1, 2, 3.
    static Mesh unitTriangle(std::shared_ptr<Material> law = std::make_shared<StubLaw>()) {
        Mesh m(law);
        m.node(1, 0, 0);
        m.node(2, 1, 0);
        m.node(3, 0, 1);
        return m;
    }
    void move(int n, double x, double y, double z) {
        byNumber.at(n)->setX_pos(x);
        byNumber.at(n)->setY_pos(y);
        byNumber.at(n)->setZ_pos(z);
    }
    std::shared_ptr<Membrane3> element(int number, const std::string& line) {
        auto e = std::make_shared<Membrane3>();
        e->setNumber(number);
        e->parseOstrel(tokens(line), nodes, byNumber, materials, loads);
        return e;
    }
};

// Set-up and one step of the element alone, without the node update.
void prepareAndStep(Membrane3& e, double dt = 1e-3) {
    e.assembleMassMatrix();
    e.setInitialConditions();
    e.updateLocalCoordinateSystem();
    e.computeStrain(dt, 0);
    e.computeStress(dt, 0);
    e.computeInternalForces(dt, 0);
}

} // namespace

TEST(Membrane3Parse, ReadsItsKeywordsInAnyOrder) {
    Mesh m;
    m.node(4, 0, 0);
    m.node(5, 1, 0);
    m.node(6, 0, 1);
    auto load = std::make_shared<Load>();
    std::string name = "PUSH";
    load->setName(name);
    m.loads.push_back(load);
    auto membrane = m.element(9, "T 0.25 LOAD PUSH NODES 4 5.9 6 MATERIAL STUB");
    EXPECT_DOUBLE_EQ(membrane->getThickness(), 0.25);
    EXPECT_EQ(membrane->getLoad(), load);
    EXPECT_EQ(membrane->printVTK(0, 0), "5\n");
    EXPECT_EQ(membrane->printVTK(1, 0), "3\t4\t5\t6\n");
    EXPECT_EQ(membrane->getContactTriangle(), nullptr);
}

TEST(Membrane3Parse, ReportsEachInputErrorWithItsMessage) {
    Mesh m = Mesh::unitTriangle();
    const struct {
        const char *line, *message;
    } cases[] = {{"NODES 1 2 X", "Not enough nodes inputs for Element Membrane3"},
                 {"NODES 1 7 3", "Node 7 is not found"},
                 {"NODES 1 2 1E30", "Node 1e+30 is not found"},
                 {"NODES NAN 2 3", "Node nan is not found"},
                 {"NODES 1 2 3 MATERIAL STEEL", "Material name STEEL is not found"},
                 {"NODES 1 2 3 CONTACT SIDE", "Invalid CONTACT type"},
                 {"NODES 1 2 3 T THICK", "Input T is not recognized"},
                 {"NODES 1 2 3 MATERIAL 4", "Input MATERIAL is not recognized"},
                 {"NODES 1 2 3 FACTOR HIGH", "Input FACTOR is not recognized"},
                 {"NODES 1 2 3 D 0.1", "Input D is not recognized"},
                 // An unknown load met before any material speaks of a material name.
                 {"NODES 1 2 3 LOAD WIND MATERIAL STUB", "Material name WIND is not found"},
                 {"NODES 1 2 3 MATERIAL STUB LOAD WIND", "Load name WIND is not found"}};
    for (const auto& c : cases)
        EXPECT_EQ(messageOf<std::invalid_argument>([&] { m.element(1, c.line); }), c.message) << c.line;
    // Too few node numbers at the end of the line: bounds-checked access.
    EXPECT_THROW(m.element(1, "MATERIAL STUB NODES 1 2"), std::out_of_range);
}

TEST(Membrane3Geometry, JacobianOfATiltedTriangle) {
    // Legs 3 (node 1 -> 2) and 4 (node 1 -> 3) tilted out of the xy plane:
    // J = [[3, 0], [0, 4]], det J = 2A = 12.
    Mesh m;
    const double s = std::sqrt(0.5);
    m.node(1, 1, 1, 1);
    m.node(2, 1 + 3 * s, 1, 1 + 3 * s);
    m.node(3, 1, 5, 1);
    auto e = m.element(1, "NODES 1 2 3 MATERIAL STUB");
    e->computeJacobian();
    EXPECT_NEAR(e->getArea(), 6.0, 1e-12);
    EXPECT_NEAR(e->getDetJacobian(), 12.0, 1e-12);
    EXPECT_NEAR(e->getJacobian()[0][0], 3.0, 1e-12);
    EXPECT_NEAR(e->getJacobian()[0][1], 0.0, 1e-12);
    EXPECT_EQ(e->getJacobian()[1][0], 0.0);
    EXPECT_NEAR(e->getJacobian()[1][1], 4.0, 1e-12);
    // Node 3 moved along the first edge: J01 = b.e1.
    m.move(3, 1 + 2 * s, 5, 1 + 2 * s);
    e->computeJacobian();
    EXPECT_NEAR(e->getJacobian()[0][1], 2.0, 1e-12);
    EXPECT_NEAR(e->getJacobian()[1][1], 4.0, 1e-12);
}

TEST(Membrane3Mass, LumpedMassesSumToDensityTimesAreaWithInertiaAndDamping) {
    auto law = std::make_shared<StubLaw>(7.5);
    law->setAlpha(0.3);
    Mesh m(law);
    m.node(1, 0, 0, 0);
    m.node(2, 2, 0, 1);
    m.node(3, 0.5, 3, -1);
    m.element(1, "NODES 1 2 3 MATERIAL STUB T 0.2")->assembleMassMatrix();
    // A = |a x b| / 2 with a = (2, 0, 1), b = (0.5, 3, -1); no thickness.
    const double A = 0.5 * std::sqrt(3.0 * 3.0 + 2.5 * 2.5 + 6.0 * 6.0);
    const double I = 7.5 * A / 3.0 * (0.2 * 0.2 / 12.0 + A / 12.0);
    double total = 0.0;
    for (auto& n : m.nodes) {
        total += n->getMass();
        EXPECT_DOUBLE_EQ(n->getRayleighDamping(), 0.3);
        EXPECT_NEAR(n->getInertia()[0][0], I, 1e-12);
        EXPECT_NEAR(n->getInertia()[2][2], I, 1e-12);
        EXPECT_EQ(n->getInertia()[0][1], 0.0);
    }
    EXPECT_NEAR(total, 7.5 * A, 1e-12);

    Mesh light = Mesh::unitTriangle(std::make_shared<StubLaw>(0.0));
    EXPECT_EQ(messageOf<std::invalid_argument>(
                  [&] { light.element(3, "NODES 1 2 3 MATERIAL STUB")->assembleMassMatrix(); }),
              "Error in Membrane element 3. Element mass is zero or negative");
    m.node(4, 4, 0, 2);
    EXPECT_EQ(messageOf<std::invalid_argument>(
                  [&] { m.element(8, "NODES 1 2 4 MATERIAL STUB")->assembleMassMatrix(); }),
              "Error in Membrane element 8. Element mass is zero or negative");
}

TEST(Membrane3Step, OneTenthOfTheSmallestAltitudeOverTheWaveSpeed) {
    // Equilateral triangle of side s: h = 0.1 (sqrt 3 / 2) s.
    const double side = 0.3, c = 40.0;
    Mesh m(std::make_shared<StubLaw>(1.0, c));
    m.node(1, 0, 0);
    m.node(2, side, 0);
    m.node(3, side / 2, side * std::sqrt(3.0) / 2);
    auto e = m.element(1, "NODES 1 2 3 MATERIAL STUB");
    prepareAndStep(*e);
    EXPECT_NEAR(e->checkTimestep(1.0), 0.1 * (std::sqrt(3.0) / 2.0) * side / c, 1e-15);
    EXPECT_EQ(e->checkTimestep(1e-9), 1e-9);
    // Right triangle 3-4-5: the altitude on the hypotenuse, 12/5.
    m.move(2, 3, 0, 0);
    m.move(3, 0, 4, 0);
    e->computeStrain(1e-3, 0);
    EXPECT_NEAR(e->checkTimestep(1.0), 0.1 * 2.4 / c, 1e-15);
}

TEST(Membrane3Forces, FixedStressGivesTheConstantStrainTriangleForces) {
    // Unit right triangle, t0 = 0.1, thickness ratio 0.8: k = A t = 0.04.
    // Uniaxial s11 = 10 pulls nodes 1 and 2 together with s11 k.
    Mesh m = Mesh::unitTriangle(std::make_shared<StubLaw>(1, 1, 10.0, 0.0, 0.0, 0.8));
    auto e = m.element(1, "NODES 1 2 3 MATERIAL STUB T 0.1");
    prepareAndStep(*e);
    EXPECT_DOUBLE_EQ(e->getInitialThickness(), 0.1);
    EXPECT_DOUBLE_EQ(e->getThickness(), 0.08);
    const double expected[3][3] = {{0.4, 0, 0}, {-0.4, 0, 0}, {0, 0, 0}};
    for (int a = 0; a < 3; ++a) {
        EXPECT_NEAR(m.nodes[a]->getXForce(), expected[a][0], 1e-12);
        EXPECT_NEAR(m.nodes[a]->getYForce(), expected[a][1], 1e-12);
        EXPECT_NEAR(m.nodes[a]->getZForce(), expected[a][2], 1e-12);
    }
    // Pure shear s12 = 4, ratio 1: node 2 is pulled along -y, node 3 along -x.
    Mesh shear = Mesh::unitTriangle(std::make_shared<StubLaw>(1, 1, 0.0, 0.0, 4.0, 1.0));
    prepareAndStep(*shear.element(1, "NODES 1 2 3 MATERIAL STUB T 0.1"));
    const double sheared[3][2] = {{0.2, 0.2}, {0, -0.2}, {-0.2, 0}};
    for (int a = 0; a < 3; ++a) {
        EXPECT_NEAR(shear.nodes[a]->getXForce(), sheared[a][0], 1e-12);
        EXPECT_NEAR(shear.nodes[a]->getYForce(), sheared[a][1], 1e-12);
    }
}

TEST(Membrane3Forces, InternalForcesAreSelfEquilibratedAndInPlane) {
    Mesh m(std::make_shared<StubLaw>(1, 1, 3.0, -1.5, 2.2, 0.9));
    m.node(1, 0.1, -0.2, 0.3);
    m.node(2, 1.7, 0.4, -0.5);
    m.node(3, 0.3, 1.9, 0.8);
    auto e = m.element(1, "NODES 1 2 3 MATERIAL STUB T 0.05");
    prepareAndStep(*e);
    const auto& b = e->getLocalBasis();
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
        EXPECT_NEAR(fx * b[2][0] + fy * b[2][1] + fz * b[2][2], 0.0, 1e-12);
    }
    for (int k = 0; k < 3; ++k) {
        EXPECT_NEAR(f[k], 0.0, 1e-12);
        EXPECT_NEAR(moment[k], 0.0, 1e-12);
    }
    EXPECT_GT(std::fabs(m.nodes[0]->getXForce()), 1e-3);
}

TEST(Membrane3Pressure, PressureForcesSumToPressureTimesAreaAlongTheNormal) {
    Mesh m;
    m.node(1, 0, 0, 0);
    m.node(2, 0, 2, 0);
    m.node(3, 0, 0, 3);
    auto load = std::make_shared<Load>();
    std::string name = "P1";
    load->setName(name);
    load->parseOstrel(tokens("P 0.5"), {});
    m.loads.push_back(load);
    auto e = m.element(1, "NODES 1 2 3 MATERIAL STUB LOAD P1");
    auto bare = m.element(2, "NODES 1 2 3 MATERIAL STUB");
    prepareAndStep(*e);
    prepareAndStep(*bare);
    for (auto& n : m.nodes)
        n->clearNodalForces();
    bare->computeExternalForces(0.0);
    for (auto& n : m.nodes)
        EXPECT_EQ(n->getXForce(), 0.0);
    // (x2 - x1) x (x3 - x1) = (0,2,0) x (0,0,3) = 6 along +x; area 3.
    e->computeExternalForces(0.0);
    for (auto& n : m.nodes) {
        EXPECT_NEAR(n->getXForce(), 0.5 * 3.0 / 3.0, 1e-12);
        EXPECT_NEAR(n->getYForce(), 0.0, 1e-12);
        EXPECT_NEAR(n->getZForce(), 0.0, 1e-12);
    }
}

TEST(Membrane3Strain, NanPositionStopsWithTheTimeStepInTheMessage) {
    Mesh m = Mesh::unitTriangle();
    auto e = m.element(12, "NODES 1 2 3 MATERIAL STUB");
    prepareAndStep(*e);
    m.move(3, NAN, 0, 0);
    EXPECT_EQ(messageOf<std::runtime_error>([&] { e->computeStrain(1e-7, 0); }),
              "Error in Membrane element 12, det(Jacobian) is +inf or NaN. Timestep = 0.000000");
    // Node order does not matter: a clockwise triangle has det J = 2A > 0.
    auto clockwise = m.element(13, "NODES 1 3 2 MATERIAL STUB");
    m.move(3, 0, 1, 0);
    prepareAndStep(*clockwise);
    EXPECT_NEAR(clockwise->getDetJacobian(), 1.0, 1e-15);
}

TEST(Membrane3Output, ValuesOfAtMostOneTenthNanoPrintAsZero) {
    Mesh m = Mesh::unitTriangle(std::make_shared<StubLaw>(1, 1, 1e-10, -2.5, -1.1e-10, 1.0));
    auto e = m.element(1, "NODES 1 2 3 MATERIAL STUB T 1");
    prepareAndStep(*e);
    EXPECT_EQ(e->printVTK(200, 0), "0.0");
    EXPECT_EQ(e->printVTK(200, 1), "-2.500000");
    EXPECT_EQ(e->printVTK(200, 3), "-0.000000");
    EXPECT_EQ(e->printVTK(200, 4), "0.0");
    EXPECT_EQ(e->printVTK(100, 0), "1.000000");
    EXPECT_EQ(e->printVTK(100, 5), "0.0");
}

TEST(Membrane3Lifecycle, EachElementInitialisesItsOwnCopyOfTheMaterial) {
    auto shared = std::make_shared<StubLaw>();
    Mesh m = Mesh::unitTriangle(shared);
    auto a = m.element(1, "NODES 1 2 3 MATERIAL STUB");
    auto b = m.element(2, "NODES 1 2 3 MATERIAL STUB");
    prepareAndStep(*a);
    prepareAndStep(*b);
    EXPECT_NE(a->getMaterial(), shared);
    EXPECT_NE(a->getMaterial(), b->getMaterial());
    EXPECT_EQ(shared->initialised, 0);
    EXPECT_EQ(std::static_pointer_cast<StubLaw>(a->getMaterial())->initialised, 1);
}

TEST(Membrane3Contact, FaceAndEdgeObjectsReceiveTheMembraneThicknessFactorAndFriction) {
    Mesh m = Mesh::unitTriangle();
    auto basic = m.element(3, "NODES 1 2 3 MATERIAL STUB T 0.5 CONTACT BASIC FACTOR 20 FRICTION 0.1");
    ASSERT_NE(basic->getContactTriangle(), nullptr);
    EXPECT_EQ(basic->getContactTriangle()->getNumber(), -1);
    for (int i = 1; i <= 3; ++i)
        EXPECT_EQ(basic->getContactLine(i), nullptr);
    auto e = m.element(1, "NODES 1 2 3 MATERIAL STUB T 0.4 CONTACT EDGE FACTOR 10 FRICTION 0.1");
    const auto& face = *e->getContactTriangle();
    EXPECT_DOUBLE_EQ(face.getThickness(), 0.4);
    EXPECT_DOUBLE_EQ(face.getFactor(), 10.0);
    EXPECT_DOUBLE_EQ(face.getFriction(), 0.1);
    EXPECT_EQ(face.getNodes(), e->getNodes());
    const int ends[3][2] = {{1, 2}, {2, 3}, {3, 1}};
    for (int i = 1; i <= 3; ++i) {
        ASSERT_NE(e->getContactLine(i), nullptr);
        const auto& line = *e->getContactLine(i);
        EXPECT_EQ(line.getNumber(), -i);
        EXPECT_DOUBLE_EQ(line.getRadius(), 0.2);
        EXPECT_DOUBLE_EQ(line.getFactor(), 10.0);
        EXPECT_EQ(line.getNode(0)->getNumber(), ends[i - 1][0]);
        EXPECT_EQ(line.getNode(1)->getNumber(), ends[i - 1][1]);
    }
    // The radius travels as six-decimal text.
    auto thin = m.element(2, "NODES 1 2 3 MATERIAL STUB T 0.0000008 CONTACT EDGE");
    EXPECT_DOUBLE_EQ(thin->getContactTriangle()->getThickness(), 0.000001);
    EXPECT_EQ(thin->getContactLine(1)->getRadius(), 0.0);
}

TEST(Membrane3Contact, ContactForcesComeFromTheFaceAndTheEdges) {
    // Face SHELL of thickness 0.4: node 4 at 0.1 above the face has the gap
    // 0.1 - 0.2 and is pushed up by FACTOR 0.1 / 0.2 = 5. Edge 1-2 of radius
    // 0.2: node 5 at 0.1 from it is pushed away by FACTOR (1 - 0.1/0.2) = 5,
    // half of the reaction on each end.
    Mesh m = Mesh::unitTriangle();
    m.node(4, 0.3, 0.3, 0.1);
    m.node(5, 0.5, -0.1, 0.0);
    auto e = m.element(1, "NODES 1 2 3 MATERIAL STUB T 0.4 CONTACT EDGE FACTOR 10");
    ContactSearch search;
    e->attachContactSearch(search);
    search.update(m.nodes);
    prepareAndStep(*e);
    for (auto& n : m.nodes)
        n->clearNodalForces();
    e->updateLocalCoordinateSystem();
    e->computeContactForces();
    const double expected[5][3] = {
        {0, 2.5, -5 * 0.4}, {0, 2.5, -5 * 0.3}, {0, 0, -5 * 0.3}, {0, 0, 5}, {0, -5, 0}};
    for (int n = 1; n <= 5; ++n) {
        EXPECT_NEAR(m.byNumber[n]->getXContactForce(), expected[n - 1][0], 1e-12) << "node " << n;
        EXPECT_NEAR(m.byNumber[n]->getYContactForce(), expected[n - 1][1], 1e-12) << "node " << n;
        EXPECT_NEAR(m.byNumber[n]->getZContactForce(), expected[n - 1][2], 1e-12) << "node " << n;
    }
}
