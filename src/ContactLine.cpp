#include "ContactLine.h"

#include "Checkpoint.h"
#include "DeckParser.h"
#include "SpeedHints.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <stdexcept>

std::shared_ptr<ContactLine>
ContactLine::makeEdgeContact(int lineNumber, const std::string& a, const std::string& b, double radius,
                             bool factorSet, double factor,
                             const std::vector<std::shared_ptr<Node>>& allNodes,
                             const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                             const std::vector<std::shared_ptr<Material>>& materials,
                             const std::vector<std::shared_ptr<Load>>& loads) {
    // The edge is built from deck text, so the radius passes with six decimals
    // (intended; see the user guide, "Quirks worth knowing").
    std::vector<Token> edge{Token("NODES", 0), Token(a), Token(b), Token("R", 0),
                            Token(std::to_string(radius))};
    if (factorSet) {
        edge.emplace_back("FACTOR", 0);
        edge.emplace_back(std::to_string(factor));
    }
    auto line = std::make_shared<ContactLine>();
    line->setNumber(lineNumber);
    line->parseOstrel(edge, allNodes, nodeMap, materials, loads);
    return line;
}

namespace {
// Lines closer to parallel than this (sine of the angle) have no single pair
// of closest points.
constexpr double parallel_limit_ = 1e-15;

// Closest points at a segment's end node count as on the segment; rounding
// could otherwise let a line cross exactly at a node between two segments.
constexpr double end_tolerance_ = 1e-12;

inline void crossProduct(const double* a, const double* b, double* c) {
    c[0] = a[1] * b[2] - a[2] * b[1];
    c[1] = a[2] * b[0] - a[0] * b[2];
    c[2] = a[0] * b[1] - a[1] * b[0];
}

inline double dot(const double* a, const double* b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
} // namespace

ContactLine::ContactLine() : direction(3, 0.0), contactParameters(3, 0.0) {
    numberOfNodes = 2;
    vtkCellType = "3";
}

ContactLine::~ContactLine() {
    if (search) search->removeLine(this);
}

void ContactLine::parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Node>>&,
                              const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                              const std::vector<std::shared_ptr<Material>>&,
                              const std::vector<std::shared_ptr<Load>>&) {
    const DeckParser line(tokens, DeckParser::AtEnd::Lenient);
    using K = DeckParser::Follows;
    const std::string of = " of contact line element " + std::to_string(number);
    line.read(
        {{"NODES", K::Anything,
          [&](std::size_t i) {
              nodes = line.nodes(i + 1, 2, "Not enough nodes inputs for Element Contact Line", nodeMap);
              nodesSet = true;
              return 3;
          }},
         {"R", K::Number,
          [&](std::size_t i) {
              radius = line.finiteNumber(i + 1, "R" + of);
              radiusSet = true;
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
          }}},
        [&](std::size_t i) -> std::size_t { throw DeckParser::notRecognized(DeckParser::text(tokens[i])); });
}

void ContactLine::setInitialConditions() {
    if (!nodesSet || nodes.size() < 2) throw DeckParser::nodesNotSet(number);
    updateLocalCoordinateSystem();
    if (!factorSet) factor = 10.0;
    if (!frictionSet) friction = 0.0;
    if (!radiusSet) radius = 0.1;
    setBoundingBox();
}

void ContactLine::attachContactSearch(ContactSearch& index) {
    if (search == &index) return;
    if (search) search->removeLine(this);
    search = &index;
    search->addLine(this);
}

void ContactLine::updateLocalCoordinateSystem() {
    const Node& a = *nodes[0];
    const Node& b = *nodes[1];
    segment[0] = b.getX_pos() - a.getX_pos();
    segment[1] = b.getY_pos() - a.getY_pos();
    segment[2] = b.getZ_pos() - a.getZ_pos();
    segmentLength = std::sqrt(dot(segment, segment));
    setBoundingBox();
}

void ContactLine::setBoundingBox() {
    const Node& a = *nodes[0];
    const Node& b = *nodes[1];
    boundingBox[0] = std::max(a.getY_pos(), b.getY_pos()) + radius;
    boundingBox[1] = std::min(a.getY_pos(), b.getY_pos()) - radius;
    boundingBox[2] = std::max(a.getZ_pos(), b.getZ_pos()) + radius;
    boundingBox[3] = std::min(a.getZ_pos(), b.getZ_pos()) - radius;
}

bool ContactLine::checkContact(const Node* node, double x, double y, double z) {
    // A line of no radius (a rod thinner than the six decimals of its radius
    // text) reaches nothing: its force law FACTOR (1 - d/R) has no value there.
    if (!(radius > 0.0)) return false;
    if (node == nodes[0].get() || node == nodes[1].get()) return false;
    if (y < boundingBox[1] || y > boundingBox[0] || z < boundingBox[3] || z > boundingBox[2]) return false;

    const Node& a = *nodes[0];
    const double ap[3] = {x - a.getX_pos(), y - a.getY_pos(), z - a.getZ_pos()};
    const double lengthSquared = dot(segment, segment);
    // A segment of zero length acts as a sphere around its nodes.
    const double s = lengthSquared > 0.0 ? dot(ap, segment) / lengthSquared : 0.0;
    const double clamped = s < 0.0 ? 0.0 : (s > 1.0 ? 1.0 : s);
    double v[3];
    for (int k = 0; k < 3; ++k)
        v[k] = ap[k] - clamped * segment[k];
    const double d = std::sqrt(dot(v, v));
    if (!(d <= radius)) return false;

    contactParameters[0] = s;
    contactParameters[2] = d;
    if (d > 0.0) {
        for (int k = 0; k < 3; ++k)
            direction[k] = v[k] / d;
    } else {
        // A node on the axis: push it along a fixed normal of the segment, the
        // one closest to the coordinate axis least aligned with the segment.
        double u[3] = {0.0, 0.0, 1.0};
        if (segmentLength > 0.0)
            for (int k = 0; k < 3; ++k)
                u[k] = segment[k] / segmentLength;
        int least = 0;
        for (int k = 1; k < 3; ++k)
            if (std::fabs(u[k]) < std::fabs(u[least])) least = k;
        const double e[3] = {least == 0 ? 1.0 : 0.0, least == 1 ? 1.0 : 0.0, least == 2 ? 1.0 : 0.0};
        double w[3];
        crossProduct(u, e, w);
        const double norm = std::sqrt(dot(w, w));
        for (int k = 0; k < 3; ++k)
            direction[k] = w[k] / norm;
    }
    return true;
}

bool ContactLine::meets(const ContactLine& other, LineHit& hit) const {
    if (&other == this || !(radius > 0.0)) return false;
    const Node& a0 = *nodes[0];
    const Node& a1 = *nodes[1];
    const Node& b0 = *other.nodes[0];
    const Node& b1 = *other.nodes[1];
    // The box and the segment as setBoundingBox and updateLocalCoordinateSystem
    // make them, so that either line can make the test of the other.
    const double yMax = std::max(a0.getY_pos(), a1.getY_pos()) + radius,
                 yMin = std::min(a0.getY_pos(), a1.getY_pos()) - radius,
                 zMax = std::max(a0.getZ_pos(), a1.getZ_pos()) + radius,
                 zMin = std::min(a0.getZ_pos(), a1.getZ_pos()) - radius;
    if ((b0.getY_pos() < yMin && b1.getY_pos() < yMin) || (b0.getY_pos() > yMax && b1.getY_pos() > yMax) ||
        (b0.getZ_pos() < zMin && b1.getZ_pos() < zMin) || (b0.getZ_pos() > zMax && b1.getZ_pos() > zMax))
        return false;
    const Node* mine[2] = {&a0, &a1};
    const Node* theirs[2] = {&b0, &b1};
    for (const Node* p : mine)
        for (const Node* q : theirs)
            if (p == q) return false;

    const double a[3] = {a1.getX_pos() - a0.getX_pos(), a1.getY_pos() - a0.getY_pos(),
                         a1.getZ_pos() - a0.getZ_pos()};
    const double b[3] = {b1.getX_pos() - b0.getX_pos(), b1.getY_pos() - b0.getY_pos(),
                         b1.getZ_pos() - b0.getZ_pos()};
    double n[3];
    crossProduct(a, b, n);
    const double crossNorm = std::sqrt(dot(n, n));
    if (crossNorm / (std::sqrt(dot(a, a)) * std::sqrt(dot(b, b))) < parallel_limit_) return false;
    for (double& c : n)
        c /= crossNorm;

    // s a - t b + d n = B - A: the inverse of [a, -b, n] has the rows
    // (-b x n), (n x a), (a x -b) divided by the determinant.
    const double minusB[3] = {-b[0], -b[1], -b[2]};
    const double r[3] = {b0.getX_pos() - a0.getX_pos(), b0.getY_pos() - a0.getY_pos(),
                         b0.getZ_pos() - a0.getZ_pos()};
    double row0[3], row1[3], row2[3];
    crossProduct(minusB, n, row0);
    crossProduct(n, a, row1);
    crossProduct(a, minusB, row2);
    const double det = dot(a, row0);
    const double s = dot(row0, r) / det, t = dot(row1, r) / det;
    double d = dot(row2, r) / det;
    if (!(s >= -end_tolerance_ && s <= 1.0 + end_tolerance_ && t >= -end_tolerance_ &&
          t <= 1.0 + end_tolerance_ && std::fabs(d) <= radius))
        return false;
    if (d < 0.0) {
        d = -d;
        for (double& c : n)
            c = -c;
    }
    hit.s = s;
    hit.t = t;
    hit.d = d;
    for (int k = 0; k < 3; ++k)
        hit.n[k] = n[k];
    return true;
}

bool ContactLine::checkContact(ContactLine* other) {
    LineHit hit;
    if (!meets(*other, hit)) return false;
    contactParameters[0] = hit.s;
    contactParameters[1] = hit.t;
    contactParameters[2] = hit.d;
    for (int k = 0; k < 3; ++k)
        direction[k] = hit.n[k];
    return true;
}

bool ContactLine::findsLine(const ContactLine& other) const {
    double xLow, xHigh;
    LineHit hit;
    return searchRange(xLow, xHigh) && inRange(other, xLow, xHigh) && meets(other, hit);
}

void ContactLine::applyNodeContact(Node& node) {
    const double f = factor * (1.0 - contactParameters[2] / radius);
    const double s = contactParameters[0];
    const double fx = f * direction[0], fy = f * direction[1], fz = f * direction[2];
    node.addContactForce(fx, fy, fz);
    nodes[0]->addContactForce(-(1.0 - s) * fx, -(1.0 - s) * fy, -(1.0 - s) * fz);
    nodes[1]->addContactForce(-s * fx, -s * fy, -s * fz);
}

void ContactLine::applyLineContact(ContactLine& other) {
    const double f = factor * (1.0 - contactParameters[2] / radius);
    const double s = contactParameters[0], t = contactParameters[1];
    const double fx = f * direction[0], fy = f * direction[1], fz = f * direction[2];
    nodes[0]->addContactForce(-(1.0 - s) * fx, -(1.0 - s) * fy, -(1.0 - s) * fz);
    nodes[1]->addContactForce(-s * fx, -s * fy, -s * fz);
    other.nodes[0]->addContactForce((1.0 - t) * fx, (1.0 - t) * fy, (1.0 - t) * fz);
    other.nodes[1]->addContactForce(t * fx, t * fy, t * fz);
}

void ContactLine::computeContactForces() {
    updateLocalCoordinateSystem();
    setBoundingBox();
    visitCandidates(
        [this](Node* n, double x, double y, double z) {
            if (checkContact(n, x, y, z)) applyNodeContact(*n);
        },
        [this](ContactLine* other) {
            if (!checkContact(other)) return;
            // A crossing within the x reach of both lines is found by both
            // searches: the line registered first pushes the pair, once.
            if (other->searchSlot < searchSlot && other->findsLine(*this)) return;
            applyLineContact(*other);
        });
}

std::string ContactLine::printVTK(int what, int component) {
    if (what == vtkStrain || what == vtkStress || what == vtkStressExtra) return "0.0";
    return Element::printVTK(what, component);
}

void ContactLine::prefetchForStep() const {
    speed::prefetch(*this);
    for (const auto& n : nodes)
        n->prefetchForElements();
}

void ContactLine::checkpoint(Archive& archive) {
    for (int k = 0; k < 3; ++k) {
        archive.pod(direction[k]);
        archive.pod(contactParameters[k]);
    }
    archive.pod(boundingBox);
    archive.pod(segment);
    archive.pod(segmentLength);
}
