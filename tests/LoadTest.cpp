#include "Load.h"
#include "AmpTabular.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using testutil::ramp;
using testutil::tokens;

} // namespace

TEST(LoadTest, ConstantForceWithoutAmplitude) {
    Load l;
    l.parseOstrel(tokens({"FZ", "-5"}), {});
    for (double t : {0.0, 0.5, 100.0}) {
        const auto f = l.getLoad(t);
        ASSERT_EQ(f.dim1(), 6);
        for (int i = 0; i < 6; ++i)
            EXPECT_EQ(f[i], i == 2 ? -5.0 : 0.0);
        EXPECT_EQ(l.getPressure(t), 0.0);
    }
}

TEST(LoadTest, PressureFollowsTheRamp) {
    Load l;
    l.parseOstrel(tokens({"P", "2.0", "AMPLITUDE", "RAMP"}), ramp());
    EXPECT_DOUBLE_EQ(l.getPressure(0.0), 0.0);
    EXPECT_DOUBLE_EQ(l.getPressure(0.25), 0.5);
    EXPECT_DOUBLE_EQ(l.getPressure(1.0), 2.0);
    EXPECT_DOUBLE_EQ(l.getPressure(2.0), 0.0);
}

TEST(LoadTest, EveryKeywordFillsItsComponentAndReturnsFreshArrays) {
    Load l;
    l.parseOstrel(tokens({"FX", "1",  "FY", "2",  "FZ", "3",   "MX", "4",   "MY", "5",   "MZ", "6",  "AX",
                          "7",  "AY", "8",  "AZ", "9",  "ARX", "10", "ARY", "11", "ARZ", "12", "FX", "-1"}),
                  {});
    auto f = l.getLoad(0.0);
    const auto a = l.getAcc(0.0);
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(f[i], i == 0 ? -1.0 : i + 1.0);
        EXPECT_EQ(a[i], i + 7.0);
    }
    f[1] = 99.0;
    EXPECT_EQ(l.getLoad(0.0)[1], 2.0);
}

TEST(LoadTest, AccelerationScaledByAmplitude) {
    Load l;
    l.parseOstrel(tokens({"AMPLITUDE", "RAMP", "AZ", "-9.81"}), ramp());
    EXPECT_DOUBLE_EQ(l.getAcc(0.5)[2], -4.905);
    EXPECT_DOUBLE_EQ(l.getLoad(0.5)[2], 0.0);
}
