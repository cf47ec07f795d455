// Trackers: where a tracker's file goes and how it is replaced, the nodal
// value each TYPE and DIRECTION reads, the strain and stress components an
// element tracker asks for and how it sums them. The header and number
// formats of the files are the output blocks of docs/outputs.md (TIP.csv,
// REACTION.csv, STRESS.csv, ANGLE.csv); the messages of bad tracker lines are
// deck files under decks/malformed.
#include "ElementTracker.h"
#include "Node.h"
#include "NodeTracker.h"
#include "ResultReadBack.h"
#include "StubElement.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

class TrackerTest : public ::testing::Test {
protected:
    void SetUp() override {
        dir = testutil::scratchDir(std::string("tracker_") +
                                   ::testing::UnitTest::GetInstance()->current_test_info()->name());
        deck = testutil::writeFile(dir / "job.txt", "TITLE\n");
        for (int k = 1; k <= 3; ++k) {
            nodes[k] = std::make_shared<Node>();
            nodes[k]->setNumber(k);
        }
    }

    // Parses a data line into a tracker of type T whose file is <dir>/<name>.csv.
    template <class T> std::shared_ptr<T> make(std::string line, const std::string& name) {
        auto tracker = std::make_shared<T>();
        tracker->init(deck);
        tracker->setName(name);
        tracker->parseOstrel(IOFile::tokenize(line, " ,\t=[]"), nodes, elements);
        tracker->initializeTracker();
        return tracker;
    }
    std::shared_ptr<NodeTracker> make(std::string line) { return make<NodeTracker>(line, "T"); }
    std::shared_ptr<ElementTracker> makeElement(std::string line) { return make<ElementTracker>(line, "E"); }

    // An element answering strain with `strain11` for C11 if given, else
    // "<component>.25", and stress with "<component>.75".
    std::shared_ptr<StubElement> add(int number, const std::string& strain11 = "") {
        auto e = std::make_shared<StubElement>(number, std::vector<std::shared_ptr<Node>>{}, "3",
                                               [strain11](int what, int c, int) {
                                                   if (what == 100 && c == 0 && !strain11.empty())
                                                       return strain11;
                                                   return std::to_string(c) + (what == 100 ? ".25" : ".75");
                                               });
        elements[number] = e;
        return e;
    }
    std::string csv() const { return testutil::readFile(dir / "E.csv"); }

    fs::path dir, deck;
    std::unordered_map<int, std::shared_ptr<Node>> nodes;
    std::unordered_map<int, std::shared_ptr<Element>> elements;
};

TEST_F(TrackerTest, FileIsNamedAfterTheTrackerInTheDeckDirectoryAndReplacedOnInitialize) {
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
}

TEST_F(TrackerTest, NodeEachTypeAndDirectionReadsItsOwnNodalValue) {
    // Every vector of nodes 1 and 2 holds distinct values, so a wrong quantity
    // or axis shows in the row.
    Node& a = *nodes[1];
    Node& b = *nodes[2];
    a.setX_pos(1.5), a.setY_pos(2.5), a.setZ_pos(3.5);
    b.setX_pos(-0.25), b.setY_pos(-0.5), b.setZ_pos(-0.75);
    a.setX_vel(11), a.setY_vel(12), a.setZ_vel(13);
    b.setX_vel(1), b.setY_vel(2), b.setZ_vel(4);
    a.setX_acc(-21), a.setY_acc(-22), a.setZ_acc(-23);
    b.setX_acc(0.125), b.setY_acc(0.25), b.setZ_acc(0.5);
    a.addInternalForce(100, 200, 300);
    a.addContactForce(0.5, 0.25, 0.125); // the total force holds the contact force too
    b.addContactForce(-8, -16, -32);
    a.addInternalMoment(7, 8, 9); // moments never show in a force column
    const struct {
        const char* type;
        double a[3], b[3];
    } cases[] = {
        {"POSITION", {1.5, 2.5, 3.5}, {-0.25, -0.5, -0.75}},
        {"VELOCITY", {11, 12, 13}, {1, 2, 4}},
        {"ACCELERATION", {-21, -22, -23}, {0.125, 0.25, 0.5}},
        {"FORCE", {100.5, 200.25, 300.125}, {-8, -16, -32}},
        {"CONTACTFORCE", {0.5, 0.25, 0.125}, {-8, -16, -32}},
    };
    for (const auto& c : cases) {
        for (int d = 0; d < 3; ++d) {
            SCOPED_TRACE(std::string(c.type) + " " + "XYZ"[d]);
            make(std::string("NODES 1 2 DIRECTION ") + "XYZ"[d] + " TYPE " + c.type)->printCSV(0.5);
            EXPECT_EQ(readback::csvRows(dir / "T.csv"),
                      (std::vector<std::vector<double>>{{0.5, c.a[d], c.b[d], c.a[d] + c.b[d]}}));
        }
    }
}

TEST_F(TrackerTest, NodeMomentAndUnsetTrackersWriteTimeAndZeroTotalUnderTheFullHeader) {
    nodes[1]->setX_pos(5.0);
    nodes[1]->addInternalMoment(3, 4, 5);
    for (const char* line : {"NODES 1 2 DIRECTION X TYPE MOMENT", "NODES 1 2 TYPE POSITION",
                             "NODES 1 2 DIRECTION X", "NODES 1 2"}) {
        SCOPED_TRACE(line);
        auto tracker = make(line);
        tracker->printCSV(0.0);
        tracker->printCSV(0.5);
        EXPECT_EQ(testutil::readFile(dir / "T.csv"),
                  "Time , Node 1, Node 2, Total \n0.000000, 0\n0.500000, 0\n");
    }
}

TEST_F(TrackerTest, ElementComponentNamesFollowTheResultWriterIndices) {
    auto e = add(4);
    const std::pair<const char*, int> names[] = {{"C11", 0}, {"C22", 1}, {"C33", 2},
                                                 {"C12", 5}, {"C13", 4}, {"C23", 3}};
    for (const auto& [name, index] : names) {
        for (const auto& [type, code] : {std::pair<std::string, int>{"STRAIN", 100}, {"STRESS", 200}}) {
            SCOPED_TRACE(name + (" " + type));
            e->calls.clear();
            makeElement("TYPE " + type + " ELEMENTS 4 COMPONENT " + name)->printCSV(0.125);
            ASSERT_EQ(e->calls.size(), 1u);
            EXPECT_EQ(e->calls[0], std::make_pair(code, index));
            const std::string text = std::to_string(index) + (code == 100 ? ".25" : ".75");
            EXPECT_EQ(csv(), "0.125000, " + text + ", " + text + "\n");
        }
    }
}

TEST_F(TrackerTest, ElementTotalIsSummedInSinglePrecision) {
    // In double precision the sum is 3.999; in single precision 3.999 is lost
    // against 1e8 (half a float ulp there is 4) and the total is 0.
    add(7, "100000000.000000");
    add(3, "3.999000");
    add(9, "-100000000.000000");
    makeElement("ELEMENTS 7 3 9 COMPONENT C11 TYPE STRAIN")->printCSV(0.5);
    EXPECT_EQ(csv(), "0.500000, 100000000.000000, 3.999000, -100000000.000000, 0\n");
}

TEST_F(TrackerTest, ElementMissingComponentOrTypeWritesZeroWithoutAskingTheElements) {
    auto e = add(5);
    for (const char* line : {"ELEMENTS 5 TYPE STRESS", "ELEMENTS 5 COMPONENT C22", "ELEMENTS 5"}) {
        SCOPED_TRACE(line);
        makeElement(line)->printCSV(0.0);
        EXPECT_TRUE(e->calls.empty());
        EXPECT_EQ(csv(), "Time , Node 5, Total \n0.000000, 0, 0\n");
    }
}

} // namespace
