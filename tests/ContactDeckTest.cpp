// Contact elements declared in a deck: read through the factory, attached to
// the model's search index, run by the solution loop and written out.
#include "Node.h"
#include "QuietModel.h"
#include "ResultReadBack.h"

#include <gtest/gtest.h>

namespace {

const char* const contact_deck_ = R"(TITLE
** a shell triangle with a node 0.3 above it, a line with a node 0.3 beside it
CONTROLS
RUN FROM 0.0 TO 0.0
STEP 1.0E-3
NODES
1 X 0.0 Y 0.0 Z 0.0
2 X 1.0 Y 0.0 Z 0.0
3 X 0.0 Y 1.0 Z 0.0
4 X 0.25 Y 0.25 Z 0.3
5 X 3.0 Y 0.0 Z 0.0
6 X 4.0 Y 0.0 Z 0.0
7 X 3.25 Y 0.3 Z 0.0
ELEMENTS TYPE CONTACT_TRIANGLE
1 NODES 1 2 3 T 1.0 FACTOR 10.0
ELEMENTS TYPE CONTACT_LINE
2 NODES 5 6 R 0.5 FACTOR 10.0
)";

} // namespace

TEST(ContactDeck, OneIncrementAppliesTheForcesOfTheTriangleAndTheLine) {
    contact_test::QuietModel m("contact_deck_step", contact_deck_);
    double candidate = 90000.0;
    m->step(candidate);
    // Forces stay on the nodes until the loop clears them after printing; the
    // values are those of the unit cases of ContactTriangleTest and ContactLineTest.
    EXPECT_NEAR(m->getNodeMap().at(4)->getZContactForce(), 4.0, 1e-12);
    EXPECT_NEAR(m->getNodeMap().at(7)->getYContactForce(), 4.0, 1e-12);
}

// (An element tracker writes the result file's texts: TrackerTest.)
TEST(ContactDeck, WholeRunWritesContactCellsWithZeroValues) {
    std::filesystem::path deck;
    const auto r = testutil::runDeck("contact_deck_run", contact_deck_, &deck);
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(testutil::contains(r.out, " Exit Drapex")) << r.err;
    EXPECT_EQ(r.err, "");
    const auto dir = deck.parent_path() / "Results_contact_deck_run";
    const std::string text = testutil::readFile(dir / "contact_deck_run_0.vtk");
    EXPECT_TRUE(testutil::contains(text, "\nCELLS 2 7\n"));
    const auto vtk = readback::readVtk(dir / "contact_deck_run_0.vtk");
    EXPECT_EQ(vtk.cells, (std::vector<std::vector<int>>{{1, 2, 3}, {5, 6}}));
    EXPECT_EQ(vtk.cellTypes, (std::vector<int>{5, 3}));
    for (const char* label : {"E11", "S12", "S23"})
        EXPECT_EQ(vtk.scalars.at(label), (std::vector<double>{0, 0})) << label;
    EXPECT_TRUE(testutil::contains(text, "SCALARS S23 FLOAT\nLOOKUP_TABLE default \n0.0\t0.0\t\n"));
}
