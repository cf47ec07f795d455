// A node with six degrees of freedom (three translations, three rotations).
// Elements add lumped mass, rotational inertia and forces; computeNewPosition
// advances the node by the variable-step central difference:
//   a = F/m - c v(n-1/2)              (translations, mass-proportional damping)
//   a = J^-1 (M - w x (J w))          (rotations, Euler's equations)
//   v(n+1/2) = v(n-1/2) + (dt_prev + dt)/2 a,  u(n+1) = u(n) + dt v(n+1/2)
// The state is one plain struct of fixed-size arrays, first what the element
// pass reads and adds to, then what only the update touches; copies are
// member-wise.
#pragma once

#include "ForceLog.h"
#include "SpeedHints.h"
#include "Token.h"

#include "TntExtras.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

class Archive;
class Constraint;
class Load;
class RigidBody;

class Node {
public:
    using Vec3 = std::array<double, 3>;
    using Vec6 = std::array<double, 6>;
    using Matrix3 = std::array<std::array<double, 3>, 3>;

    void parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Constraint>>& constraints,
                     const std::vector<std::shared_ptr<Load>>& loads);
    void parseOstrel();

    void setInitialConditions();
    void determineMassMatrix();
    void computeNewPosition(double dt, double t);

    void addMass(double m) { mass += m; }
    void addInertia(TNT::Array2D<double> I);
    void setRayleighDamping(double c) { rayleighDamping = c; }

    void addInternalForce(const TNT::Array1D<double>& f);
    void addExternalForce(const TNT::Array1D<double>& f);
    void addContactForce(const TNT::Array1D<double>& f);
    void addInternalMoment(const TNT::Array1D<double>& m);
    // Same as the array versions, without building an array.
    void addInternalForce(double fx, double fy, double fz) { accumulate(ForceLog::internal, 0, fx, fy, fz); }
    void addExternalForce(double fx, double fy, double fz) { accumulate(ForceLog::external, 0, fx, fy, fz); }
    void addContactForce(double fx, double fy, double fz) { accumulate(ForceLog::contact, 0, fx, fy, fz); }
    void addInternalMoment(double mx, double my, double mz) { accumulate(ForceLog::internal, 3, mx, my, mz); }
    // Adds what an element pass logged for this node (see ForceLog.h).
    void addLogged(ForceLog::Family family, int first, double a, double b, double c) {
        add(family, first, a, b, c);
    }
    // The block of the element pass whose thread adds forces to this node
    // directly (-1: none, every contribution is logged).
    void setOwnerBlock(int block) { pass.ownerBlock = block; }
    int getOwnerBlock() const { return pass.ownerBlock; }
    void clearNodalForces();
    // The state the loop carries from one increment to the next (Checkpoint.h).
    void checkpoint(Archive& archive);

    // Rigid bodies (see RigidBody.h). A member is carried by its body's
    // reference node: the loop does not integrate it.
    void setRigidBody(const RigidBody* body, bool member) {
        rigidBody = body;
        rigidMember = member;
    }
    const RigidBody* getRigidBody() const { return rigidBody; }
    bool isRigidMember() const { return rigidMember; }
    // Adds the forces of a node this one carries rigidly, r being that node's
    // position relative to this one: each force f (internal, external,
    // contact) is added with its moment r x f, and so are its own moments.
    void addCarriedForces(const Node& carried, const double (&r)[3]);
    // Places a carried node: position, velocity and acceleration of its
    // translations as given, rotations as the reference node's.
    void placeCarried(const double (&x)[3], const double (&v)[3], const double (&a)[3],
                      const Node& reference);
    // Change of the rotations over the last update.
    const Vec3 getRotationIncrement() const {
        return {state.displacement[3] - state.previousDisplacement[3],
                state.displacement[4] - state.previousDisplacement[4],
                state.displacement[5] - state.previousDisplacement[5]};
    }
    // Sets the rotational inertia and its inverse (row by row), as a body
    // that turns carries them.
    void setInertia(const double (&J)[9], const double (&inverse)[9]);

    // Asks the processor to start loading the node for its update (a hint
    // only: it changes no value).
    void prefetchForUpdate() const { speed::prefetch(*this); }
    // The same for what the element pass reads and adds to.
    void prefetchForElements() const { speed::prefetch(pass); }

    std::shared_ptr<Constraint> getConstraint() const { return constraint; }
    std::shared_ptr<Load> getLoad() const { return load; }
    void setConstraint(std::shared_ptr<Constraint> c) { constraint = std::move(c); }
    void setLoad(std::shared_ptr<Load> l) { load = std::move(l); }

    void setXPositionOrigin(double v) { setOrigin(0, v); }
    void setYPositionOrigin(double v) { setOrigin(1, v); }
    void setZPositionOrigin(double v) { setOrigin(2, v); }
    void setXRotationOrigin(double v) { setOrigin(3, v); }
    void setYRotationOrigin(double v) { setOrigin(4, v); }
    void setZRotationOrigin(double v) { setOrigin(5, v); }

    int getNumber() const { return number; }
    void setNumber(int n) { number = n; }
    double getMass() const { return mass; }
    double getRayleighDamping() const { return rayleighDamping; }

    double getX_pos() const { return pass.position[0]; }
    double getY_pos() const { return pass.position[1]; }
    double getZ_pos() const { return pass.position[2]; }
    void setX_pos(double v) { pass.position[0] = v; }
    void setY_pos(double v) { pass.position[1] = v; }
    void setZ_pos(double v) { pass.position[2] = v; }
    double getX_rot() const { return pass.position[3]; }
    double getY_rot() const { return pass.position[4]; }
    double getZ_rot() const { return pass.position[5]; }
    void setX_rot(double v) { pass.position[3] = v; }
    void setY_rot(double v) { pass.position[4] = v; }
    void setZ_rot(double v) { pass.position[5] = v; }

    double getX_vel() const { return state.velocity[0]; }
    double getY_vel() const { return state.velocity[1]; }
    double getZ_vel() const { return state.velocity[2]; }
    void setX_vel(double v) { state.velocity[0] = v; }
    void setY_vel(double v) { state.velocity[1] = v; }
    void setZ_vel(double v) { state.velocity[2] = v; }
    double getX_rot_vel() const { return state.velocity[3]; }
    double getY_rot_vel() const { return state.velocity[4]; }
    double getZ_rot_vel() const { return state.velocity[5]; }
    void setX_rot_vel(double v) { state.velocity[3] = v; }
    void setY_rot_vel(double v) { state.velocity[4] = v; }
    void setZ_rot_vel(double v) { state.velocity[5] = v; }

    double getX_acc() const { return state.acceleration[0]; }
    double getY_acc() const { return state.acceleration[1]; }
    double getZ_acc() const { return state.acceleration[2]; }
    void setX_acc(double v) { state.acceleration[0] = v; }
    void setY_acc(double v) { state.acceleration[1] = v; }
    void setZ_acc(double v) { state.acceleration[2] = v; }
    double getX_rot_acc() const { return state.acceleration[3]; }
    double getY_rot_acc() const { return state.acceleration[4]; }
    double getZ_rot_acc() const { return state.acceleration[5]; }
    void setX_rot_acc(double v) { state.acceleration[3] = v; }
    void setY_rot_acc(double v) { state.acceleration[4] = v; }
    void setZ_rot_acc(double v) { state.acceleration[5] = v; }

    double getXForce() const { return pass.force[0]; }
    double getYForce() const { return pass.force[1]; }
    double getZForce() const { return pass.force[2]; }
    double getXContactForce() const { return pass.contactForce[0]; }
    double getYContactForce() const { return pass.contactForce[1]; }
    double getZContactForce() const { return pass.contactForce[2]; }

    // What the energy balance (EnergyBalance.h) reads around an update: the
    // force families of the step (before they are cleared), the velocity
    // that moves the node over the increment (before a constraint
    // overwrites the velocity), the load and whether a constraint applies.
    const double* internalForces() const { return pass.internalForce; }
    const double* externalForces() const { return pass.externalForce; }
    const double* contactForces() const { return pass.contactForce; }
    const double* allForces() const { return pass.force; }
    const double* movingVelocity() const { return state.previousVelocity; }
    const double* velocities() const { return state.velocity; }
    const double* inertia() const { return state.inertia; }
    Load* loadPointer() const { return load.get(); }
    bool hasConstraint() const { return constraint != nullptr; }

    double getInternalEnergy() const { return internalEnergy; }
    double getKineticEnergy() const { return kineticEnergy; }
    double getExternalWork() const { return externalWork; }

    // Copies of the node's vectors, for tests and diagnostics.
    const Vec3 getPos() const { return {pass.position[0], pass.position[1], pass.position[2]}; }
    const Vec3 getRot() const { return {pass.position[3], pass.position[4], pass.position[5]}; }
    const Vec3 getVel() const { return {state.velocity[0], state.velocity[1], state.velocity[2]}; }
    const Vec3 getRotVel() const { return {state.velocity[3], state.velocity[4], state.velocity[5]}; }
    const Vec3 getAcc() const {
        return {state.acceleration[0], state.acceleration[1], state.acceleration[2]};
    }
    const Vec3 getForce() const { return {pass.force[0], pass.force[1], pass.force[2]}; }
    const Vec3 getContactForce() const {
        return {pass.contactForce[0], pass.contactForce[1], pass.contactForce[2]};
    }
    const Vec6 getDisplacement() const { return copy(state.displacement); }
    const Vec6 getPositiveForce() const { return copy(pass.positiveForce); }
    const Matrix3 getInertia() const { return matrix(state.inertia); }
    const Matrix3 getInverseInertia() const { return matrix(state.inverseInertia); }

private:
    void setOrigin(int k, double v) {
        state.origin[k] = v;
        pass.position[k] = v + state.displacement[k];
    }
    static Vec6 copy(const double (&v)[6]) { return {v[0], v[1], v[2], v[3], v[4], v[5]}; }
    static Matrix3 matrix(const double (&J)[9]) {
        return {{{J[0], J[1], J[2]}, {J[3], J[4], J[5]}, {J[6], J[7], J[8]}}};
    }
    // During the element pass of a large model a force goes to the log when
    // the order of the sums asks for it (ForceLog.h); otherwise it is added
    // at once.
    void accumulate(ForceLog::Family family, int first, double a, double b, double c) {
        ForceLog* log = ForceLog::active;
        if (log && ForceLog::logs(pass.ownerBlock)) {
            log->add(this, pass.ownerBlock, family, first, a, b, c);
            return;
        }
        add(family, first, a, b, c);
    }
    void add(ForceLog::Family family, int first, double a, double b, double c) {
        double* target = family == ForceLog::internal   ? pass.internalForce
                         : family == ForceLog::external ? pass.externalForce
                                                        : pass.contactForce;
        const double v[3] = {a, b, c};
        for (int i = 0; i < 3; ++i) {
            target[first + i] += v[i];
            pass.force[first + i] += v[i];
            // Adding 0.0 leaves the sum as it is; written without a branch,
            // since the signs of element forces follow no pattern.
            pass.positiveForce[first + i] += v[i] > 0.0 ? v[i] : 0.0;
        }
    }

    // Six components each (x, y, z, rx, ry, rz), except the 3x3 inertias
    // stored row by row. The element pass reads the positions and adds the
    // forces: those sit together in `pass`; the rest only the update touches.
    struct Pass {
        double position[6];
        double force[6];
        double internalForce[6];
        double positiveForce[6];
        double externalForce[6];
        double contactForce[6];
        int ownerBlock = -1;
    };
    struct State {
        double velocity[6];
        double acceleration[6];
        double displacement[6];
        double origin[6];
        double previousVelocity[6];
        double previousDisplacement[6];
        double previousInternalForce[6];
        double previousExternalForce[6];
        double inertia[9];
        double inverseInertia[9];
    };

    Pass pass{};
    State state{};
    int number = 0;
    double mass = 0.0;
    double rayleighDamping = 0.0;
    double averageStep = 0.0;
    double previousStep = 0.0;
    double internalEnergy = 0.0;
    double externalWork = 0.0;
    double kineticEnergy = 0.0;
    std::shared_ptr<Constraint> constraint;
    std::shared_ptr<Load> load;
    bool xGiven = false, yGiven = false, zGiven = false;
    bool rigidMember = false;
    double spareEnergy1 = 0.0;
    double spareEnergy2 = 0.0;
    const RigidBody* rigidBody = nullptr;
};
