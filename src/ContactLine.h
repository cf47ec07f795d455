// Penalty contact on the straight segment A-B between two nodes, thickened to
// a cylinder of radius R; no mass or stiffness of its own.
// Node to segment: s = (P - A).(B - A) / |B - A|^2, closest point A, B or
// A + s (B - A); a node at distance d <= R is pushed along the unit vector n
// from the closest point with f = FACTOR (1 - d/R), and the segment's nodes
// take -(1 - s) f n and -s f n.
// Segment to segment: the closest points of the lines A + s a and B + t b
// solve A + s a + d n = B + t b with n = a x b / |a x b|; for 0 <= s, t <= 1
// (end nodes included, to within rounding) and |d| <= R the lines are pushed apart with f = FACTOR (1 -
// |d|/R): this segment's nodes take -(1 - s) f n, -s f n, the other's (1 - t) f n, t f n.
// A pair of lines acts once per increment: where each line's search finds the
// other (a crossing that lies within the x reach of both), only the line
// registered first with the contact search pushes, with its own R and FACTOR.
#pragma once

#include "ContactSearch.h"
#include "Element.h"
#include "Node.h"

#include <memory>
#include <vector>

class ContactLine : public Element {
public:
    // An edge contact an element makes for itself: handed "NODES a b R <radius>"
    // and, when given, "FACTOR <factor>", both values as %f text.
    static std::shared_ptr<ContactLine>
    makeEdgeContact(int lineNumber, const std::string& a, const std::string& b, double radius, bool factorSet,
                    double factor, const std::vector<std::shared_ptr<Node>>& allNodes,
                    const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                    const std::vector<std::shared_ptr<Material>>& materials,
                    const std::vector<std::shared_ptr<Load>>& loads);

    ContactLine();
    ~ContactLine() override;

    void parseOstrel() override {}
    void parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Node>>& nodes,
                     const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                     const std::vector<std::shared_ptr<Material>>& materials,
                     const std::vector<std::shared_ptr<Load>>& loads) override;
    void assembleMassMatrix() override {}
    void setInitialConditions() override;
    double checkTimestep(double dt) override { return dt; }
    void updateLocalCoordinateSystem() override;
    int getNumberOfIntegrationPoints() override { return 1; }
    void computeStrain(double, int) override {}
    void computeStress(double, int) override {}
    void computeInternalForces(double, int) override {}
    void computeExternalForces(double) override {}
    void computeContactForces() override;
    void checkpoint(Archive& archive) override;
    std::string printVTK(int what, int component) override;
    void prefetchForStep() const override;

    std::shared_ptr<Node> getNode(int i) const { return nodes.at(i); }
    // Node-to-segment test; on success s, d and the direction stay in the fields.
    bool checkContact(std::shared_ptr<Node>& node) { return checkContact(node.get()); }
    bool checkContact(const Node* node) {
        return checkContact(node, node->getX_pos(), node->getY_pos(), node->getZ_pos());
    }
    // The same test for a node at the given current position.
    bool checkContact(const Node* node, double x, double y, double z);
    // Segment-to-segment test; on success s, t, d and the direction stay in the fields.
    bool checkContact(ContactLine* other);
    // True when this line's own search pushes the pair it makes with other:
    // other is within its x reach and meets it. Changes nothing.
    bool findsLine(const ContactLine& other) const;

    // Visits the candidates of the search: visitNode(Node*, x, y, z) for every node
    // whose x lies in the line's x range widened by R and that the y/z box
    // test does not reject, and visitLine(ContactLine*) once for every contact
    // line with a node in that x range whose segment may meet the box. Without
    // a search (a line not in a model) or without radius there are none.
    template <class NodeVisitor, class LineVisitor>
    void visitCandidates(NodeVisitor&& visitNode, LineVisitor&& visitLine);

    double getRadius() const { return radius; }
    double getFactor() const { return factor; }
    double getFriction() const { return friction; }
    const TNT::Array1D<double>& getDirection() const { return direction; }
    const TNT::Array1D<double>& getContactParameters() const { return contactParameters; }
    bool usesSpatialIndex() const { return search != nullptr; }
    void attachContactSearch(ContactSearch& index) override;

private:
    friend class ContactSearch;

    void setBoundingBox();
    // The x range of the search, widened by R; false when the line searches
    // nothing (no search, no radius, a position not finite).
    bool searchRange(double& xLow, double& xHigh) const;
    // A node of other strictly inside the x range.
    static bool inRange(const ContactLine& other, double xLow, double xHigh) {
        const double x0 = other.nodes[0]->getX_pos(), x1 = other.nodes[1]->getX_pos();
        return (x0 > xLow && x0 < xHigh) || (x1 > xLow && x1 < xHigh);
    }
    // The segment-to-segment test on the nodes' current positions; on success
    // s, t, d and the unit normal n (from this line towards other) in hit.
    struct LineHit {
        double s, t, d, n[3];
    };
    bool meets(const ContactLine& other, LineHit& hit) const;
    void applyNodeContact(Node& node);
    void applyLineContact(ContactLine& other);
    // True the first time a line is met during the current search.
    bool firstVisit(ContactLine* other) {
        if (other->visitMark == searchMark) return false;
        other->visitMark = searchMark;
        return true;
    }

    double radius = 0.1;
    double factor = 10.0;
    double friction = 0.0;
    bool radiusSet = false, factorSet = false, frictionSet = false, nodesSet = false;
    TNT::Array1D<double> direction;
    TNT::Array1D<double> contactParameters; // s, t, d
    double boundingBox[4] = {0, 0, 0, 0};   // y-max, y-min, z-max, z-min
    double segment[3] = {0, 0, 0};
    double segmentLength = 0.0;

    ContactSearch* search = nullptr;
    int searchSlot = -1;
    unsigned long visitMark = 0;
    unsigned long searchMark = 0;
};

inline bool ContactLine::searchRange(double& xLow, double& xHigh) const {
    const Node* start = nodes[0].get();
    const Node* end = nodes[1].get();
    if (end->getX_pos() < start->getX_pos()) std::swap(start, end);
    xLow = start->getX_pos() - radius;
    xHigh = end->getX_pos() + radius;
    // A line of no radius touches nothing (see checkContact).
    return search && radius > 0.0 && std::isfinite(xLow) && std::isfinite(xHigh);
}

template <class NodeVisitor, class LineVisitor>
void ContactLine::visitCandidates(NodeVisitor&& visitNode, LineVisitor&& visitLine) {
    double xLow, xHigh;
    if (!searchRange(xLow, xHigh)) return;
    searchMark = search->nextMark();
    search->forEachNode(xLow, xHigh, boundingBox[1], boundingBox[0], boundingBox[3], boundingBox[2],
                        visitNode);
    search->forEachLine(xLow, xHigh, boundingBox[1], boundingBox[0], boundingBox[3], boundingBox[2],
                        [&](ContactLine* other) {
                            if (firstVisit(other) && inRange(*other, xLow, xHigh)) visitLine(other);
                        });
}
