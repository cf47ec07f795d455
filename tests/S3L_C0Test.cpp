// The three-node shell alone: rigid-motion and closed-form kinematics, the
// bending moment of a plate for every thickness table, equilibrium and
// work-conjugacy of the nodal loads, mass, stable step and pressure. Deck-line
// mistakes are whole decks under decks/malformed; a shell turned inside out in
// a run stops with its message in MassScalingTest.
#include "S3L_C0.h"
#include "ContactFixtures.h"
#include "Elastic.h"
#include "MaterialTestUtil.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr double E = 210000.0, NU = 0.3, RHO = 7.8;

struct Vec3 {
    double x, y, z;
    friend Vec3 operator-(Vec3 a, Vec3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
    friend Vec3 operator+(Vec3 a, Vec3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
    friend Vec3 operator*(double s, Vec3 a) { return {s * a.x, s * a.y, s * a.z}; }
    friend Vec3 cross(Vec3 a, Vec3 b) {
        return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
    }
    friend double dot(Vec3 a, Vec3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
    friend double norm(Vec3 a) { return std::sqrt(dot(a, a)); }
};

class ShellTest : public ::testing::Test {
protected:
    void SetUp() override {
        // Plane stress with the 5/6 transverse shear correction, added per strain increment.
        auto steel = std::make_shared<Elastic>();
        std::string name = "STEEL";
        steel->setName(name);
        steel->parseOstrel(contact_test::tokens("E 210000 NU 0.3 RHO 7.8 DAMPING 12.5"));
        // STUB writes a prescribed stress, different at every call, whatever the strain.
        s.materials = {
            steel, std::make_shared<mattest::StubLaw>([calls = 0](double(&)[6], double(&stress)[6]) mutable {
                const double base[6] = {3.0, -1.5, 0.0, 0.8, 2.2, -0.7};
                for (int k = 0; k < 6; ++k)
                    stress[k] = base[k] * (1.0 + 0.37 * calls);
                ++calls;
            })};
        auto pressure = std::make_shared<Load>();
        name = "PRESS";
        pressure->setName(name);
        pressure->parseOstrel(contact_test::tokens("P 2.5"), {});
        s.loads.push_back(pressure);
    }
    // A triangle tilted out of every coordinate plane.
    void tilted() {
        s.add(0.3, -0.2, 0.1);
        s.add(1.4, 0.25, 0.5);
        s.add(0.1, 0.9, 0.7);
    }
    // A shell on the nodes, set up for the run.
    std::shared_ptr<S3L_C0> make(const std::string& line, int number = 1) {
        return s.make<S3L_C0>(line, true, number);
    }
    // Unit mass and rotational inertia, nothing prescribed: a node update then
    // turns the nodal resultant into the accelerations.
    void prepareNodes() {
        TNT::Array2D<double> unit(3, 3, 0.0);
        unit[0][0] = unit[1][1] = unit[2][2] = 1.0;
        for (auto& n : s.list) {
            n->clearNodalForces();
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

    contact_test::NodeSet s;
};

TEST_F(ShellTest, RigidMotionGivesNoStrainAndInPlaneStretchThePlaneStressOfTheLaw) {
    tilted();
    auto shell = make("NODES 1 2 3 MATERIAL STEEL T 0.3");
    const Vec3 v0{0.7, -1.1, 0.4}, omega{2.0, -3.0, 1.5}, centre{0.5, 0.5, -0.2};
    for (auto& n : s.list)
        setVelocity(*n, v0 + cross(omega, position(*n) - centre), omega);
    step(*shell, 1e-3, false);
    for (int ip = 0; ip < 3; ++ip)
        for (int k = 0; k < 6; ++k)
            EXPECT_NEAR(shell->getPoints()[ip].strainIncrement[k], 0.0, 1e-15) << ip << " " << k;

    const auto& B = shell->getLocalBasis();
    const Vec3 e1{B[0][0], B[0][1], B[0][2]}, e2{B[1][0], B[1][1], B[1][2]}, o = position(*s.list[0]);
    const double a = 0.02, b = -0.005, g = 0.01, dt = 0.5; // stretch rates along e1, e2; shear rate
    for (auto& n : s.list) {
        const double x = dot(position(*n) - o, e1), y = dot(position(*n) - o, e2);
        setVelocity(*n, (a * x + g * y) * e1 + (b * y) * e2, {0, 0, 0});
    }
    step(*shell, dt, false);
    const double k = E / (1 - NU * NU), s11 = k * (a + NU * b) * dt;
    for (int ip = 0; ip < 3; ++ip) {
        const auto& sig = shell->getPoints()[ip].stress;
        EXPECT_NEAR(sig[0], s11, 1e-9 * s11) << ip;
        EXPECT_NEAR(sig[1], k * (NU * a + b) * dt, 1e-9 * s11) << ip;
        EXPECT_NEAR(sig[3], E / (2 * (1 + NU)) * g * dt, 1e-9 * s11) << ip;
        EXPECT_NEAR(sig[4], 0.0, 1e-9);
        EXPECT_NEAR(sig[5], 0.0, 1e-9);
    }
}

// A right triangle bent about y (w = kappa x^2 / 2, no transverse shear): node
// 2 is turned back by D kappa dt L / 2 with D = E t^3 / (12 (1 - nu^2)), and
// Poisson's ratio adds the moments about x that keep it flat across.
TEST_F(ShellTest, PlateBendingMomentMatchesTheBendingStiffness) {
    const double L = 2.0, t = 0.1, kappa = 0.3, dt = 1e-3;
    const double m = E * t * t * t / (12.0 * (1.0 - NU * NU)) * kappa * dt * L / 2.0;
    s.add(0, 0, 0);
    s.add(L, 0, 0);
    s.add(0, L, 0);
    for (int nip : {2, 3, 4, 5}) {
        auto shell = make("NODES 1 2 3 MATERIAL STEEL T 0.1 NIP " + std::to_string(nip));
        prepareNodes();
        for (auto& n : s.list) {
            const double x = n->getX_pos();
            setVelocity(*n, {0, 0, 0.5 * kappa * x * x}, {0, -kappa * x, 0});
        }
        step(*shell, dt);
        const double tol = nip == 5 ? 2e-5 * m : 1e-10 * m; // five-point table has six digits
        const Resultant r1 = readResultant(*s.list[0]), r2 = readResultant(*s.list[1]),
                        r3 = readResultant(*s.list[2]);
        EXPECT_NEAR(r2.moment.y, m, tol) << nip;
        EXPECT_NEAR(r1.moment.y, -m, tol) << nip;
        EXPECT_NEAR(r3.moment.y, 0.0, tol) << nip;
        EXPECT_NEAR(r1.moment.x, NU * m, tol) << nip;
        EXPECT_NEAR(r3.moment.x, -NU * m, tol) << nip;
        EXPECT_NEAR(r2.force.z, 0.0, 1e-6 * m) << nip;
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
        auto shell = make("NODES 1 2 3 MATERIAL STUB T 0.25 NIP " + nip);
        prepareNodes();
        for (int i = 0; i < 3; ++i)
            setVelocity(*s.list[i], v[i], w[i]);
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
            const Vec3 at = position(*s.list[i]);
            const Resultant r = readResultant(*s.list[i]);
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
    }
}

TEST_F(ShellTest, MassStableStepAndPressure) {
    tilted();
    auto shell = make("NODES 1 2 3 MATERIAL STEEL T 0.3 LOAD PRESS");
    shell->assembleMassMatrix();
    const Vec3 p1 = position(*s.list[0]), p2 = position(*s.list[1]), p3 = position(*s.list[2]);
    const Vec3 n = cross(p2 - p1, p3 - p1);
    const double A = 0.5 * norm(n), m = RHO * A, I = m / 3.0 * (0.09 / 12.0 + A / 12.0);
    for (auto& node : s.list) {
        EXPECT_NEAR(node->getMass(), m / 3.0, 1e-14 * m);
        EXPECT_DOUBLE_EQ(node->getRayleighDamping(), 12.5);
        EXPECT_NEAR(node->getInertia()[1][1], I, 1e-14 * I);
        EXPECT_EQ(node->getInertia()[0][1], 0.0);
    }
    const double lmax = std::max({norm(p2 - p1), norm(p3 - p2), norm(p1 - p3)});
    const double dtc = 0.1 * 2.0 * A / lmax / std::sqrt(E / ((1 - NU * NU) * RHO));
    EXPECT_NEAR(shell->checkTimestep(1.0), dtc, 1e-12 * dtc);
    EXPECT_EQ(shell->checkTimestep(dtc / 2), dtc / 2);

    shell->computeExternalForces(0.0); // p A / 3 along the unit normal
    const Vec3 share = (2.5 * A / 3.0 / norm(n)) * n;
    for (auto& node : s.list) {
        EXPECT_NEAR(node->getXForce(), share.x, 1e-14);
        EXPECT_NEAR(node->getZForce(), share.z, 1e-14);
    }
}

} // namespace
