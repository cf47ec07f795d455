// Factory of Amplitude objects: maps one upper-case keyword to one class.
#pragma once

#include <memory>
#include <string>

class Amplitude;

class AmplitudeLibrary {
public:
    AmplitudeLibrary() = default;
    virtual ~AmplitudeLibrary() = default;
    static std::shared_ptr<Amplitude> getAmplitudeOstrel(std::string type);
};
