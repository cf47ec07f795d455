// A rigid body: member nodes that move as one with a reference node.
//
// Before the node update every force on a member i (f_i and its moment m_i)
// is moved onto the reference node:
//   F += f_i,   M += m_i + r_i x f_i,   r_i = x_i - x_ref.
// The reference node is then integrated as any node (its constraint or load
// applies), with the body's mass and rotational inertia about global axes
// through it:
//   m = MASS + m_ref + sum m_i
//   J = INERTIA + J_ref + sum (J_i + m_i (|r_i|^2 I - r_i r_i^T))
// After the update the orientation R turns by the reference node's rotation
// increment dθ (Rodrigues: exp([dθ]x) R, kept orthonormal), J and J^-1 turn
// with it (J = R J0 R^T), and every member is placed rigidly:
//   x_i = x_ref + R (X_i - X_ref),  v_i = v_ref + w x r_i,
//   a_i = a_ref + α x r_i + w x (w x r_i).
// Members are not integrated: their kinetic energy is the reference node's.
#pragma once

#include "Token.h"

#include <array>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class Archive;
class Node;

class RigidBody {
public:
    // Reads "REFERENCE <node> NODES <n>... [<a> TO <b>]... [MASS m] [INERTIA Ixx Iyy Izz]"
    // and claims the nodes for the body.
    void parseOstrel(const std::vector<Token>& tokens,
                     const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap);
    // Adds the body's mass and inertia to the reference node (after the
    // elements gave the nodes theirs); refuses a body that cannot move.
    void assembleMassMatrix();
    // Mass scaling may add mass to the members' elements: the body notes its
    // members' masses and inertias before and takes what they gained after.
    void noteMemberMasses();
    void takeAddedMass();
    // Takes the members' offsets from the reference node and the body's
    // inertia at rest, and gives the members the body's initial velocity.
    void setInitialConditions();

    // The two halves of the body's part in an increment: before and after
    // the node update.
    void gatherForces();
    void placeMembers();
    // The state the loop carries from one increment to the next (Checkpoint.h).
    void checkpoint(Archive& archive);

    std::string getName() const { return name; }
    void setName(const std::string& n) { name = n; }
    void setLine(int l) { line = l; }
    int getLine() const { return line; }
    const Node& getReference() const { return *reference; }
    const std::vector<std::shared_ptr<Node>>& getMembers() const { return members; }
    double getMass() const { return bodyMass; }

private:
    using Vec3 = std::array<double, 3>;
    void checkCanMove() const;

    std::string name;
    int line = 0;
    std::shared_ptr<Node> reference;
    std::vector<std::shared_ptr<Node>> members;
    // X_i - X_ref at rest, one per member.
    std::vector<Vec3> offsets;
    // A member's share of the reference node's mass and inertia, as noted.
    struct Share {
        double mass;
        double inertia[9];
    };
    Share share(const Node& member) const;
    std::vector<Share> noted;
    double mass = 0.0;
    double inertia[3] = {0.0, 0.0, 0.0};
    double bodyMass = 0.0;
    // Orientation (rotation from rest), inertia at rest and its inverse, row by row.
    double R[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    double J0[9] = {};
    double J0inverse[9] = {};
};
