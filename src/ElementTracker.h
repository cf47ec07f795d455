// History of one strain or stress component on a list of elements: each row
// holds the time, the component as the element prints it for the result file,
// and the sum of those printed texts read back in single precision.
#pragma once

#include "Tracker.h"

class ElementTracker : public Tracker {
public:
    static constexpr int UNSET = -1;
    // Codes of the tracked quantity.
    static constexpr int STRAIN = 10;
    static constexpr int STRESS = 11;

    ElementTracker() = default;

    // <name> ELEMENTS e1 e2 ... COMPONENT <C11|C22|C33|C12|C13|C23> TYPE <STRAIN|STRESS>,
    // keywords in any order. Components map to the result writer's indices:
    // C11 0, C22 1, C33 2, C23 3, C13 4, C12 5.
    void parseOstrel(std::vector<Token> tokens,
                     const std::unordered_map<int, std::shared_ptr<Node>>& nodesByNumber,
                     const std::unordered_map<int, std::shared_ptr<Element>>& elementsByNumber) override;
    // Writes the header first when time is exactly 0 (", Node <n>" for every
    // element), then the "%f" time, each element's text and the total.
    //
    // A tracker whose COMPONENT or TYPE was never given writes "0" for every
    // element (as for an unknown type): the columns still match the header and
    // no element is asked for a component that does not exist.
    void printCSV(double time) override;

    const std::vector<std::shared_ptr<Element>>& getElements() const { return elements; }
    int getComponent() const { return component; }
    int getType() const { return type; }

private:
    std::vector<std::shared_ptr<Element>> elements;
    int component = UNSET;
    int type = UNSET;
};
