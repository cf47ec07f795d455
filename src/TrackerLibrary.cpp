#include "TrackerLibrary.h"

#include "Tracker.h"

#include <stdexcept>

std::shared_ptr<Tracker> TrackerLibrary::getTrackerOstrel(std::string type) {
    throw std::invalid_argument("Tracker Type " + type + " is not recognized");
}
