// A named scalar function of time that scales loads and prescribed motions.
#pragma once

#include "Token.h"

#include <memory>
#include <string>
#include <vector>

class Archive;

class Amplitude {
public:
    virtual ~Amplitude() = default;
    virtual std::shared_ptr<Amplitude> copyAmp() = 0;
    virtual void parseOstrel(std::vector<Token> tokens) = 0;
    virtual void setInitialConditions() = 0;
    virtual double at(double time) = 0;
    // What the amplitude carries from one increment to the next (Checkpoint.h).
    virtual void checkpoint(Archive& /*archive*/) {}

    std::string getName() const { return name; }
    void setName(std::string& n) {
        name = n;
        nameSet = true;
    }

protected:
    std::string name;
    bool nameSet = false;
    int numberOfValues = 0;
};
