#include "S3L_C0.h"

#include "Checkpoint.h"
#include "DeckParser.h"
#include "Load.h"
#include "Material.h"
#include "Node.h"
#include "SpeedHints.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <sstream>
#include <stdexcept>

namespace {

// Larger counts are a typing slip: each point costs a strain and a stress vector.
constexpr int maxIntegrationPoints = 100;

// The shell integrates strain increments: its laws receive a zero
// deformation gradient.
constexpr double noDeformationGradient[2][2] = {};

} // namespace

S3L_C0::S3L_C0() {
    numberOfNodes = 3;
    vtkCellType = "5";
}

std::string S3L_C0::errorPrefix() const {
    return "Error in C0 element " + std::to_string(number);
}

std::shared_ptr<ContactLine> S3L_C0::getContactLine(int i) const {
    if (i < 1 || i > 3) return nullptr;
    return contact.getLine(i);
}

void S3L_C0::parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Node>>& allNodes,
                         const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                         const std::vector<std::shared_ptr<Material>>& materials,
                         const std::vector<std::shared_ptr<Load>>& loads) {
    const DeckParser line(tokens, DeckParser::AtEnd::Checked);
    using K = DeckParser::Follows;
    line.read({{"NODES", K::Anything,
                [&](std::size_t i) {
                    // A repeated NODES replaces the three, so that the element never
                    // holds more nodes than its cell line in the results can carry.
                    nodes = line.nodes(i + 1, 3, "Not enough nodes inputs for Element S3L_C0", nodeMap);
                    for (int k = 0; k < 3; ++k)
                        nodePointers[k] = nodes[k].get();
                    nodesSet = true;
                    return 4;
                }},
               {"MATERIAL", K::Word,
                [&](std::size_t i) {
                    // A later unknown name leaves the material found before (intended;
                    // see the user guide, "Quirks worth knowing").
                    const std::string name = line.at(i + 1).getWord();
                    if (auto found = DeckParser::find(materials, name)) material = found;
                    if (!material) throw DeckParser::notFound("Material", name);
                    materialSet = true;
                    return 2;
                }},
               {"LOAD", K::Word,
                [&](std::size_t i) {
                    const std::string name = line.at(i + 1).getWord();
                    if (auto found = DeckParser::find(loads, name)) load = found;
                    // Without a material yet, a missing load is reported with the material wording.
                    if (!load && !material) throw DeckParser::notFound("Material", name);
                    if (!load) throw DeckParser::notFound("Load", name);
                    return 2;
                }},
               {"T", K::Number,
                [&](std::size_t i) {
                    thickness = line.finiteNumber(i + 1, "T of shell element " + std::to_string(number));
                    return 2;
                }},
               {"NIP", K::Number,
                [&](std::size_t i) {
                    const double v = line.at(i + 1).getNumber();
                    if (!(v > -1.0 - maxIntegrationPoints && v < 1.0 + maxIntegrationPoints))
                        throw std::invalid_argument(errorPrefix() + ". NIP " +
                                                    DeckParser::text(line.at(i + 1)) + " is out of range");
                    numberOfIntegrationPoints = static_cast<int>(v);
                    return 2;
                }}},
              [&](std::size_t i) -> std::size_t {
                  std::size_t next = i;
                  // CONTACT, FACTOR or FRICTION, read by the face contact.
                  if (contact.readKeyword(tokens, next, tokens[i].getWord(), "shell", number))
                      return next - i;
                  // A stray number has no word: the message names an empty input
                  // (intended; see the user guide, "Quirks worth knowing").
                  throw DeckParser::notRecognized(tokens[i].getWord());
              });
    contact.build(nodes, thickness, allNodes, nodeMap, materials, loads);
}

void S3L_C0::updateLocalCoordinateSystem() {
    geometry.update(node(0), node(1), node(2));
    ratesCurrent = false;
    contact.updateLocalCoordinateSystem();
}

void S3L_C0::computeLocalVariables() {
    const Node* n[3] = {&node(0), &node(1), &node(2)};
    const TriangleGeometry& g = geometry;

    const double x0 = n[0]->getX_pos(), y0 = n[0]->getY_pos(), z0 = n[0]->getZ_pos();
    const double d2x = n[1]->getX_pos() - x0, d2y = n[1]->getY_pos() - y0, d2z = n[1]->getZ_pos() - z0;
    const double d3x = n[2]->getX_pos() - x0, d3y = n[2]->getY_pos() - y0, d3z = n[2]->getZ_pos() - z0;
    localX2 = g.component(0, d2x, d2y, d2z);
    localX3 = g.component(0, d3x, d3y, d3z);
    localY3 = g.component(1, d3x, d3y, d3z);
    area = 0.5 * localX2 * localY3;

    for (int a = 0; a < 3; ++a) {
        const Node& node = *n[a];
        const double vx = node.getX_vel(), vy = node.getY_vel(), vz = node.getZ_vel();
        const double rx = node.getX_rot_vel(), ry = node.getY_rot_vel(), rz = node.getZ_rot_vel();
        for (int k = 0; k < 3; ++k) {
            localVelocity[3 * a + k] = g.component(k, vx, vy, vz);
            localRotationRate[3 * a + k] = g.component(k, rx, ry, rz);
        }
    }
}

void S3L_C0::buildMatrices() {
    const double x2 = localX2, x3 = localX3, y3 = localY3;
    const double m = 1.0 / (2.0 * area);
    double* bm0 = membraneMatrix[0];
    double* bm1 = membraneMatrix[1];
    double* bm2 = membraneMatrix[2];
    bm0[0] = -y3 * m, bm0[1] = 0.0, bm0[2] = y3 * m, bm0[3] = 0.0, bm0[4] = 0.0, bm0[5] = 0.0;
    bm1[0] = 0.0, bm1[1] = (x3 - x2) * m, bm1[2] = 0.0, bm1[3] = -x3 * m, bm1[4] = 0.0, bm1[5] = x2 * m;
    bm2[0] = (x3 - x2) * m, bm2[1] = -y3 * m, bm2[2] = -x3 * m, bm2[3] = y3 * m, bm2[4] = x2 * m,
    bm2[5] = 0.0;

    const double b = -m;
    double* bb0 = bendingMatrix[0];
    double* bb1 = bendingMatrix[1];
    double* bb2 = bendingMatrix[2];
    bb0[0] = 0.0, bb0[1] = -y3 * b, bb0[2] = 0.0, bb0[3] = y3 * b, bb0[4] = 0.0, bb0[5] = 0.0;
    bb1[0] = (x2 - x3) * b, bb1[1] = 0.0, bb1[2] = x3 * b, bb1[3] = 0.0, bb1[4] = -x2 * b, bb1[5] = 0.0;
    bb2[0] = y3 * b, bb2[1] = (x3 - x2) * b, bb2[2] = -y3 * b, bb2[3] = -x3 * b, bb2[4] = 0.0,
    bb2[5] = x2 * b;

    const double s = 1.0 / (12.0 * area);
    double* bs0 = shearMatrix[0];
    double* bs1 = shearMatrix[1];
    bs0[0] = -y3 * y3 * s;
    bs0[1] = (2.0 * x2 + x3) * y3 * s;
    bs0[2] = y3 * y3 * s;
    bs0[3] = (3.0 * x2 - x3) * y3 * s;
    bs0[4] = 0.0;
    bs0[5] = x2 * y3 * s;
    bs1[0] = (x3 - 2.0 * x2) * y3 * s;
    bs1[1] = (x2 * x2 - x3 * x3) * s;
    bs1[2] = -(x2 + x3) * y3 * s;
    bs1[3] = (x3 - 2.0 * x2) * x3 * s;
    bs1[4] = -3.0 * x2 * y3 * s;
    bs1[5] = (2.0 * x3 - x2) * x2 * s;
}

void S3L_C0::computeRates(double dt) {
    computeLocalVariables();
    const double det = 2.0 * area;
    if (det <= 0.0)
        throw std::runtime_error(errorPrefix() +
                                 ", det(Jacobian) is zero or negative. Timestep = " + std::to_string(dt));
    if (!(std::fabs(det) <= std::numeric_limits<double>::max()))
        throw std::runtime_error(errorPrefix() +
                                 ", det(Jacobian) is +inf or NaN. Timestep = " + std::to_string(dt));
    buildMatrices();

    const double x2 = localX2, x3 = localX3, y3 = localY3;
    const double w1 = localVelocity[2], w2 = localVelocity[5], w3 = localVelocity[8];
    // Rigid rotation rate of the element plane from its out-of-plane velocities.
    const double omegaY = (w1 - w2) / x2;
    const double omegaX = ((w3 - w1) * x2 - (w2 - w1) * x3) / (y3 * x2);
    for (int a = 0; a < 3; ++a) {
        deformationRotationRate[2 * a] = localRotationRate[3 * a] - omegaX;
        deformationRotationRate[2 * a + 1] = localRotationRate[3 * a + 1] - omegaY;
    }

    const double uv[6] = {localVelocity[0], localVelocity[1], localVelocity[3],
                          localVelocity[4], localVelocity[6], localVelocity[7]};
    const double* th = deformationRotationRate;
    for (int r = 0; r < 3; ++r) {
        const double* bm = membraneMatrix[r];
        const double* bb = bendingMatrix[r];
        double e = 0.0, k = 0.0;
        for (int j = 0; j < 6; ++j) {
            e += bm[j] * uv[j];
            k += bb[j] * th[j];
        }
        membraneStrainRate[r] = e;
        curvatureRate[r] = k;
    }
    for (int r = 0; r < 2; ++r) {
        const double* bs = shearMatrix[r];
        double g = 0.0;
        for (int j = 0; j < 6; ++j)
            g += bs[j] * th[j];
        shearStrainRate[r] = g;
    }
    ratesCurrent = true;
}

void S3L_C0::computeStrain(double dt, int ip) {
    // The rates are the same at every point: computed at the first point of the
    // step (or whenever the basis has moved since).
    if (ip == 0 || !ratesCurrent) computeRates(dt);
    Point& p = point(ip);
    double* de = p.strainIncrement;
    double* total = p.accumulatedStrain;
    const double z = p.z;
    de[0] = (membraneStrainRate[0] - z * curvatureRate[0]) * dt;
    de[1] = (membraneStrainRate[1] - z * curvatureRate[1]) * dt;
    de[2] = 0.0;
    de[3] = (membraneStrainRate[2] - z * curvatureRate[2]) * dt;
    de[4] = shearStrainRate[0] * dt;
    de[5] = shearStrainRate[1] * dt;
    for (int k = 0; k < 6; ++k)
        total[k] += de[k];
}

S3L_C0::Point& S3L_C0::point(int ip) {
    const int n = pointCount;
    if (ip < 0 || ip >= n)
        throw std::out_of_range("Integration point " + std::to_string(ip) + " of " + std::to_string(n));
    return points[ip];
}

void S3L_C0::computeStress(double, int ip) {
    Point& p = point(ip);
    material->computeStress2D(noDeformationGradient, p.strainIncrement, p.stress, geometry.basis());
}

void S3L_C0::computeInternalForces(double, int ip) {
    const Point& p = point(ip);
    const double* s = p.stress;
    const double z = p.z;
    const double k = area * 0.5 * thickness * p.weight;
    const double N[3] = {k * s[0], k * s[1], k * s[3]};
    const double M[3] = {z * N[0], z * N[1], z * N[2]};
    // Each transverse shear stress works on its own strain row (s13 on gxz =
    // row 0, s23 on gyz = row 1); crossing them makes the shear stiffness
    // Bs0^T Bs1 + Bs1^T Bs0, which is indefinite, and the shell diverges.
    const double Q[2] = {k * s[4], k * s[5]};

    // Resisting forces and moments in local axes: f = Bm^T N, m = Bs^T Q - Bb^T M.
    double f[6], m[6];
    const double *bm0 = membraneMatrix[0], *bm1 = membraneMatrix[1], *bm2 = membraneMatrix[2];
    const double *bb0 = bendingMatrix[0], *bb1 = bendingMatrix[1], *bb2 = bendingMatrix[2];
    const double *bs0 = shearMatrix[0], *bs1 = shearMatrix[1];
    for (int j = 0; j < 6; ++j) {
        f[j] = bm0[j] * N[0] + bm1[j] * N[1] + bm2[j] * N[2];
        m[j] = bs0[j] * Q[0] + bs1[j] * Q[1] - (bb0[j] * M[0] + bb1[j] * M[1] + bb2[j] * M[2]);
    }
    // Out-of-plane forces that balance the nodal moments: about node 1,
    // sum(m_x) + y3 f3z = 0 and sum(m_y) - x2 f2z - x3 f3z = 0.
    double fz[3];
    fz[2] = -(m[0] + m[2] + m[4]) / localY3;
    fz[1] = ((m[1] + m[3] + m[5]) - fz[2] * localX3) / localX2;
    fz[0] = -(fz[1] + fz[2]);

    const double* e1 = geometry.basis()[0];
    const double* e2 = geometry.basis()[1];
    const double* e3 = geometry.basis()[2];
    for (int a = 0; a < 3; ++a) {
        const double fx = f[2 * a], fy = f[2 * a + 1], fn = fz[a];
        const double mx = m[2 * a], my = m[2 * a + 1];
        Node& target = node(a);
        target.addInternalForce(-(fx * e1[0] + fy * e2[0] + fn * e3[0]),
                                -(fx * e1[1] + fy * e2[1] + fn * e3[1]),
                                -(fx * e1[2] + fy * e2[2] + fn * e3[2]));
        target.addInternalMoment(-(mx * e1[0] + my * e2[0]), -(mx * e1[1] + my * e2[1]),
                                 -(mx * e1[2] + my * e2[2]));
    }
}

void S3L_C0::computeExternalForces(double time) {
    if (!load) return;
    double f[3];
    geometry.pressureForce(load->getPressure(time), area, f);
    for (int a = 0; a < 3; ++a)
        node(a).addExternalForce(f[0], f[1], f[2]);
}

void S3L_C0::computeContactForces() {
    contact.computeContactForces();
}

void S3L_C0::assembleMassMatrix() {
    if (!material) throw std::invalid_argument(errorPrefix() + ". Material is not set");
    updateLocalCoordinateSystem();
    computeLocalVariables();
    const double m = material->getDensity() * area;
    // Also catches a degenerate triangle, whose basis and area are not finite.
    if (!(m > 0.0)) throw std::invalid_argument(errorPrefix() + ". Element mass is zero or negative");
    TriangleGeometry::lumpMass(*nodes[0], *nodes[1], *nodes[2], m, thickness, area);
    for (int a = 0; a < 3; ++a)
        nodes[a]->setRayleighDamping(material->getAlpha());
    contact.assembleMassMatrix();
}

double S3L_C0::addLumpedMass(double factor) {
    // The lumping of assembleMassMatrix, for factor times the initial mass.
    const double m = factor * (material->getDensity() * area);
    TriangleGeometry::lumpMass(node(0), node(1), node(2), m, thickness, area);
    return m;
}

void S3L_C0::setUpIntegration() {
    // Counts above 5 have no table: their points lie at the mid-surface with
    // zero weight, alike in every step, and carry nothing; one such point
    // stands for them all. A count below 1 has no point.
    const int nip = numberOfIntegrationPoints;
    pointCount = nip > maxPoints ? 1 : nip > 0 ? nip : 0;
    for (Point& p : points)
        p = Point();
    const double h = 0.5 * thickness;
    auto fill = [&](std::initializer_list<double> xi, std::initializer_list<double> w) {
        std::size_t i = 0;
        for (double v : xi)
            points[i++].z = h * v;
        i = 0;
        for (double v : w)
            points[i++].weight = v;
    };
    switch (numberOfIntegrationPoints) {
    case 1:
        // A single mid-surface point carries no resultant: its weight is zero.
        fill({0.0}, {h * 0.0});
        break;
    case 2:
        fill({0.577350269189626, -0.577350269189626}, {1.0, 1.0});
        break;
    case 3:
        fill({0.774596669241483, 0.0, -0.774596669241483}, {5.0 / 9.0, 8.0 / 9.0, 5.0 / 9.0});
        break;
    case 4:
        fill({0.861136311594053, 0.339981043584856, -0.339981043584856, -0.861136311594053},
             {0.347854845137454, 0.652145154862546, 0.652145154862546, 0.347854845137454});
        break;
    case 5:
        fill({0.90618, 0.538469, 0.0, -0.538469, -0.90618},
             {0.236927, 0.478629, 0.568889, 0.478629, 0.236927});
        break;
    default:
        break;
    }
}

void S3L_C0::setInitialConditions() {
    if (!material) throw std::invalid_argument(errorPrefix() + ". Material is not set");
    // The shell integrates strain increments and hands its laws a zero
    // deformation gradient: a law that works from F alone would give NaN
    // stresses at the first increment.
    const std::string law = material->getType();
    if (law == "HYPERELASTIC" || law == "HYPERTEXTILE")
        throw std::invalid_argument(errorPrefix() + ". Material " + material->getName() + " of type " + law +
                                    " works from the deformation gradient, which the shell does not "
                                    "compute: use an ELASTIC material");
    material = material->copyMat();
    updateLocalCoordinateSystem();
    material->setInitialConditions(geometry.basis());
    setUpIntegration();
    contact.setInitialConditions();
}

double S3L_C0::checkTimestep(double dt) {
    const double critical =
        scaledStep(TriangleGeometry::stableStep(node(0), node(1), node(2), area, material->wavespeed2D()));
    return critical < dt ? critical : dt;
}

std::string S3L_C0::printVTK(int what, int component) {
    if (what != vtkStrain && what != vtkStress) return Element::printVTK(what, component);
    if (pointCount == 0 || component < 0 || component > 5) return "0.0";
    const Point& p = points[0];
    return formatValue(what == vtkStrain ? p.accumulatedStrain[component] : p.stress[component], true);
}

void S3L_C0::prefetchForStep() const {
    // The element up to its last integration point in use: the unused points
    // at the end of the object are not read. That needs the points last,
    // which the build checks.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
    static_assert(offsetof(S3L_C0, points) + sizeof(points) + alignof(S3L_C0) > sizeof(S3L_C0),
                  "the integration points must be the shell's last member");
#pragma GCC diagnostic pop
    speed::prefetch(this, static_cast<std::size_t>(reinterpret_cast<const char*>(points + pointCount) -
                                                   reinterpret_cast<const char*>(this)));
    for (const Node* n : nodePointers)
        if (n) n->prefetchForElements();
}

void S3L_C0::runStep(double dt, double time, bool automaticStep, double& candidateStep) {
    // The type is final: the operations are called directly, and what one
    // leaves in registers can serve the next.
    runStepAs(*this, dt, time, automaticStep, candidateStep);
}

void S3L_C0::checkpoint(Archive& archive) {
    archive.pod(area);
    archive.pod(thickness);
    archive.pod(ratesCurrent);
    archive.pod(geometry);
    archive.pod(localX2);
    archive.pod(localX3);
    archive.pod(localY3);
    archive.pod(membraneMatrix);
    archive.pod(bendingMatrix);
    archive.pod(shearMatrix);
    archive.pod(membraneStrainRate);
    archive.pod(curvatureRate);
    archive.pod(shearStrainRate);
    archive.pod(localVelocity);
    archive.pod(localRotationRate);
    archive.pod(deformationRotationRate);
    // Every point, whatever the count: the stresses and accumulated strains
    // are the shell's history.
    archive.pod(points);
    contact.checkpoint(archive);
}
