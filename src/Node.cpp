#include "Node.h"

#include "Checkpoint.h"
#include "DeckParser.h"

#include "Constraint.h"
#include "Load.h"

#include <cmath>
#include <cstring>
#include <iostream>
#include <stdexcept>

void Node::parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Constraint>>& constraints,
                       const std::vector<std::shared_ptr<Load>>& loads) {
    const DeckParser line(tokens, DeckParser::AtEnd::Checked);
    using K = DeckParser::Follows;
    auto coordinate = [&](int k) {
        return [this, &line, k](std::size_t i) {
            const char* axis[3] = {"X", "Y", "Z"};
            const double v = line.at(i + 1).getNumber();
            if (!std::isfinite(v))
                throw std::invalid_argument(std::string("Coordinate ") + axis[k] + " of node " +
                                            std::to_string(number) + " is not a finite number");
            setOrigin(k, v);
            (k == 0 ? xGiven : k == 1 ? yGiven : zGiven) = true;
            return std::size_t(2);
        };
    };
    line.read({{"X", K::Number, coordinate(0)},
               {"Y", K::Number, coordinate(1)},
               {"Z", K::Number, coordinate(2)},
               {"CONSTRAINT", K::Word,
                [&](std::size_t i) {
                    constraint = DeckParser::require(constraints, line.at(i + 1).getWord(), "Constraint");
                    return 2;
                }},
               {"LOAD", K::Word, [&](std::size_t i) {
                    load = DeckParser::require(loads, line.at(i + 1).getWord(), "Load");
                    return 2;
                }}});
}

void Node::parseOstrel() {
    std::cout << " Node -> parse_Ostrel method. Address" << static_cast<const void*>(this) << std::endl;
    std::cout << " Number: " << number << std::endl;
}

void Node::addInertia(TNT::Array2D<double> I) {
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            state.inertia[3 * r + c] += I[r][c];
}

void Node::addInternalForce(const TNT::Array1D<double>& f) {
    accumulate(ForceLog::internal, 0, f[0], f[1], f[2]);
}
void Node::addExternalForce(const TNT::Array1D<double>& f) {
    accumulate(ForceLog::external, 0, f[0], f[1], f[2]);
}
void Node::addContactForce(const TNT::Array1D<double>& f) {
    accumulate(ForceLog::contact, 0, f[0], f[1], f[2]);
}
void Node::addInternalMoment(const TNT::Array1D<double>& m) {
    accumulate(ForceLog::internal, 3, m[0], m[1], m[2]);
}

void Node::clearNodalForces() {
    for (int i = 0; i < 6; ++i) {
        pass.internalForce[i] = 0.0;
        pass.externalForce[i] = 0.0;
        pass.contactForce[i] = 0.0;
        pass.positiveForce[i] = 0.0;
        pass.force[i] = 0.0;
    }
}

void Node::addCarriedForces(const Node& carried, const double (&r)[3]) {
    const Pass& c = carried.pass;
    const double* from[3] = {c.internalForce, c.externalForce, c.contactForce};
    const ForceLog::Family to[3] = {ForceLog::internal, ForceLog::external, ForceLog::contact};
    for (int k = 0; k < 3; ++k) {
        const double* f = from[k];
        add(to[k], 0, f[0], f[1], f[2]);
        add(to[k], 3, f[3] + r[1] * f[2] - r[2] * f[1], f[4] + r[2] * f[0] - r[0] * f[2],
            f[5] + r[0] * f[1] - r[1] * f[0]);
    }
}

void Node::placeCarried(const double (&x)[3], const double (&v)[3], const double (&a)[3],
                        const Node& reference) {
    State& s = state;
    const State& r = reference.state;
    for (int k = 0; k < 3; ++k) {
        pass.position[k] = x[k];
        s.displacement[k] = x[k] - s.origin[k];
        s.velocity[k] = s.previousVelocity[k] = v[k];
        s.acceleration[k] = a[k];
    }
    for (int k = 3; k < 6; ++k) {
        pass.position[k] = reference.pass.position[k];
        s.displacement[k] = r.displacement[k];
        s.velocity[k] = s.previousVelocity[k] = r.velocity[k];
        s.acceleration[k] = r.acceleration[k];
    }
}

void Node::setInertia(const double (&J)[9], const double (&inverse)[9]) {
    for (int k = 0; k < 9; ++k) {
        state.inertia[k] = J[k];
        state.inverseInertia[k] = inverse[k];
    }
}

void Node::setInitialConditions() {
    State& s = state;
    for (int k = 3; k < 6; ++k)
        s.origin[k] = 0.0;
    for (int k = 0; k < 6; ++k) {
        s.displacement[k] = 0.0;
        pass.position[k] = s.origin[k] + s.displacement[k];
    }
    if (!constraint) {
        for (int k = 0; k < 6; ++k)
            s.velocity[k] = s.acceleration[k] = 0.0;
    } else {
        constraint->applyVelocityConditions(this, 0.0);
        constraint->applyAccelerationConditions(this, 0.0);
    }
    for (int k = 0; k < 6; ++k)
        s.previousDisplacement[k] = s.displacement[k];
    internalEnergy = externalWork = kineticEnergy = spareEnergy1 = spareEnergy2 = 0.0;
    if (mass == 0.0) mass = 1e-15;
    previousStep = 0.0;
}

void Node::determineMassMatrix() {
    double* J = state.inertia;
    if (J[0] == 0.0 && J[4] == 0.0 && J[8] == 0.0) {
        J[0] = 1e-15;
        J[4] = 1e-15;
        J[8] = 1e-15;
    }
    const TNT::Array2D<double> inverse = TNT::invert(TNT::Array2D<double>(3, 3, J));
    if (inverse.dim1() != 3)
        throw std::runtime_error("Rotational inertia of node " + std::to_string(number) + " is singular");
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            state.inverseInertia[3 * r + c] = inverse[r][c];
}

namespace {
// Six components held as a lane of four and a lane of two, so that a
// vector is read or written with two instructions instead of six. Every
// lane does exactly the arithmetic of the scalar formula, in the same
// order, so the results are the same to the last bit.
typedef double Lanes4 __attribute__((vector_size(32)));
typedef double Lanes2 __attribute__((vector_size(16)));
struct Six {
    Lanes4 lo;
    Lanes2 hi;
};
inline Six read(const double* p) {
    Six v;
    std::memcpy(&v.lo, p, sizeof v.lo);
    std::memcpy(&v.hi, p + 4, sizeof v.hi);
    return v;
}
inline void write(double* p, const Six& v) {
    std::memcpy(p, &v.lo, sizeof v.lo);
    std::memcpy(p + 4, &v.hi, sizeof v.hi);
}
inline Six operator+(const Six& a, const Six& b) {
    return {a.lo + b.lo, a.hi + b.hi};
}
inline Six operator*(double k, const Six& a) {
    return {k * a.lo, k * a.hi};
}
inline Six operator*(const Six& a, const Six& b) {
    return {a.lo * b.lo, a.hi * b.hi};
}
// Sum of the six components from the first to the last, starting at 0.
inline double sumInOrder(const Six& v) {
    double sum = 0.0;
    sum += v.lo[0];
    sum += v.lo[1];
    sum += v.lo[2];
    sum += v.lo[3];
    sum += v.hi[0];
    sum += v.hi[1];
    return sum;
}
} // namespace

void Node::computeNewPosition(double dt, double t) {
    // The state is read and written whole vectors at a time, and the new
    // accelerations, velocities and forces stay in registers until they are
    // stored once.
    State& s = state;
    const Six fExt = read(pass.externalForce);
    const Six fInt = read(pass.internalForce);
    write(s.previousDisplacement, read(s.displacement));
    write(s.previousExternalForce, fExt);
    write(s.previousInternalForce, fInt);

    Load::Values loaded; // read only when there is a load
    if (load) {
        loaded = load->at(t);
        for (int i = 0; i < 6; ++i)
            pass.force[i] += loaded.force[i];
    }
    const double* F = pass.force;

    const double m = mass, c = rayleighDamping;
    Lanes4 vp;
    std::memcpy(&vp, s.previousVelocity, sizeof vp);
    Lanes4 F4;
    std::memcpy(&F4, F, sizeof F4);
    // a = F/m - vp c; the fourth lane is not used.
    const Lanes4 translation = F4 / m - vp * c;

    // Euler's equations for the rotations: J dw/dt = M - w x (J w)
    const double* J = s.inertia;
    const double* K = s.inverseInertia;
    const double w0 = s.velocity[3], w1 = s.velocity[4], w2 = s.velocity[5];
    const double h0 = J[0] * w0 + J[1] * w1 + J[2] * w2;
    const double h1 = J[3] * w0 + J[4] * w1 + J[5] * w2;
    const double h2 = J[6] * w0 + J[7] * w1 + J[8] * w2;
    const double M0 = F[3] - (w1 * h2 - w2 * h1);
    const double M1 = F[4] - (w2 * h0 - w0 * h2);
    const double M2 = F[5] - (w0 * h1 - w1 * h0);
    Six a;
    a.lo = Lanes4{translation[0], translation[1], translation[2], K[0] * M0 + K[1] * M1 + K[2] * M2};
    a.hi = Lanes2{K[3] * M0 + K[4] * M1 + K[5] * M2, K[6] * M0 + K[7] * M1 + K[8] * M2};

    if (load) a = a + read(loaded.acceleration.data());
    write(s.acceleration, a);
    if (constraint) {
        constraint->applyAccelerationConditions(this, t);
        a = read(s.acceleration);
    }

    const double dtPrev = previousStep;
    previousStep = dt;
    averageStep = 0.5 * (dtPrev + dt);

    const Lanes4 vn = vp + 0.5 * dt * a.lo;
    Six v = read(s.velocity) + averageStep * a;
    write(s.velocity, v);
    write(s.previousVelocity, v);
    const Six u = read(s.displacement) + dt * v;
    write(s.displacement, u);
    write(pass.position, read(s.origin) + u);
    if (constraint) {
        constraint->applyVelocityConditions(this, t);
        v = read(s.velocity);
    }

    // The previous-force copies were taken above, so each pair sums to twice
    // the force of this step.
    const double half = 0.5 * dt;
    externalWork += half * sumInOrder((fExt + fExt) * v);
    internalEnergy -= half * sumInOrder((fInt + fInt) * v);
    kineticEnergy = 0.5 * m * (vn[0] * vn[0] + vn[1] * vn[1] + vn[2] * vn[2]);
}

void Node::checkpoint(Archive& archive) {
    archive.pod(pass);
    archive.pod(state);
    archive.pod(mass);
    archive.pod(averageStep);
    archive.pod(previousStep);
    archive.pod(internalEnergy);
    archive.pod(externalWork);
    archive.pod(kineticEnergy);
    archive.pod(spareEnergy1);
    archive.pod(spareEnergy2);
}
