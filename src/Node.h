// A node with six degrees of freedom (three translations, three rotations).
// Elements add lumped mass, rotational inertia and forces; computeNewPosition
// advances the node by the variable-step central difference:
//   a = F/m - c v(n-1/2)              (translations, mass-proportional damping)
//   a = J^-1 (M - w x (J w))          (rotations, Euler's equations)
//   v(n+1/2) = v(n-1/2) + (dt_prev + dt)/2 a,  u(n+1) = u(n) + dt v(n+1/2)
// The state vectors live in one block inside the node, in the order the loop
// touches them; the TNT arrays are views of that block (no storage of their
// own).
#pragma once

#include "Token.h"

#include "TntExtras.h"

#include <memory>
#include <string>
#include <vector>

class Constraint;
class Load;
class ContactLine;

class Node {
public:
    Node();
    // Copies the state; the copy's arrays view its own storage.
    Node(const Node& other);
    Node& operator=(const Node& other);

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
    void addInternalForce(double fx, double fy, double fz) { accumulate(state.internalForce, 0, fx, fy, fz); }
    void addExternalForce(double fx, double fy, double fz) { accumulate(state.externalForce, 0, fx, fy, fz); }
    void addContactForce(double fx, double fy, double fz) { accumulate(state.contactForce, 0, fx, fy, fz); }
    void addInternalMoment(double mx, double my, double mz) {
        accumulate(state.internalForce, 3, mx, my, mz);
    }
    void clearNodalForces();

    void setLeftNode(std::shared_ptr<Node>& n) { leftNode = n; }
    void setRightNode(std::shared_ptr<Node>& n) { rightNode = n; }
    std::shared_ptr<Node> getLeftNode() const { return leftNode; }
    std::shared_ptr<Node> getRightNode() const { return rightNode; }
    // Borrowed views of the neighbour links for the contact search (no
    // reference-count traffic on the hot path).
    Node* leftNeighbour() const { return leftNode.get(); }
    Node* rightNeighbour() const { return rightNode.get(); }
    // Exchange this node with its left (right) neighbour in the x-ordered
    // chain: ... L2 <-> L <-> n <-> R ... becomes ... L2 <-> n <-> L <-> R ...
    // The neighbour must exist.
    void swapWithLeftNeighbour();
    void swapWithRightNeighbour();
    // Takes this node out of the chain and puts it back just left of `q`, a
    // node to its left: the same chain as swapping with the left neighbour
    // until `q` is passed.
    void moveLeftOf(Node* q);
    // Asks the processor to start loading the part of the node that the
    // update reads and writes (a hint only: it changes no value).
    void prefetchForUpdate() const {
        const char* first = reinterpret_cast<const char*>(this);
        const char* last = reinterpret_cast<const char*>(&state + 1);
        for (const char* p = first; p < last; p += 64)
            __builtin_prefetch(p, 1);
    }
    // The same for what the element pass reads and adds to: the position
    // and the force accumulators.
    void prefetchForElements() const {
        const char* first = reinterpret_cast<const char*>(state.position);
        const char* last = reinterpret_cast<const char*>(state.externalForce);
        for (const char* p = first; p < last; p += 64)
            __builtin_prefetch(p, 1);
        __builtin_prefetch(last - 1, 1);
    }
    // The same for the neighbour links and the position (chain repair).
    void prefetchForChain() const {
        const char* first = reinterpret_cast<const char*>(&leftNode);
        const char* last = reinterpret_cast<const char*>(&state.force);
        for (const char* p = first; p < last; p += 64)
            __builtin_prefetch(p, 1);
    }
    // Breaks the shared neighbour links so that a chain of nodes can be freed.
    void clearNeighbours() {
        leftNode.reset();
        rightNode.reset();
    }
    void addContactLine(ContactLine* line) { contactLines.push_back(line); }
    std::vector<ContactLine*> getContactLines() const { return contactLines; }
    const std::vector<ContactLine*>& contactLineList() const { return contactLines; }
    bool contactLineCheck(std::shared_ptr<Node>& other);

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

    double getX_pos() const { return state.position[0]; }
    double getY_pos() const { return state.position[1]; }
    double getZ_pos() const { return state.position[2]; }
    void setX_pos(double v) { state.position[0] = v; }
    void setY_pos(double v) { state.position[1] = v; }
    void setZ_pos(double v) { state.position[2] = v; }
    double getX_rot() const { return state.position[3]; }
    double getY_rot() const { return state.position[4]; }
    double getZ_rot() const { return state.position[5]; }
    void setX_rot(double v) { state.position[3] = v; }
    void setY_rot(double v) { state.position[4] = v; }
    void setZ_rot(double v) { state.position[5] = v; }

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

    double getXForce() const { return state.force[0]; }
    double getYForce() const { return state.force[1]; }
    double getZForce() const { return state.force[2]; }
    double getXContactForce() const { return state.contactForce[0]; }
    double getYContactForce() const { return state.contactForce[1]; }
    double getZContactForce() const { return state.contactForce[2]; }

    double getInternalEnergy() const { return internalEnergy; }
    double getKineticEnergy() const { return kineticEnergy; }
    double getExternalWork() const { return externalWork; }

    // Three-component views sharing storage with the node's vectors.
    TNT::Array1D<double> getPos() { return view(position, 0); }
    TNT::Array1D<double> getVel() { return view(velocity, 0); }
    TNT::Array1D<double> getAcc() { return view(acceleration, 0); }
    TNT::Array1D<double> getForce() { return view(force, 0); }
    TNT::Array1D<double> getContactForce() { return view(contactForce, 0); }
    TNT::Array1D<double> getRot() { return view(position, 3); }
    TNT::Array1D<double> getRotVel() { return view(velocity, 3); }
    TNT::Array1D<double> getRotAcc() { return view(acceleration, 3); }

    // Read-only access used by tests and diagnostics.
    const TNT::Array1D<double>& getDisplacement() const { return displacement; }
    const TNT::Array1D<double>& getPositiveForce() const { return positiveForce; }
    const TNT::Array2D<double>& getInertia() const { return inertia; }
    const TNT::Array2D<double>& getInverseInertia() const { return inverseInertia; }

private:
    void setOrigin(int k, double v) {
        state.origin[k] = v;
        state.position[k] = v + state.displacement[k];
    }
    static TNT::Array1D<double> view(TNT::Array1D<double>& v, int first) {
        if (v.dim1() < first + 3) return TNT::Array1D<double>();
        return v.subarray(first, first + 2);
    }
    void accumulate(double* target, int first, double a, double b, double c) {
        const double v[3] = {a, b, c};
        for (int i = 0; i < 3; ++i) {
            target[first + i] += v[i];
            state.force[first + i] += v[i];
            // Adding 0.0 leaves the sum as it is; written without a branch,
            // since the signs of element forces follow no pattern.
            state.positiveForce[first + i] += v[i] > 0.0 ? v[i] : 0.0;
        }
    }

    // Six components each (x, y, z, rx, ry, rz), except the 3x3 inertias
    // stored row by row. The element pass reads positions and adds forces, so
    // those come first and share the first cache lines.
    struct State {
        double position[6];
        double force[6];
        double internalForce[6];
        double positiveForce[6];
        double externalForce[6];
        double contactForce[6];
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
    // Next to the positions: the chain repair reads both for every node.
    std::shared_ptr<Node> leftNode;
    std::shared_ptr<Node> rightNode;
    State state{};
    TNT::Array1D<double> position;
    TNT::Array1D<double> displacement;
    TNT::Array1D<double> velocity;
    TNT::Array1D<double> acceleration;
    TNT::Array1D<double> origin;
    TNT::Array1D<double> previousDisplacement;
    TNT::Array1D<double> previousVelocity;
    TNT::Array1D<double> force;
    TNT::Array1D<double> internalForce;
    TNT::Array1D<double> externalForce;
    TNT::Array1D<double> positiveForce;
    TNT::Array1D<double> contactForce;
    TNT::Array1D<double> previousInternalForce;
    TNT::Array1D<double> previousExternalForce;
    TNT::Array2D<double> inertia;
    TNT::Array2D<double> inverseInertia;
    bool xGiven = false, yGiven = false, zGiven = false;
    double spareEnergy1 = 0.0;
    double spareEnergy2 = 0.0;
    std::vector<ContactLine*> contactLines;
};
