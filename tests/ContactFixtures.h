// Small builders shared by the contact tests: free nodes at given positions,
// token lists from text, and the x-ordered neighbour chain the model keeps.
#pragma once

#include "Node.h"
#include "Token.h"

#include <algorithm>
#include <memory>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

namespace contact_test {

struct NodeSet {
    std::vector<std::shared_ptr<Node>> list;
    std::unordered_map<int, std::shared_ptr<Node>> map;

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

    // Stable sort by x and link left/right neighbours, as the model does.
    void linkChain() {
        std::vector<std::shared_ptr<Node>> sorted = list;
        std::stable_sort(sorted.begin(), sorted.end(),
                         [](const std::shared_ptr<Node>& a, const std::shared_ptr<Node>& b) {
                             return a->getX_pos() < b->getX_pos();
                         });
        std::shared_ptr<Node> none;
        for (std::size_t i = 0; i < sorted.size(); ++i) {
            sorted[i]->setLeftNode(i > 0 ? sorted[i - 1] : none);
            sorted[i]->setRightNode(i + 1 < sorted.size() ? sorted[i + 1] : none);
        }
    }

    void clearForces() {
        for (auto& n : list)
            n->clearNodalForces();
    }

    void moveTo(const std::shared_ptr<Node>& n, double x, double y, double z) {
        n->setX_pos(x);
        n->setY_pos(y);
        n->setZ_pos(z);
    }

    ~NodeSet() {
        for (auto& n : list)
            n->clearNeighbours();
    }
};

inline std::vector<Token> tokens(const std::string& text) {
    std::vector<Token> out;
    std::istringstream in(text);
    std::string word;
    while (in >> word)
        out.emplace_back(word);
    return out;
}

} // namespace contact_test
