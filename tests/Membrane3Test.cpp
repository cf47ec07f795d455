// The membrane triangle: with a stub law of fixed stress its mass, stable step,
// constant-strain forces, equilibrium, pressure and contact; with the
// real laws the yarn tension of a textile sheet stretched along the warp, no
// stress under rigid rotation for the textile and Ogden laws, and the elastic
// law driven by the components of F. Deck-line mistakes are whole decks under
// decks/malformed; the Ogden stress of a general gradient is the patch test
// of the convergence suite.
#include "Membrane3.h"
#include "ContactFixtures.h"
#include "ContactLine.h"
#include "MaterialLibrary.h"
#include "MaterialTestUtil.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <stdexcept>

using contact_test::tokens;

namespace {

using Point = std::array<double, 3>;

// A stub law of fixed stress (s11, s22, s12) and thickness ratio.
std::shared_ptr<mattest::StubLaw> fixedLaw(double rho = 1.0, double c = 1.0,
                                           std::array<double, 4> s = {0, 0, 0, 1}) {
    return std::make_shared<mattest::StubLaw>(
        [s](double(&strain)[6], double(&stress)[6]) {
            stress[0] = s[0];
            stress[1] = s[1];
            stress[3] = s[2];
            strain[2] = s[3];
        },
        rho, c);
}

std::shared_ptr<Material> law(const std::string& type, const std::string& params) {
    auto m = MaterialLibrary::getMaterialOstrel(type);
    std::string n = "LAW";
    m->setName(n);
    m->parseOstrel(tokens(params));
    return m;
}

const std::vector<Point> kUnitTriangle = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
const std::vector<Point> kUnitSquare = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};

// Membranes with one law on nodes 1, 2, ... at the given points, set up and
// stepped without the node update.
struct Sheet : contact_test::NodeSet {
    std::vector<Point> reference;
    std::vector<std::shared_ptr<Membrane3>> elements;

    explicit Sheet(std::shared_ptr<Material> law = fixedLaw(),
                   const std::vector<Point>& points = kUnitTriangle) {
        materials.push_back(law);
        for (const Point& p : points)
            node(p);
    }
    void node(const Point& p) {
        add(p[0], p[1], p[2]);
        reference.push_back(p);
    }
    std::shared_ptr<Membrane3> element(const std::string& nodesAndMore, int number = 1) {
        elements.push_back(
            make<Membrane3>("MATERIAL " + materials[0]->getName() + " NODES " + nodesAndMore, false, number));
        return elements.back();
    }
    // The unit square as two triangles whose first edges run along +x and -x,
    // plus a third triangle over the same nodes given clockwise.
    void squareTriangles(double t) {
        const std::string thickness = " T " + std::to_string(t);
        element("1 2 3" + thickness, 1);
        element("3 4 1" + thickness, 2);
        element("1 4 3" + thickness, 3);
        prepare();
    }
    void prepare() {
        for (auto& e : elements)
            e->assembleMassMatrix();
        for (auto& e : elements)
            e->setInitialConditions();
    }
    // Moves every node to map(reference position).
    template <class Map> void deform(Map map) {
        for (std::size_t i = 0; i < list.size(); ++i) {
            const Point x = map(reference[i]);
            moveTo(list[i], x[0], x[1], x[2]);
        }
    }
    void step() {
        clearForces();
        for (auto& e : elements) {
            e->updateLocalCoordinateSystem();
            e->computeStrain(1e-6, 0);
            e->computeStress(1e-6, 0);
            e->computeInternalForces(1e-6, 0);
        }
    }
    void prepareAndStep() {
        prepare();
        step();
    }
};

// 70 degrees about (2, -1, 2)/3, then a shift.
Point rotated(const Point& x) {
    const double a = 70.0 * M_PI / 180.0;
    const Point y = testutil::rotate({2.0 / 3.0 * a, -1.0 / 3.0 * a, 2.0 / 3.0 * a}, x);
    return {y[0] + 3.0, y[1] - 2.0, y[2] - 2.0};
}

// Normal stress of an element along unit directions d and f (global axes):
// sum over the in-plane axes a, b of s_ab (e_a . d)(e_b . f).
double along(const Membrane3& e, const Point& d, const Point& f) {
    const auto& basis = e.getLocalBasis();
    const auto& s = e.getStress();
    const double local[2][2] = {{s[0], s[3]}, {s[3], s[1]}};
    double sum = 0.0;
    for (int a = 0; a < 2; ++a)
        for (int b = 0; b < 2; ++b) {
            const double ad = basis[a][0] * d[0] + basis[a][1] * d[1] + basis[a][2] * d[2];
            const double bf = basis[b][0] * f[0] + basis[b][1] * f[1] + basis[b][2] * f[2];
            sum += local[a][b] * ad * bf;
        }
    return sum;
}

void expectForces(const Sheet& s, const std::vector<Point>& expected, double tol = 1e-12) {
    for (std::size_t a = 0; a < expected.size(); ++a) {
        EXPECT_NEAR(s.list[a]->getXForce(), expected[a][0], tol) << "node " << a + 1;
        EXPECT_NEAR(s.list[a]->getYForce(), expected[a][1], tol) << "node " << a + 1;
        EXPECT_NEAR(s.list[a]->getZForce(), expected[a][2], tol) << "node " << a + 1;
    }
}

// The nodal forces, not all zero, sum to zero and balance in moment.
void expectEquilibrium(const Sheet& s) {
    Point f{}, m{};
    double scale = 0.0;
    for (auto& n : s.list) {
        const Point x = n->getPos(), q = n->getForce();
        for (int k = 0; k < 3; ++k) {
            f[k] += q[k];
            m[k] += x[(k + 1) % 3] * q[(k + 2) % 3] - x[(k + 2) % 3] * q[(k + 1) % 3];
            scale += std::fabs(q[k]);
        }
    }
    EXPECT_GT(scale, 1e-3);
    for (int k = 0; k < 3; ++k) {
        EXPECT_NEAR(f[k], 0.0, 1e-12);
        EXPECT_NEAR(m[k], 0.0, 1e-12);
    }
}

const char* kTextile = "RHO 1e-9 KELONGWARP 40 KELONGWEFT 25 KSHEAR 0.5 0.2 WARPORI 1 0 0 WEFTORI 0 1 0";
const char* kOgden = "RHO 1e-9 TYPE OGDEN MU 0.6 0.01 ALPHA 2 -2";

} // namespace

TEST(Membrane3, LumpedMassesSumToDensityTimesAreaWithInertiaAndDamping) {
    auto stub = fixedLaw(7.5);
    stub->setAlpha(0.3);
    Sheet m(stub, {{0, 0, 0}, {2, 0, 1}, {0.5, 3, -1}});
    m.element("1 2 3 T 0.2")->assembleMassMatrix();
    // A = |a x b| / 2 with a = (2, 0, 1), b = (0.5, 3, -1); no thickness.
    const double A = 0.5 * std::sqrt(3.0 * 3.0 + 2.5 * 2.5 + 6.0 * 6.0);
    const double I = 7.5 * A / 3.0 * (0.2 * 0.2 / 12.0 + A / 12.0);
    double total = 0.0;
    for (auto& n : m.list) {
        total += n->getMass();
        EXPECT_DOUBLE_EQ(n->getRayleighDamping(), 0.3);
        EXPECT_NEAR(n->getInertia()[0][0], I, 1e-12);
        EXPECT_NEAR(n->getInertia()[2][2], I, 1e-12);
        EXPECT_EQ(n->getInertia()[0][1], 0.0);
    }
    EXPECT_NEAR(total, 7.5 * A, 1e-12);
}

// (The step of the reference geometry is MassScalingTest's, by hand for
// membranes of three sizes.)
TEST(Membrane3, StableStepIsOneTenthOfTheSmallestAltitudeOverTheWaveSpeed) {
    const double c = 40.0;
    Sheet m(fixedLaw(1.0, c));
    auto e = m.element("1 2 3");
    m.prepareAndStep();
    EXPECT_EQ(e->checkTimestep(1e-9), 1e-9);
    // Moved to a right triangle 3-4-5: the altitude on the hypotenuse, 12/5.
    m.moveTo(m.list[1], 3, 0, 0);
    m.moveTo(m.list[2], 0, 4, 0);
    e->computeStrain(1e-3, 0);
    EXPECT_NEAR(e->checkTimestep(1.0), 0.1 * 2.4 / c, 1e-15);
}

// Unit right triangle, t0 = 0.1: k = A t = 0.05 t / t0. Uniaxial s11 = 10 at
// thickness ratio 0.8 pulls nodes 1 and 2 together with s11 k; pure shear
// s12 = 4 pulls node 2 along -y and node 3 along -x.
TEST(Membrane3, FixedStressGivesTheConstantStrainTriangleForces) {
    const struct {
        std::array<double, 4> stress;
        double thickness;
        std::vector<Point> forces;
    } cases[] = {{{10.0, 0.0, 0.0, 0.8}, 0.08, {{0.4, 0, 0}, {-0.4, 0, 0}, {0, 0, 0}}},
                 {{0.0, 0.0, 4.0, 1.0}, 0.1, {{0.2, 0.2, 0}, {0, -0.2, 0}, {-0.2, 0, 0}}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.thickness);
        Sheet m(fixedLaw(1, 1, c.stress));
        auto e = m.element("1 2 3 T 0.1");
        m.prepareAndStep();
        EXPECT_DOUBLE_EQ(e->getThickness(), c.thickness);
        expectForces(m, c.forces);
    }
}

TEST(Membrane3, InternalForcesAreSelfEquilibratedAndInPlane) {
    Sheet m(fixedLaw(1, 1, std::array<double, 4>{3.0, -1.5, 2.2, 0.9}),
            {{0.1, -0.2, 0.3}, {1.7, 0.4, -0.5}, {0.3, 1.9, 0.8}});
    auto e = m.element("1 2 3 T 0.05");
    m.prepareAndStep();
    expectEquilibrium(m);
    const auto& b = e->getLocalBasis();
    for (auto& n : m.list)
        EXPECT_NEAR(n->getXForce() * b[2][0] + n->getYForce() * b[2][1] + n->getZForce() * b[2][2], 0.0,
                    1e-12);
}

TEST(Membrane3, PressureForcesArePressureTimesAreaOverThreeAlongTheNormal) {
    Sheet m(fixedLaw(), {{0, 0, 0}, {0, 2, 0}, {0, 0, 3}});
    auto load = std::make_shared<Load>();
    std::string name = "P1";
    load->setName(name);
    load->parseOstrel(tokens("P 0.5"), {});
    m.loads.push_back(load);
    auto e = m.element("1 2 3 LOAD P1");
    m.prepareAndStep();
    m.clearForces();
    // (x2 - x1) x (x3 - x1) = (0,2,0) x (0,0,3) = 6 along +x; area 3.
    e->computeExternalForces(0.0);
    expectForces(m, {{0.5, 0, 0}, {0.5, 0, 0}, {0.5, 0, 0}});
}

// Beyond what the contact forces below show: the edges run 1-2, 2-3 and 3-1.
// (CONTACT BASIC, the face alone, is the sheet_on_tool example's.)
TEST(Membrane3, ContactObjectsAreTheFaceAndWithEdgeItsThreeEdges) {
    Sheet m;
    auto e = m.element("1 2 3 T 0.4 CONTACT EDGE");
    const int ends[3][2] = {{1, 2}, {2, 3}, {3, 1}};
    for (int i = 1; i <= 3; ++i) {
        EXPECT_EQ(e->getContactLine(i)->getNode(0)->getNumber(), ends[i - 1][0]);
        EXPECT_EQ(e->getContactLine(i)->getNode(1)->getNumber(), ends[i - 1][1]);
    }
}

TEST(Membrane3, ContactForcesComeFromTheFaceAndTheEdges) {
    // Face SHELL of thickness 0.4: node 4 at 0.1 above the face has the gap
    // 0.1 - 0.2 and is pushed up by FACTOR 0.1 / 0.2 = 5. Edge 1-2 of radius
    // 0.2: node 5 at 0.1 from it is pushed away by FACTOR (1 - 0.1/0.2) = 5,
    // half of the reaction on each end.
    Sheet m;
    m.node({0.3, 0.3, 0.1});
    m.node({0.5, -0.1, 0.0});
    auto e = m.element("1 2 3 T 0.4 CONTACT EDGE FACTOR 10");
    m.rebin();
    m.prepareAndStep();
    m.clearForces();
    e->updateLocalCoordinateSystem();
    e->computeContactForces();
    const double expected[5][3] = {
        {0, 2.5, -5 * 0.4}, {0, 2.5, -5 * 0.3}, {0, 0, -5 * 0.3}, {0, 0, 5}, {0, -5, 0}};
    for (int n = 0; n < 5; ++n)
        contact_test::expectForce(m.list[n], expected[n][0], expected[n][1], expected[n][2]);
}

TEST(Membrane3Laws, TextileStretchAlongTheWarpGivesTheYarnTension) {
    const double K = 40.0, lambda = 1.08, t = 0.3;
    Sheet s(law("HYPERTEXTILE", kTextile), kUnitSquare);
    s.squareTriangles(t);
    s.deform([&](const Point& x) { return Point{lambda * x[0], x[1], 0.0}; });
    s.step();
    const Point x{1, 0, 0}, y{0, 1, 0};
    const double sigma = 2.0 * K * std::log(lambda) / lambda;
    for (auto& e : s.elements) {
        EXPECT_NEAR(along(*e, x, x), sigma, 1e-12);
        EXPECT_NEAR(along(*e, y, y), 0.0, 1e-12);
        EXPECT_NEAR(along(*e, x, y), 0.0, 1e-12);
        EXPECT_NEAR(e->getStrain()[0], std::log(lambda), 1e-12);
        EXPECT_NEAR(e->getStrain()[3], 0.0, 1e-12);
        EXPECT_DOUBLE_EQ(e->getThickness(), t);
    }
    // Nodes 1 and 3 close the two first triangles; the clockwise third one
    // adds its own share. The x resultant on the right edge is -sigma t ly.
    const double rightEdge = s.list[1]->getXForce() + s.list[2]->getXForce();
    EXPECT_NEAR(rightEdge, -sigma * t * 1.0 - 0.5 * sigma * t, 1e-12);
    expectEquilibrium(s);
}

TEST(Membrane3Laws, TextileAndOgdenSheetsCarryNoStressUnderRigidRotation) {
    for (const auto& [type, params] : {std::pair<std::string, std::string>{"HYPERTEXTILE", kTextile},
                                       std::pair<std::string, std::string>{"HYPERELASTIC", kOgden}}) {
        SCOPED_TRACE(type);
        Sheet s(law(type, params), kUnitSquare);
        s.squareTriangles(0.4);
        s.deform(rotated);
        s.step();
        for (auto& e : s.elements) {
            for (int c : {0, 1, 3})
                EXPECT_NEAR(e->getStress()[c], 0.0, 1e-12);
            EXPECT_NEAR(e->getThickness(), 0.4, 1e-14);
        }
        expectForces(s, std::vector<Point>(4, Point{0, 0, 0}));
    }
}

TEST(Membrane3Laws, ElasticLawReceivesTheComponentsOfF) {
    // The membrane hands the law (F11, F22, F12) in the strain vector; the
    // elastic law adds D times that vector to the stress at every call and
    // leaves strain component 2 (= F12) as the thickness ratio.
    const double E = 210.0, nu = 0.25, k = E / (1.0 - nu * nu);
    Sheet s(law("ELASTIC", "E 210 NU 0.25 RHO 7.8e-9"), kUnitSquare);
    s.squareTriangles(0.5);
    auto& e = *s.elements[0];
    s.step();
    s.step();
    EXPECT_NEAR(e.getStress()[0], 2.0 * k * (1.0 + nu), 1e-12);
    EXPECT_NEAR(e.getStress()[1], 2.0 * k * (nu + 1.0), 1e-12);
    EXPECT_EQ(e.getThickness(), 0.0);
    // A shear F = [[1, g], [0, 1]] of the first triangle: thickness g t0.
    const double g = 0.2;
    s.deform([&](const Point& x) { return Point{x[0] + g * x[1], x[1], 0.0}; });
    s.step();
    EXPECT_NEAR(e.getThickness(), g * 0.5, 1e-12);
}
