// Tracker base and factory: where a tracker's file goes, how it is replaced,
// and which keyword makes which tracker.
#include "Tracker.h"

#include "ElementTracker.h"
#include "NodeTracker.h"
#include "TestUtil.h"
#include "TrackerLibrary.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

namespace fs = std::filesystem;

TEST(TrackerTest, FileIsNamedAfterTheTrackerInTheDeckDirectoryAndReplacedOnInitialize) {
    const fs::path dir = testutil::scratchDir("tracker_file");
    const fs::path deck = testutil::writeFile(dir / "job.txt", "TITLE\n");
    testutil::writeFile(dir / "T1.csv", "Time , Node 1, Total \n0.000000, 9, 9\n");
    NodeTracker tracker;
    tracker.init(deck);
    tracker.setName("T1");
    EXPECT_EQ(fs::path(tracker.csvPath()), dir / "T1.csv");
    tracker.initializeTracker();
    tracker.printCSV(0.5);
    tracker.initializeTracker(); // a second call starts the file again
    tracker.printCSV(0.75);
    EXPECT_EQ(testutil::readFile(dir / "T1.csv"), "0.750000, 0\n");

    // The extension is replaced, so F.1 writes F.csv (listed under the guide's quirks).
    tracker.setName("F.1");
    EXPECT_EQ(fs::path(tracker.csvPath()), dir / "F.csv");

    ElementTracker missing;
    try {
        missing.init(dir / "absent.txt");
        ADD_FAILURE() << "a missing deck was accepted";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "File does not exist");
    }
}

} // namespace
