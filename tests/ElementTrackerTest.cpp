// ElementTracker: keywords and messages, the strain/stress codes and component
// indices it asks the elements for, and the single-precision total it writes.
#include "ElementTracker.h"

#include "StubElement.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

class ElementTrackerTest : public ::testing::Test {
protected:
    void SetUp() override {
        dir = testutil::scratchDir(std::string("element_tracker_") +
                                   ::testing::UnitTest::GetInstance()->current_test_info()->name());
        deck = testutil::writeFile(dir / "job.txt", "TITLE\n");
    }

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

    // Parses a data line into a tracker whose file is <dir>/E.csv.
    std::shared_ptr<ElementTracker> make(std::string line) {
        auto tracker = std::make_shared<ElementTracker>();
        tracker->init(deck);
        tracker->setName("E");
        tracker->parseOstrel(IOFile::tokenize(line, " ,\t=[]"), {}, elements);
        tracker->initializeTracker();
        return tracker;
    }

    std::string csv() const { return testutil::readFile(dir / "E.csv"); }

    std::filesystem::path dir, deck;
    std::unordered_map<int, std::shared_ptr<Element>> elements;
};

TEST_F(ElementTrackerTest, ComponentNamesFollowTheResultWriterIndices) {
    auto e = add(4);
    const std::pair<const char*, int> names[] = {{"C11", 0}, {"C22", 1}, {"C33", 2},
                                                 {"C12", 5}, {"C13", 4}, {"C23", 3}};
    for (const auto& [name, index] : names) {
        for (const auto& [type, code] : {std::pair<std::string, int>{"STRAIN", 100}, {"STRESS", 200}}) {
            SCOPED_TRACE(name + (" " + type));
            e->calls.clear();
            make("TYPE " + type + " ELEMENTS 4 COMPONENT " + name)->printCSV(0.125);
            ASSERT_EQ(e->calls.size(), 1u);
            EXPECT_EQ(e->calls[0], std::make_pair(code, index));
            const std::string text = std::to_string(index) + (code == 100 ? ".25" : ".75");
            EXPECT_EQ(csv(), "0.125000, " + text + ", " + text + "\n");
        }
    }
}

TEST_F(ElementTrackerTest, TotalIsSummedInSinglePrecisionAndSkipsTextsWithoutANumber) {
    // In double precision the sum is 3.999; in single precision 3.999 is lost
    // against 1e8 (half a float ulp there is 4) and the total is 0.
    add(7, "100000000.000000");
    add(3, "3.999000");
    add(9, "-100000000.000000");
    auto tracker = make("ELEMENTS 7 3 9 COMPONENT C11 TYPE STRAIN");
    tracker->printCSV(0.0);
    tracker->printCSV(0.5);
    EXPECT_EQ(csv(), "Time , Node 7, Node 3, Node 9, Total \n"
                     "0.000000, 100000000.000000, 3.999000, -100000000.000000, 0\n"
                     "0.500000, 100000000.000000, 3.999000, -100000000.000000, 0\n");

    add(1, "nothing");
    add(2, "0.500000");
    add(3, "1" + std::string(39, '0') + ".000000"); // beyond float range
    make("ELEMENTS 1 2 COMPONENT C11 TYPE STRAIN")->printCSV(1.0);
    EXPECT_EQ(csv(), "1.000000, nothing, 0.500000, 0.5\n");
    make("ELEMENTS 2 3 COMPONENT C11 TYPE STRAIN")->printCSV(1.0);
    EXPECT_EQ(csv(), "1.000000, 0.500000, 1" + std::string(39, '0') + ".000000, inf\n");
}

TEST_F(ElementTrackerTest, MissingComponentOrTypeWritesZeroWithoutAskingTheElements) {
    auto e = add(5);
    for (const char* line : {"ELEMENTS 5 TYPE STRESS", "ELEMENTS 5 COMPONENT C22", "ELEMENTS 5"}) {
        SCOPED_TRACE(line);
        make(line)->printCSV(0.0);
        EXPECT_TRUE(e->calls.empty());
        EXPECT_EQ(csv(), "Time , Node 5, Total \n0.000000, 0, 0\n");
    }
}

} // namespace
