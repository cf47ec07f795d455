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

void Element::calculateLocalBasis(double x1, double y1, double z1, double x2, double y2, double z2, double x3,
                                  double y3, double z3, TNT::Array2D<double>& basis) {
    if (basis.dim1() != 3 || basis.dim2() != 3) basis = TNT::Array2D<double>(3, 3, 0.0);
    const double ax = x2 - x1, ay = y2 - y1, az = z2 - z1;
    const double bx = x3 - x1, by = y3 - y1, bz = z3 - z1;
    double nx = ay * bz - az * by, ny = az * bx - ax * bz, nz = ax * by - ay * bx;
    const double nn = std::sqrt(nx * nx + ny * ny + nz * nz);
    nx /= nn;
    ny /= nn;
    nz /= nn;
    const double an = std::sqrt(ax * ax + ay * ay + az * az);
    const double e1x = ax / an, e1y = ay / an, e1z = az / an;
    basis[0][0] = e1x;
    basis[0][1] = e1y;
    basis[0][2] = e1z;
    basis[2][0] = nx;
    basis[2][1] = ny;
    basis[2][2] = nz;
    basis[1][0] = ny * e1z - nz * e1y;
    basis[1][1] = nz * e1x - nx * e1z;
    basis[1][2] = nx * e1y - ny * e1x;
}
