// The contact that a surface triangle (membrane or shell) carries: with
// CONTACT BASIC a contact triangle on its face, as thick as the element; with
// CONTACT EDGE also a contact line of radius t/2 along each edge. The element
// reads the contact keywords through it, has it build the contact objects
// once the nodes and the thickness are known, and forwards to it the mass
// assembly, the initial conditions, the frame updates and the contact forces.
#pragma once

#include "Element.h"
#include "Token.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class Archive;
class ContactLine;
class ContactSearch;
class ContactTriangle;
class Load;
class Material;
class Node;

class FaceContact {
public:
    // Reads CONTACT (BASIC or EDGE), FACTOR or FRICTION and its value at
    // position i (the keyword is `key`) and moves i past them. Returns false
    // and leaves i alone for any other keyword, or for a value of the wrong
    // kind. `kind` and `number` name the element in messages
    // ("FACTOR of membrane element 7").
    bool readKeyword(const std::vector<Token>& tokens, std::size_t& i, const std::string& key,
                     const char* kind, int number);
    // Creates the contact triangle and, for EDGE, the three lines 1-2, 2-3,
    // 3-1 (numbered -1, -2, -3) on the element's nodes.
    void build(const std::vector<std::shared_ptr<Node>>& elementNodes, double thickness,
               const std::vector<std::shared_ptr<Node>>& allNodes,
               const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
               const std::vector<std::shared_ptr<Material>>& materials,
               const std::vector<std::shared_ptr<Load>>& loads);

    void assembleMassMatrix();
    void attachContactSearch(ContactSearch& search);
    void setInitialConditions();
    void updateLocalCoordinateSystem();
    void computeContactForces();
    // The state the loop carries from one increment to the next (Checkpoint.h).
    void checkpoint(Archive& archive);

    // The contact surface the face belongs to (SURFACE), or nothing.
    const std::string& getSurfaceName() const { return surface; }
    // A ContactKind.
    int getType() const { return type; }
    const std::shared_ptr<ContactTriangle>& getTriangle() const { return triangle; }
    // Line 1 (nodes 1-2), 2 (2-3) or 3 (3-1); empty without EDGE.
    const std::shared_ptr<ContactLine>& getLine(int i) const {
        return i == 1 ? line1 : i == 2 ? line2 : line3;
    }

private:
    bool onFace() const { return type == faceContact || type == faceEdgeContact; }

    int type = noContact;
    double factor = 0.0;
    double friction = 0.0;
    bool factorSet = false;
    bool frictionSet = false;
    std::string surface;
    std::shared_ptr<ContactTriangle> triangle;
    std::shared_ptr<ContactLine> line1, line2, line3;
};
