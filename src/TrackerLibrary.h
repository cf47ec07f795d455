// Factory of Tracker objects: maps one upper-case keyword to one class.
#pragma once

#include <memory>
#include <string>

class Tracker;

class TrackerLibrary {
public:
    TrackerLibrary() = default;
    virtual ~TrackerLibrary() = default;
    static std::shared_ptr<Tracker> getTrackerOstrel(std::string type);
};
