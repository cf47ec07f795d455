// Prescribed nodal velocities and accelerations, per degree of freedom,
// optionally scaled in time by an amplitude f(t). A prescribed velocity
// component has its acceleration zeroed before integration and its velocity
// reset to f(t) v after; a prescribed acceleration component gets f(t) a.
// Where both are given for a component the velocity wins.
#pragma once

#include "Constraint.h"

class BoundaryCondition : public Constraint {
public:
    BoundaryCondition();

    void applyAccelerationConditions(Node* node, double t) override;
    void applyVelocityConditions(Node* node, double t) override;
    void parseOstrel(std::vector<Token> tokens,
                     const std::vector<std::shared_ptr<Amplitude>>& amplitudes) override;
    void setInitialConditions() override {}

    bool isVelocityPrescribed(int k) const { return velocitySet[k]; }
    bool isAccelerationPrescribed(int k) const { return accelerationSet[k]; }
    double getVelocity(int k) const { return velocity[k]; }
    double getAcceleration(int k) const { return acceleration[k]; }
    std::shared_ptr<Amplitude> getAmplitude() const { return amplitude; }

private:
    double scaleFactor(double t);

    double velocity[6] = {0, 0, 0, 0, 0, 0};
    double acceleration[6] = {0, 0, 0, 0, 0, 0};
    bool velocitySet[6] = {false, false, false, false, false, false};
    bool accelerationSet[6] = {false, false, false, false, false, false};
    std::vector<std::shared_ptr<Node>> nodes;
    std::shared_ptr<Amplitude> amplitude;
    bool hasAmplitude = false;
};
