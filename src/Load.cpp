#include "Load.h"

#include "Amplitude.h"

#include <stdexcept>

Load::Load() : loadVector(6, 0.0), accVector(6, 0.0) {}

void Load::parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Amplitude>>& amplitudes) {
    static const char* const loadKeys[6] = {"FX", "FY", "FZ", "MX", "MY", "MZ"};
    static const char* const accKeys[6] = {"AX", "AY", "AZ", "ARX", "ARY", "ARZ"};
    std::size_t i = 0;
    while (i < tokens.size()) {
        const std::string key = tokens[i].getWord();
        const bool valueFollows = i + 1 < tokens.size() && tokens[i + 1].isANumber();
        bool consumed = false;
        if (key == "AMPLITUDE" && i + 1 < tokens.size() && tokens[i + 1].isAWord()) {
            const std::string wanted = tokens[i + 1].getWord();
            amplitude.reset();
            for (const auto& a : amplitudes)
                if (a->getName() == wanted) {
                    amplitude = a;
                    break;
                }
            if (!amplitude) throw std::invalid_argument("Amplitude name " + wanted + " is not found");
            hasAmplitude = true;
            consumed = true;
        } else if (valueFollows) {
            const double v = tokens[i + 1].getFiniteNumber(key + " of load " + name);
            if (key == "P") {
                pressure = v;
                pressureSet = true;
                consumed = true;
            }
            for (int k = 0; k < 6 && !consumed; ++k) {
                if (key == loadKeys[k]) {
                    loadVector[k] = v;
                    loadSet[k] = true;
                    consumed = true;
                } else if (key == accKeys[k]) {
                    accVector[k] = v;
                    accSet[k] = true;
                    consumed = true;
                }
            }
        }
        if (!consumed) throw std::invalid_argument("Input " + key + " is not recognized");
        i += 2;
    }
}

double Load::factor(double time) {
    return hasAmplitude ? amplitude->at(time) : 1.0;
}

TNT::Array1D<double> Load::getLoad(double time) {
    const double f = factor(time);
    TNT::Array1D<double> out(6);
    for (int i = 0; i < 6; ++i)
        out[i] = loadVector[i] * f;
    return out;
}

TNT::Array1D<double> Load::getAcc(double time) {
    const double f = factor(time);
    TNT::Array1D<double> out(6);
    for (int i = 0; i < 6; ++i)
        out[i] = accVector[i] * f;
    return out;
}

double Load::getPressure(double time) {
    return pressure * factor(time);
}
