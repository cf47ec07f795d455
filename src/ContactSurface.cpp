#include "ContactSurface.h"

#include "Checkpoint.h"
#include "ContactSearch.h"
#include "DeckParser.h"
#include "Element.h"
#include "Node.h"
#include "ParallelLoop.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <stdexcept>
#include <utility>

namespace {

struct Vec {
    double x, y, z;
};
inline Vec sub(const Vec& a, const Vec& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline double dot(const Vec& a, const Vec& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline Vec cross(const Vec& a, const Vec& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline Vec position(const Node* n) {
    return {n->getX_pos(), n->getY_pos(), n->getZ_pos()};
}

// An area coordinate this far below zero still counts as inside: a node on
// an edge shared by two facets lies over both, whatever the rounding.
constexpr double edge_tolerance_ = 1e-12;

// The point of triangle a b c nearest to p, as area coordinates w (c = w0 a +
// w1 b + w2 c), and whether p lies over the triangle (its projection on the
// plane falls inside, edges included). Regions as in the usual Voronoi
// walk: vertices, then edges, then the face.
bool nearestPoint(const Vec& p, const Vec& a, const Vec& b, const Vec& c, double (&w)[3]) {
    const Vec ab = sub(b, a), ac = sub(c, a), ap = sub(p, a);
    const double d1 = dot(ab, ap), d2 = dot(ac, ap);
    // Projection first: the face region is the one that matters most.
    const Vec n = cross(ab, ac);
    const double nn = dot(n, n);
    if (nn > 0.0) {
        const Vec q = sub(ap, Vec{n.x * dot(n, ap) / nn, n.y * dot(n, ap) / nn, n.z * dot(n, ap) / nn});
        const double v = dot(cross(q, ac), n) / nn;
        const double u = dot(cross(ab, q), n) / nn;
        if (v >= -edge_tolerance_ && u >= -edge_tolerance_ && 1.0 - u - v >= -edge_tolerance_) {
            w[0] = 1.0 - u - v;
            w[1] = v;
            w[2] = u;
            return true;
        }
    }
    if (d1 <= 0.0 && d2 <= 0.0) {
        w[0] = 1.0, w[1] = 0.0, w[2] = 0.0;
        return false;
    }
    const Vec bp = sub(p, b);
    const double d3 = dot(ab, bp), d4 = dot(ac, bp);
    if (d3 >= 0.0 && d4 <= d3) {
        w[0] = 0.0, w[1] = 1.0, w[2] = 0.0;
        return false;
    }
    const double vc = d1 * d4 - d3 * d2;
    if (vc <= 0.0 && d1 >= 0.0 && d3 <= 0.0) {
        const double v = d1 / (d1 - d3);
        w[0] = 1.0 - v, w[1] = v, w[2] = 0.0;
        return false;
    }
    const Vec cp = sub(p, c);
    const double d5 = dot(ab, cp), d6 = dot(ac, cp);
    if (d6 >= 0.0 && d5 <= d6) {
        w[0] = 0.0, w[1] = 0.0, w[2] = 1.0;
        return false;
    }
    const double vb = d5 * d2 - d1 * d6;
    if (vb <= 0.0 && d2 >= 0.0 && d6 <= 0.0) {
        const double t = d2 / (d2 - d6);
        w[0] = 1.0 - t, w[1] = 0.0, w[2] = t;
        return false;
    }
    const double va = d3 * d6 - d5 * d4;
    if (va <= 0.0 && (d4 - d3) >= 0.0 && (d5 - d6) >= 0.0) {
        const double t = (d4 - d3) / ((d4 - d3) + (d5 - d6));
        w[0] = 0.0, w[1] = 1.0 - t, w[2] = t;
        return false;
    }
    // Only a degenerate triangle gets here: take its first vertex.
    w[0] = 1.0, w[1] = 0.0, w[2] = 0.0;
    return false;
}

Vec combine(const double (&w)[3], const Vec& a, const Vec& b, const Vec& c) {
    return {w[0] * a.x + w[1] * b.x + w[2] * c.x, w[0] * a.y + w[1] * b.y + w[2] * c.y,
            w[0] * a.z + w[1] * b.z + w[2] * c.z};
}

// Whether the point of area coordinates w lies on a free edge or vertex of
// the facet (a weight of zero puts it on the opposite edge; two, on a vertex).
template <class F> bool onBoundary(const F& facet, const double (&w)[3]) {
    const bool zero[3] = {w[0] == 0.0, w[1] == 0.0, w[2] == 0.0};
    const int zeros = zero[0] + zero[1] + zero[2];
    if (zeros == 2) {
        for (int k = 0; k < 3; ++k)
            if (!zero[k]) return facet.boundaryVertex[k];
    }
    if (zeros == 1) {
        for (int m = 0; m < 3; ++m)
            if (zero[m]) return facet.boundaryEdge[(m + 1) % 3];
    }
    return false;
}

template <class F> Vec corner(const F& facet, int k) {
    return {facet.corner[k][0], facet.corner[k][1], facet.corner[k][2]};
}

Vec unitNormal(const Vec& a, const Vec& b, const Vec& c) {
    const Vec n = cross(sub(b, a), sub(c, a));
    const double length = std::sqrt(dot(n, n));
    if (!(length > 0.0)) return {0.0, 0.0, 0.0};
    return {n.x / length, n.y / length, n.z / length};
}

} // namespace

void ContactSurface::readList(const std::vector<Token>& tokens, std::size_t& i,
                              std::vector<int>& into) const {
    // Numbers, and ranges "a TO b", up to the next word that is not TO.
    while (i < tokens.size()) {
        const Token& t = tokens[i];
        if (t.isANumber()) {
            const double v = t.getNumber();
            if (!std::isfinite(v) || v < 1.0 || v > 2147483647.0)
                throw std::invalid_argument("Contact surface " + name + ": " + DeckParser::text(t) +
                                            " is not a node or element number");
            into.push_back(static_cast<int>(v));
            ++i;
        } else if (t.getWord() == "TO" && !into.empty() && i + 1 < tokens.size() &&
                   tokens[i + 1].isANumber()) {
            const double v = tokens[i + 1].getNumber();
            const int first = into.back();
            if (!std::isfinite(v) || v < first || v > 2147483647.0)
                throw std::invalid_argument("Contact surface " + name + ": the range " +
                                            std::to_string(first) + " TO " + DeckParser::text(tokens[i + 1]) +
                                            " is empty or too large");
            for (long k = static_cast<long>(first) + 1; k <= static_cast<long>(v); ++k)
                into.push_back(static_cast<int>(k));
            i += 2;
        } else {
            return;
        }
    }
}

void ContactSurface::parseOstrel(const std::vector<Token>& tokens) {
    const DeckParser line(tokens, DeckParser::AtEnd::Checked);
    using K = DeckParser::Follows;
    const std::string of = " of contact surface " + name;
    auto positive = [&](std::size_t i, const char* key) {
        const double v = line.finiteNumber(i + 1, key + of);
        if (!(v > 0.0))
            throw std::invalid_argument(std::string(key) + of + " must be greater than 0, not " +
                                        DeckParser::text(line.at(i + 1)));
        return v;
    };
    line.read({{"TYPE", K::Word,
                [&](std::size_t i) {
                    const std::string type = line.at(i + 1).getWord();
                    if (type == "SOLID")
                        kind = Kind::Solid;
                    else if (type == "SHELL")
                        kind = Kind::Shell;
                    else
                        throw DeckParser::notRecognized(type);
                    return 2;
                }},
               {"T", K::Number,
                [&](std::size_t i) {
                    thickness = positive(i, "T");
                    return 2;
                }},
               {"FACTOR", K::Number,
                [&](std::size_t i) {
                    factor = positive(i, "FACTOR");
                    factorSet = true;
                    return 2;
                }},
               {"PENALTY", K::Number,
                [&](std::size_t i) {
                    penalty = positive(i, "PENALTY");
                    // Above 1 the contact spring approaches the 4 m / dt^2 at which
                    // the central difference becomes unstable.
                    if (penalty > 1.0)
                        throw std::invalid_argument("PENALTY" + of + " must be at most 1, not " +
                                                    DeckParser::text(line.at(i + 1)));
                    penaltySet = true;
                    return 2;
                }},
               {"FRICTION", K::Number,
                [&](std::size_t i) {
                    friction = line.finiteNumber(i + 1, "FRICTION" + of);
                    if (friction < 0.0)
                        throw std::invalid_argument("FRICTION" + of + " must not be negative, not " +
                                                    DeckParser::text(line.at(i + 1)));
                    return 2;
                }},
               {"ON", K::Word, [&](std::size_t i) {
                    const std::string what = line.at(i + 1).getWord();
                    std::size_t next = i + 2;
                    if (what == "NODES") {
                        readList(tokens, next, onNodes);
                        onNodesGiven = true;
                    } else if (what == "ELEMENTS") {
                        readList(tokens, next, onElements);
                        onElementsGiven = true;
                    } else {
                        throw std::invalid_argument("ON" + of +
                                                    " must be followed by NODES or ELEMENTS, not " + what);
                    }
                    if (next == i + 2)
                        throw std::invalid_argument("ON " + what + of + " names no " +
                                                    (what == "NODES" ? "node" : "element"));
                    return next - i;
                }}});
    if (factorSet && penaltySet)
        throw std::invalid_argument("Contact surface " + name +
                                    " has both FACTOR and PENALTY: give the one or the other");
}

void ContactSurface::addFacet(const Element& owner) {
    const auto& n = owner.getNodes();
    facets.push_back({{n.at(0).get(), n.at(1).get(), n.at(2).get()},
                      owner.getNumber(),
                      {false, false, false},
                      {false, false, false},
                      {},
                      {}});
}

void ContactSurface::checkNormals() const {
    // Two facets that share an edge must run it in opposite directions, or
    // their normals point to opposite sides.
    std::map<std::pair<int, int>, int> edges; // (from, to) -> facet
    for (std::size_t f = 0; f < facets.size(); ++f)
        for (int k = 0; k < 3; ++k) {
            const int a = facets[f].node[k]->getNumber(), b = facets[f].node[(k + 1) % 3]->getNumber();
            const auto found = edges.emplace(std::make_pair(a, b), static_cast<int>(f));
            if (!found.second)
                throw std::invalid_argument("Contact surface " + name + " has inconsistent normals: facets " +
                                            std::to_string(facets[found.first->second].element) + " and " +
                                            std::to_string(facets[f].element) +
                                            " both run their shared edge from node " + std::to_string(a) +
                                            " to node " + std::to_string(b) +
                                            " (reverse the node order of one of them)");
        }
}

void ContactSurface::findBoundary() {
    std::map<std::pair<int, int>, int> uses; // undirected edge -> number of facets
    auto key = [](const Node* a, const Node* b) {
        const int i = a->getNumber(), j = b->getNumber();
        return i < j ? std::make_pair(i, j) : std::make_pair(j, i);
    };
    for (const Facet& f : facets)
        for (int k = 0; k < 3; ++k)
            ++uses[key(f.node[k], f.node[(k + 1) % 3])];
    std::map<int, bool> onBoundary;
    for (Facet& f : facets)
        for (int k = 0; k < 3; ++k) {
            f.boundaryEdge[k] = uses[key(f.node[k], f.node[(k + 1) % 3])] == 1;
            if (f.boundaryEdge[k]) {
                onBoundary[f.node[k]->getNumber()] = true;
                onBoundary[f.node[(k + 1) % 3]->getNumber()] = true;
            }
        }
    for (Facet& f : facets)
        for (int k = 0; k < 3; ++k)
            f.boundaryVertex[k] = onBoundary.count(f.node[k]->getNumber()) > 0;
}

void ContactSurface::setInitialConditions(const std::vector<std::shared_ptr<Node>>& nodes,
                                          const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                                          const std::unordered_map<int, std::shared_ptr<Element>>& elementMap,
                                          const std::vector<char>& onRigidBody) {
    if (facets.empty())
        throw std::invalid_argument("Contact surface " + name +
                                    " has no facets: give CONTACT_FACET elements or membranes or shells "
                                    "SURFACE " +
                                    name);
    if (kind == Kind::Solid) checkNormals();
    findBoundary();
    const std::size_t count = nodes.size();
    byIndex.assign(count, nullptr);
    for (const auto& n : nodes)
        byIndex.at(static_cast<std::size_t>(n->getNumber() - 1)) = n.get();
    acting.assign(count, 0);
    if (onNodesGiven || onElementsGiven) {
        for (int number : onNodes) {
            const auto found = nodeMap.find(number);
            if (found == nodeMap.end())
                throw std::invalid_argument("Contact surface " + name + " acts on node " +
                                            std::to_string(number) + ", which is not found");
            acting[static_cast<std::size_t>(number - 1)] = 1;
        }
        for (int number : onElements) {
            const auto found = elementMap.find(number);
            if (found == elementMap.end())
                throw std::invalid_argument("Contact surface " + name + " acts on element " +
                                            std::to_string(number) + ", which is not found");
            for (const auto& n : found->second->getNodes())
                acting[static_cast<std::size_t>(n->getNumber() - 1)] = 1;
        }
    } else {
        for (std::size_t k = 0; k < count; ++k)
            acting[k] = k < onRigidBody.size() && onRigidBody[k] ? 0 : 1;
    }
    // A facet never pushes its own nodes.
    for (const Facet& f : facets)
        for (const Node* n : f.node)
            acting[static_cast<std::size_t>(n->getNumber() - 1)] = 0;
    actingCount = static_cast<int>(std::count(acting.begin(), acting.end(), 1));
    if (actingCount == 0)
        throw std::invalid_argument("Contact surface " + name +
                                    " acts on no node: every node it could push is on a rigid body, on "
                                    "its own facets, or not named by ON");
    slots.assign(count, Slot{0.0, {0.0, 0.0, 0.0}, -1, 0, -2, false, false});
    tangential.assign(3 * count, 0.0);
    touched.clear();
    touched.reserve(count);
    epoch = 0;
}

void ContactSurface::attachContactSearch(ContactSearch& s) {
    if (search == &s) return;
    search = &s;
    search->addNodeQuerier();
}

bool ContactSurface::evaluate(int f, const Node* node, double x, double y, double z, Offer& offer) const {
    const std::size_t index = static_cast<std::size_t>(node->getNumber() - 1);
    if (!acting[index]) return false;
    const Facet& facet = facets[static_cast<std::size_t>(f)];
    if (node == facet.node[0] || node == facet.node[1] || node == facet.node[2]) return false;
    const Vec p{x, y, z};
    const Vec a = corner(facet, 0), b = corner(facet, 1), c = corner(facet, 2);
    double w[3];
    const bool over = nearestPoint(p, a, b, c, w);
    const Vec q = combine(w, a, b, c);
    const Vec pq = sub(p, q);
    const double d = std::sqrt(dot(pq, pq));

    offer.facet = f;
    offer.index = static_cast<int>(index);
    offer.inFront = false;
    if (kind == Kind::Shell) {
        if (!(d < 0.5 * thickness)) return false;
        offer.distance = d;
        offer.over = over;
    } else {
        const Vec n{facet.normal[0], facet.normal[1], facet.normal[2]};
        if (!(d <= thickness)) return false;
        const double side = dot(n, sub(p, a));
        if (over) {
            if (side > 0.0) {
                offer.inFront = true;
                return true;
            }
            if (side < -thickness) return false;
            offer.distance = -side;
        } else {
            if (dot(n, pq) > 0.0) {
                offer.inFront = true;
                return true;
            }
            // The nearest point on the rim of an open surface: nothing is
            // behind it.
            if (onBoundary(facet, w)) return false;
            offer.distance = d;
        }
        offer.over = over;
    }
    for (int k = 0; k < 3; ++k)
        offer.weights[k] = w[k];
    return true;
}

void ContactSurface::take(const Offer& offer) {
    Slot& slot = slots[static_cast<std::size_t>(offer.index)];
    if (slot.epoch != epoch) slot = Slot{0.0, {0.0, 0.0, 0.0}, -1, epoch, slot.contactEpoch, false, false};
    if (offer.inFront) {
        slot.inFront = true;
        return;
    }
    // A facet the node lies over beats one it only meets at a fold; then the
    // nearer one; on a tie the facet seen first (the lower one) keeps it.
    const bool better = slot.facet < 0 || (offer.over && !slot.over) ||
                        (offer.over == slot.over && offer.distance < slot.distance);
    if (!better) return;
    if (slot.facet < 0) touched.push_back(offer.index);
    slot.facet = offer.facet;
    slot.distance = offer.distance;
    slot.over = offer.over;
    for (int k = 0; k < 3; ++k)
        slot.weights[k] = offer.weights[k];
}

void ContactSurface::push(int index, double dt) {
    Slot& slot = slots[static_cast<std::size_t>(index)];
    Node* node = byIndex[static_cast<std::size_t>(index)];
    const Facet& facet = facets[static_cast<std::size_t>(slot.facet)];
    // A node in a fold that some facet within reach has in front of it is
    // outside the solid.
    if (kind == Kind::Solid && !slot.over && slot.inFront) return;

    const Vec p = position(node);
    const Vec a = corner(facet, 0), b = corner(facet, 1), c = corner(facet, 2);
    const double(&w)[3] = slot.weights;
    const Vec q = combine(w, a, b, c);
    const Vec pq = sub(p, q);
    const double d = std::sqrt(dot(pq, pq));
    Vec direction;
    double depth;
    const Vec n{facet.normal[0], facet.normal[1], facet.normal[2]};
    if (kind == Kind::Shell) {
        depth = 0.5 * thickness - d;
        if (d > 0.0)
            direction = {pq.x / d, pq.y / d, pq.z / d};
        else
            direction = n;
    } else if (slot.over) {
        depth = -dot(n, sub(p, a));
        direction = n;
    } else {
        depth = d;
        direction = d > 0.0 ? Vec{-pq.x / d, -pq.y / d, -pq.z / d} : n;
    }
    if (!(depth > 0.0)) return;

    double k;
    if (factorSet)
        k = kind == Kind::Shell ? factor / (0.5 * thickness) : factor;
    else
        k = penalty * node->getMass() / (dt * dt);
    const double fn = k * depth;
    Vec force{fn * direction.x, fn * direction.y, fn * direction.z};

    double* ft = &tangential[3 * static_cast<std::size_t>(index)];
    if (friction > 0.0) {
        // Forget a stick force from an earlier contact that was broken.
        if (slot.contactEpoch != epoch - 1) ft[0] = ft[1] = ft[2] = 0.0;
        const Vec vn = {node->getX_vel(), node->getY_vel(), node->getZ_vel()};
        const Node* const* m = facet.node;
        const Vec vq = {w[0] * m[0]->getX_vel() + w[1] * m[1]->getX_vel() + w[2] * m[2]->getX_vel(),
                        w[0] * m[0]->getY_vel() + w[1] * m[1]->getY_vel() + w[2] * m[2]->getY_vel(),
                        w[0] * m[0]->getZ_vel() + w[1] * m[1]->getZ_vel() + w[2] * m[2]->getZ_vel()};
        Vec slip{(vn.x - vq.x) * dt, (vn.y - vq.y) * dt, (vn.z - vq.z) * dt};
        const double along = dot(slip, direction);
        slip = {slip.x - along * direction.x, slip.y - along * direction.y, slip.z - along * direction.z};
        Vec t{ft[0], ft[1], ft[2]};
        const double carried = dot(t, direction);
        t = {t.x - carried * direction.x - k * slip.x, t.y - carried * direction.y - k * slip.y,
             t.z - carried * direction.z - k * slip.z};
        const double magnitude = std::sqrt(dot(t, t));
        const double limit = friction * fn;
        if (magnitude > limit) {
            const double scale = limit / magnitude;
            t = {t.x * scale, t.y * scale, t.z * scale};
        }
        ft[0] = t.x, ft[1] = t.y, ft[2] = t.z;
        force = {force.x + t.x, force.y + t.y, force.z + t.z};
    }
    slot.contactEpoch = epoch;
    normalForce += fn;
    node->addContactForce(force.x, force.y, force.z);
    for (int k3 = 0; k3 < 3; ++k3)
        facet.node[k3]->addContactForce(-w[k3] * force.x, -w[k3] * force.y, -w[k3] * force.z);
}

void ContactSurface::computeContactForces(double dt, ParallelLoop& loop) {
    ++epoch;
    touched.clear();
    normalForce = 0.0;
    if (!search) return;
    const double reach = kind == Kind::Shell ? 0.5 * thickness : thickness;
    // Each block of facets finds its nodes on any thread and keeps what it
    // offers them, in facet order; the slots then take the offers block by
    // block, as one pass over the facets in order would.
    const ParallelLoop::Pieces blocks(facets.size());
    if (offers.size() < blocks.number) offers.resize(blocks.number);
    loop.forEach(blocks.number, blocks.parallel(), [&](std::size_t block) {
        std::vector<Offer>& found = offers[block].list;
        found.clear();
        for (std::size_t f = blocks.begin(block); f < blocks.end(block); ++f) {
            Facet& facet = facets[f];
            double low[3], high[3];
            for (int r = 0; r < 3; ++r)
                low[r] = high[r] = 0.0;
            for (int k = 0; k < 3; ++k) {
                double(&v)[3] = facet.corner[k];
                v[0] = facet.node[k]->getX_pos();
                v[1] = facet.node[k]->getY_pos();
                v[2] = facet.node[k]->getZ_pos();
                for (int r = 0; r < 3; ++r) {
                    if (k == 0 || v[r] < low[r]) low[r] = v[r];
                    if (k == 0 || v[r] > high[r]) high[r] = v[r];
                }
            }
            if (!std::isfinite(low[0] + low[1] + low[2] + high[0] + high[1] + high[2])) continue;
            const Vec normal = unitNormal(corner(facet, 0), corner(facet, 1), corner(facet, 2));
            facet.normal[0] = normal.x, facet.normal[1] = normal.y, facet.normal[2] = normal.z;
            search->forEachNode(low[0] - reach, high[0] + reach, low[1] - reach, high[1] + reach,
                                low[2] - reach, high[2] + reach,
                                [&](Node* node, double x, double y, double z) {
                                    Offer offer;
                                    if (evaluate(static_cast<int>(f), node, x, y, z, offer))
                                        found.push_back(offer);
                                });
        }
    });
    for (std::size_t block = 0; block < blocks.number; ++block)
        for (const Offer& offer : offers[block].list)
            take(offer);
    // In node order, so that the sums on shared facet nodes do not depend on
    // the order in which the search found the nodes.
    std::sort(touched.begin(), touched.end());
    for (int index : touched)
        push(index, dt);
}

void ContactSurface::checkpoint(Archive& archive) {
    // The facets' corners and normals are taken afresh every increment.
    archive.section(("surface " + name).c_str(), slots.size());
    static_assert(std::is_trivially_copyable<Slot>::value, "a slot is archived as it is");
    archive.vector(slots);
    archive.vector(tangential);
    archive.vector(touched);
    archive.pod(epoch);
    archive.pod(normalForce);
}
