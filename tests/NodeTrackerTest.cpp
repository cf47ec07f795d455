// NodeTracker: the data-line keywords and their messages, the quantity each
// TYPE and DIRECTION reads from a node, and the exact CSV text it writes.
#include "NodeTracker.h"

#include "Element.h"
#include "Node.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

using testutil::readFile;
using testutil::readLines;

std::vector<Token> tokensOf(std::string line) {
    return IOFile::tokenize(line, " ,\t=[]");
}

class NodeTrackerTest : public ::testing::Test {
protected:
    void SetUp() override {
        dir = testutil::scratchDir(std::string("node_tracker_") +
                                   ::testing::UnitTest::GetInstance()->current_test_info()->name());
        deck = testutil::writeFile(dir / "job.txt", "TITLE\n");
        for (int k = 1; k <= 3; ++k) {
            auto n = std::make_shared<Node>();
            n->setNumber(k);
            nodes[k] = n;
        }
    }

    std::shared_ptr<NodeTracker> make(const std::string& name, const std::string& line) {
        auto tracker = std::make_shared<NodeTracker>();
        tracker->init(deck);
        tracker->setName(name);
        tracker->parseOstrel(tokensOf(line), nodes, elements);
        tracker->initializeTracker();
        return tracker;
    }

    std::string parseError(const std::string& line) {
        NodeTracker tracker;
        try {
            tracker.parseOstrel(tokensOf(line), nodes, elements);
        } catch (const std::invalid_argument& e) {
            return e.what();
        }
        return "(no error)";
    }

    std::filesystem::path dir, deck;
    std::unordered_map<int, std::shared_ptr<Node>> nodes;
    std::unordered_map<int, std::shared_ptr<Element>> elements;
};

TEST_F(NodeTrackerTest, ParseErrorsCarryTheirExactMessages) {
    EXPECT_EQ(parseError("NODES 1 DIRECTION X DIRECTION Y"), "Tracker direction has been already set");
    EXPECT_EQ(parseError("NODES 1 DIRECTION X DIRECTION X"), "Tracker direction has been already set");
    EXPECT_EQ(parseError("TYPE FORCE NODES 1 TYPE POSITION"), "Tracker type has been already set");
    EXPECT_EQ(parseError("NODES 1 DIRECTION W"), "Input W is not recognized as direction");
    EXPECT_EQ(parseError("NODES 1 DIRECTION 2"), "Input 2 is not recognized as direction");
    EXPECT_EQ(parseError("NODES 1 TYPE STRAIN"), "Input STRAIN is not a recognized type");
    EXPECT_EQ(parseError("NODES 1 COMPONENT C11"), "Input COMPONENT is not a tracker parameter");
    EXPECT_EQ(parseError("5 NODES 1"), "Input 5 is not a tracker parameter");
    EXPECT_EQ(parseError("NODES 99"), "Node 99 is not found");
    EXPECT_EQ(parseError("NODES 1 2 3 4"), "Node 4 is not found");
    EXPECT_EQ(parseError("NODES 1e12"), "Node 1e+12 is not found");
    EXPECT_EQ(parseError("NODES 1 DIRECTION"), "Tracker direction is missing");
    EXPECT_EQ(parseError("NODES 1 TYPE"), "Tracker type is missing");
}

TEST_F(NodeTrackerTest, KeywordsComeInAnyOrderAndNodesKeepTheGivenOrder) {
    NodeTracker tracker;
    tracker.parseOstrel(tokensOf("TYPE VELOCITY NODES 3 1 DIRECTION Y NODES 2"), nodes, elements);
    ASSERT_EQ(tracker.getNodes().size(), 3u);
    EXPECT_EQ(tracker.getNodes()[0], nodes[3]);
    EXPECT_EQ(tracker.getNodes()[1], nodes[1]);
    EXPECT_EQ(tracker.getNodes()[2], nodes[2]);
    EXPECT_EQ(tracker.getDirection(), 1);
    EXPECT_EQ(tracker.getType(), NodeTracker::VELOCITY);

    NodeTracker unset;
    unset.parseOstrel(tokensOf("NODES 1"), nodes, elements);
    EXPECT_EQ(unset.getDirection(), NodeTracker::UNSET);
    EXPECT_EQ(unset.getType(), NodeTracker::UNSET);
}

TEST_F(NodeTrackerTest, EachTypeAndDirectionReadsItsOwnNodalValue) {
    // Node 1 and node 2 hold distinct values in every vector, so that a wrong
    // quantity or axis shows in the row.
    Node& a = *nodes[1];
    Node& b = *nodes[2];
    a.setX_pos(1.5);
    a.setY_pos(2.5);
    a.setZ_pos(3.5);
    b.setX_pos(-0.25);
    b.setY_pos(-0.5);
    b.setZ_pos(-0.75);
    a.setX_vel(11);
    a.setY_vel(12);
    a.setZ_vel(13);
    b.setX_vel(1);
    b.setY_vel(2);
    b.setZ_vel(4);
    a.setX_acc(-21);
    a.setY_acc(-22);
    a.setZ_acc(-23);
    b.setX_acc(0.125);
    b.setY_acc(0.25);
    b.setZ_acc(0.5);
    a.addInternalForce(100, 200, 300);
    a.addContactForce(0.5, 0.25, 0.125); // the total force holds the contact force too
    b.addContactForce(-8, -16, -32);
    a.addInternalMoment(7, 8, 9); // moments never show in a force column

    struct Case {
        const char* type;
        double a[3], b[3];
    };
    const Case cases[] = {
        {"POSITION", {1.5, 2.5, 3.5}, {-0.25, -0.5, -0.75}},
        {"VELOCITY", {11, 12, 13}, {1, 2, 4}},
        {"ACCELERATION", {-21, -22, -23}, {0.125, 0.25, 0.5}},
        {"FORCE", {100.5, 200.25, 300.125}, {-8, -16, -32}},
        {"CONTACTFORCE", {0.5, 0.25, 0.125}, {-8, -16, -32}},
    };
    const char* axes[] = {"X", "Y", "Z"};
    for (const Case& c : cases) {
        for (int d = 0; d < 3; ++d) {
            SCOPED_TRACE(std::string(c.type) + " " + axes[d]);
            auto tracker = make("Q", std::string("NODES 1 2 DIRECTION ") + axes[d] + " TYPE " + c.type);
            tracker->printCSV(0.5);
            const auto lines = readLines(dir / "Q.csv");
            ASSERT_EQ(lines.size(), 1u);
            double time = 0, va = 0, vb = 0, total = 0;
            ASSERT_EQ(std::sscanf(lines[0].c_str(), "%lf, %lf, %lf, %lf", &time, &va, &vb, &total), 4);
            EXPECT_DOUBLE_EQ(time, 0.5);
            EXPECT_DOUBLE_EQ(va, c.a[d]);
            EXPECT_DOUBLE_EQ(vb, c.b[d]);
            EXPECT_DOUBLE_EQ(total, c.a[d] + c.b[d]);
        }
    }
}

TEST_F(NodeTrackerTest, WritesHeaderAtTimeZeroThenFixedTimeAndDefaultFormattedValues) {
    nodes[1]->setZ_pos(1.25);
    nodes[2]->setZ_pos(-0.5);
    nodes[3]->setZ_pos(1234567.0);
    auto tracker = make("T1", "NODES 1 2 3 DIRECTION Z TYPE POSITION");
    tracker->printCSV(0.0);
    tracker->printCSV(0.25);
    nodes[3]->setZ_pos(0.0);
    tracker->printCSV(1.0 / 3.0);
    EXPECT_EQ(readFile(dir / "T1.csv"), "Time , Node 1, Node 2, Node 3, Total \n"
                                        "0.000000, 1.25, -0.5, 1.23457e+06, 1.23457e+06\n"
                                        "0.250000, 1.25, -0.5, 1.23457e+06, 1.23457e+06\n"
                                        "0.333333, 1.25, -0.5, 0, 0.75\n");
}

TEST_F(NodeTrackerTest, HeaderOnlyWhenTheTimeIsExactlyZero) {
    auto tracker = make("LATE", "NODES 2 DIRECTION X TYPE POSITION");
    tracker->printCSV(1e-9); // prints as 0.000000 but is not time 0
    tracker->printCSV(2.0);
    EXPECT_EQ(readFile(dir / "LATE.csv"), "0.000000, 0, 0\n2.000000, 0, 0\n");
}

TEST_F(NodeTrackerTest, MomentAndUnsetTrackersWriteTimeAndZeroTotalUnderTheFullHeader) {
    nodes[1]->setX_pos(5.0);
    nodes[1]->addInternalMoment(3, 4, 5);
    for (const char* line : {"NODES 1 2 DIRECTION X TYPE MOMENT", "NODES 1 2 TYPE POSITION",
                             "NODES 1 2 DIRECTION X", "NODES 1 2"}) {
        SCOPED_TRACE(line);
        auto tracker = make("M", line);
        tracker->printCSV(0.0);
        tracker->printCSV(0.5);
        EXPECT_EQ(readFile(dir / "M.csv"), "Time , Node 1, Node 2, Total \n0.000000, 0\n0.500000, 0\n");
    }
}

TEST_F(NodeTrackerTest, TrackerWithoutNodesWritesTimeAndZeroTotal) {
    auto tracker = make("EMPTY", "DIRECTION X TYPE FORCE");
    tracker->printCSV(0.0);
    EXPECT_EQ(readFile(dir / "EMPTY.csv"), "Time , Total \n0.000000, 0\n");
}

} // namespace
