#include "Tracker.h"

#include "Checkpoint.h"

#include <climits>
#include <cmath>
#include <cstdio>
#include <exception>
#include <iterator>
#include <sstream>
#include <stdexcept>

void Tracker::init(const std::filesystem::path& p) {
    IOFile::init(p);
    if (!exists) std::throw_with_nested(std::runtime_error("File does not exist"));
}

void Tracker::setName(const std::string& n) {
    // The history belongs beside the deck: a name that reaches into another
    // directory (or names the root) would write elsewhere or nowhere.
    if (n.find('/') != std::string::npos)
        throw std::invalid_argument("Tracker name " + n + " is not a file name: it may not contain /");
    name = n;
    // The name takes the place of the deck's file name and ".csv" that of its
    // extension, so a tracker F.1 writes F.csv (intended; see the user guide,
    // "Quirks worth knowing").
    csvFile = path;
    csvFile.replace_filename(n);
    csvFile.replace_extension(".csv");
    IOFile::init(csvFile);
}

void Tracker::initializeTracker() {
    if (file.is_open()) file.close();
    file.clear();
    file.open(csvFile, std::ios::out | std::ios::trunc);
}

std::string Tracker::tokenText(const Token& t) {
    if (t.isAWord()) return t.getWord();
    std::ostringstream text;
    text << t.getNumber();
    return text.str();
}

int Tracker::entityNumber(const Token& t) {
    const double v = t.getNumber();
    if (!std::isfinite(v) || v <= double(INT_MIN) - 1.0 || v >= double(INT_MAX) + 1.0)
        throw std::invalid_argument("Node " + tokenText(t) + " is not found");
    return static_cast<int>(v);
}

void Tracker::formatTime(double time, char (&buffer)[64]) {
    std::snprintf(buffer, sizeof buffer, "%f", time);
}

void Tracker::checkpoint(Archive& archive) {
    std::string rows;
    if (archive.saving() && file.is_open()) {
        file.flush();
        std::ifstream in(csvFile, std::ios::binary);
        rows.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    archive.text(rows);
    if (archive.saving() || !file.is_open()) return;
    initializeTracker();
    file << rows;
    file.flush();
}
