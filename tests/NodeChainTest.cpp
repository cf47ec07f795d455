// The x-ordered chain of nodes that the contact search walks: after nodes
// move, Model::checkNeighbours must leave a chain that runs in ascending x,
// whose left and right links agree, and that holds every node exactly once
// (no link made or dropped).
#include "Model.h"
#include "Node.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

using namespace testutil;

namespace {

// A model of `count` free nodes at x = 0, 1, 2, ... (deck order = x order).
std::unique_ptr<Model> lineOfNodes(const std::string& name, int count) {
    std::string deck = "CONTROLS\nRUN FROM 0 TO 1\nSTEP 0.1\nPRINT EVERY 1\nNODES\n";
    for (int i = 1; i <= count; ++i)
        deck += std::to_string(i) + " X " + std::to_string(i - 1) + " Y 0 Z 0\n";
    const fs::path dir = scratchDir(name);
    auto model = std::make_unique<Model>(1, writeFile(dir / (name + ".txt"), deck).string());
    model->initialize();
    model->assembleMassMatrix();
    model->setInitialConditions();
    return model;
}

// Node numbers along the chain from its left end, checking the links agree.
std::vector<int> walk(const Model& model) {
    Node* start = model.getNodes().front().get();
    while (start->leftNeighbour())
        start = start->leftNeighbour();
    std::vector<int> order;
    for (Node* n = start; n; n = n->rightNeighbour()) {
        if (n->rightNeighbour()) {
            EXPECT_EQ(n->rightNeighbour()->leftNeighbour(), n) << n->getNumber();
        }
        order.push_back(n->getNumber());
        if (order.size() > model.getNodes().size()) break;
    }
    return order;
}

// Owners of each node besides the chain: its shared count less the links
// that its neighbours hold to it. A link made twice or dropped shows here.
std::map<int, long> useCounts(const Model& model) {
    std::map<int, long> counts;
    for (const auto& n : model.getNodes())
        counts[n->getNumber()] = n.use_count() - (n->leftNeighbour() ? 1 : 0) - (n->rightNeighbour() ? 1 : 0);
    return counts;
}

void moveTo(const Model& model, const std::map<int, double>& x) {
    for (const auto& n : model.getNodes())
        if (x.count(n->getNumber())) n->setX_pos(x.at(n->getNumber()));
}

} // namespace

TEST(NodeChain, ReversedNodesAreReorderedWithoutLosingALink) {
    auto model = lineOfNodes("chain_reversed", 6);
    const auto counts = useCounts(*model);
    moveTo(*model, {{1, 5.0}, {2, 4.0}, {3, 3.0}, {4, 2.0}, {5, 1.0}, {6, 0.0}});
    model->checkNeighbours();
    EXPECT_EQ(walk(*model), (std::vector<int>{6, 5, 4, 3, 2, 1}));
    EXPECT_EQ(useCounts(*model), counts);
}

TEST(NodeChain, SwapsAtBothEndsAndInTheMiddle) {
    auto model = lineOfNodes("chain_ends", 6);
    const auto counts = useCounts(*model);
    // 1 passes 2 at the left end, 4 passes 3 inside, 6 passes 5 at the right end.
    moveTo(*model, {{1, 1.5}, {4, 1.9}, {6, 3.5}});
    model->checkNeighbours();
    EXPECT_EQ(walk(*model), (std::vector<int>{2, 1, 4, 3, 6, 5}));
    EXPECT_EQ(useCounts(*model), counts);
    // And back again.
    moveTo(*model, {{1, 0.0}, {4, 3.0}, {6, 5.0}});
    model->checkNeighbours();
    EXPECT_EQ(walk(*model), (std::vector<int>{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(useCounts(*model), counts);
}

TEST(NodeChain, NodeMovingFarRightTravelsTheWholeChain) {
    auto model = lineOfNodes("chain_far", 5);
    const auto counts = useCounts(*model);
    moveTo(*model, {{1, 10.0}});
    model->checkNeighbours();
    EXPECT_EQ(walk(*model), (std::vector<int>{2, 3, 4, 5, 1}));
    EXPECT_EQ(useCounts(*model), counts);
}

TEST(NodeChain, EqualXNeverSwap) {
    auto model = lineOfNodes("chain_equal", 4);
    moveTo(*model, {{1, 2.0}, {2, 2.0}, {3, 2.0}, {4, 2.0}});
    model->checkNeighbours();
    EXPECT_EQ(walk(*model), (std::vector<int>{1, 2, 3, 4}));
}

TEST(NodeChain, ShuffledNodesWithTiesEndInTheStableOrderOfTheChain) {
    auto model = lineOfNodes("chain_shuffled", 40);
    const auto counts = useCounts(*model);
    // Two rounds of moves; ties (x rounded to a few values) keep the order
    // the chain had before each round.
    for (int round = 0; round < 2; ++round) {
        const std::vector<int> before = walk(*model);
        std::map<int, double> x;
        for (int k = 1; k <= 40; ++k)
            x[k] = static_cast<double>((k * 7 + round * 13) % 9);
        moveTo(*model, x);
        std::vector<int> expected = before;
        std::stable_sort(expected.begin(), expected.end(), [&](int a, int b) { return x.at(a) < x.at(b); });
        model->checkNeighbours();
        EXPECT_EQ(walk(*model), expected) << round;
        EXPECT_EQ(useCounts(*model), counts);
    }
}

TEST(NodeChain, LinksChangedBetweenRepairsAreFollowed) {
    auto model = lineOfNodes("chain_relinked", 5);
    const auto counts = useCounts(*model);
    moveTo(*model, {{2, 0.5}});
    model->checkNeighbours();
    ASSERT_EQ(walk(*model), (std::vector<int>{1, 2, 3, 4, 5}));
    // Relinked by hand: 1 3 2 4 5, while every x stays where it was. The
    // repair must sort the chain the links now describe: 3 moves back
    // behind 2, and 4, 5 keep their place.
    Node* three = nullptr;
    for (const auto& n : model->getNodes())
        if (n->getNumber() == 3) three = n.get();
    three->swapWithLeftNeighbour();
    ASSERT_EQ(walk(*model), (std::vector<int>{1, 3, 2, 4, 5}));
    model->checkNeighbours();
    EXPECT_EQ(walk(*model), (std::vector<int>{1, 2, 3, 4, 5}));
    // And with ties: x of 2 and 3 equal, so the hand-made order 1 3 2 stays.
    moveTo(*model, {{2, 2.0}, {3, 2.0}});
    three->swapWithLeftNeighbour();
    model->checkNeighbours();
    EXPECT_EQ(walk(*model), (std::vector<int>{1, 3, 2, 4, 5}));
    EXPECT_EQ(useCounts(*model), counts);
}
