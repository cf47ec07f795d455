#include "Fabric3.h"

#include "Checkpoint.h"
#include "DeckParser.h"
#include "HyperTextile.h"
#include "Load.h"
#include "Material.h"
#include "Node.h"
#include "SpeedHints.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace {

// ks = penaltyFactor max(D) / A0. A softer penalty lets the rotations part
// from the slope: a heavy strip hanging over a ledge then keeps creeping
// sideways and settles too low (2 degrees at a factor of 10); from 100 up the
// overhang angles agree with the elastica to 0.1 %.
constexpr double penaltyFactor = 300.0;
// The fastest mode that bending adds, the nodal rotations against the shear
// penalty, becomes unstable above about 0.027 A / sqrt(max(D) / rho) at this
// penalty (measured on strips with a negligible tensile stiffness; it scales
// as 1 / sqrt(penaltyFactor)); the element proposes a tenth of that, the
// margin the membrane step has.
constexpr double bendingStepFactor = 0.009;

} // namespace

Fabric3::Fabric3() {
    numberOfNodes = 3;
    vtkCellType = "5";
}

std::string Fabric3::errorPrefix() const {
    return "Error in fabric element " + std::to_string(number);
}

void Fabric3::parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Node>>& allNodes,
                          const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                          const std::vector<std::shared_ptr<Material>>& materials,
                          const std::vector<std::shared_ptr<Load>>& loads) {
    const DeckParser line(tokens, DeckParser::AtEnd::Checked);
    using K = DeckParser::Follows;
    line.read({{"NODES", K::Anything,
                [&](std::size_t i) {
                    nodes = line.nodes(i + 1, 3, "Not enough nodes inputs for Element FABRIC_3", nodeMap,
                                       DeckParser::NodeOrder::WholeList);
                    for (int k = 0; k < 3; ++k)
                        nodePointers[k] = nodes[k].get();
                    nodesSet = true;
                    return 4;
                }},
               {"MATERIAL", K::Word,
                [&](std::size_t i) {
                    material = DeckParser::require(materials, line.at(i + 1).getWord(), "Material");
                    return 2;
                }},
               {"LOAD", K::Word,
                [&](std::size_t i) {
                    load = DeckParser::require(loads, line.at(i + 1).getWord(), "Load");
                    return 2;
                }},
               {"T", K::Number,
                [&](std::size_t i) {
                    thickness = line.finiteNumber(i + 1, "T of fabric element " + std::to_string(number));
                    return 2;
                }}},
              [&](std::size_t i) -> std::size_t {
                  std::size_t next = i;
                  if (contact.readKeyword(tokens, next, tokens[i].getWord(), "fabric", number))
                      return next - i;
                  throw DeckParser::notRecognized(tokens[i].getWord());
              });
    if (!nodesSet) throw DeckParser::nodesNotSet(number);
    contact.build(nodes, thickness, allNodes, nodeMap, materials, loads);
}

void Fabric3::updateLocalCoordinateSystem() {
    geometry.update(node(0), node(1), node(2));
    contact.updateLocalCoordinateSystem();
}

void Fabric3::computeStrain(double dt, int) {
    const double x2 = geometry.x2(), x3 = geometry.x3(), y3 = geometry.y3();
    const double det = x2 * y3;
    if (!(det > 0.0))
        throw std::runtime_error(
            errorPrefix() + ", det(Jacobian) is zero, negative or NaN. Timestep = " + std::to_string(dt));
    if (!(det <= std::numeric_limits<double>::max()))
        throw std::runtime_error(errorPrefix() + ", det(Jacobian) is +inf. Timestep = " + std::to_string(dt));
    const double(&K)[2][2] = initialJacobianInverse;
    double(&F)[2][2] = deformationGradient;
    F[0][0] = x2 * K[0][0] + x3 * K[1][0];
    F[0][1] = x2 * K[0][1] + x3 * K[1][1];
    F[1][0] = y3 * K[1][0];
    F[1][1] = y3 * K[1][1];
    strain[0] = F[0][0];
    strain[1] = F[1][1];
    strain[2] = F[0][1];
    integrateBending(dt);
}

void Fabric3::integrateBending(double dt) {
    const double x2 = geometry.x2(), x3 = geometry.x3(), y3 = geometry.y3();
    const double m = 1.0 / (x2 * y3); // 1 / 2A
    // kxx = -d(thy)/dx, kyy = d(thx)/dy, kxy = d(thx)/dx - d(thy)/dy on
    // th = (th1x, th1y, th2x, th2y, th3x, th3y).
    double(&bb)[3][6] = bendingMatrix;
    bb[0][0] = 0.0, bb[0][1] = y3 * m, bb[0][2] = 0.0, bb[0][3] = -y3 * m, bb[0][4] = 0.0, bb[0][5] = 0.0;
    bb[1][0] = (x3 - x2) * m, bb[1][1] = 0.0, bb[1][2] = -x3 * m, bb[1][3] = 0.0, bb[1][4] = x2 * m,
    bb[1][5] = 0.0;
    bb[2][0] = -y3 * m, bb[2][1] = (x2 - x3) * m, bb[2][2] = y3 * m, bb[2][3] = x3 * m, bb[2][4] = 0.0,
    bb[2][5] = -x2 * m;
    // The transverse shear interpolation of the shell triangle.
    const double s = m / 6.0; // 1 / 12A
    double(&bs)[2][6] = shearMatrix;
    bs[0][0] = -y3 * y3 * s;
    bs[0][1] = (2.0 * x2 + x3) * y3 * s;
    bs[0][2] = y3 * y3 * s;
    bs[0][3] = (3.0 * x2 - x3) * y3 * s;
    bs[0][4] = 0.0;
    bs[0][5] = x2 * y3 * s;
    bs[1][0] = (x3 - 2.0 * x2) * y3 * s;
    bs[1][1] = (x2 * x2 - x3 * x3) * s;
    bs[1][2] = -(x2 + x3) * y3 * s;
    bs[1][3] = (x3 - 2.0 * x2) * x3 * s;
    bs[1][4] = -3.0 * x2 * y3 * s;
    bs[1][5] = (2.0 * x3 - x2) * x2 * s;

    // Out-of-plane velocities and in-plane rotation rates in the current frame.
    double w[3], th[6];
    for (int a = 0; a < 3; ++a) {
        const Node& n = node(a);
        w[a] = geometry.component(2, n.getX_vel(), n.getY_vel(), n.getZ_vel());
        const double rx = n.getX_rot_vel(), ry = n.getY_rot_vel(), rz = n.getZ_rot_vel();
        th[2 * a] = geometry.component(0, rx, ry, rz);
        th[2 * a + 1] = geometry.component(1, rx, ry, rz);
    }
    const double omegaY = (w[0] - w[1]) / x2;
    const double omegaX = ((w[2] - w[0]) * x2 - (w[1] - w[0]) * x3) / (y3 * x2);
    for (int a = 0; a < 3; ++a) {
        th[2 * a] -= omegaX;
        th[2 * a + 1] -= omegaY;
    }
    for (int r = 0; r < 3; ++r) {
        double k = 0.0;
        for (int j = 0; j < 6; ++j)
            k += bb[r][j] * th[j];
        curvature[r] += k * dt;
    }
    for (int r = 0; r < 2; ++r) {
        double g = 0.0;
        for (int j = 0; j < 6; ++j)
            g += bs[r][j] * th[j];
        transverseShear[r] += g * dt;
    }
}

void Fabric3::computeStress(double, int) {
    material->computeStress2D(deformationGradient, strain, stress, geometry.basis());

    // Current yarn directions in the current frame.
    const double(&F)[2][2] = deformationGradient;
    auto push = [&F](const double(&d)[2], double& x, double& y) {
        x = F[0][0] * d[0] + F[0][1] * d[1];
        y = F[1][0] * d[0] + F[1][1] * d[1];
        const double l = 1.0 / std::sqrt(x * x + y * y);
        x *= l;
        y *= l;
    };
    double ax, ay, bx, by;
    push(warp0, ax, ay);
    push(weft0, bx, by);
    const double kxx = curvature[0], kyy = curvature[1], kxy = curvature[2];
    const double kaa = ax * ax * kxx + ay * ay * kyy + ax * ay * kxy;
    const double kbb = bx * bx * kxx + by * by * kyy + bx * by * kxy;
    const double kab = ax * bx * kxx + ay * by * kyy + 0.5 * (ax * by + ay * bx) * kxy;
    const double ma = stiffness[0] * kaa, mb = stiffness[1] * kbb, mt = 4.0 * stiffness[2] * kab;
    moment[0] = ma * ax * ax + mb * bx * bx + mt * ax * bx;
    moment[1] = ma * ay * ay + mb * by * by + mt * ay * by;
    moment[2] = ma * ax * ay + mb * bx * by + 0.5 * mt * (ax * by + ay * bx);
    shearForce[0] = shearPenalty * transverseShear[0];
    shearForce[1] = shearPenalty * transverseShear[1];
}

void Fabric3::computeInternalForces(double, int) {
    const double x2 = geometry.x2(), x3 = geometry.x3(), y3 = geometry.y3();
    const double area = geometry.area();
    // In-plane: f = A t B^T sigma of the constant-strain triangle, with the
    // shape function derivatives dN/dx = (-y3, y3, 0) / 2A and
    // dN/dy = (x3 - x2, -x3, x2) / 2A.
    const double s11 = stress[0], s22 = stress[1], s12 = stress[3];
    const double k = 0.5 * thickness; // A t / 2A
    const double dx[3] = {-y3, y3, 0.0}, dy[3] = {x3 - x2, -x3, x2};
    double fx[3], fy[3];
    for (int a = 0; a < 3; ++a) {
        fx[a] = k * (dx[a] * s11 + dy[a] * s12);
        fy[a] = k * (dy[a] * s22 + dx[a] * s12);
    }
    // Bending and transverse shear: resisting moments A (Bs^T q + Bb^T m).
    double mo[6];
    for (int j = 0; j < 6; ++j)
        mo[j] = area * (shearMatrix[0][j] * shearForce[0] + shearMatrix[1][j] * shearForce[1] +
                        bendingMatrix[0][j] * moment[0] + bendingMatrix[1][j] * moment[1] +
                        bendingMatrix[2][j] * moment[2]);
    // Out-of-plane forces that balance the nodal moments about node 1.
    double fz[3];
    fz[2] = -(mo[0] + mo[2] + mo[4]) / y3;
    fz[1] = ((mo[1] + mo[3] + mo[5]) - fz[2] * x3) / x2;
    fz[0] = -(fz[1] + fz[2]);

    const double* e1 = geometry.basis()[0];
    const double* e2 = geometry.basis()[1];
    const double* e3 = geometry.basis()[2];
    for (int a = 0; a < 3; ++a) {
        const double mx = mo[2 * a], my = mo[2 * a + 1];
        Node& target = node(a);
        target.addInternalForce(-(fx[a] * e1[0] + fy[a] * e2[0] + fz[a] * e3[0]),
                                -(fx[a] * e1[1] + fy[a] * e2[1] + fz[a] * e3[1]),
                                -(fx[a] * e1[2] + fy[a] * e2[2] + fz[a] * e3[2]));
        target.addInternalMoment(-(mx * e1[0] + my * e2[0]), -(mx * e1[1] + my * e2[1]),
                                 -(mx * e1[2] + my * e2[2]));
    }
}

void Fabric3::computeExternalForces(double time) {
    if (!load) return;
    double f[3];
    geometry.pressureForce(load->getPressure(time), geometry.area(), f);
    for (int a = 0; a < 3; ++a)
        node(a).addExternalForce(f[0], f[1], f[2]);
}

void Fabric3::computeContactForces() {
    contact.computeContactForces();
}

void Fabric3::assembleMassMatrix() {
    if (!material) throw std::invalid_argument(errorPrefix() + ". Material is not set");
    geometry.update(node(0), node(1), node(2));
    const double area = geometry.area();
    const double m = material->getDensity() * area;
    // Also catches a degenerate triangle, whose area is not a number.
    if (!(m > 0.0)) throw std::invalid_argument(errorPrefix() + ". Element mass is zero or negative");
    addLumpedMass(1.0);
    for (int a = 0; a < 3; ++a)
        node(a).setRayleighDamping(material->getAlpha());
    contact.assembleMassMatrix();
}

double Fabric3::addLumpedMass(double factor) {
    const double area = geometry.area();
    const double m = factor * (material->getDensity() * area);
    TriangleGeometry::lumpMass(node(0), node(1), node(2), m, thickness, area);
    return m;
}

void Fabric3::setInitialConditions() {
    if (!material) throw std::invalid_argument(errorPrefix() + ". Material is not set");
    if (material->getType() != "HYPERTEXTILE")
        throw std::invalid_argument(errorPrefix() + ". Material " + material->getName() + " of type " +
                                    material->getType() + " is not a fabric: use a HYPERTEXTILE material");
    material = material->copyMat();
    const auto& fabric = static_cast<const HyperTextile&>(*material);
    if (!fabric.hasBending())
        throw std::invalid_argument(errorPrefix() + ". Material " + material->getName() +
                                    " has no BENDING: the fabric shell needs its bending stiffness");
    updateLocalCoordinateSystem();
    const double x2 = geometry.x2(), x3 = geometry.x3(), y3 = geometry.y3();
    const double det0 = x2 * y3;
    if (!(det0 > 0.0)) throw std::invalid_argument(errorPrefix() + ". Element area is zero or not a number");
    initialJacobianInverse[0][0] = 1.0 / x2;
    initialJacobianInverse[0][1] = -x3 / det0;
    initialJacobianInverse[1][0] = 0.0;
    initialJacobianInverse[1][1] = 1.0 / y3;
    material->setInitialConditions(geometry.basis());
    material->initialYarnDirections(warp0, weft0);
    for (int k = 0; k < 3; ++k)
        stiffness[k] = fabric.getBending()[k];
    shearPenalty = penaltyFactor * *std::max_element(stiffness, stiffness + 3) / geometry.area();
    contact.setInitialConditions();
}

double Fabric3::checkTimestep(double dt) {
    const Node &n1 = node(0), &n2 = node(1), &n3 = node(2);
    auto length2 = [](const Node& a, const Node& b) {
        const double x = a.getX_pos() - b.getX_pos(), y = a.getY_pos() - b.getY_pos(),
                     z = a.getZ_pos() - b.getZ_pos();
        return x * x + y * y + z * z;
    };
    const double area = geometry.area();
    const double longest = std::sqrt(std::max({length2(n1, n2), length2(n2, n3), length2(n3, n1)}));
    const double membraneStep = 0.1 * (2.0 * area / longest) / material->wavespeed2D();
    const double bendingStep =
        bendingStepFactor * area /
        std::sqrt(std::max({stiffness[0], stiffness[1], stiffness[2]}) / material->getDensity());
    const double critical = scaledStep(std::min(membraneStep, bendingStep));
    return critical < dt ? critical : dt;
}

std::string Fabric3::printVTK(int what, int component) {
    if (what == vtkStrain || what == vtkStress) {
        if (component < 0 || component > 5) return "0.0";
        return formatValue(what == vtkStrain ? strain[component] : stress[component], true);
    }
    return Element::printVTK(what, component);
}

void Fabric3::yarnDirections(double (&warp)[3], double (&weft)[3]) const {
    Element::yarnDirections(warp, weft);
    geometry.currentDirection(deformationGradient, warp0, warp);
    geometry.currentDirection(deformationGradient, weft0, weft);
}

void Fabric3::prefetchForStep() const {
    speed::prefetch(*this);
    for (const Node* n : nodePointers)
        if (n) n->prefetchForElements();
}

void Fabric3::runStep(double dt, double time, bool automaticStep, double& candidateStep) {
    runStepAs(*this, dt, time, automaticStep, candidateStep);
}

void Fabric3::checkpoint(Archive& archive) {
    // The frame, the deformation and the curvature and transverse shear
    // accumulated in the element's frame are its history; the stiffnesses,
    // the shear penalty and the initial yarn directions follow from the deck.
    archive.pod(geometry);
    archive.pod(deformationGradient);
    archive.pod(strain);
    archive.pod(stress);
    archive.pod(bendingMatrix);
    archive.pod(shearMatrix);
    archive.pod(curvature);
    archive.pod(transverseShear);
    archive.pod(moment);
    archive.pod(shearForce);
    contact.checkpoint(archive);
}
