#include "BoundaryCondition.h"

#include "DeckParser.h"

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
    const DeckParser line(tokens, DeckParser::AtEnd::Checked);
    using K = DeckParser::Follows;
    std::vector<DeckParser::Keyword> table;
    for (int k = 0; k < 6; ++k) {
        table.push_back({velocityKeys[k], K::Number, [&, k](std::size_t i) {
                             velocity[k] = line.finiteNumber(i + 1, std::string(velocityKeys[k]) +
                                                                        " of constraint " + name);
                             velocitySet[k] = true;
                             return 2;
                         }});
        table.push_back({accelerationKeys[k], K::Number, [&, k](std::size_t i) {
                             acceleration[k] = line.finiteNumber(i + 1, std::string(accelerationKeys[k]) +
                                                                            " of constraint " + name);
                             accelerationSet[k] = true;
                             return 2;
                         }});
    }
    table.push_back({"AMPLITUDE", K::Word, [&](std::size_t i) {
                         amplitude = DeckParser::require(amplitudes, line.at(i + 1).getWord(), "Amplitude");
                         hasAmplitude = true;
                         return 2;
                     }});
    line.read(table);
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
