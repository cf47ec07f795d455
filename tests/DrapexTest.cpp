// End-to-end runs of the built program: console texts, job log, exit status.
// The messages of malformed decks are kept as files under decks/malformed.
#include "TestUtil.h"

#include <gtest/gtest.h>

using namespace testutil;

namespace {
const char* const freeNodeDeck = "TITLE\n"
                                 "** one free node\n"
                                 "CONTROLS\n"
                                 "RUN FROM 0 TO 0.5\n"
                                 "STEP 0.1\n"
                                 "PRINT EVERY 0.2\n"
                                 "NODES\n"
                                 "1 X 0 Y 0 Z 0\n"
                                 "2 X 1 Y 0 Z 0\n";

} // namespace

TEST(Console, WithoutArgumentThePromptReadsOneWordAndADirectoryIsRefused) {
    const fs::path dir = scratchDir("prompt");
    const fs::path deck = writeFile(dir / "prompted.txt", freeNodeDeck);
    const std::string exe = std::string("'") + DRAPEX_EXE + "'";
    const RunResult r = runCommand(exe, deck.string() + " ignored words\n");
    EXPECT_TRUE(contains(r.out, " Please enter a file name :\n > "));
    EXPECT_TRUE(contains(r.out, " Exit Drapex"));
    EXPECT_TRUE(fs::exists(dir / "prompted.md"));
    // Nothing at the prompt is a missing file (the message of a missing deck
    // is also checked with --HELP in ResultFieldsTest).
    const RunResult empty = runCommand(exe, "");
    EXPECT_EQ(empty.status, 0);
    EXPECT_EQ(empty.err, "  File :  does not exist\n");
    EXPECT_FALSE(contains(empty.out, "Exit Drapex"));
    const RunResult folder = runDrapex(dir);
    EXPECT_EQ(folder.status, 0);
    EXPECT_EQ(folder.err, "  The input file: " + dir.string() + " is a directory\n");
}

// The job log's layout is the output block bar.md of docs/outputs.md (an
// automatic step); here a fixed step and the console's echo of the log.
TEST(JobLog, FixedStepDeckWithoutRunTakesExactlyOneStepAndTheConsoleEchoesTheLog) {
    fs::path deck;
    const RunResult r = runDeck("onestep", "CONTROLS\nSTEP 0.5\nNODES\n1 X 0\n2 X 1\n", &deck);
    const std::string text = readFile(deck.parent_path() / "onestep.md");
    EXPECT_TRUE(contains(text, " - Automatic step time: false\n\t - Step time: 0.500000\n"));
    EXPECT_TRUE(contains(text, "Writing output file 0"));
    EXPECT_FALSE(contains(text, "Writing output file 1"));
    EXPECT_FALSE(fs::exists(deck.parent_path() / "Results_onestep" / "onestep_1.vtk"));
    EXPECT_TRUE(contains(r.out, "  > File name: onestep\n  > Extension: .txt\n"));
    EXPECT_TRUE(contains(r.out, "   - Nodes: 2\n"));
}

TEST(JobLog, FailedPhaseWritesTheErrorBlock) {
    fs::path deck;
    runDeck("logerror", "CONTROLS\nSTEP 1\nELEMENTS TYPE NONE\n1 NODES 1 2\n", &deck);
    const std::string text = readFile(deck.parent_path() / "logerror.md");
    // The log carries the whole chain, down to the innermost message.
    EXPECT_TRUE(contains(text, "---\n :exclamation: **Error at:** At line 4 --> Element Type NONE is not "
                               "recognized\n ```bash \ninitialize() method\n ```\n\n"));
}

TEST(Robustness, ResultsThatCannotBeWrittenStopTheRun) {
    const fs::path dir = scratchDir("unwritable");
    const fs::path deck = writeFile(dir / "blocked.txt", "CONTROLS\nSTEP 0.1\nNODES\n1 X 0\n");
    writeFile(dir / "Results_blocked", "a file where the results folder belongs");
    const RunResult r = runDrapex(deck);
    EXPECT_TRUE(contains(
        r.err, " --> Run method\n --> Details:  --> Error during writing\n --> Details: Results file "));
    EXPECT_TRUE(contains(r.err, "cannot be written\n"));
}

TEST(Robustness, DeckPathWithBlanksRunsAndARerunReplacesTheResults) {
    const fs::path dir = scratchDir("with blanks");
    const fs::path deck = writeFile(dir / "my job.txt", freeNodeDeck);
    EXPECT_EQ(runDrapex(deck).err, "");
    EXPECT_TRUE(fs::exists(dir / "my job.md"));
    EXPECT_TRUE(fs::exists(dir / "Results_my job" / "my job_0.vtk"));
    const RunResult second = runDrapex(deck);
    EXPECT_TRUE(contains(second.out, " The results file exists, the results will be replaced\n"));
}
