// A nodal condition that prescribes velocities or accelerations, referred to
// by name from node lines.
#pragma once

#include "Token.h"

#include <memory>
#include <string>
#include <vector>

class Node;
class Amplitude;

class Constraint {
public:
    virtual ~Constraint() = default;
    virtual void applyAccelerationConditions(Node* node, double t) = 0;
    virtual void applyVelocityConditions(Node* node, double t) = 0;
    virtual void parseOstrel(std::vector<Token> tokens,
                             const std::vector<std::shared_ptr<Amplitude>>& amplitudes) = 0;
    virtual void setInitialConditions() = 0;

    std::string getType() const { return type; }
    std::string getName() const { return name; }
    void setType(std::string& t) { type = t; }
    void setName(std::string& n) { name = n; }

protected:
    std::string type;
    std::string name;
};
