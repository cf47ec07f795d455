#include "AmplitudeLibrary.h"

#include "Amplitude.h"

#include <stdexcept>

std::shared_ptr<Amplitude> AmplitudeLibrary::getAmplitudeOstrel(std::string type) {
    throw std::invalid_argument("Amplitude Type " + type + " is not recognized");
}
