// Input that the deck files of the malformed suite cannot express (file names,
// files in the way) and the stepping interface that the fuzzer drives.
#include "Node.h"
#include "QuietModel.h"
#include "TestUtil.h"

#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>

using namespace testutil;

namespace {
const char* const rodDeck = "CONTROLS\n"
                            "RUN FROM 0 TO 0.001\n"
                            "STEP 0.0001\n"
                            "MATERIALS TYPE ELASTIC\n"
                            "STEEL E 1000 NU 0.3 RHO 1\n"
                            "NODES\n"
                            "1 X 0\n"
                            "2 X 1\n"
                            "ELEMENTS TYPE ROD_2\n"
                            "1 NODES 1 2 MATERIAL STEEL D 0.1\n"
                            "TRACKERS TYPE NODE\n"
                            "TIP NODES 2 DIRECTION X TYPE POSITION\n";

} // namespace

TEST(Robustness, TrackerFileThatCannotBeOpenedIsReportedInTheLogAndTheRunGoesOn) {
    const fs::path dir = scratchDir("tracker_blocked");
    const fs::path deck = writeFile(dir / "blocked.txt", rodDeck);
    fs::create_directory(dir / "TIP.csv");
    const RunResult r = runDrapex(deck);
    EXPECT_EQ(r.err, "");
    EXPECT_TRUE(contains(r.out, " Solving took : "));
    const std::string warning = "Warning: tracker file " + (dir / "TIP.csv").string() +
                                " cannot be written; the history of tracker TIP is lost";
    EXPECT_TRUE(contains(readFile(dir / "blocked.md"), " - " + warning + "\n"));
    EXPECT_TRUE(contains(r.out, "  > " + warning + "\n"));
    EXPECT_TRUE(fs::exists(dir / "Results_blocked" / "blocked_9.vtk"));
}

TEST(Robustness, RefusedStepLeavesEveryNodeWhereItWas) {
    std::string text = rodDeck;
    text.replace(text.find("STEP 0.0001"), 11, "STEP -1E-3");
    // Node 2 moves on its own: a step taken at all would show in its position.
    text.replace(text.find("2 X 1\n"), 6,
                 "2 X 1 CONSTRAINT PULL\nCONSTRAINTS TYPE BOUNDARY_CONDITION\nPULL VX 5\n");
    // (The message is the golden decks/malformed/step_negative.)
    contact_test::QuietModel m("refused_step", text);
    double candidate = 90000.0;
    EXPECT_THROW(m->step(candidate), std::runtime_error);
    for (const auto& n : m->getNodes())
        EXPECT_EQ(n->getX_pos(), n->getNumber() == 1 ? 0.0 : 1.0);
    EXPECT_EQ(m->getCurrentTime(), 0.0);
}

TEST(Robustness, SteppingByHandTakesTheIncrementsOfTheWholeRun) {
    // Without PRINT EVERY the program writes one result file per increment.
    const fs::path dir = scratchDir("by_hand");
    const fs::path deck = writeFile(dir / "by_hand.txt", rodDeck);
    ASSERT_EQ(runDrapex(deck).err, "");
    int written = 0;
    while (fs::exists(dir / "Results_by_hand" / ("by_hand_" + std::to_string(written) + ".vtk")))
        ++written;

    contact_test::QuietModel m("by_hand_model", rodDeck);
    EXPECT_EQ(m->getEndTime(), 0.001);
    double candidate = 90000.0;
    int increments = 0;
    while (!(m->getEndTime() < m->getCurrentTime())) {
        m->step(candidate);
        m->advanceTime();
        ++increments;
    }
    // Ten sums of 1e-4 pass 1e-3 by rounding: ten increments, not eleven.
    EXPECT_EQ(increments, 10);
    EXPECT_EQ(written, increments);
}
