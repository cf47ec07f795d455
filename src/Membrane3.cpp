#include "Membrane3.h"

#include "DeckParser.h"
#include "Load.h"
#include "Material.h"
#include "Node.h"

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdio>
#include <stdexcept>

Membrane3::Membrane3() : inertia(3, 3, 0.0) {
    numberOfNodes = 3;
    vtkCellType = "5";
    localBasis = TNT::Array2D<double>(3, 3, lawData + kBasis);
    strain = TNT::Array1D<double>(6, lawData + kStrain);
    stress = TNT::Array1D<double>(6, lawData + kStress);
    deformationGradient = TNT::Array2D<double>(2, 2, lawData + kF);
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
    const Node& p1 = node(0);
    const Node& p2 = node(1);
    const Node& p3 = node(2);
    const double x1 = p1.getX_pos(), y1 = p1.getY_pos(), z1 = p1.getZ_pos();
    const double ax = p2.getX_pos() - x1, ay = p2.getY_pos() - y1, az = p2.getZ_pos() - z1;
    const double bx = p3.getX_pos() - x1, by = p3.getY_pos() - y1, bz = p3.getZ_pos() - z1;
    const double nx = ay * bz - az * by, ny = az * bx - ax * bz, nz = ax * by - ay * bx;
    const double la = std::sqrt(ax * ax + ay * ay + az * az);
    const double ln = std::sqrt(nx * nx + ny * ny + nz * nz);

    const double u1 = ax / la, u2 = ay / la, u3 = az / la;
    const double w1 = nx / ln, w2 = ny / ln, w3 = nz / ln;
    // The frame, row by row into the basis: e1 along edge 1-2, e3 the unit
    // normal, e2 = e3 x e1 (the arithmetic of calculateLocalBasis).
    double* e = lawData + kBasis;
    e[0] = u1;
    e[1] = u2;
    e[2] = u3;
    e[3] = w2 * u3 - w3 * u2;
    e[4] = w3 * u1 - w1 * u3;
    e[5] = w1 * u2 - w2 * u1;
    e[6] = w1;
    e[7] = w2;
    e[8] = w3;

    area = 0.5 * ln;
    jacobian[0][0] = la;
    jacobian[0][1] = (bx * ax + by * ay + bz * az) / la;
    jacobian[1][0] = 0.0;
    jacobian[1][1] = ln / la;
    detJacobian = jacobian[1][1] * jacobian[0][0];
    basisCurrent = true;
}

TNT::Array2D<double>& Membrane3::currentBasis() {
    if (!basisCurrent) {
        const Node& p1 = node(0);
        const Node& p2 = node(1);
        const Node& p3 = node(2);
        calculateLocalBasis(p1.getX_pos(), p1.getY_pos(), p1.getZ_pos(), p2.getX_pos(), p2.getY_pos(),
                            p2.getZ_pos(), p3.getX_pos(), p3.getY_pos(), p3.getZ_pos(), localBasis);
        basisCurrent = true;
    }
    return localBasis;
}

const TNT::Array2D<double>& Membrane3::getLocalBasis() const {
    // Forming the basis on demand changes no observable state.
    return const_cast<Membrane3*>(this)->currentBasis();
}

void Membrane3::updateLocalCoordinateSystem() {
    // The frame of the current triangle is the one the Jacobian is built in:
    // computeJacobian forms it with the same arithmetic and stores it, so the
    // update only marks the stored one as out of date.
    basisCurrent = false;
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
    double* F = lawData + kF;
    F[0] = j00 * K[0][0] + j01 * K[1][0];
    F[1] = j00 * K[0][1] + j01 * K[1][1];
    F[2] = j10 * K[0][0] + j11 * K[1][0];
    F[3] = j10 * K[0][1] + j11 * K[1][1];

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

    strain[0] = F[0];
    strain[1] = F[3];
    strain[2] = F[1];
}

void Membrane3::computeStress(double /*dt*/, int /*ip*/) {
    material->computeStress2D(deformationGradient, strain, stress, currentBasis());
}

void Membrane3::computeInternalForces(double /*dt*/, int /*ip*/) {
    thickness = strain[2] * initialThickness;
    const double k = area * thickness;
    const double s11 = stress[0], s22 = stress[1], s12 = stress[3];
    const double* b0 = shapeDerivatives[0];
    const double* b1 = shapeDerivatives[1];
    const double* b2 = shapeDerivatives[2];
    const double* u = lawData + kBasis;     // e1
    const double* v = lawData + kBasis + 3; // e2
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
    const double f = load->getPressure(time) * area / 3.0;
    const double* e3 = lawData + kBasis + 6;
    const double fx = f * e3[0], fy = f * e3[1], fz = f * e3[2];
    for (int a = 0; a < 3; ++a)
        node(a).addExternalForce(fx, fy, fz);
}

void Membrane3::computeContactForces() {
    contact.computeContactForces();
}

void Membrane3::assembleMassMatrix() {
    computeJacobian();
    if (!material)
        throw std::invalid_argument("Material is not set for Membrane element " + std::to_string(number));
    // The density of a membrane material is a mass per unit area.
    const double m = material->getDensity() * area;
    if (m <= 0.0)
        throw std::invalid_argument("Error in Membrane element " + std::to_string(number) +
                                    ". Element mass is zero or negative");
    const double alpha = material->getAlpha();
    const double share = m / 3.0;
    const double I = share * (thickness * thickness / 12.0 + area / 12.0);
    for (int r = 0; r < 3; ++r)
        for (int s = 0; s < 3; ++s)
            inertia[r][s] = r == s ? I : 0.0;
    for (int a = 0; a < 3; ++a) {
        Node& n = *nodes[a];
        n.addMass(share);
        n.setRayleighDamping(alpha);
        n.addInertia(inertia);
    }
    contact.assembleMassMatrix();
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
    material->setInitialConditions(currentBasis());
    contact.setInitialConditions();
}

double Membrane3::checkTimestep(double dt) {
    const Node& p1 = node(0);
    const Node& p2 = node(1);
    const Node& p3 = node(2);
    auto squared = [](const Node& a, const Node& b) {
        const double dx = b.getX_pos() - a.getX_pos(), dy = b.getY_pos() - a.getY_pos(),
                     dz = b.getZ_pos() - a.getZ_pos();
        return dx * dx + dy * dy + dz * dz;
    };
    double longest = squared(p1, p2);
    const double l23 = squared(p2, p3), l31 = squared(p3, p1);
    if (l23 > longest) longest = l23;
    if (l31 > longest) longest = l31;
    const double h = 2.0 * area / std::sqrt(longest) * 0.1;
    const double critical = h / material->wavespeed2D();
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

void Membrane3::prefetchForStep() const {
    prefetchBytes(this, sizeof(Membrane3));
    // The material's fields, and the row pointers of F that the law reads.
    prefetchBytes(material.get(), 256);
    prefetchBytes(static_cast<double**>(const_cast<TNT::Array2D<double>&>(deformationGradient)),
                  2 * sizeof(double*));
    for (const Node* n : nodePointers)
        if (n) n->prefetchForElements();
}
