#include "BoundaryCondition.h"

#include "Amplitude.h"
#include "Node.h"

#include <stdexcept>

namespace {
const char* const velocityKeys[6] = {"VX", "VY", "VZ", "VRX", "VRY", "VRZ"};
const char* const accelerationKeys[6] = {"AX", "AY", "AZ", "ARX", "ARY", "ARZ"};

using Setter = void (Node::*)(double);
const Setter velocitySetters[6] = {&Node::setX_vel,     &Node::setY_vel,     &Node::setZ_vel,
                                   &Node::setX_rot_vel, &Node::setY_rot_vel, &Node::setZ_rot_vel};
const Setter accelerationSetters[6] = {&Node::setX_acc,     &Node::setY_acc,     &Node::setZ_acc,
                                       &Node::setX_rot_acc, &Node::setY_rot_acc, &Node::setZ_rot_acc};
} // namespace

BoundaryCondition::BoundaryCondition() {
    type = "BOUNDARY_CONDITION";
}

void BoundaryCondition::parseOstrel(std::vector<Token> tokens,
                                    const std::vector<std::shared_ptr<Amplitude>>& amplitudes) {
    std::size_t i = 0;
    while (i < tokens.size()) {
        const std::string key = tokens[i].getWord();
        bool done = false;
        for (int k = 0; k < 6 && !done; ++k) {
            if (key == velocityKeys[k] && tokens.at(i + 1).isANumber()) {
                velocity[k] = tokens[i + 1].getFiniteNumber(key + " of constraint " + name);
                velocitySet[k] = true;
                done = true;
            } else if (key == accelerationKeys[k] && tokens.at(i + 1).isANumber()) {
                acceleration[k] = tokens[i + 1].getFiniteNumber(key + " of constraint " + name);
                accelerationSet[k] = true;
                done = true;
            }
        }
        if (!done && key == "AMPLITUDE" && tokens.at(i + 1).isAWord()) {
            const std::string wanted = tokens[i + 1].getWord();
            std::shared_ptr<Amplitude> found;
            for (const auto& a : amplitudes)
                if (a->getName() == wanted) {
                    found = a;
                    break;
                }
            if (!found) throw std::invalid_argument("Amplitude name " + wanted + " is not found");
            amplitude = found;
            hasAmplitude = true;
            done = true;
        }
        if (!done) throw std::invalid_argument("Input " + key + " is not recognized");
        i += 2;
    }
}

double BoundaryCondition::scaleFactor(double t) {
    return hasAmplitude ? amplitude->at(t) : 1.0;
}

void BoundaryCondition::applyAccelerationConditions(Node* node, double t) {
    const double f = scaleFactor(t);
    for (int k = 0; k < 6; ++k) {
        if (velocitySet[k])
            (node->*accelerationSetters[k])(0.0);
        else if (accelerationSet[k])
            (node->*accelerationSetters[k])(f * acceleration[k]);
    }
}

void BoundaryCondition::applyVelocityConditions(Node* node, double t) {
    const double f = scaleFactor(t);
    for (int k = 0; k < 6; ++k)
        if (velocitySet[k]) (node->*velocitySetters[k])(f * velocity[k]);
}
