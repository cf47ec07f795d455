// A node with six degrees of freedom (three translations, three rotations).
// Elements add lumped mass, rotational inertia and forces; computeNewPosition
// advances the node by the variable-step central difference:
//   a = F/m - c v(n-1/2)              (translations, mass-proportional damping)
//   a = J^-1 (M - w x (J w))          (rotations, Euler's equations)
//   v(n+1/2) = v(n-1/2) + (dt_prev + dt)/2 a,  u(n+1) = u(n) + dt v(n+1/2)
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
    void addInternalForce(double fx, double fy, double fz);
    void addExternalForce(double fx, double fy, double fz);
    void addContactForce(double fx, double fy, double fz);
    void addInternalMoment(double mx, double my, double mz);
    void clearNodalForces();

    void setLeftNode(std::shared_ptr<Node>& n) { leftNode = n; }
    void setRightNode(std::shared_ptr<Node>& n) { rightNode = n; }
    std::shared_ptr<Node> getLeftNode() const { return leftNode; }
    std::shared_ptr<Node> getRightNode() const { return rightNode; }
    // Borrowed views of the neighbour links for the contact search (no
    // reference-count traffic on the hot path).
    Node* leftNeighbour() const { return leftNode.get(); }
    Node* rightNeighbour() const { return rightNode.get(); }
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

    double getX_pos() const { return position[0]; }
    double getY_pos() const { return position[1]; }
    double getZ_pos() const { return position[2]; }
    void setX_pos(double v) { position[0] = v; }
    void setY_pos(double v) { position[1] = v; }
    void setZ_pos(double v) { position[2] = v; }
    double getX_rot() const { return position[3]; }
    double getY_rot() const { return position[4]; }
    double getZ_rot() const { return position[5]; }
    void setX_rot(double v) { position[3] = v; }
    void setY_rot(double v) { position[4] = v; }
    void setZ_rot(double v) { position[5] = v; }

    double getX_vel() const { return velocity[0]; }
    double getY_vel() const { return velocity[1]; }
    double getZ_vel() const { return velocity[2]; }
    void setX_vel(double v) { velocity[0] = v; }
    void setY_vel(double v) { velocity[1] = v; }
    void setZ_vel(double v) { velocity[2] = v; }
    double getX_rot_vel() const { return velocity[3]; }
    double getY_rot_vel() const { return velocity[4]; }
    double getZ_rot_vel() const { return velocity[5]; }
    void setX_rot_vel(double v) { velocity[3] = v; }
    void setY_rot_vel(double v) { velocity[4] = v; }
    void setZ_rot_vel(double v) { velocity[5] = v; }

    double getX_acc() const { return acceleration[0]; }
    double getY_acc() const { return acceleration[1]; }
    double getZ_acc() const { return acceleration[2]; }
    void setX_acc(double v) { acceleration[0] = v; }
    void setY_acc(double v) { acceleration[1] = v; }
    void setZ_acc(double v) { acceleration[2] = v; }
    double getX_rot_acc() const { return acceleration[3]; }
    double getY_rot_acc() const { return acceleration[4]; }
    double getZ_rot_acc() const { return acceleration[5]; }
    void setX_rot_acc(double v) { acceleration[3] = v; }
    void setY_rot_acc(double v) { acceleration[4] = v; }
    void setZ_rot_acc(double v) { acceleration[5] = v; }

    double getXForce() const { return force[0]; }
    double getYForce() const { return force[1]; }
    double getZForce() const { return force[2]; }
    double getXContactForce() const { return contactForce[0]; }
    double getYContactForce() const { return contactForce[1]; }
    double getZContactForce() const { return contactForce[2]; }

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
        origin[k] = v;
        position[k] = v + displacement[k];
    }
    static TNT::Array1D<double> view(TNT::Array1D<double>& v, int first) {
        if (v.dim1() < first + 3) return TNT::Array1D<double>();
        return v.subarray(first, first + 2);
    }
    void accumulate(TNT::Array1D<double>& target, int first, double a, double b, double c);

    int number = 0;
    double mass = 0.0;
    double rayleighDamping = 0.0;
    std::shared_ptr<Constraint> constraint;
    std::shared_ptr<Load> load;
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
    double internalEnergy = 0.0;
    double externalWork = 0.0;
    double kineticEnergy = 0.0;
    double spareEnergy1 = 0.0;
    double spareEnergy2 = 0.0;
    double averageStep = 0.0;
    double previousStep = 0.0;
    std::shared_ptr<Node> leftNode;
    std::shared_ptr<Node> rightNode;
    std::vector<ContactLine*> contactLines;
};
