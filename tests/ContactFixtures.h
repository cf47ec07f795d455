// Small builders shared by the contact and element tests: free nodes at given
// positions, token lists from text, elements parsed from a line, the x-ordered
// neighbour chain the model keeps, and a check of a node's contact force.
#pragma once

#include "TestUtil.h"

#include "ContactSearch.h"
#include "Element.h"
#include "Load.h"
#include "Material.h"
#include "Node.h"
#include "Token.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace contact_test {

using testutil::tokens;

struct NodeSet {
    ContactSearch search;
    std::vector<std::shared_ptr<Node>> list;
    std::unordered_map<int, std::shared_ptr<Node>> map;
    std::vector<std::shared_ptr<Material>> materials; // none unless a test adds them
    std::vector<std::shared_ptr<Load>> loads;

    std::shared_ptr<Node> add(double x, double y, double z) {
        auto n = std::make_shared<Node>();
        n->setNumber(static_cast<int>(list.size()) + 1);
        n->setXPositionOrigin(x);
        n->setYPositionOrigin(y);
        n->setZPositionOrigin(z);
        n->setInitialConditions();
        list.push_back(n);
        map.emplace(n->getNumber(), n);
        return n;
    }

    // An element of type E parsed from a deck line on these nodes, materials
    // and loads; `init` also runs its set-up.
    template <class E> std::shared_ptr<E> make(const std::string& text, bool init = true, int number = 1) {
        auto e = std::make_shared<E>();
        e->setNumber(number);
        e->parseOstrel(tokens(text), list, map, materials, loads);
        e->attachContactSearch(search);
        if (init) {
            e->setInitialConditions();
            rebin();
        }
        return e;
    }

    // Bins the nodes at their current positions, as the model does after every move.
    void rebin() { search.update(list); }

    void clearForces() {
        for (auto& n : list)
            n->clearNodalForces();
    }

    void moveTo(const std::shared_ptr<Node>& n, double x, double y, double z) {
        n->setX_pos(x);
        n->setY_pos(y);
        n->setZ_pos(z);
        rebin(); // as the model does after every move
    }
};

inline void expectForce(const std::shared_ptr<Node>& n, double fx, double fy, double fz, double tol = 1e-12) {
    EXPECT_NEAR(n->getXContactForce(), fx, tol) << "node " << n->getNumber();
    EXPECT_NEAR(n->getYContactForce(), fy, tol) << "node " << n->getNumber();
    EXPECT_NEAR(n->getZContactForce(), fz, tol) << "node " << n->getNumber();
}

} // namespace contact_test
