#include "Node.h"

#include "Constraint.h"
#include "ContactLine.h"
#include "Load.h"

#include <cmath>
#include <iostream>
#include <stdexcept>

namespace {
void zero(TNT::Array1D<double>& v) {
    for (int i = 0; i < v.dim1(); ++i)
        v[i] = 0.0;
}
} // namespace

Node::Node()
    : position(6, 0.0), displacement(6, 0.0), velocity(6, 0.0), acceleration(6, 0.0), origin(6, 0.0),
      previousDisplacement(6, 0.0), previousVelocity(6, 0.0), force(6, 0.0), internalForce(6, 0.0),
      externalForce(6, 0.0), positiveForce(6, 0.0), contactForce(6, 0.0), previousInternalForce(6, 0.0),
      previousExternalForce(6, 0.0), inertia(3, 3, 0.0), inverseInertia(3, 3, 0.0) {}

void Node::parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Constraint>>& constraints,
                       const std::vector<std::shared_ptr<Load>>& loads) {
    std::size_t i = 0;
    while (i < tokens.size()) {
        const std::string key = tokens.at(i).getWord();
        if ((key == "X" || key == "Y" || key == "Z") && tokens.at(i + 1).isANumber()) {
            const double v = tokens.at(i + 1).getNumber();
            if (!std::isfinite(v))
                throw std::invalid_argument("Coordinate " + key + " of node " + std::to_string(number) +
                                            " is not a finite number");
            if (key == "X") {
                setXPositionOrigin(v);
                xGiven = true;
            } else if (key == "Y") {
                setYPositionOrigin(v);
                yGiven = true;
            } else {
                setZPositionOrigin(v);
                zGiven = true;
            }
        } else if (key == "CONSTRAINT" && tokens.at(i + 1).isAWord()) {
            const std::string wanted = tokens.at(i + 1).getWord();
            std::shared_ptr<Constraint> found;
            for (auto& c : constraints)
                if (c->getName() == wanted) {
                    found = c;
                    break;
                }
            if (!found) throw std::invalid_argument("Constraint name " + wanted + " is not found");
            constraint = found;
        } else if (key == "LOAD" && tokens.at(i + 1).isAWord()) {
            const std::string wanted = tokens.at(i + 1).getWord();
            std::shared_ptr<Load> found;
            for (auto& l : loads)
                if (l->getName() == wanted) {
                    found = l;
                    break;
                }
            if (!found) throw std::invalid_argument("Load name " + wanted + " is not found");
            load = found;
        } else {
            throw std::invalid_argument("Input " + key + " is not recognized");
        }
        i += 2;
    }
}

void Node::parseOstrel() {
    std::cout << " Node -> parse_Ostrel method. Address" << static_cast<const void*>(this) << std::endl;
    std::cout << " Number: " << number << std::endl;
}

void Node::addInertia(TNT::Array2D<double> I) {
    for (int r = 0; r < 3; ++r)
        for (int s = 0; s < 3; ++s)
            inertia[r][s] += I[r][s];
}

void Node::accumulate(TNT::Array1D<double>& target, int first, double a, double b, double c) {
    const double v[3] = {a, b, c};
    for (int i = 0; i < 3; ++i) {
        target[first + i] += v[i];
        force[first + i] += v[i];
        if (v[i] > 0) positiveForce[first + i] += v[i];
    }
}

void Node::addInternalForce(const TNT::Array1D<double>& f) {
    accumulate(internalForce, 0, f[0], f[1], f[2]);
}
void Node::addExternalForce(const TNT::Array1D<double>& f) {
    accumulate(externalForce, 0, f[0], f[1], f[2]);
}
void Node::addContactForce(const TNT::Array1D<double>& f) {
    accumulate(contactForce, 0, f[0], f[1], f[2]);
}
void Node::addInternalMoment(const TNT::Array1D<double>& m) {
    accumulate(internalForce, 3, m[0], m[1], m[2]);
}
void Node::addInternalForce(double fx, double fy, double fz) {
    accumulate(internalForce, 0, fx, fy, fz);
}
void Node::addExternalForce(double fx, double fy, double fz) {
    accumulate(externalForce, 0, fx, fy, fz);
}
void Node::addContactForce(double fx, double fy, double fz) {
    accumulate(contactForce, 0, fx, fy, fz);
}
void Node::addInternalMoment(double mx, double my, double mz) {
    accumulate(internalForce, 3, mx, my, mz);
}

void Node::clearNodalForces() {
    for (int i = 0; i < 6; ++i) {
        internalForce[i] = 0.0;
        externalForce[i] = 0.0;
        contactForce[i] = 0.0;
        positiveForce[i] = 0.0;
        force[i] = 0.0;
    }
}

bool Node::contactLineCheck(std::shared_ptr<Node>& other) {
    for (ContactLine* line : contactLines)
        if (line->getNode(0) == other || line->getNode(1) == other) return true;
    return false;
}

void Node::setInitialConditions() {
    for (int k = 3; k < 6; ++k)
        origin[k] = 0.0;
    zero(displacement);
    for (int k = 0; k < 6; ++k)
        position[k] = origin[k] + displacement[k];
    if (!constraint) {
        zero(velocity);
        zero(acceleration);
    } else {
        constraint->applyVelocityConditions(this, 0.0);
        constraint->applyAccelerationConditions(this, 0.0);
    }
    previousDisplacement.inject(displacement);
    internalEnergy = externalWork = kineticEnergy = spareEnergy1 = spareEnergy2 = 0.0;
    if (mass == 0.0) mass = 1e-15;
    previousStep = 0.0;
}

void Node::determineMassMatrix() {
    if (inertia[0][0] == 0.0 && inertia[1][1] == 0.0 && inertia[2][2] == 0.0) {
        inertia[0][0] = 1e-15;
        inertia[1][1] = 1e-15;
        inertia[2][2] = 1e-15;
    }
    inverseInertia = TNT::invert(inertia);
    if (inverseInertia.dim1() != 3)
        throw std::runtime_error("Rotational inertia of node " + std::to_string(number) + " is singular");
}

void Node::computeNewPosition(double dt, double t) {
    previousDisplacement.inject(displacement);
    previousExternalForce.inject(externalForce);
    previousInternalForce.inject(internalForce);

    if (load) {
        const TNT::Array1D<double> l = load->getLoad(t);
        if (l.dim1() == force.dim1())
            for (int i = 0; i < 6; ++i)
                force[i] += l[i];
    }

    const double m = mass, c = rayleighDamping;
    for (int i = 0; i < 3; ++i)
        acceleration[i] = force[i] / m - previousVelocity[i] * c;

    // Euler's equations for the rotations: J dw/dt = M - w x (J w)
    const double w0 = velocity[3], w1 = velocity[4], w2 = velocity[5];
    const double h0 = inertia[0][0] * w0 + inertia[0][1] * w1 + inertia[0][2] * w2;
    const double h1 = inertia[1][0] * w0 + inertia[1][1] * w1 + inertia[1][2] * w2;
    const double h2 = inertia[2][0] * w0 + inertia[2][1] * w1 + inertia[2][2] * w2;
    const double M0 = force[3] - (w1 * h2 - w2 * h1);
    const double M1 = force[4] - (w2 * h0 - w0 * h2);
    const double M2 = force[5] - (w0 * h1 - w1 * h0);
    if (inverseInertia.dim1() == 3 && inverseInertia.dim2() == 3) {
        const TNT::Array2D<double>& K = inverseInertia;
        acceleration[3] = K[0][0] * M0 + K[0][1] * M1 + K[0][2] * M2;
        acceleration[4] = K[1][0] * M0 + K[1][1] * M1 + K[1][2] * M2;
        acceleration[5] = K[2][0] * M0 + K[2][1] * M1 + K[2][2] * M2;
    }

    if (load) {
        const TNT::Array1D<double> a = load->getAcc(t);
        if (a.dim1() == acceleration.dim1())
            for (int i = 0; i < 6; ++i)
                acceleration[i] += a[i];
    }
    if (constraint) constraint->applyAccelerationConditions(this, t);

    const double dtPrev = previousStep;
    previousStep = dt;
    averageStep = 0.5 * (dtPrev + dt);

    double vn[3];
    for (int i = 0; i < 3; ++i)
        vn[i] = previousVelocity[i] + 0.5 * dt * acceleration[i];
    for (int i = 0; i < 6; ++i)
        velocity[i] += averageStep * acceleration[i];
    previousVelocity.inject(velocity);
    for (int i = 0; i < 6; ++i) {
        displacement[i] += dt * velocity[i];
        position[i] = origin[i] + displacement[i];
    }
    if (constraint) constraint->applyVelocityConditions(this, t);

    const double half = 0.5 * dt;
    double work = 0.0, internal = 0.0;
    for (int i = 0; i < 6; ++i) {
        work += (previousExternalForce[i] + externalForce[i]) * velocity[i];
        internal += (previousInternalForce[i] + internalForce[i]) * velocity[i];
    }
    externalWork += half * work;
    internalEnergy -= half * internal;
    kineticEnergy = 0.5 * m * (vn[0] * vn[0] + vn[1] * vn[1] + vn[2] * vn[2]);
}
