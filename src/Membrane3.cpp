#include "Membrane3.h"

#include "Checkpoint.h"
#include "DeckParser.h"
#include "Load.h"
#include "Material.h"
#include "Node.h"
#include "SpeedHints.h"

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdio>
#include <stdexcept>

Membrane3::Membrane3() {
    numberOfNodes = 3;
    vtkCellType = "5";
}

Membrane3::~Membrane3() = default;

const std::shared_ptr<ContactLine>& Membrane3::getContactLine(int i) const {
    if (i < 1 || i > 3) throw std::out_of_range("Membrane3 has no contact line " + std::to_string(i));
    return contact.getLine(i);
}

void Membrane3::parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Node>>& allNodes,
                            const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                            const std::vector<std::shared_ptr<Material>>& materials,
                            const std::vector<std::shared_ptr<Load>>& loads) {
    const DeckParser line(tokens, DeckParser::AtEnd::Checked);
    using K = DeckParser::Follows;
    line.read({{"NODES", K::Anything,
                [&](std::size_t i) {
                    nodes = line.nodes(i + 1, 3, "Not enough nodes inputs for Element Membrane3", nodeMap,
                                       DeckParser::NodeOrder::WholeList);
                    for (int k = 0; k < 3; ++k)
                        nodePointers[k] = nodes[k].get();
                    nodesSet = true;
                    return 4;
                }},
               {"MATERIAL", K::Word,
                [&](std::size_t i) {
                    material = DeckParser::require(materials, line.at(i + 1).getWord(), "Material");
                    materialSet = true;
                    return 2;
                }},
               {"LOAD", K::Word,
                [&](std::size_t i) {
                    const std::string wanted = line.at(i + 1).getWord();
                    auto found = DeckParser::find(loads, wanted);
                    // An unknown load read before any material is reported with the
                    // material wording (intended; see the user guide, "Quirks worth knowing").
                    if (!found && !material) throw DeckParser::notFound("Material", wanted);
                    if (!found) throw DeckParser::notFound("Load", wanted);
                    load = found;
                    return 2;
                }},
               {"T", K::Number,
                [&](std::size_t i) {
                    thickness = line.finiteNumber(i + 1, "T of membrane element " + std::to_string(number));
                    return 2;
                }}},
              [&](std::size_t i) -> std::size_t {
                  std::size_t next = i;
                  // CONTACT, FACTOR or FRICTION, read by the face contact.
                  if (contact.readKeyword(tokens, next, tokens[i].getWord(), "membrane", number))
                      return next - i;
                  throw DeckParser::notRecognized(tokens[i].getWord());
              });

    contact.build(nodes, thickness, allNodes, nodeMap, materials, loads);
}

void Membrane3::computeJacobian() {
    geometry.update(node(0), node(1), node(2));
    jacobian[0][0] = geometry.x2();
    jacobian[0][1] = geometry.x3();
    jacobian[1][0] = 0.0;
    jacobian[1][1] = geometry.y3();
    detJacobian = jacobian[1][1] * jacobian[0][0];
}

void Membrane3::updateLocalCoordinateSystem() {
    // The frame of the current triangle is the one the Jacobian is built in:
    // computeJacobian forms both from the nodes of the step.
    contact.updateLocalCoordinateSystem();
}

void Membrane3::computeStrain(double dt, int /*ip*/) {
    computeJacobian();
    if (detJacobian <= 0.0)
        throw std::runtime_error("Error in Membrane element " + std::to_string(number) +
                                 ", det(Jacobian) is zero or negative. Timestep = " + std::to_string(dt));
    if (!(std::fabs(detJacobian) <= DBL_MAX))
        throw std::runtime_error("Error in Membrane element " + std::to_string(number) +
                                 ", det(Jacobian) is +inf or NaN. Timestep = " + std::to_string(dt));

    const double j00 = jacobian[0][0], j01 = jacobian[0][1], j10 = jacobian[1][0], j11 = jacobian[1][1];
    const double(&K)[2][2] = initialJacobianInverse;
    double(&F)[2][2] = deformationGradient;
    F[0][0] = j00 * K[0][0] + j01 * K[1][0];
    F[0][1] = j00 * K[0][1] + j01 * K[1][1];
    F[1][0] = j10 * K[0][0] + j11 * K[1][0];
    F[1][1] = j10 * K[0][1] + j11 * K[1][1];

    // G = J^-T: the Cartesian derivatives of the shape functions of nodes 2 and
    // 3 in the current local frame; node 1 takes minus their sum.
    const double det = detJacobian;
    const double g00 = j11 / det, g11 = j00 / det, g01 = -j10 / det, g10 = -j01 / det;
    double* b0 = shapeDerivatives[0];
    double* b1 = shapeDerivatives[1];
    double* b2 = shapeDerivatives[2];
    b0[0] = -g00 - g01;
    b0[1] = 0.0;
    b0[2] = g00;
    b0[3] = 0.0;
    b0[4] = g01;
    b0[5] = 0.0;
    b1[0] = 0.0;
    b1[1] = -g10 - g11;
    b1[2] = 0.0;
    b1[3] = g10;
    b1[4] = 0.0;
    b1[5] = g11;
    b2[0] = -g10 - g11;
    b2[1] = -g00 - g01;
    b2[2] = g10;
    b2[3] = g00;
    b2[4] = g11;
    b2[5] = g01;

    strain[0] = F[0][0];
    strain[1] = F[1][1];
    strain[2] = F[0][1];
}

void Membrane3::computeStress(double /*dt*/, int /*ip*/) {
    material->computeStress2D(deformationGradient, strain, stress, geometry.basis());
}

void Membrane3::computeInternalForces(double /*dt*/, int /*ip*/) {
    thickness = strain[2] * initialThickness;
    const double k = geometry.area() * thickness;
    const double s11 = stress[0], s22 = stress[1], s12 = stress[3];
    const double* b0 = shapeDerivatives[0];
    const double* b1 = shapeDerivatives[1];
    const double* b2 = shapeDerivatives[2];
    const double* u = geometry.basis()[0];
    const double* v = geometry.basis()[1];
    double* f = internalForce;
    for (int a = 0; a < 3; ++a) {
        const int cx = 2 * a, cy = 2 * a + 1;
        const double fx = (b0[cx] * s11 + b2[cx] * s12) * k;
        const double fy = (b1[cy] * s22 + b2[cy] * s12) * k;
        f[3 * a] = -(fx * u[0] + fy * v[0]);
        f[3 * a + 1] = -(fx * u[1] + fy * v[1]);
        f[3 * a + 2] = -(fx * u[2] + fy * v[2]);
    }
    node(0).addInternalForce(f[0], f[1], f[2]);
    node(1).addInternalForce(f[3], f[4], f[5]);
    node(2).addInternalForce(f[6], f[7], f[8]);
}

void Membrane3::computeExternalForces(double time) {
    if (!load) return;
    double f[3];
    geometry.pressureForce(load->getPressure(time), geometry.area(), f);
    for (int a = 0; a < 3; ++a)
        node(a).addExternalForce(f[0], f[1], f[2]);
}

void Membrane3::computeContactForces() {
    contact.computeContactForces();
}

void Membrane3::assembleMassMatrix() {
    computeJacobian();
    if (!material)
        throw std::invalid_argument("Material is not set for Membrane element " + std::to_string(number));
    // The density of a membrane material is a mass per unit area.
    const double area = geometry.area();
    const double m = material->getDensity() * area;
    if (m <= 0.0)
        throw std::invalid_argument("Error in Membrane element " + std::to_string(number) +
                                    ". Element mass is zero or negative");
    TriangleGeometry::lumpMass(*nodes[0], *nodes[1], *nodes[2], m, thickness, area);
    for (int a = 0; a < 3; ++a)
        nodes[a]->setRayleighDamping(material->getAlpha());
    contact.assembleMassMatrix();
}

double Membrane3::addLumpedMass(double factor) {
    // The lumping of assembleMassMatrix, for factor times the initial mass.
    const double area = geometry.area();
    const double m = factor * (material->getDensity() * area);
    TriangleGeometry::lumpMass(node(0), node(1), node(2), m, initialThickness, area);
    return m;
}

void Membrane3::setInitialConditions() {
    initialThickness = thickness;
    computeJacobian();
    const double det0 = jacobian[0][0] * jacobian[1][1] - jacobian[0][1] * jacobian[1][0];
    initialJacobianInverse[0][0] = jacobian[1][1] / det0;
    initialJacobianInverse[0][1] = -jacobian[0][1] / det0;
    initialJacobianInverse[1][0] = -jacobian[1][0] / det0;
    initialJacobianInverse[1][1] = jacobian[0][0] / det0;
    if (!material)
        throw std::invalid_argument("Material is not set for Membrane element " + std::to_string(number));
    material = material->copyMat();
    updateLocalCoordinateSystem();
    material->setInitialConditions(geometry.basis());
    contact.setInitialConditions();
}

double Membrane3::checkTimestep(double dt) {
    const double critical = scaledStep(
        TriangleGeometry::stableStep(node(0), node(1), node(2), geometry.area(), material->wavespeed2D()));
    // A step that is not a number (zero wave speed over zero altitude) leaves
    // the candidate unchanged.
    return critical < dt ? critical : dt;
}

std::string Membrane3::printVTK(int what, int component) {
    if (what == vtkStrain || what == vtkStress) {
        if (component < 0 || component > 5) return "0.0";
        return formatValue(what == vtkStrain ? strain[component] : stress[component], true);
    }
    return Element::printVTK(what, component);
}

void Membrane3::yarnDirections(double (&warp)[3], double (&weft)[3]) const {
    Element::yarnDirections(warp, weft);
    double a[2], b[2];
    if (!material || !material->initialYarnDirections(a, b)) return;
    geometry.currentDirection(deformationGradient, a, warp);
    geometry.currentDirection(deformationGradient, b, weft);
}

void Membrane3::prefetchForStep() const {
    speed::prefetch(*this);
    for (const Node* n : nodePointers)
        if (n) n->prefetchForElements();
}

void Membrane3::checkpoint(Archive& archive) {
    // The material law keeps no history: its members are parameters and
    // what follows from them.
    archive.pod(thickness);
    archive.pod(geometry);
    archive.pod(jacobian);
    archive.pod(detJacobian);
    archive.pod(deformationGradient);
    archive.pod(shapeDerivatives);
    archive.pod(strain);
    archive.pod(stress);
    archive.pod(internalForce);
    contact.checkpoint(archive);
}
