#include "Load.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

using testutil::tokens;

TEST(LoadTest, EveryKeywordFillsItsComponentConstantInTimeWithoutAmplitude) {
    Load l;
    l.parseOstrel(tokens("FX 1 FY 2 FZ 3 MX 4 MY 5 MZ 6 AX 7 AY 8 AZ 9 ARX 10 ARY 11 ARZ 12 FX -1"), {});
    for (double t : {0.0, 0.5, 100.0}) {
        const auto values = l.at(t);
        const auto &f = values.force, &a = values.acceleration;
        for (int i = 0; i < 6; ++i) {
            EXPECT_EQ(f[i], i == 0 ? -1.0 : i + 1.0); // the later FX wins
            EXPECT_EQ(a[i], i + 7.0);
        }
        EXPECT_EQ(l.getPressure(t), 0.0);
    }
}
