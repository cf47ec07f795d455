#include "BoundaryCondition.h"

#include "Amplitude.h"
#include "Node.h"

#include <stdexcept>

namespace {
const char* const velocityKeys[6] = {"VX", "VY", "VZ", "VRX", "VRY", "VRZ"};
const char* const accelerationKeys[6] = {"AX", "AY", "AZ", "ARX", "ARY", "ARZ"};

// Component k (x, y, z, rx, ry, rz) of the node's velocity and acceleration.
// A switch rather than a table of member-function pointers: GCC 12's
// undefined-behaviour checker misreads calls through such a table.
void setVelocity(Node& node, int k, double v) {
    switch (k) {
    case 0:
        node.setX_vel(v);
        break;
    case 1:
        node.setY_vel(v);
        break;
    case 2:
        node.setZ_vel(v);
        break;
    case 3:
        node.setX_rot_vel(v);
        break;
    case 4:
        node.setY_rot_vel(v);
        break;
    default:
        node.setZ_rot_vel(v);
        break;
    }
}

void setAcceleration(Node& node, int k, double a) {
    switch (k) {
    case 0:
        node.setX_acc(a);
        break;
    case 1:
        node.setY_acc(a);
        break;
    case 2:
        node.setZ_acc(a);
        break;
    case 3:
        node.setX_rot_acc(a);
        break;
    case 4:
        node.setY_rot_acc(a);
        break;
    default:
        node.setZ_rot_acc(a);
        break;
    }
}
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
            setAcceleration(*node, k, 0.0);
        else if (accelerationSet[k])
            setAcceleration(*node, k, f * acceleration[k]);
    }
}

void BoundaryCondition::applyVelocityConditions(Node* node, double t) {
    const double f = scaleFactor(t);
    for (int k = 0; k < 6; ++k)
        if (velocitySet[k]) setVelocity(*node, k, f * velocity[k]);
}
