// A named set of nodal forces, moments, accelerations and a surface pressure,
// optionally scaled in time by an amplitude.
#pragma once

#include "TntExtras.h"
#include "Token.h"

#include <memory>
#include <string>
#include <vector>

class Amplitude;

class Load {
public:
    Load();

    void parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Amplitude>>& amplitudes);
    void setInitialConditions() {}

    // Each call returns a new array: the stored vectors are never changed.
    TNT::Array1D<double> getLoad(double time);
    TNT::Array1D<double> getAcc(double time);
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
    TNT::Array1D<double> loadVector;
    TNT::Array1D<double> accVector;
    std::shared_ptr<Amplitude> amplitude;
    bool pressureSet = false;
    bool loadSet[6] = {false, false, false, false, false, false};
    bool accSet[6] = {false, false, false, false, false, false};
    bool hasAmplitude = false;
};
