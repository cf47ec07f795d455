#include "AmplitudeLibrary.h"

#include "AmpTabular.h"
#include "Amplitude.h"

#include <stdexcept>

std::shared_ptr<Amplitude> AmplitudeLibrary::getAmplitudeOstrel(std::string type) {
    if (type == "TABULAR") return std::make_shared<AmpTabular>();
    throw std::invalid_argument("Amplitude Type " + type + " is not recognized");
}
