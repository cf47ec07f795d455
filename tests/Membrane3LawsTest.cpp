// The membrane with the real constitutive laws: patch tests (uniform stretch,
// rigid rotation) for the textile and Ogden laws, and the elastic law driven
// by the components of F that the membrane hands it.
#include "MaterialLibrary.h"
#include "MaterialTestUtil.h"
#include "Membrane3.h"
#include "Node.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

namespace {

using mattest::tokens;

std::shared_ptr<Material> law(const std::string& type, const std::string& name, const std::string& params) {
    auto m = MaterialLibrary::getMaterialOstrel(type);
    std::string n = name;
    m->setName(n);
    m->parseOstrel(tokens(params));
    return m;
}

// A sheet of triangles on numbered nodes, with one law for all elements.
struct Sheet {
    std::vector<std::shared_ptr<Node>> nodes;
    std::unordered_map<int, std::shared_ptr<Node>> byNumber;
    std::vector<std::shared_ptr<Material>> materials;
    std::vector<std::shared_ptr<Membrane3>> elements;
    std::vector<std::array<double, 3>> reference;

    void node(double x, double y, double z = 0.0) {
        auto p = std::make_shared<Node>();
        p->setNumber(static_cast<int>(nodes.size()) + 1);
        p->setXPositionOrigin(x);
        p->setYPositionOrigin(y);
        p->setZPositionOrigin(z);
        byNumber[p->getNumber()] = p;
        nodes.push_back(p);
        reference.push_back({x, y, z});
    }
    void triangle(int a, int b, int c, double t) {
        auto e = std::make_shared<Membrane3>();
        e->setNumber(static_cast<int>(elements.size()) + 1);
        std::ostringstream line;
        line << "NODES " << a << " " << b << " " << c << " MATERIAL " << materials[0]->getName() << " T "
             << t;
        e->parseOstrel(tokens(line.str()), nodes, byNumber, materials, {});
        elements.push_back(e);
    }
    void prepare() {
        for (auto& e : elements)
            e->assembleMassMatrix();
        for (auto& e : elements)
            e->setInitialConditions();
    }
    // Moves every node to map(reference position).
    template <class Map> void deform(Map map) {
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            const auto x = map(reference[i]);
            nodes[i]->setX_pos(x[0]);
            nodes[i]->setY_pos(x[1]);
            nodes[i]->setZ_pos(x[2]);
        }
    }
    void step() {
        for (auto& n : nodes)
            n->clearNodalForces();
        for (auto& e : elements) {
            e->updateLocalCoordinateSystem();
            e->computeStrain(1e-6, 0);
            e->computeStress(1e-6, 0);
            e->computeInternalForces(1e-6, 0);
        }
    }
};

// Unit square as two triangles whose first edges run along +x and -x, plus a
// third triangle over the same nodes given clockwise.
Sheet square(std::shared_ptr<Material> m, double t) {
    Sheet s;
    s.materials.push_back(m);
    s.node(0, 0);
    s.node(1, 0);
    s.node(1, 1);
    s.node(0, 1);
    s.triangle(1, 2, 3, t);
    s.triangle(3, 4, 1, t);
    s.triangle(1, 4, 3, t);
    return s;
}

std::array<double, 3> rotated(const std::array<double, 3>& x) {
    // 70 degrees about (2, -1, 2)/3, then a shift.
    const double k[3] = {2.0 / 3.0, -1.0 / 3.0, 2.0 / 3.0};
    const double a = 70.0 * M_PI / 180.0, c = std::cos(a), s = std::sin(a);
    const double dot = k[0] * x[0] + k[1] * x[1] + k[2] * x[2];
    const double kx[3] = {k[1] * x[2] - k[2] * x[1], k[2] * x[0] - k[0] * x[2], k[0] * x[1] - k[1] * x[0]};
    std::array<double, 3> y;
    for (int i = 0; i < 3; ++i)
        y[i] = x[i] * c + kx[i] * s + k[i] * dot * (1 - c) + (i == 0 ? 3.0 : -2.0);
    return y;
}

// Normal stress of an element along unit directions d and f (global axes):
// sum over the in-plane axes a, b of s_ab (e_a . d)(e_b . f).
double along(const Membrane3& e, const std::array<double, 3>& d, const std::array<double, 3>& f) {
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

std::array<double, 3> direction(const std::array<double, 3>& to) {
    const auto a = rotated({0, 0, 0}), b = rotated(to);
    return {b[0] - a[0], b[1] - a[1], b[2] - a[2]};
}

const char* kTextile = "RHO 1e-9 KELONGWARP 40 KELONGWEFT 25 KSHEAR 0.5 0.2 WARPORI 1 0 0 WEFTORI 0 1 0";
const char* kOgden = "RHO 1e-9 TYPE OGDEN MU 0.6 0.01 ALPHA 2 -2";

} // namespace

TEST(Membrane3Laws, TextileStretchAlongTheWarpGivesTheYarnTension) {
    const double K = 40.0, lambda = 1.08, t = 0.3;
    Sheet s = square(law("HYPERTEXTILE", "FABRIC", kTextile), t);
    s.prepare();
    s.deform([&](const std::array<double, 3>& x) { return std::array<double, 3>{lambda * x[0], x[1], 0.0}; });
    s.step();
    const std::array<double, 3> x{1, 0, 0}, y{0, 1, 0};
    for (auto& e : s.elements) {
        EXPECT_NEAR(along(*e, x, x), 2.0 * K * std::log(lambda) / lambda, 1e-12);
        EXPECT_NEAR(along(*e, y, y), 0.0, 1e-12);
        EXPECT_NEAR(along(*e, x, y), 0.0, 1e-12);
        EXPECT_NEAR(e->getStrain()[0], std::log(lambda), 1e-12);
        EXPECT_NEAR(e->getStrain()[3], 0.0, 1e-12);
        EXPECT_DOUBLE_EQ(e->getThickness(), t);
    }
    // Nodes 1 and 3 close the two first triangles; the clockwise third one
    // adds its own share. The x resultant on the right edge is -sigma t ly.
    const double sigma = 2.0 * K * std::log(lambda) / lambda;
    const double rightEdge = s.nodes[1]->getXForce() + s.nodes[2]->getXForce();
    EXPECT_NEAR(rightEdge, -sigma * t * 1.0 - 0.5 * sigma * t, 1e-12);
}

TEST(Membrane3Laws, TextileAndOgdenSheetsCarryNoStressUnderRigidRotation) {
    for (const auto& [type, params] : {std::pair<std::string, std::string>{"HYPERTEXTILE", kTextile},
                                       std::pair<std::string, std::string>{"HYPERELASTIC", kOgden}}) {
        Sheet s = square(law(type, "SHEET", params), 0.4);
        s.prepare();
        s.deform(rotated);
        s.step();
        for (auto& e : s.elements) {
            for (int c : {0, 1, 3})
                EXPECT_NEAR(e->getStress()[c], 0.0, 1e-12) << type;
            EXPECT_NEAR(e->getThickness(), 0.4, 1e-14) << type;
        }
        for (auto& n : s.nodes) {
            EXPECT_NEAR(n->getXForce(), 0.0, 1e-12) << type;
            EXPECT_NEAR(n->getYForce(), 0.0, 1e-12) << type;
            EXPECT_NEAR(n->getZForce(), 0.0, 1e-12) << type;
        }
    }
}

TEST(Membrane3Laws, OgdenUniformStretchThinsTheSheetAndMatchesTheNeoHookeanStress) {
    const double mu = 0.6, lambda = 1.3, t = 2.0;
    Sheet s = square(law("HYPERELASTIC", "RUBBER", "RHO 1e-9 TYPE OGDEN MU 0.6 ALPHA 2"), t);
    s.prepare();
    // Stretch along y, tilted out of the reference plane afterwards: the
    // stress is the same in every element whatever its node order.
    s.deform([&](const std::array<double, 3>& x) { return rotated({x[0], lambda * x[1], 0.0}); });
    s.step();
    // Incompressible neo-Hookean plane stress: sigma_a = mu (lambda_a^2 -
    // lambda_3^2) with lambda_3 = 1 / lambda.
    const auto x = direction({1, 0, 0}), y = direction({0, 1, 0});
    for (auto& e : s.elements) {
        EXPECT_NEAR(along(*e, y, y), mu * (lambda * lambda - 1.0 / (lambda * lambda)), 1e-12);
        EXPECT_NEAR(along(*e, x, x), mu * (1.0 - 1.0 / (lambda * lambda)), 1e-12);
        EXPECT_NEAR(along(*e, x, y), 0.0, 1e-12);
        EXPECT_NEAR(e->getThickness(), t / lambda, 1e-14);
    }
    double sum[3] = {0, 0, 0};
    for (auto& n : s.nodes) {
        sum[0] += n->getXForce();
        sum[1] += n->getYForce();
        sum[2] += n->getZForce();
    }
    for (double f : sum)
        EXPECT_NEAR(f, 0.0, 1e-12);
}

TEST(Membrane3Laws, ElasticLawReceivesTheComponentsOfF) {
    // The membrane hands the law (F11, F22, F12) in the strain vector; the
    // elastic law adds D times that vector to the stress at every call and
    // leaves strain component 2 (= F12) as the thickness ratio.
    const double E = 210.0, nu = 0.25, k = E / (1.0 - nu * nu);
    Sheet s = square(law("ELASTIC", "STEEL", "E 210 NU 0.25 RHO 7.8e-9"), 0.5);
    s.prepare();
    auto& e = *s.elements[0];
    s.step();
    EXPECT_NEAR(e.getStress()[0], k * (1.0 + nu), 1e-12);
    EXPECT_NEAR(e.getStress()[1], k * (nu + 1.0), 1e-12);
    EXPECT_EQ(e.getStress()[3], 0.0);
    EXPECT_EQ(e.getThickness(), 0.0);
    for (auto& n : s.nodes)
        EXPECT_EQ(n->getXForce(), 0.0);
    s.step();
    EXPECT_NEAR(e.getStress()[0], 2.0 * k * (1.0 + nu), 1e-12);

    // A shear F = [[1, g], [0, 1]] of the first triangle: thickness g t0.
    const double g = 0.2;
    s.deform([&](const std::array<double, 3>& x) {
        return std::array<double, 3>{x[0] + g * x[1], x[1], 0.0};
    });
    s.step();
    EXPECT_NEAR(e.getDeformationGradient()[0][1], g, 1e-12);
    EXPECT_NEAR(e.getStrain()[2], g, 1e-12);
    EXPECT_NEAR(e.getThickness(), g * 0.5, 1e-12);
    EXPECT_NEAR(e.getStress()[0], 3.0 * k * (1.0 + nu), 1e-12);
}
