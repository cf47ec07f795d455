// Base of trackers: the history of one quantity on chosen nodes or elements,
// one CSV row per print time.
#pragma once

#include "IOFile.h"

#include <fstream>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class Node;
class Element;

class Tracker : public IOFile {
public:
    ~Tracker() override = default;
    void init(const std::filesystem::path& p) override;
    virtual void parseOstrel(std::vector<Token> tokens,
                             const std::unordered_map<int, std::shared_ptr<Node>>& nodesByNumber,
                             const std::unordered_map<int, std::shared_ptr<Element>>& elementsByNumber) = 0;
    virtual void initializeTracker();
    virtual void printCSV(double time) = 0;

    // Names the tracker and points its file at <deck directory>/<name>.csv.
    void setName(const std::string& n);
    std::string getName() const { return name; }
    std::string csvPath() const { return csvFile.string(); }

protected:
    std::string name;
    std::filesystem::path csvFile;
    std::ofstream file;
};
