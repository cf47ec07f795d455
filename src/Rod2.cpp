#include "Rod2.h"

#include "Checkpoint.h"
#include "DeckParser.h"

#include "ContactLine.h"
#include "Material.h"
#include "Node.h"
#include "SpeedHints.h"
#include "TriangleGeometry.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <stdexcept>

namespace {
const double pi = 3.14159265358979323846;
}

Rod2::Rod2() {
    numberOfNodes = 2;
    vtkCellType = "3";
}

void Rod2::parseOstrel() {
    std::cout << " Rod2 ->parse_Ostrel method. Adress : " << static_cast<const void*>(this) << "\n";
    if (contactLine)
        contactLine->parseOstrel();
    else
        contactLine = std::make_shared<ContactLine>();
}

void Rod2::parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Node>>& modelNodes,
                       const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                       const std::vector<std::shared_ptr<Material>>& materials,
                       const std::vector<std::shared_ptr<Load>>& loads) {
    const DeckParser line(tokens, DeckParser::AtEnd::Checked);
    using K = DeckParser::Follows;
    line.read({{"NODES", K::Anything,
                [&](std::size_t i) {
                    // A repeated NODES appends its pair: the rod acts between the first
                    // two nodes and its cell line lists them all (intended; see the
                    // user guide, "Quirks worth knowing").
                    for (auto& n : line.nodes(i + 1, 2, "Not enough nodes inputs for Element Rod2", nodeMap,
                                              DeckParser::NodeOrder::FetchFirst))
                        nodes.push_back(n);
                    node1 = nodes[0].get();
                    node2 = nodes[1].get();
                    // A cell through more than two points is a poly-line in the results.
                    if (nodes.size() > 2) vtkCellType = "4";
                    nodesSet = true;
                    return 3;
                }},
               {"MATERIAL", K::Word,
                [&](std::size_t i) {
                    const std::string wanted = line.at(i + 1).getWord();
                    // A name that matches nothing is only fatal while no material is set
                    // (intended; see the user guide, "Quirks worth knowing").
                    if (auto found = DeckParser::find(materials, wanted))
                        material = found;
                    else if (!material)
                        throw DeckParser::notFound("Material", wanted);
                    materialSet = true;
                    return 2;
                }},
               {"D", K::Number,
                [&](std::size_t i) {
                    diameter = line.finiteNumber(i + 1, "D of rod element " + std::to_string(number));
                    diameterSet = true;
                    return 2;
                }},
               {"CONTACT", K::Word,
                [&](std::size_t i) {
                    if (line.at(i + 1).getWord() != "EDGE")
                        throw std::invalid_argument("Invalid CONTACT type");
                    contactType = faceEdgeContact;
                    return 2;
                }},
               {"FACTOR", K::Number, [&](std::size_t i) {
                    contactFactor =
                        line.finiteNumber(i + 1, "FACTOR of rod element " + std::to_string(number));
                    contactFactorSet = true;
                    return 2;
                }}});

    if (contactType == faceEdgeContact) {
        contactLine = std::make_shared<ContactLine>();
        contactLine->setNumber(-1);
        contactLine->parseOstrel(contactLineTokens(), modelNodes, nodeMap, materials, loads);
    }
}

void Rod2::attachContactSearch(ContactSearch& search) {
    if (contactType == faceEdgeContact && contactLine) contactLine->attachContactSearch(search);
}

std::vector<Token> Rod2::contactLineTokens() const {
    std::vector<Token> tokens;
    tokens.emplace_back("NODES");
    tokens.emplace_back(std::to_string(nodes.at(0)->getNumber()));
    tokens.emplace_back(std::to_string(nodes.at(1)->getNumber()));
    tokens.emplace_back("R");
    // The radius travels as six-decimal text: below 5e-7 it becomes 0
    // (intended; see the user guide, "Quirks worth knowing").
    tokens.emplace_back(std::to_string(diameter * 0.5));
    if (contactFactorSet) {
        tokens.emplace_back("FACTOR");
        tokens.emplace_back(std::to_string(contactFactor));
    }
    return tokens;
}

double Rod2::elementLength() const {
    const Node& a = node1 ? *node1 : *nodes.at(0);
    const Node& b = node2 ? *node2 : *nodes.at(1);
    const double dx = b.getX_pos() - a.getX_pos();
    const double dy = b.getY_pos() - a.getY_pos();
    const double dz = b.getZ_pos() - a.getZ_pos();
    // A step asks for the length three times from the same positions: the
    // root taken by the basis update serves as long as the axis is the same.
    const double* d = axis;
    if (dx == d[0] && dy == d[1] && dz == d[2]) return axisLength;
    return std::sqrt(dx * dx + dy * dy + dz * dz);
}

void Rod2::assembleMassMatrix() {
    const double A0 = pi * diameter * diameter * 0.25;
    initialArea = A0;
    area = A0;
    if (A0 <= 0.0)
        throw std::invalid_argument("Error in rod element " + std::to_string(number) +
                                    ", Cross section area is zero or negative");
    node1 = nodes.at(0).get();
    node2 = nodes.at(1).get();
    initialLength = elementLength();
    if (!material)
        throw std::invalid_argument("Error in rod element " + std::to_string(number) +
                                    ". Material is not set");
    const double m = material->getDensity() * area * initialLength;
    if (!(m > 0.0))
        throw std::invalid_argument("Error in rod element " + std::to_string(number) +
                                    ". Element mass is zero or negative");
    // Finite inputs can still overflow (a diameter of 1E200); an infinite mass
    // or inertia would only surface later as NaN positions.
    const double I = std::max(m * initialLength * initialLength / 12.0, m * diameter * diameter * 0.125);
    if (!std::isfinite(m) || !std::isfinite(I))
        throw std::invalid_argument("Error in rod element " + std::to_string(number) +
                                    ". Element mass or inertia is not a finite number");
    Node& n1 = *node1;
    Node& n2 = *node2;
    n1.addMass(m * 0.5);
    n2.addMass(m * 0.5);
    const double alpha = material->getAlpha();
    n1.setRayleighDamping(alpha);
    n2.setRayleighDamping(alpha);

    TNT::Array2D<double> inertia(3, 3, 0.0);
    for (int r = 0; r < 3; ++r)
        inertia[r][r] = I;
    // Each node carries the full rotational inertia of the rod.
    n1.addInertia(inertia);
    n2.addInertia(inertia);

    if (contactType == faceEdgeContact) contactLine->assembleMassMatrix();
}

double Rod2::addLumpedMass(double factor) {
    // The lumping of assembleMassMatrix, for factor times the initial mass.
    const double m = factor * (material->getDensity() * initialArea * initialLength);
    const double I = std::max(m * initialLength * initialLength / 12.0, m * diameter * diameter * 0.125);
    TNT::Array2D<double> inertia(3, 3, 0.0);
    for (int r = 0; r < 3; ++r)
        inertia[r][r] = I;
    for (Node* n : {node1, node2}) {
        n->addMass(m * 0.5);
        n->addInertia(inertia);
    }
    return m;
}

void Rod2::setInitialConditions() {
    material = material->copyMat();
    material->setInitialConditions(frame().basis());
    // The laws' wave speeds are fixed once their initial conditions are set.
    barSpeed = material->wavespeed1D();
    if (contactType == faceEdgeContact) contactLine->setInitialConditions();
}

double Rod2::checkTimestep(double dt) {
    const double criticalStep = scaledStep(elementLength() / barSpeed);
    if (std::isnan(criticalStep)) return dt;
    return std::min(criticalStep, dt);
}

void Rod2::updateLocalCoordinateSystem() {
    const Node& a = node1 ? *node1 : *nodes.at(0);
    const Node& b = node2 ? *node2 : *nodes.at(1);
    double* d = axis;
    d[0] = b.getX_pos() - a.getX_pos();
    d[1] = b.getY_pos() - a.getY_pos();
    d[2] = b.getZ_pos() - a.getZ_pos();
    // Row e1, the unit axis, is the only row that carries force: it is formed
    // here exactly as the full construction forms it, and the basis waits
    // until someone reads it.
    const double L = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
    axisLength = L;
    double* e1 = unitAxis;
    e1[0] = d[0] / L;
    e1[1] = d[1] / L;
    e1[2] = d[2] / L;
    if (contactType == faceEdgeContact) contactLine->updateLocalCoordinateSystem();
}

TriangleGeometry Rod2::frame() const {
    // The third point only fixes e2 and e3, which carry no force; it is
    // parallel to the axis for axes along (1, 1, -1).
    const double* d = axis;
    TriangleGeometry g;
    g.update({d[0], d[1], d[2]}, {d[2], -d[0], d[1]});
    return g;
}

std::array<std::array<double, 3>, 3> Rod2::getLocalBasis() const {
    const TriangleGeometry g = frame();
    const auto& e = g.basis();
    return {{{e[0][0], e[0][1], e[0][2]}, {e[1][0], e[1][1], e[1][2]}, {e[2][0], e[2][1], e[2][2]}}};
}

void Rod2::computeStrain(double /*dt*/, int /*ip*/) {
    length = elementLength();
    const double eps = std::log((length - initialLength) / initialLength + 1.0);
    axialStrainIncrement = eps - axialStrain;
    area = initialArea * initialLength / length;
}

void Rod2::computeStress(double /*dt*/, int /*ip*/) {
    material->computeStress1D(axialStrain, axialStrainIncrement, axialStress);
}

void Rod2::computeInternalForces(double /*dt*/, int /*ip*/) {
    // The local force is (N, 0, 0); its other two components stay zero.
    axialForce = axialStress * area;
    // f = basis^T localForce = N e1. Only the axis row carries force, which
    // keeps the force finite when the auxiliary point leaves e2, e3 undefined.
    const double* e1 = unitAxis;
    double f[3];
    for (int j = 0; j < 3; ++j)
        f[j] = e1[j] * axialForce;
    Node& a = node1 ? *node1 : *nodes.at(0);
    Node& b = node2 ? *node2 : *nodes.at(1);
    a.addInternalForce(f[0], f[1], f[2]);
    b.addInternalForce(-f[0], -f[1], -f[2]);
}

void Rod2::computeExternalForces(double time) {
    if (contactType == faceEdgeContact) contactLine->computeExternalForces(time);
}

void Rod2::computeContactForces() {
    if (contactType == faceEdgeContact) contactLine->computeContactForces();
}

std::string Rod2::printVTK(int what, int component) {
    if ((what == vtkStrain || what == vtkStress) && component >= 0 && component < 6) {
        const double axial = what == vtkStrain ? axialStrain : axialStress;
        return formatValue(component == 0 ? axial : 0.0, false);
    }
    return Element::printVTK(what, component);
}

void Rod2::prefetchForStep() const {
    speed::prefetch(*this);
    if (node1) node1->prefetchForElements();
    if (node2) node2->prefetchForElements();
}

void Rod2::runStep(double dt, double time, bool automaticStep, double& candidateStep) {
    // The type is final: the operations are called directly, and what one
    // leaves in registers can serve the next.
    runStepAs(*this, dt, time, automaticStep, candidateStep);
}

void Rod2::checkpoint(Archive& archive) {
    archive.pod(area);
    archive.pod(length);
    archive.pod(axis);
    archive.pod(axisLength);
    archive.pod(axialStrain);
    archive.pod(axialStress);
    archive.pod(axialStrainIncrement);
    archive.pod(axialForce);
    archive.pod(unitAxis);
    if (contactLine) contactLine->checkpoint(archive);
}
