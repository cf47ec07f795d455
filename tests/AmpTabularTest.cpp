#include "AmpTabular.h"
#include "AmplitudeLibrary.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using testutil::tokens;

std::shared_ptr<Amplitude> table(std::initializer_list<const char*> texts, const std::string& name = "RAMP") {
    auto a = AmplitudeLibrary::getAmplitudeOstrel("TABULAR");
    std::string n = name;
    a->setName(n);
    a->parseOstrel(tokens(texts));
    a->setInitialConditions();
    return a;
}

} // namespace

TEST(AmpTabularTest, PiecewiseLinearAndZeroOutsideItsRange) {
    auto a = table({"VALUES", "0", "0", "1", "10"});
    EXPECT_EQ(a->at(-0.1), 0.0);
    EXPECT_DOUBLE_EQ(a->at(0.0), 0.0);
    EXPECT_DOUBLE_EQ(a->at(0.5), 5.0);
    EXPECT_DOUBLE_EQ(a->at(1.0), 10.0);
    EXPECT_EQ(a->at(1.5), 0.0);
}

TEST(AmpTabularTest, PairsOutOfOrderGiveTheSameAmplitude) {
    auto ordered = table({"VALUES", "0", "0", "1", "10", "3", "-2"});
    auto shuffled = table({"VALUES", "3", "-2", "1", "10", "0", "0"});
    auto* s = static_cast<AmpTabular*>(shuffled.get());
    EXPECT_EQ(s->getStartTime(), 0.0);
    EXPECT_EQ(s->getEndTime(), 3.0);
    for (double t : {0.0, 0.25, 0.9, 1.0, 2.0, 2.5, 3.0})
        EXPECT_DOUBLE_EQ(ordered->at(t), shuffled->at(t)) << t;
    EXPECT_DOUBLE_EQ(table({"VALUES", "1", "10", "0", "0"})->at(0.25), 2.5);
}

TEST(AmpTabularTest, ForwardOnlyCursor) {
    auto a = table({"VALUES", "0", "0", "1", "10", "2", "0"});
    EXPECT_DOUBLE_EQ(a->at(1.5), 5.0);
    // The search never goes back: an earlier time runs to the end of the
    // table and answers the last value.
    EXPECT_DOUBLE_EQ(a->at(0.5), 0.0);
    auto b = table({"VALUES", "0", "1", "1", "3", "2", "7"});
    EXPECT_DOUBLE_EQ(b->at(1.5), 5.0);
    EXPECT_DOUBLE_EQ(b->at(0.5), 7.0);
    EXPECT_DOUBLE_EQ(b->at(1.75), 6.0);
}

TEST(AmpTabularTest, WordEndsTheListAndOddNumberIsIgnored) {
    auto a = table({"VALUES", "0", "0", "1", "10", "5", "VALUES", "2", "20"});
    auto* t = static_cast<AmpTabular*>(a.get());
    EXPECT_EQ(t->getNumberOfValues(), 3);
    EXPECT_DOUBLE_EQ(a->at(1.5), 15.0);
    EXPECT_EQ(a->at(3.0), 0.0);
}

TEST(AmpTabularTest, CopyKeepsNameButNotTheTable) {
    auto a = table({"VALUES", "0", "0", "1", "10"}, "SOURCE");
    auto c = a->copyAmp();
    ASSERT_NE(c.get(), a.get());
    EXPECT_EQ(c->getName(), "SOURCE");
    auto* t = static_cast<AmpTabular*>(c.get());
    EXPECT_TRUE(t->getValues().empty());
    EXPECT_EQ(t->getNumberOfValues(), 1 + 1);
    EXPECT_EQ(c->at(0.5), 0.0);
    // Without a table of its own the copy cannot be initialised.
    EXPECT_THROW(c->setInitialConditions(), std::invalid_argument);
    c->parseOstrel(tokens({"VALUES", "0", "4", "2", "8"}));
    c->setInitialConditions();
    EXPECT_DOUBLE_EQ(c->at(1.0), 6.0);
    EXPECT_DOUBLE_EQ(a->at(0.5), 5.0);
}
