// A named contact surface: a set of triangular facets (CONTACT_FACET
// elements, or the faces of membranes and shells given SURFACE) that pushes
// the nodes it acts on out of itself, each node at most once per increment.
//
// For every node within reach the surface looks for the one facet that
// takes it, so the force on a node does not depend on how many facets meet
// where it touches (a vertex shared by 64 facets pushes as hard as the
// middle of one facet). With c the point of a facet nearest to the node p and
// n = (x2 - x1) x (x3 - x1) / |...| the facet's unit normal:
//   SHELL (two-sided slab of thickness T): the node is taken by the facet
//     with the smallest d = |p - c| below T/2; depth T/2 - d, pushed along
//     (p - c)/d (n when d = 0).
//   SOLID (one-sided, the outside is where n points): the node is taken by the
//     facet it lies behind (-T <= n.(p - x1) <= 0) whose plane it is nearest
//     to, among those over which it lies (its projection inside the facet,
//     edges included); depth -n.(p - x1), pushed along n. A node that lies
//     over none of them (in a concave fold of the surface) is taken by the
//     facet with the nearest point c within T, provided it lies behind every
//     facet within T and c is not on the free boundary of the surface (beyond
//     the rim of an open surface, such as the hole of a ring, there is no
//     solid); depth d, pushed towards c.
// Ties go to the facet declared first. The normal force is k times the
// depth, with k = FACTOR (a stiffness; for SHELL FACTOR / (T/2), as on a
// contact triangle) or k = PENALTY m / dt^2 from the node's own mass m and
// the current step, which stays below the 4 m / dt^2 at which a spring on
// the node would make the central difference unstable.
// Friction is Coulomb's with an elastic stick state: the tangential force
// is carried from one increment to the next (turned into the current
// tangent plane), grows by -k times the tangential slip of the node against
// the facet's point c, and is capped at mu times the normal force, where
// the node slides. It is forgotten when the node leaves the surface.
// The node receives the force, the facet's nodes receive minus the force
// shared by the area coordinates of c: momentum is conserved, and on a tool
// the reaction reaches the tool's rigid body through its nodes.
#pragma once

#include "Token.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class Archive;
class ContactSearch;
class ParallelLoop;
class Element;
class Node;

class ContactSurface {
public:
    enum class Kind { Solid, Shell };

    // Reads the line after the name: TYPE, T, FACTOR or PENALTY, FRICTION, ON.
    void parseOstrel(const std::vector<Token>& tokens);
    void setName(const std::string& n) { name = n; }
    const std::string& getName() const { return name; }
    // The deck line of the surface, for the messages given after the whole
    // deck is read.
    void setLine(int line) { deckLine = line; }
    int getLine() const { return deckLine; }

    // Adds the face of `owner` (its first three nodes, in their order).
    void addFacet(const Element& owner);

    // Decides which nodes the surface acts on: those it names with ON, or
    // by default every node that is on no rigid body (onRigidBody, indexed
    // by node number - 1) and is not a node of the surface's own facets.
    // Throws when that leaves none, when it has no facets, or when two facets
    // of a SOLID surface run their shared edge the same way. Node numbers
    // must run 1..N.
    void setInitialConditions(const std::vector<std::shared_ptr<Node>>& nodes,
                              const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                              const std::unordered_map<int, std::shared_ptr<Element>>& elementMap,
                              const std::vector<char>& onRigidBody);
    void attachContactSearch(ContactSearch& search);
    // Pushes every node it acts on that is within reach, and adds friction;
    // the facets look for their nodes on the loop's threads.
    void computeContactForces(double dt, ParallelLoop& loop);
    // The state the loop carries from one increment to the next (Checkpoint.h).
    void checkpoint(Archive& archive);

    Kind getKind() const { return kind; }
    double getThickness() const { return thickness; }
    int getNumberOfFacets() const { return static_cast<int>(facets.size()); }
    int getNumberOfActingNodes() const { return actingCount; }
    // Sums of the last increment: normal forces, and the number of nodes pushed.
    double getNormalForce() const { return normalForce; }
    int getNumberOfContacts() const { return static_cast<int>(touched.size()); }

private:
    struct Facet {
        Node* node[3];
        int element;
        // Edge k (node k to node k+1) and vertex k lie on the free boundary of
        // the surface (an edge of one facet only).
        bool boundaryEdge[3];
        bool boundaryVertex[3];
        // The corners and the unit normal at the current positions, taken
        // once per increment for every node the facet is offered.
        double corner[3][3];
        double normal[3];
    };
    void findBoundary();
    // Where a node stands against the surface in the current increment.
    struct Slot {
        double distance;   // what decides between facets: smaller takes the node
        double weights[3]; // area coordinates of the facet's point nearest to the node
        int facet;
        int epoch;        // increment in which the slot was last filled
        int contactEpoch; // increment in which the node was last pushed
        bool over;        // the node lies over the facet (not in a fold)
        bool inFront;     // some facet within reach has the node in front (SOLID)
    };
    // What a facet offers a node within its reach: to take it (at that
    // distance, with those area coordinates), or that the node lies in front
    // of it.
    struct Offer {
        double distance;
        double weights[3];
        int facet;
        int index; // node number - 1
        bool over;
        bool inFront;
    };
    // The offer of facet f to a node at (x, y, z); false when it has none.
    // Reads the facet's corners and normal of this increment, changes nothing.
    bool evaluate(int f, const Node* node, double x, double y, double z, Offer& offer) const;
    // The node's slot takes the offer if it is better than what it holds.
    void take(const Offer& offer);
    void push(int index, double dt);
    void checkNormals() const;
    void readList(const std::vector<Token>& tokens, std::size_t& i, std::vector<int>& into) const;

    std::string name;
    int deckLine = 0;
    Kind kind = Kind::Solid;
    double thickness = 1.0;
    double factor = 0.0, penalty = 0.1, friction = 0.0;
    bool factorSet = false, penaltySet = false;
    std::vector<int> onNodes, onElements;
    bool onNodesGiven = false, onElementsGiven = false;

    std::vector<Facet> facets;
    std::vector<Node*> byIndex; // node number - 1 -> node
    std::vector<char> acting;   // by node number - 1
    int actingCount = 0;
    std::vector<Slot> slots;        // by node number - 1
    std::vector<double> tangential; // 3 per node: the carried friction force
    std::vector<int> touched;       // nodes taken in this increment
    // Per block of facets, kept from one increment to the next; each on a
    // cache line of its own, since threads fill neighbouring blocks at once.
    struct alignas(64) Offers {
        std::vector<Offer> list;
    };
    std::vector<Offers> offers;
    int epoch = 0;
    double normalForce = 0.0;
    ContactSearch* search = nullptr;
};
