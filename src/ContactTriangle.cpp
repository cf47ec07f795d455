#include "ContactTriangle.h"

#include "Checkpoint.h"
#include "DeckParser.h"
#include "SpeedHints.h"

#include <cmath>
#include <cstdio>
#include <stdexcept>

std::shared_ptr<ContactTriangle>
ContactTriangle::makeFaceContact(const std::string& n1, const std::string& n2, const std::string& n3,
                                 double thickness, bool factorSet, double factor, bool frictionSet,
                                 double friction, const std::vector<std::shared_ptr<Node>>& allNodes,
                                 const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                                 const std::vector<std::shared_ptr<Material>>& materials,
                                 const std::vector<std::shared_ptr<Load>>& loads) {
    // The face is built from deck text, so the thickness passes with six
    // decimals (intended; see the user guide, "Quirks worth knowing").
    std::vector<Token> face{Token("NODES", 0), Token(n1),     Token(n2),
                            Token(n3),         Token("T", 0), Token(std::to_string(thickness))};
    if (factorSet) {
        face.emplace_back("FACTOR", 0);
        face.emplace_back(factor);
    }
    if (frictionSet) {
        face.emplace_back("FRICTION", 0);
        face.emplace_back(friction);
    }
    auto triangle = std::make_shared<ContactTriangle>();
    triangle->setNumber(-1);
    triangle->parseOstrel(face, allNodes, nodeMap, materials, loads);
    return triangle;
}

namespace {
// Friction acts on the direction of the slip; below this length the node sticks.
constexpr double smallest_slip_ = 1e-15;
// A node on an edge is inside the face; rounding can make an area coordinate
// of such a node a few units of 1e-16 negative, and a node on the edge shared
// by two triangles would then slip between both.
constexpr double edge_tolerance_ = 1e-12;
// Turning angle (radians) from which a slip counts as reversed.
constexpr double reversal_angle_ = 1.5708;
} // namespace

ContactTriangle::ContactTriangle() {
    numberOfNodes = 3;
    vtkCellType = "5";
}

void ContactTriangle::parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Node>>&,
                                  const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                                  const std::vector<std::shared_ptr<Material>>&,
                                  const std::vector<std::shared_ptr<Load>>&) {
    const DeckParser line(tokens, DeckParser::AtEnd::Lenient);
    using K = DeckParser::Follows;
    const std::string of = " of contact triangle element " + std::to_string(number);
    line.read(
        {{"NODES", K::Anything,
          [&](std::size_t i) {
              nodes = line.nodes(i + 1, 3, "Not enough nodes inputs for Element Contact_Triangle", nodeMap);
              for (int k = 0; k < 3; ++k)
                  nodePointers[k] = nodes[k].get();
              nodesSet = true;
              return 4;
          }},
         {"T", K::Number,
          [&](std::size_t i) {
              thickness = line.finiteNumber(i + 1, "T" + of);
              thicknessSet = true;
              return 2;
          }},
         {"FACTOR", K::Number,
          [&](std::size_t i) {
              factor = line.finiteNumber(i + 1, "FACTOR" + of);
              factorSet = true;
              return 2;
          }},
         {"FRICTION", K::Number,
          [&](std::size_t i) {
              friction = line.finiteNumber(i + 1, "FRICTION" + of);
              frictionSet = true;
              return 2;
          }},
         {"TYPE", K::Word,
          [&](std::size_t i) {
              const std::string type = line.at(i + 1).getWord();
              if (type == "SOLID")
                  contactType = solidSurface;
              else if (type == "SHELL")
                  contactType = shellSurface;
              else
                  throw DeckParser::notRecognized(type);
              return 2;
          }}},
        [&](std::size_t i) -> std::size_t { throw DeckParser::notRecognized(DeckParser::text(tokens[i])); });
}

void ContactTriangle::setInitialConditions() {
    if (!nodesSet || nodes.size() < 3) throw DeckParser::nodesNotSet(number);
    updateLocalCoordinateSystem();
    if (!factorSet) factor = 10.0;
    if (!frictionSet) friction = 0.0;
    if (!thicknessSet) thickness = 1.0;
    setBoundingBox();
}

void ContactTriangle::attachContactSearch(ContactSearch& index) {
    if (search == &index) return;
    search = &index;
    search->addNodeQuerier();
}

void ContactTriangle::updateLocalCoordinateSystem() {
    const Node& n1 = node(0);
    geometry.update(n1, node(1), node(2));
    for (int r = 0; r < 3; ++r)
        origin[r] = geometry.component(r, n1.getX_pos(), n1.getY_pos(), n1.getZ_pos());

    const double x2 = geometry.x2(), x3 = geometry.x3(), y3 = geometry.y3();
    const double twoA = x2 * y3;
    shapeCoefficients[0] = x2 * y3 / twoA;
    shapeCoefficients[1] = -y3 / twoA;
    shapeCoefficients[2] = (x3 - x2) / twoA;
    shapeCoefficients[3] = y3 / twoA;
    shapeCoefficients[4] = -x3 / twoA;
    shapeCoefficients[5] = x2 / twoA;
    setBoundingBox();
}

void ContactTriangle::setBoundingBox() {
    double yMin = node(0).getY_pos(), yMax = yMin, zMin = node(0).getZ_pos(), zMax = zMin;
    for (int a = 1; a < 3; ++a) {
        const double y = node(a).getY_pos(), z = node(a).getZ_pos();
        if (y < yMin) yMin = y;
        if (y > yMax) yMax = y;
        if (z < zMin) zMin = z;
        if (z > zMax) zMax = z;
    }
    boundingBox[0] = yMax + thickness;
    boundingBox[1] = yMin - thickness;
    boundingBox[2] = zMax + thickness;
    boundingBox[3] = zMin - thickness;
}

bool ContactTriangle::checkContact(const Node* node, double x, double y, double z) {
    if (y < boundingBox[1] || y > boundingBox[0] || z < boundingBox[3] || z > boundingBox[2]) return false;
    if (node == &this->node(0) || node == &this->node(1) || node == &this->node(2)) return false;

    double p[3];
    for (int r = 0; r < 3; ++r)
        p[r] = geometry.component(r, x, y, z) - origin[r];
    const double* c = shapeCoefficients;
    areaCoordinates[0] = c[0] + c[1] * p[0] + c[2] * p[1];
    areaCoordinates[1] = c[3] * p[0] + c[4] * p[1];
    areaCoordinates[2] = c[5] * p[1];
    for (int r = 0; r < 3; ++r)
        localPosition[r] = p[r];
    // Written so that NaN coordinates (a triangle of no area has no basis and
    // no coefficients) reject the node as well: such a triangle touches nothing.
    if (!(areaCoordinates[0] >= -edge_tolerance_ && areaCoordinates[1] >= -edge_tolerance_ &&
          areaCoordinates[2] >= -edge_tolerance_))
        return false;

    if (contactType == shellSurface) {
        // Without thickness the two-sided surface has no penetration to measure.
        const double half = 0.5 * thickness;
        if (!(half > 0.0) || std::fabs(p[2]) > half) return false;
        gap = p[2] > 0.0 ? p[2] - half : p[2] + half;
        return true;
    }
    if (contactType == solidSurface) {
        if (p[2] > 0.0) return false;
        gap = p[2];
        return true;
    }
    return true;
}

void ContactTriangle::addFriction(const Node* node) {
    const double px = localPosition[0], py = localPosition[1];
    // The tangential force must oppose the slip on the side the node is pushed
    // from: a node pushed along +e3 (fn < 0: SHELL above the mid-surface, or
    // any SOLID contact) takes s = -1, a SHELL node pushed along -e3 s = +1.
    const double sign = localForce[2] < 0.0 ? -1.0 : 1.0;
    FrictionData* record = nullptr;
    for (auto& r : frictionHistory)
        if (r.node == node) {
            record = &r;
            break;
        }
    if (!record) {
        FrictionData first;
        first.node = node;
        first.x = px;
        first.y = py;
        frictionHistory.push_back(first);
        return;
    }
    const double dx = px - record->x, dy = py - record->y;
    const double length = std::sqrt(dx * dx + dy * dy);
    double k = 0.5; // first slip
    if (record->incrementSet) {
        const double previous = std::sqrt(record->dx * record->dx + record->dy * record->dy);
        const double c = (record->dx * dx + record->dy * dy) / (previous * length);
        if (c > 1.0)
            k = 1.0;
        else if (c < -1.0)
            k = 0.5;
        else
            k = std::acos(c) < reversal_angle_ ? 1.0 : 0.5;
    }
    record->x = px;
    record->y = py;
    record->dx = dx;
    record->dy = dy;
    record->positionSet = record->incrementSet = true;
    if (length < smallest_slip_) return;
    const double scale = sign * k * friction * localForce[2] / length;
    localForce[0] += scale * dx;
    localForce[1] += scale * dy;
}

void ContactTriangle::applyContact(Node* node) {
    const double fn = contactType == shellSurface ? factor * gap / (0.5 * thickness) : factor * gap;
    localForce[0] = 0.0;
    localForce[1] = 0.0;
    localForce[2] = fn;
    totalContactForce += fn;
    if (frictionSet) addFriction(node);
    const double(&R)[3][3] = geometry.basis();
    double global[3];
    for (int j = 0; j < 3; ++j)
        global[j] = R[0][j] * localForce[0] + R[1][j] * localForce[1] + R[2][j] * localForce[2];
    for (int j = 0; j < 3; ++j)
        localForce[j] = global[j];
    node->addContactForce(-global[0], -global[1], -global[2]);
    for (int a = 0; a < 3; ++a) {
        const double N = areaCoordinates[a];
        this->node(a).addContactForce(N * global[0], N * global[1], N * global[2]);
    }
}

void ContactTriangle::computeContactForces() {
    totalContactForce = 0.0;
    setBoundingBox();
    visitCandidates([this](Node* n, double x, double y, double z) {
        if (checkContact(n, x, y, z)) applyContact(n);
    });
}

std::string ContactTriangle::printVTK(int what, int component) {
    if (what == vtkStrain || what == vtkStress || what == vtkStressExtra) return "0.0";
    return Element::printVTK(what, component);
}

void ContactTriangle::prefetchForStep() const {
    speed::prefetch(*this);
    for (const Node* n : nodePointers)
        if (n) n->prefetchForElements();
}

void ContactTriangle::checkpoint(Archive& archive) {
    archive.pod(geometry);
    archive.pod(origin);
    archive.pod(localForce);
    archive.pod(shapeCoefficients);
    archive.pod(areaCoordinates);
    archive.pod(localPosition);
    archive.pod(gap);
    archive.pod(boundingBox);
    archive.pod(totalContactForce);
    // The friction history names its nodes by number.
    std::uint64_t count = frictionHistory.size();
    archive.pod(count);
    if (!archive.saving()) frictionHistory.assign(static_cast<std::size_t>(count), FrictionData{});
    for (FrictionData& f : frictionHistory) {
        archive.node(f.node);
        archive.pod(f.x);
        archive.pod(f.y);
        archive.pod(f.dx);
        archive.pod(f.dy);
        archive.pod(f.positionSet);
        archive.pod(f.incrementSet);
    }
}
