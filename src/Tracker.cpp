#include "Tracker.h"

#include <exception>
#include <stdexcept>

void Tracker::init(const std::filesystem::path& p) {
    IOFile::init(p);
    if (!exists) std::throw_with_nested(std::runtime_error("File does not exist"));
}

void Tracker::setName(const std::string& n) {
    name = n;
    csvFile = path;
    csvFile.replace_filename(n);
    csvFile.replace_extension(".csv");
}

void Tracker::initializeTracker() {
    file.open(csvFile, std::ios::out | std::ios::trunc);
}
