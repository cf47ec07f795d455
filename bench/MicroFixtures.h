// Builders for the micro-benchmarks: components made from deck-like text, as
// the deck reader would make them, without reading a file.
#pragma once

#include "AllocationCounter.h"
#include "Element.h"
#include "ElementLibrary.h"
#include "Load.h"
#include "Material.h"
#include "MaterialLibrary.h"
#include "Node.h"
#include "Token.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

namespace micro {

inline std::vector<Token> tokens(const std::string& text) {
    std::vector<Token> out;
    std::istringstream words(text);
    std::string w;
    while (words >> w)
        out.emplace_back(w);
    return out;
}

inline std::shared_ptr<Material> material(const std::string& type, std::string name,
                                          const std::string& params) {
    auto m = MaterialLibrary::getMaterialOstrel(type);
    m->setName(name);
    m->parseOstrel(tokens(params));
    return m;
}

// A set of nodes numbered from 1 and the elements built on them.
struct Mesh {
    std::vector<std::shared_ptr<Node>> nodes;
    std::unordered_map<int, std::shared_ptr<Node>> nodeMap;
    std::vector<std::shared_ptr<Material>> materials;
    std::vector<std::shared_ptr<Load>> loads;
    std::vector<std::shared_ptr<Element>> elements;

    void addNode(double x, double y, double z) {
        auto n = std::make_shared<Node>();
        n->setNumber(static_cast<int>(nodes.size()) + 1);
        n->setXPositionOrigin(x);
        n->setYPositionOrigin(y);
        n->setZPositionOrigin(z);
        nodes.push_back(n);
        nodeMap.emplace(n->getNumber(), n);
    }
    void addElement(const std::string& type, const std::string& params) {
        auto e = ElementLibrary::getElementOstrel(type);
        e->setNumber(static_cast<int>(elements.size()) + 1);
        e->parseOstrel(tokens(params), nodes, nodeMap, materials, loads);
        elements.push_back(e);
    }
    // The model's start-up: masses, nodal initial conditions, element copies of
    // the material and local bases.
    void start() {
        for (auto& e : elements)
            e->assembleMassMatrix();
        for (auto& n : nodes) {
            n->determineMassMatrix();
            n->setInitialConditions();
        }
        for (auto& e : elements)
            e->setInitialConditions();
    }
};

// Runs the per-step element operations of the explicit loop on every
// element, through the same call the loop makes.
inline void elementPass(std::vector<std::shared_ptr<Element>>& elements, double dt, double& candidate) {
    for (auto& element : elements)
        element->runStep(dt, 0.0, true, candidate);
}

// Reports time and heap allocations per item (element, node, search).
class PerItem {
public:
    PerItem(benchmark::State& state, std::size_t itemsPerIteration)
        : state(state), items(itemsPerIteration), start(allocation::snapshot()) {}
    ~PerItem() {
        const auto end = allocation::snapshot();
        const double total = static_cast<double>(state.iterations()) * static_cast<double>(items);
        state.counters["time_per_item"] =
            benchmark::Counter(static_cast<double>(items),
                               benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
        state.counters["allocs_per_item"] =
            total > 0 ? static_cast<double>(end.allocations - start.allocations) / total : 0.0;
    }

private:
    benchmark::State& state;
    std::size_t items;
    allocation::Snapshot start;
};

} // namespace micro
