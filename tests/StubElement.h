// An element with scripted answers to the result codes, for testing the
// writers and trackers alone: printVTK(100/200, c) returns what `answer`
// gives (or the base output when it returns ""), and every call is recorded.
#pragma once

#include "Element.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

class StubElement : public Element {
public:
    using Answer = std::function<std::string(int what, int component, int number)>;

    StubElement(int n, std::vector<std::shared_ptr<Node>> elementNodes = {},
                const std::string& cellType = "3", Answer answer = {})
        : answer(std::move(answer)) {
        number = n;
        nodes = std::move(elementNodes);
        numberOfNodes = static_cast<int>(nodes.size());
        vtkCellType = cellType;
    }
    void parseOstrel() override {}
    void parseOstrel(std::vector<Token>, const std::vector<std::shared_ptr<Node>>&,
                     const std::unordered_map<int, std::shared_ptr<Node>>&,
                     const std::vector<std::shared_ptr<Material>>&,
                     const std::vector<std::shared_ptr<Load>>&) override {}
    void assembleMassMatrix() override {}
    void setInitialConditions() override {}
    double checkTimestep(double dt) override { return dt; }
    void updateLocalCoordinateSystem() override {}
    int getNumberOfIntegrationPoints() override { return 1; }
    void computeStrain(double, int) override {}
    void computeStress(double, int) override {}
    void computeInternalForces(double, int) override {}
    void computeExternalForces(double) override {}
    void computeContactForces() override {}
    void checkpoint(Archive&) override {}
    std::string printVTK(int what, int c) override {
        calls.emplace_back(what, c);
        if ((what == 100 || what == 200) && answer) {
            const std::string text = answer(what, c, number);
            if (!text.empty()) return text;
        }
        return Element::printVTK(what, c);
    }

    std::vector<std::pair<int, int>> calls;

private:
    Answer answer;
};
