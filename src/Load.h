// A named set of nodal forces, moments, accelerations and a surface pressure,
// optionally scaled in time by an amplitude.
#pragma once

#include "TntExtras.h"
#include "Token.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

class Amplitude;

class Load {
public:
    void parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Amplitude>>& amplitudes);
    void setInitialConditions() {}

    // The nodal forces and moments, and the accelerations, at a time: the
    // amplitude is evaluated once for both (by value: nothing is allocated,
    // the stored vectors never change).
    struct Values {
        std::array<double, 6> force;
        std::array<double, 6> acceleration;
    };
    Values at(double time);
    double getPressure(double time);

    std::string getType() const { return type; }
    void setType(std::string& t) { type = t; }
    std::string getName() const { return name; }
    void setName(std::string& n) { name = n; }

private:
    double factor(double time);

    std::string type;
    std::string name;
    double pressure = 0.0;
    double loadVector[6] = {};
    double accVector[6] = {};
    std::shared_ptr<Amplitude> amplitude;
    bool pressureSet = false;
    bool loadSet[6] = {false, false, false, false, false, false};
    bool accSet[6] = {false, false, false, false, false, false};
    bool hasAmplitude = false;
};
