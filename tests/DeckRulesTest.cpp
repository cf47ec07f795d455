// A reading rule that shows only in a whole run: a rod's second NODES. (Block
// headers written with tabs are the golden deck decks/malformed/odd_tabs_in_headers.)
#include "ResultReadBack.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

using namespace testutil;

namespace {
const char* const header = "TITLE\nCONTROLS\nRUN FROM 0 TO 0.0105\nSTEP 0.001\nPRINT EVERY 0.01\n";
}

TEST(DeckRules, SecondNodesOnARodAppendsAndTheRodActsBetweenTheFirstPair) {
    // Node 2 is pulled along x; the rod 1-2 holds it, the nodes 3 and 4 named
    // by the second NODES only join the rod's cell.
    fs::path deck;
    const RunResult r =
        runDeck("rod_second_nodes",
                std::string(header) + "MATERIALS TYPE ELASTIC\nST E 1E9 NU 0.3 RHO 1000\n"
                                      "LOADS\nPULL FX 1000\n"
                                      "NODES\n1 X 0\n2 X 1 LOAD PULL\n3 X 2\n4 X 3\n"
                                      "ELEMENTS TYPE ROD_2\n1 NODES 1 2 NODES 3 4 D 0.1 MATERIAL ST\n",
                &deck);
    ASSERT_EQ(r.err, "");
    const auto vtk =
        readback::readVtk(deck.parent_path() / "Results_rod_second_nodes" / "rod_second_nodes_0.vtk");
    ASSERT_EQ(vtk.cells.size(), 1u);
    EXPECT_EQ(vtk.cells[0], (std::vector<int>{1, 2, 3, 4}));
    EXPECT_EQ(vtk.cellTypes[0], 4); // a poly-line: the cell has more than two points
    // Node 2 moves, held by the rod; nodes 3 and 4 carry no mass and no force.
    EXPECT_GT(vtk.points[2][0], 1.0);
    EXPECT_EQ(vtk.points[3][0], 2.0);
    EXPECT_EQ(vtk.points[4][0], 3.0);
}
