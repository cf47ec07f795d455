// NodeTracker: the data-line keywords and their messages, the nodal value each
// TYPE and DIRECTION reads, and the exact CSV text it writes.
#include "NodeTracker.h"

#include "Node.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <stdexcept>

namespace {

class NodeTrackerTest : public ::testing::Test {
protected:
    void SetUp() override {
        dir = testutil::scratchDir(std::string("node_tracker_") +
                                   ::testing::UnitTest::GetInstance()->current_test_info()->name());
        deck = testutil::writeFile(dir / "job.txt", "TITLE\n");
        for (int k = 1; k <= 3; ++k) {
            nodes[k] = std::make_shared<Node>();
            nodes[k]->setNumber(k);
        }
    }

    // Parses a data line into a tracker whose file is <dir>/<name>.csv.
    std::shared_ptr<NodeTracker> make(std::string line, const std::string& name = "T") {
        auto tracker = std::make_shared<NodeTracker>();
        tracker->init(deck);
        tracker->setName(name);
        tracker->parseOstrel(IOFile::tokenize(line, " ,\t=[]"), nodes, {});
        tracker->initializeTracker();
        return tracker;
    }

    std::filesystem::path dir, deck;
    std::unordered_map<int, std::shared_ptr<Node>> nodes;
};

TEST_F(NodeTrackerTest, EachTypeAndDirectionReadsItsOwnNodalValue) {
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
            const auto lines = testutil::readLines(dir / "T.csv");
            ASSERT_EQ(lines.size(), 1u);
            double row[4] = {};
            ASSERT_EQ(std::sscanf(lines[0].c_str(), "%lf, %lf, %lf, %lf", &row[0], &row[1], &row[2], &row[3]),
                      4);
            EXPECT_EQ(row[0], 0.5);
            EXPECT_EQ(row[1], c.a[d]);
            EXPECT_EQ(row[2], c.b[d]);
            EXPECT_EQ(row[3], c.a[d] + c.b[d]);
        }
    }
}

TEST_F(NodeTrackerTest, HeaderOnlyAtTimeZeroThenFixedTimeAndDefaultFormattedValues) {
    nodes[1]->setZ_pos(1.25);
    nodes[2]->setZ_pos(-0.5);
    nodes[3]->setZ_pos(1234567.0);
    auto tracker = make("NODES 1 2 3 DIRECTION Z TYPE POSITION");
    tracker->printCSV(0.0);
    nodes[3]->setZ_pos(0.0);
    tracker->printCSV(1.0 / 3.0);
    tracker->printCSV(1e-9); // prints as 0.000000 but is not time 0: no header
    EXPECT_EQ(testutil::readFile(dir / "T.csv"), "Time , Node 1, Node 2, Node 3, Total \n"
                                                 "0.000000, 1.25, -0.5, 1.23457e+06, 1.23457e+06\n"
                                                 "0.333333, 1.25, -0.5, 0, 0.75\n"
                                                 "0.000000, 1.25, -0.5, 0, 0.75\n");
}

TEST_F(NodeTrackerTest, MomentAndUnsetTrackersWriteTimeAndZeroTotalUnderTheFullHeader) {
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

} // namespace
