#include "Element.h"

#include "Node.h"

#include <climits>
#include <cmath>
#include <cstdio>
#include <sstream>
#include <stdexcept>

Element::Element() : number(0), numberOfNodes(0) {}

Element::~Element() = default;

void Element::runStep(double dt, double time, bool automaticStep, double& candidateStep) {
    runStepAs(*this, dt, time, automaticStep, candidateStep);
}

double Element::scaleMass(double s) {
    const double added = addLumpedMass(s - 1.0);
    if (added > 0.0) {
        massScale = s;
        stepScale = std::sqrt(s);
    }
    return added;
}

std::string Element::printVTK(int what, int /*component*/) {
    if (what == vtkCellTypeLine) return vtkCellType + "\n";
    if (what == vtkCellLine) {
        std::string line = std::to_string(nodes.size());
        for (const auto& n : nodes)
            line += "\t" + std::to_string(n->getNumber());
        return line + "\n";
    }
    return "";
}

std::string Element::formatValue(double v, bool zeroSmall) {
    if (zeroSmall && std::fabs(v) <= 1e-10) return "0.0";
    char buf[64];
    std::snprintf(buf, sizeof buf, "%f", v);
    return buf;
}
