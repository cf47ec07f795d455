#include "TrackerLibrary.h"

#include "ElementTracker.h"
#include "NodeTracker.h"

#include <stdexcept>

std::shared_ptr<Tracker> TrackerLibrary::getTrackerOstrel(std::string type) {
    if (type == "NODE") return std::make_shared<NodeTracker>();
    if (type == "ELEMENT") return std::make_shared<ElementTracker>();
    throw std::invalid_argument("Tracker Type " + type + " is not recognized");
}
