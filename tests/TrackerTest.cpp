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

TEST(TrackerTest, FileLiesInTheDeckDirectoryNamedAfterTheTracker) {
    const fs::path dir = testutil::scratchDir("tracker_name");
    const fs::path deck = testutil::writeFile(dir / "job.txt", "TITLE\n");
    NodeTracker tracker;
    tracker.init(deck);
    tracker.setName("T1");
    EXPECT_EQ(fs::path(tracker.csvPath()), dir / "T1.csv");
    EXPECT_EQ(tracker.getName(), "T1");
    EXPECT_EQ(tracker.filename(), "T1");
    EXPECT_EQ(tracker.extension(), ".csv");

    // A dot in the name stays part of the file name, so F.1 and F.2 keep
    // separate files.
    NodeTracker dotted;
    dotted.init(deck);
    dotted.setName("F.1");
    EXPECT_EQ(fs::path(dotted.csvPath()), dir / "F.1.csv");
}

TEST(TrackerTest, InitRefusesAMissingDeck) {
    const fs::path dir = testutil::scratchDir("tracker_missing");
    ElementTracker tracker;
    try {
        tracker.init(dir / "absent.txt");
        FAIL() << "no error for a missing deck";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "File does not exist");
    }
}

TEST(TrackerTest, InitializeReplacesEarlierContent) {
    const fs::path dir = testutil::scratchDir("tracker_replace");
    const fs::path deck = testutil::writeFile(dir / "job.txt", "TITLE\n");
    testutil::writeFile(dir / "OLD.csv", "Time , Node 1, Total \n0.000000, 9, 9\n1.000000, 9, 9\n");
    NodeTracker tracker;
    tracker.init(deck);
    tracker.setName("OLD");
    tracker.initializeTracker();
    tracker.printCSV(0.5);
    tracker.initializeTracker(); // a second call starts the file again
    tracker.printCSV(0.75);
    EXPECT_EQ(testutil::readFile(dir / "OLD.csv"), "0.750000, 0\n");
}

TEST(TrackerTest, FactoryMakesOneNewTrackerPerKeyword) {
    auto node = TrackerLibrary::getTrackerOstrel("NODE");
    auto element = TrackerLibrary::getTrackerOstrel("ELEMENT");
    EXPECT_NE(std::dynamic_pointer_cast<NodeTracker>(node), nullptr);
    EXPECT_NE(std::dynamic_pointer_cast<ElementTracker>(element), nullptr);
    EXPECT_NE(TrackerLibrary::getTrackerOstrel("NODE"), node);

    for (const char* type : {"Node", "NODES", "ELEMENTS", " NODE", ""}) {
        try {
            TrackerLibrary::getTrackerOstrel(type);
            ADD_FAILURE() << "accepted " << type;
        } catch (const std::invalid_argument& e) {
            EXPECT_EQ(std::string(e.what()), std::string("Tracker Type ") + type + " is not recognized");
        }
    }
}

} // namespace
