// The contact search of a model: its nodes and contact lines binned on a
// uniform grid over x and the wider of the y and z spreads, rebuilt once per
// increment after the nodes have moved. The model owns the one search and
// hands it to every contact element (ContactTriangle, ContactLine, and those
// that shells make for their edges). A contact element asks for the nodes
// whose x lies strictly inside its x range and whose y and z its box does
// not reject; contact lines are binned by the rectangle of their segment,
// because a line can cross an element's box while both of its nodes lie
// outside it.
#pragma once

#include <cmath>
#include <memory>
#include <vector>

class ContactLine;
class Node;
class ParallelLoop;

class ContactSearch {
public:
    ContactSearch() = default;
    // The lines still attached forget the search, so that either may go first.
    ~ContactSearch();
    ContactSearch(const ContactSearch&) = delete;
    ContactSearch& operator=(const ContactSearch&) = delete;

    // A contact triangle or surface that will ask for nodes: the nodes are
    // binned from then on.
    void addNodeQuerier() { ++nodeQueriers; }
    void addLine(ContactLine* line);
    void removeLine(ContactLine* line);
    bool isUsed() const { return nodeQueriers > 0 || !lines.empty(); }
    int getNumberOfLines() const { return static_cast<int>(lines.size()); }
    // A number not handed out before: a line marks the lines it has met in
    // one search with it, so that it meets each only once.
    unsigned long nextMark() { return ++marks; }

    // Rebinning from the current positions; allocates only while the model
    // grows, the buffers are reused from one increment to the next. The node
    // vector is expected to keep its nodes from one call to the next (a
    // different vector or a new size is taken as a new set of nodes).
    // With a loop, runs of nodes are read and binned on its threads (the
    // same bins in the same order).
    void update(const std::vector<std::shared_ptr<Node>>& nodes, ParallelLoop* loop = nullptr);

    // Calls visit(Node*, x, y, z) once for every node with xLow < x < xHigh that the
    // box [yLow, yHigh] x [zLow, zHigh] does not reject: the same test as the
    // contact elements' own (a coordinate below the low or above the high
    // bound rejects), made on positions copied next to each other so that far
    // nodes cost no visit of the node itself. The positions are those of the
    // last update, which are the nodes' own: the nodes move only just before it.
    template <class Visitor>
    void forEachNode(double xLow, double xHigh, double yLow, double yHigh, double zLow, double zHigh,
                     Visitor&& visit) const {
        auto accept = [&](const Entry& e) {
            return e.x > xLow && e.x < xHigh && !(e.y < yLow || e.y > yHigh || e.z < zLow || e.z > zHigh);
        };
        int x0, x1, s0, s1;
        if (cellRange(xLow, xHigh, yLow, yHigh, zLow, zHigh, x0, x1, s0, s1)) {
            for (int i = x0; i <= x1; ++i) {
                const int first = nodeStart[i * cellsS + s0], last = nodeStart[i * cellsS + s1 + 1];
                for (int k = first; k < last; ++k)
                    if (accept(nodeItems[k]))
                        visit(nodeItems[k].node, nodeItems[k].x, nodeItems[k].y, nodeItems[k].z);
            }
        }
        for (const Entry& e : looseNodes)
            if (accept(e)) visit(e.node, e.x, e.y, e.z);
    }

    // Calls visit(Node*, x, y, z) for every node with xLow <= x <= xHigh (a
    // closed range, for elements of no thickness), in node-number order.
    template <class Visitor> void forEachNodeBetween(double xLow, double xHigh, Visitor&& visit) const {
        for (const Entry& e : packed)
            if (e.x >= xLow && e.x <= xHigh) visit(e.node, e.x, e.y, e.z);
    }

    // Calls visit(ContactLine*) for every registered line whose segment
    // rectangle may meet the box; a line can be visited more than once.
    template <class Visitor>
    void forEachLine(double xLow, double xHigh, double yLow, double yHigh, double zLow, double zHigh,
                     Visitor&& visit) const {
        int x0, x1, s0, s1;
        if (cellRange(xLow, xHigh, yLow, yHigh, zLow, zHigh, x0, x1, s0, s1)) {
            for (int i = x0; i <= x1; ++i)
                for (int j = s0; j <= s1; ++j) {
                    const int cell = i * cellsS + j;
                    for (int k = lineStart[cell]; k < lineStart[cell + 1]; ++k)
                        if (lineItems[k]) visit(lineItems[k]);
                }
        }
        for (ContactLine* line : looseLines)
            visit(line);
    }

private:
    struct Entry {
        double x, y, z;
        Node* node;
    };
    double secondary(const Node& n) const;
    int cellX(double x) const { return clampIndex((x - originX) / sizeX, cellsX); }
    int cellS(double s) const { return clampIndex((s - originS) / sizeS, cellsS); }
    static int clampIndex(double v, int count) {
        if (!(v > 0.0)) return 0;
        if (v >= count - 1) return count - 1;
        return static_cast<int>(v);
    }
    bool cellRange(double xLow, double xHigh, double yLow, double yHigh, double zLow, double zHigh, int& x0,
                   int& x1, int& s0, int& s1) const;
    // Cells covered by a line's segment rectangle, or false when the line goes
    // to the list that every query scans (non-finite or very long).
    bool lineCells(const ContactLine& line, int& x0, int& x1, int& s0, int& s1) const;

    int nodeQueriers = 0;
    unsigned long marks = 0;
    std::vector<ContactLine*> lines;

    int axis = 1; // 1: y, 2: z
    double originX = 0.0, originS = 0.0, sizeX = 1.0, sizeS = 1.0;
    int cellsX = 1, cellsS = 1;
    std::vector<int> nodeStart;
    std::vector<Entry> nodeItems;
    std::vector<Entry> looseNodes;
    std::vector<int> lineStart;
    std::vector<ContactLine*> lineItems;
    std::vector<ContactLine*> looseLines;
    std::vector<int> cellOfNode;
    // Per run of nodes: extent of its finite positions, how many, and
    // whether any is not finite.
    struct Extent {
        double lo[3], hi[3];
        int binned;
        bool loose;
    };
    std::vector<Extent> extents;
    std::vector<int> cursor;
    // The node vector last indexed, its nodes in number order, their positions.
    const std::vector<std::shared_ptr<Node>>* source = nullptr;
    std::vector<Node*> ordered;
    std::vector<Entry> packed;
};
