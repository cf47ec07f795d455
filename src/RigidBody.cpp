#include "RigidBody.h"

#include "BoundaryCondition.h"
#include "Checkpoint.h"
#include "DeckParser.h"
#include "Load.h"
#include "Node.h"

#include <climits>
#include <cmath>
#include <stdexcept>

namespace {
const char* const axisName[3] = {"X", "Y", "Z"};

// The whole number a node range names at one end; "Node <value> is not
// found" for a value that no node number can have.
long rangeEnd(const Token& t) {
    const double v = t.getNumber();
    if (!(std::isfinite(v) && v > double(INT_MIN) - 1.0 && v < double(INT_MAX) + 1.0))
        throw DeckParser::nodeNotFound(DeckParser::text(t));
    return static_cast<long>(static_cast<int>(v));
}

// Whether the node's constraint prescribes component k (velocity or acceleration).
bool prescribed(const Node& node, int k) {
    const auto* condition = dynamic_cast<const BoundaryCondition*>(node.getConstraint().get());
    return condition && (condition->isVelocityPrescribed(k) || condition->isAccelerationPrescribed(k));
}

// c = a b for 3x3 matrices stored row by row.
void multiply(const double (&a)[9], const double (&b)[9], double (&c)[9]) {
    for (int r = 0; r < 3; ++r)
        for (int k = 0; k < 3; ++k)
            c[3 * r + k] = a[3 * r] * b[k] + a[3 * r + 1] * b[3 + k] + a[3 * r + 2] * b[6 + k];
}

// R M R^T.
void turn(const double (&R)[9], const double (&M)[9], double (&out)[9]) {
    double RM[9];
    multiply(R, M, RM);
    for (int r = 0; r < 3; ++r)
        for (int k = 0; k < 3; ++k)
            out[3 * r + k] =
                RM[3 * r] * R[3 * k] + RM[3 * r + 1] * R[3 * k + 1] + RM[3 * r + 2] * R[3 * k + 2];
}
} // namespace

void RigidBody::parseOstrel(const std::vector<Token>& tokens,
                            const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap) {
    const DeckParser line(tokens, DeckParser::AtEnd::Lenient);
    using K = DeckParser::Follows;
    std::vector<std::shared_ptr<Node>> listed;
    auto nonNegative = [&](std::size_t i, const char* key) {
        const double v = line.finiteNumber(i, std::string(key) + " of rigid body " + name);
        if (v < 0.0)
            throw std::invalid_argument(std::string(key) + " of rigid body " + name + " is negative");
        return v;
    };
    line.read({{"REFERENCE", K::Number,
                [&](std::size_t i) {
                    reference = DeckParser::node(line.at(i + 1), nodeMap);
                    return 2;
                }},
               {"NODES", K::Number,
                [&](std::size_t i) {
                    // Numbers and "a TO b" ranges, up to the next keyword.
                    std::size_t k = i + 1;
                    while (k < line.size()) {
                        const Token& t = line.at(k);
                        if (t.isANumber()) {
                            listed.push_back(DeckParser::node(t, nodeMap));
                            ++k;
                            continue;
                        }
                        if (t.getWord() != "TO" || k == i + 1 || k + 1 >= line.size() ||
                            line.at(k + 1).isAWord())
                            break;
                        const long from = rangeEnd(line.at(k - 1)), to = rangeEnd(line.at(k + 1));
                        if (to < from)
                            throw std::invalid_argument("Node range " + std::to_string(from) + " TO " +
                                                        std::to_string(to) + " of rigid body " + name +
                                                        " runs backwards");
                        // The first end is already listed; a missing number stops the
                        // range before it can run past the last node.
                        for (long n = from + 1; n <= to; ++n) {
                            const auto found = nodeMap.find(static_cast<int>(n));
                            if (found == nodeMap.end()) throw DeckParser::nodeNotFound(std::to_string(n));
                            listed.push_back(found->second);
                        }
                        k += 2;
                    }
                    return k - i;
                }},
               {"MASS", K::Number,
                [&](std::size_t i) {
                    mass = nonNegative(i + 1, "MASS");
                    return 2;
                }},
               {"INERTIA", K::Number, [&](std::size_t i) {
                    for (int k = 0; k < 3; ++k) {
                        if (i + 1 + k >= line.size() || line.at(i + 1 + k).isAWord())
                            throw std::invalid_argument("INERTIA of rigid body " + name +
                                                        " needs three values: <Ixx> <Iyy> <Izz>");
                        inertia[k] = nonNegative(i + 1 + k, "INERTIA");
                    }
                    return 4;
                }}});

    if (!reference)
        throw std::invalid_argument("Rigid body " + name + " has no reference node: give REFERENCE <node>");
    auto claim = [&](Node& node, bool member) {
        if (const RigidBody* other = node.getRigidBody())
            throw std::invalid_argument("Node " + std::to_string(node.getNumber()) + " is on rigid body " +
                                        other->getName() +
                                        " already: a node belongs to one rigid body at most");
        node.setRigidBody(this, member);
    };
    claim(*reference, false);
    for (const auto& n : listed) {
        // The reference node may be listed; a node listed twice is one member.
        if (n == reference || (n->getRigidBody() == this)) continue;
        const std::string which = "Node " + std::to_string(n->getNumber()) + " of rigid body " + name;
        if (n->getConstraint())
            throw std::invalid_argument(which +
                                        " has a constraint of its own: only the reference node takes one");
        if (n->getLoad())
            throw std::invalid_argument(which + " has a load of its own: only the reference node takes one");
        claim(*n, true);
        members.push_back(n);
    }
    if (members.empty())
        throw std::invalid_argument(
            "Rigid body " + name +
            " has no nodes: NODES must list at least one node besides the reference node");
}

RigidBody::Share RigidBody::share(const Node& member) const {
    const Node::Vec3 x0 = reference->getPos(), x = member.getPos();
    const double r[3] = {x[0] - x0[0], x[1] - x0[1], x[2] - x0[2]};
    const double rr = r[0] * r[0] + r[1] * r[1] + r[2] * r[2];
    const double m = member.getMass();
    const Node::Matrix3 own = member.getInertia();
    Share s;
    s.mass = m;
    for (int a = 0; a < 3; ++a)
        for (int b = 0; b < 3; ++b)
            s.inertia[3 * a + b] = own[a][b] + m * ((a == b ? rr : 0.0) - r[a] * r[b]);
    return s;
}

void RigidBody::assembleMassMatrix() {
    Node& ref = *reference;
    double added = mass;
    double J[9] = {inertia[0], 0, 0, 0, inertia[1], 0, 0, 0, inertia[2]};
    for (const auto& member : members) {
        const Share s = share(*member);
        for (int k = 0; k < 9; ++k)
            J[k] += s.inertia[k];
        added += s.mass;
    }
    ref.addMass(added);
    ref.addInertia(TNT::Array2D<double>(3, 3, J));
    bodyMass = ref.getMass();
    try {
        checkCanMove();
    } catch (const std::exception&) {
        std::throw_with_nested(std::runtime_error("At line " + std::to_string(line)));
    }
    // A prescribed rotation needs no inertia, but the node inverts its
    // inertia: a token value about an axis with none keeps it invertible.
    const Node::Matrix3 total = ref.getInertia();
    double token[9] = {};
    for (int k = 0; k < 3; ++k)
        if (total[k][k] == 0.0) token[4 * k] = 1e-15;
    ref.addInertia(TNT::Array2D<double>(3, 3, token));
}

void RigidBody::checkCanMove() const {
    const Node& ref = *reference;
    for (int k = 0; k < 3; ++k)
        if (!prescribed(ref, k) && !(bodyMass > 0.0))
            throw std::invalid_argument("Rigid body " + name + " is free to move along " + axisName[k] +
                                        " but has no mass: give it MASS, or members that carry mass");
    const Node::Matrix3 J = ref.getInertia();
    for (int k = 0; k < 3; ++k)
        if (!prescribed(ref, 3 + k) && !(J[k][k] > 0.0))
            throw std::invalid_argument("Rigid body " + name + " is free to rotate about " + axisName[k] +
                                        " but has no rotational inertia about it: give it INERTIA <Ixx> "
                                        "<Iyy> <Izz>, or prescribe the rotation");
}

void RigidBody::noteMemberMasses() {
    noted.clear();
    for (const auto& member : members)
        noted.push_back(share(*member));
}

void RigidBody::takeAddedMass() {
    double added = 0.0, J[9] = {};
    for (std::size_t i = 0; i < members.size() && i < noted.size(); ++i) {
        const Share now = share(*members[i]);
        added += now.mass - noted[i].mass;
        for (int k = 0; k < 9; ++k)
            J[k] += now.inertia[k] - noted[i].inertia[k];
    }
    if (added == 0.0) return;
    Node& ref = *reference;
    ref.addMass(added);
    ref.addInertia(TNT::Array2D<double>(3, 3, J));
    ref.determineMassMatrix();
    bodyMass = ref.getMass();
}

void RigidBody::setInitialConditions() {
    const Node& ref = *reference;
    const Node::Vec3 x0 = ref.getPos();
    offsets.clear();
    offsets.reserve(members.size());
    for (const auto& member : members) {
        const Node::Vec3 x = member->getPos();
        offsets.push_back({x[0] - x0[0], x[1] - x0[1], x[2] - x0[2]});
    }
    const Node::Matrix3 J = ref.getInertia(), K = ref.getInverseInertia();
    for (int a = 0; a < 3; ++a)
        for (int b = 0; b < 3; ++b) {
            J0[3 * a + b] = J[a][b];
            J0inverse[3 * a + b] = K[a][b];
        }
    for (int k = 0; k < 9; ++k)
        R[k] = (k % 4 == 0) ? 1.0 : 0.0;
    placeMembers();
}

void RigidBody::gatherForces() {
    Node& ref = *reference;
    const double x0 = ref.getX_pos(), y0 = ref.getY_pos(), z0 = ref.getZ_pos();
    for (const auto& member : members) {
        const Node& n = *member;
        const double r[3] = {n.getX_pos() - x0, n.getY_pos() - y0, n.getZ_pos() - z0};
        ref.addCarriedForces(n, r);
    }
}

void RigidBody::placeMembers() {
    Node& ref = *reference;
    // R <- exp([dθ]x) R, with dθ the rotation the reference node just made.
    const Node::Vec3 d = ref.getRotationIncrement();
    const double angle = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
    if (angle > 0.0) {
        const double k[3] = {d[0] / angle, d[1] / angle, d[2] / angle};
        const double s = std::sin(angle), c = 1.0 - std::cos(angle);
        const double turnBy[9] = {1.0 - c * (k[1] * k[1] + k[2] * k[2]),
                                  -s * k[2] + c * k[0] * k[1],
                                  s * k[1] + c * k[0] * k[2],
                                  s * k[2] + c * k[0] * k[1],
                                  1.0 - c * (k[0] * k[0] + k[2] * k[2]),
                                  -s * k[0] + c * k[1] * k[2],
                                  -s * k[1] + c * k[0] * k[2],
                                  s * k[0] + c * k[1] * k[2],
                                  1.0 - c * (k[0] * k[0] + k[1] * k[1])};
        const double previous[9] = {R[0], R[1], R[2], R[3], R[4], R[5], R[6], R[7], R[8]};
        multiply(turnBy, previous, R);
        // Rounding would let R drift from a rotation over many increments:
        // Gram-Schmidt on its columns puts it back.
        double e1[3] = {R[0], R[3], R[6]}, e2[3] = {R[1], R[4], R[7]};
        const double n1 = std::sqrt(e1[0] * e1[0] + e1[1] * e1[1] + e1[2] * e1[2]);
        for (double& v : e1)
            v /= n1;
        const double p = e1[0] * e2[0] + e1[1] * e2[1] + e1[2] * e2[2];
        for (int i = 0; i < 3; ++i)
            e2[i] -= p * e1[i];
        const double n2 = std::sqrt(e2[0] * e2[0] + e2[1] * e2[1] + e2[2] * e2[2]);
        for (double& v : e2)
            v /= n2;
        const double e3[3] = {e1[1] * e2[2] - e1[2] * e2[1], e1[2] * e2[0] - e1[0] * e2[2],
                              e1[0] * e2[1] - e1[1] * e2[0]};
        for (int i = 0; i < 3; ++i) {
            R[3 * i] = e1[i];
            R[3 * i + 1] = e2[i];
            R[3 * i + 2] = e3[i];
        }
        double J[9], K[9];
        turn(R, J0, J);
        turn(R, J0inverse, K);
        ref.setInertia(J, K);
    }

    const Node::Vec3 x0 = ref.getPos(), v0 = ref.getVel(), a0 = ref.getAcc(), w = ref.getRotVel();
    const Node::Vec3 alpha = {ref.getX_rot_acc(), ref.getY_rot_acc(), ref.getZ_rot_acc()};
    for (std::size_t i = 0; i < members.size(); ++i) {
        const Vec3& X = offsets[i];
        const double r[3] = {R[0] * X[0] + R[1] * X[1] + R[2] * X[2], R[3] * X[0] + R[4] * X[1] + R[5] * X[2],
                             R[6] * X[0] + R[7] * X[1] + R[8] * X[2]};
        const double wr[3] = {w[1] * r[2] - w[2] * r[1], w[2] * r[0] - w[0] * r[2],
                              w[0] * r[1] - w[1] * r[0]};
        const double wwr[3] = {w[1] * wr[2] - w[2] * wr[1], w[2] * wr[0] - w[0] * wr[2],
                               w[0] * wr[1] - w[1] * wr[0]};
        const double ar[3] = {alpha[1] * r[2] - alpha[2] * r[1], alpha[2] * r[0] - alpha[0] * r[2],
                              alpha[0] * r[1] - alpha[1] * r[0]};
        const double x[3] = {x0[0] + r[0], x0[1] + r[1], x0[2] + r[2]};
        const double v[3] = {v0[0] + wr[0], v0[1] + wr[1], v0[2] + wr[2]};
        const double a[3] = {a0[0] + ar[0] + wwr[0], a0[1] + ar[1] + wwr[1], a0[2] + ar[2] + wwr[2]};
        members[i]->placeCarried(x, v, a, ref);
    }
}

void RigidBody::checkpoint(Archive& archive) {
    // The orientation; the reference node carries the rest.
    archive.pod(R);
}
