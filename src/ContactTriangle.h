// Penalty contact surface on a triangle, with no mass or stiffness of its own.
// In the triangle's local frame R (TriangleGeometry: e1 along edge 1-2, e3 the
// unit normal; nodes 2 and 3 at (x2, 0) and (x3, y3)) a node at
// p = R x - R x1 lies over the face when its area coordinates
//   N1 = c0 + c1 px + c2 py,  N2 = c3 px + c4 py,  N3 = c5 py
// are all non-negative (edges belong to the face, to within rounding). SHELL (two-sided, thickness T): the
// node penetrates when |pz| <= T/2, gap g = pz -+ T/2, normal force fn = FACTOR g / (T/2). SOLID (one-sided):
// the node penetrates when pz <= 0, g = pz, fn = FACTOR g. With friction mu the tangential force mu |fn|
// opposes the slip increment of the node in the local plane, halved on the first slip and whenever the slip
// turns by a right angle or more. The node receives -R^T f and the triangle's
// nodes receive N_i R^T f, so the contact forces are self-equilibrated.
#pragma once

#include "ContactSearch.h"
#include "Element.h"
#include "Node.h"
#include "TriangleGeometry.h"

#include <memory>
#include <vector>

// How a contact triangle meets a node (TYPE SHELL or SOLID; the numbers are
// the codes the triangle keeps).
enum ContactTriangleType : int {
    shellSurface = 0, // a sheet of thickness T, pushing from either side
    solidSurface = 1, // the outside of a solid, pushing along the normal
};

class ContactTriangle : public Element {
public:
    // The face contact a membrane or shell makes for itself (numbered -1):
    // handed "NODES n1 n2 n3 T <thickness as %f text>" and, when given,
    // "FACTOR f" and "FRICTION mu", exactly as a deck line would be.
    static std::shared_ptr<ContactTriangle>
    makeFaceContact(const std::string& n1, const std::string& n2, const std::string& n3, double thickness,
                    bool factorSet, double factor, bool frictionSet, double friction,
                    const std::vector<std::shared_ptr<Node>>& allNodes,
                    const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                    const std::vector<std::shared_ptr<Material>>& materials,
                    const std::vector<std::shared_ptr<Load>>& loads);

    // Friction state of one node that has touched the triangle.
    struct FrictionData {
        const Node* node = nullptr;
        double x = 0.0, y = 0.0;   // last in-plane local position
        double dx = 0.0, dy = 0.0; // last slip increment
        bool positionSet = false, incrementSet = false;
    };

    ContactTriangle();

    void parseOstrel() override {}
    void parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Node>>& nodes,
                     const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                     const std::vector<std::shared_ptr<Material>>& materials,
                     const std::vector<std::shared_ptr<Load>>& loads) override;
    void assembleMassMatrix() override {}
    void setInitialConditions() override;
    double checkTimestep(double dt) override { return dt; }
    void updateLocalCoordinateSystem() override;
    int getNumberOfIntegrationPoints() override { return 0; }
    void computeStrain(double, int) override {}
    void computeStress(double, int) override {}
    void computeInternalForces(double, int) override {}
    void computeExternalForces(double) override {}
    void computeContactForces() override;
    void checkpoint(Archive& archive) override;
    std::string printVTK(int what, int component) override;
    void prefetchForStep() const override;

    // Penetration test of one node against the current geometry; on success
    // the gap, the area coordinates and the local position stay in the fields.
    bool checkContact(std::shared_ptr<Node>& node) { return checkContact(node.get()); }
    bool checkContact(const Node* node) {
        return checkContact(node, node->getX_pos(), node->getY_pos(), node->getZ_pos());
    }
    // The same test for a node at the given current position.
    bool checkContact(const Node* node, double x, double y, double z);
    // Adds the friction part of the contact force being built for a node that
    // has just passed checkContact.
    void computeFrictionForces(std::shared_ptr<Node> node) { addFriction(node.get()); }

    // Visits the candidate nodes of the search: every node whose x lies in the
    // triangle's x range widened by T/2 (the triangle's own nodes may be among
    // them) and that the y/z box test does not reject; without thickness,
    // every node in the closed x range. The visitor is called as
    // visit(Node*, x, y, z) with the node's position. Without a search
    // (an element not in a model) there are no candidates.
    template <class Visitor> void visitCandidates(Visitor&& visit);

    double getThickness() const { return thickness; }
    double getFactor() const { return factor; }
    double getFriction() const { return friction; }
    int getContactType() const { return contactType; }
    double getArea() const { return geometry.area(); }
    double getGap() const { return gap; }
    double getTotalContactForce() const { return totalContactForce; }
    const double* getAreaCoordinates() const { return areaCoordinates; }
    const double* getLocalPosition() const { return localPosition; }
    // The force of the last contact: built in local axes, left in global axes.
    const double (&getLocalForce() const)[3] { return localForce; }
    const double (&getLocalBasis() const)[3][3] { return geometry.basis(); }
    const std::vector<FrictionData>& getFrictionHistory() const { return frictionHistory; }
    bool usesSpatialIndex() const { return search != nullptr; }
    void attachContactSearch(ContactSearch& index) override;

private:
    void setBoundingBox();
    void addFriction(const Node* node);
    void applyContact(Node* node);

    // The three nodes, borrowed from `nodes` once they are known.
    Node& node(int a) const { return nodePointers[a] ? *nodePointers[a] : *nodes.at(a); }
    Node* nodePointers[3] = {nullptr, nullptr, nullptr};
    // The frame and R x1, which a penetration test reads.
    TriangleGeometry geometry;
    double origin[3] = {};
    double localForce[3] = {};

    double thickness = 1.0;
    double factor = 10.0;
    double friction = 0.0;
    int contactType = shellSurface;
    bool thicknessSet = false, nodesSet = false, factorSet = false, frictionSet = false;
    double shapeCoefficients[6] = {0, 0, 0, 0, 0, 0};
    double areaCoordinates[3] = {0, 0, 0};
    double localPosition[3] = {0, 0, 0};
    double gap = 0.0;
    double boundingBox[4] = {0, 0, 0, 0}; // y-max, y-min, z-max, z-min
    double totalContactForce = 0.0;
    std::vector<FrictionData> frictionHistory;
    ContactSearch* search = nullptr;
};

template <class Visitor> void ContactTriangle::visitCandidates(Visitor&& visit) {
    // Smallest and largest x among the nodes, the first in node order on a tie.
    Node* low = &node(0);
    Node* high = low;
    for (int i = 1; i < 3; ++i) {
        Node* n = &node(i);
        if (n->getX_pos() < low->getX_pos()) low = n;
        if (n->getX_pos() > high->getX_pos()) high = n;
    }
    const double half = 0.5 * thickness;
    const double xLow = low->getX_pos() - half, xHigh = high->getX_pos() + half;
    if (!search) return;
    if (half > 0.0 && std::isfinite(xLow) && std::isfinite(xHigh))
        search->forEachNode(xLow, xHigh, boundingBox[1], boundingBox[0], boundingBox[3], boundingBox[2],
                            visit);
    else
        search->forEachNodeBetween(low->getX_pos(), high->getX_pos(), visit);
}
