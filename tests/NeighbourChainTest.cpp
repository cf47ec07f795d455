// The x-ordered node chain that the contact search walks must stay sorted
// after every increment, with nodes of equal x keeping their previous order.
#include "Node.h"
#include "QuietModel.h"

#include <gtest/gtest.h>

#include <random>
#include <unordered_map>

namespace {

std::string gridDeck(int columns, int rows) {
    std::string deck = "CONTROLS\nRUN FROM 0.0 TO 0.0\nSTEP 1.0\nNODES\n";
    int number = 1;
    for (int j = 0; j < rows; ++j)
        for (int i = 0; i < columns; ++i)
            deck +=
                std::to_string(number++) + " X " + std::to_string(i) + " Y " + std::to_string(j) + " Z 0\n";
    return deck;
}

// The chain from its left end, checking that the links are mutual.
std::vector<Node*> chain(const Model& m) {
    Node* head = m.getNodes().front().get();
    while (head->leftNeighbour())
        head = head->leftNeighbour();
    std::vector<Node*> order;
    for (Node* n = head; n; n = n->rightNeighbour()) {
        if (n->rightNeighbour()) {
            EXPECT_EQ(n->rightNeighbour()->leftNeighbour(), n);
        }
        order.push_back(n);
        if (order.size() > m.getNodes().size()) break;
    }
    return order;
}

} // namespace

TEST(NeighbourChain, SetUpSortedWithEqualXInDeckOrder) {
    contact_test::QuietModel m("chain_setup", gridDeck(4, 3));
    const auto order = chain(*m);
    ASSERT_EQ(order.size(), 12u);
    // Column 0 holds nodes 1, 5, 9 in deck order, then column 1 ...
    const int expected[12] = {1, 5, 9, 2, 6, 10, 3, 7, 11, 4, 8, 12};
    for (int i = 0; i < 12; ++i)
        EXPECT_EQ(order[i]->getNumber(), expected[i]);
}

TEST(NeighbourChain, StaysSortedAndStableAfterRandomMoves) {
    contact_test::QuietModel m("chain_moves", gridDeck(15, 12));
    const auto& nodes = m->getNodes();
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> move(-3.0, 3.0);
    std::uniform_int_distribution<int> column(0, 14);
    for (int round = 0; round < 60; ++round) {
        const auto before = chain(*m);
        std::unordered_map<const Node*, std::size_t> rank;
        for (std::size_t i = 0; i < before.size(); ++i)
            rank[before[i]] = i;
        // Moves of up to three spacings; every other round lands many nodes
        // on whole columns so that equal x values abound.
        for (auto& n : nodes)
            n->setX_pos(round % 2 ? column(rng) : n->getX_pos() + move(rng));
        m->checkNeighbours();
        const auto after = chain(*m);
        ASSERT_EQ(after.size(), nodes.size()) << "round " << round;
        for (std::size_t i = 0; i + 1 < after.size(); ++i) {
            ASSERT_LE(after[i]->getX_pos(), after[i + 1]->getX_pos())
                << "round " << round << " position " << i;
            if (after[i]->getX_pos() == after[i + 1]->getX_pos()) {
                ASSERT_LT(rank[after[i]], rank[after[i + 1]]) << "round " << round << " position " << i;
            }
        }
    }
}

TEST(NeighbourChain, PairLeftBehindByASinglePassIsRepaired) {
    contact_test::QuietModel m("chain_pair", "CONTROLS\nSTEP 1.0\nNODES\n1 X 0\n2 X 1\n3 X 2\n4 X 3\n");
    const auto& nodes = m->getNodes();
    // Nodes 3 and 4 swap: the chain becomes 1 2 4 3 while the node vector
    // stays 1 2 3 4.
    nodes[2]->setX_pos(3);
    nodes[3]->setX_pos(2);
    m->checkNeighbours();
    // Now x = 1, 1, 0, 0 along the chain: bubbling each node of the vector
    // once would leave node 1 before node 3.
    nodes[0]->setX_pos(1);
    nodes[1]->setX_pos(1);
    nodes[2]->setX_pos(0);
    nodes[3]->setX_pos(0);
    m->checkNeighbours();
    const auto order = chain(*m);
    ASSERT_EQ(order.size(), 4u);
    EXPECT_EQ(order[0]->getNumber(), 4);
    EXPECT_EQ(order[1]->getNumber(), 3);
    EXPECT_EQ(order[2]->getNumber(), 1);
    EXPECT_EQ(order[3]->getNumber(), 2);
}

TEST(NeighbourChain, IncrementsOfAContactModelKeepTheChainSorted) {
    // Nodes 1 and 2 are driven towards each other and pass at t = 0.5; the
    // rods carry contact lines, so the loop keeps the chain in x order.
    contact_test::QuietModel m("chain_loop", "CONTROLS\nRUN FROM 0.0 TO 1.0\nSTEP 0.01\n"
                                             "CONSTRAINTS TYPE BOUNDARY_CONDITION\n"
                                             "RIGHT VX 1 VY 0 VZ 0\nLEFT VX -1 VY 0 VZ 0\n"
                                             "HELD VX 0 VY 0 VZ 0\n"
                                             "MATERIALS TYPE ELASTIC\nSOFT E 1 NU 0.3 RHO 1\n"
                                             "NODES\n1 X 0 Y 0 Z 0 CONSTRAINT RIGHT\n"
                                             "2 X 1 Y 1 Z 0 CONSTRAINT LEFT\n"
                                             "3 X 5 Y 0 Z 0 CONSTRAINT HELD\n"
                                             "ELEMENTS TYPE ROD_2\n"
                                             "1 NODES 1 3 MATERIAL SOFT D 0.01 CONTACT EDGE\n"
                                             "2 NODES 2 3 MATERIAL SOFT D 0.01 CONTACT EDGE\n");
    double candidate = 90000.0;
    for (int i = 0; i < 100; ++i) {
        m->step(candidate, true);
        m->advanceTime(true);
    }
    EXPECT_NEAR(m->getNodes()[0]->getX_pos(), 1.0, 1e-9);
    const auto order = chain(*m);
    ASSERT_EQ(order.size(), 3u);
    EXPECT_EQ(order[0]->getNumber(), 2);
    EXPECT_EQ(order[1]->getNumber(), 1);
    EXPECT_EQ(order[2]->getNumber(), 3);
}
