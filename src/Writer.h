// Base of result writers: owns the results directory beside the deck
// (Results_<stem>) and the output stream.
#pragma once

#include "IOFile.h"

#include <fstream>
#include <memory>
#include <string>
#include <vector>

class Archive;
class Node;
class Element;

class Writer : public IOFile {
public:
    ~Writer() override = default;
    void init(const std::filesystem::path& deckPath) override;
    virtual void initializeWriter(std::vector<std::shared_ptr<Node>>& nodes,
                                  std::vector<std::shared_ptr<Element>>& elements) = 0;
    virtual void writeResults(std::vector<std::shared_ptr<Node>>& nodes,
                              std::vector<std::shared_ptr<Element>>& elements) = 0;

    // Where the writer stands in its numbering (Checkpoint.h); nothing by default.
    virtual void checkpoint(Archive& /*archive*/) {}

    std::string getType() const { return type; }
    // The model time that writeResults reports for the state it writes,
    // read at each print (0 while no clock is set).
    void setClock(const double& time) { clock = &time; }

protected:
    double clockTime() const { return clock ? *clock : 0.0; }

    std::string type;
    std::ofstream file;

private:
    const double* clock = nullptr;
};
