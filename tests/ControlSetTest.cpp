#include "ControlSet.h"
#include "TestUtil.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

ControlSet parsed(const std::string& line) {
    ControlSet c;
    c.parseOstrel(testutil::tokens(line));
    return c;
}

} // namespace

TEST(ControlSetParsing, PhrasesInAnyOrderAndTheLastValueWins) {
    const ControlSet c = parsed("PRINT EVERY 0.5 STEP 1E-3 RUN FROM 0 TO 2 STEP 2E-3 WRITER TYPE VTK");
    EXPECT_DOUBLE_EQ(c.getEndTime(), 2.0);
    EXPECT_DOUBLE_EQ(c.getTimeStep(), 2e-3);
    EXPECT_DOUBLE_EQ(c.getPrintStep(), 0.5);
    EXPECT_EQ(c.getWriter(), "VTK");
}

TEST(PrintSchedule, FirstCallAtZeroAlwaysPrintsAndAtMostOnePrintPerCall) {
    ControlSet c = parsed("PRINT EVERY 0.1");
    // A step longer than the print interval (0.1 to 0.45): the schedule lags behind time.
    for (const auto& [t, prints] : {std::pair<double, bool>{0.0, true},
                                    {0.05, false},
                                    {0.1, true},
                                    {0.45, true},
                                    {0.46, true},
                                    {0.47, true},
                                    {0.48, false}})
        EXPECT_EQ(c.timeToPrint(t), prints) << t;
}

// Without PRINT EVERY every step prints (RobustnessTest counts one result
// file per increment), but never at a time that is not a number.
TEST(PrintSchedule, ZeroPrintStepNeverPrintsANanTime) {
    EXPECT_FALSE(parsed("STEP 1").timeToPrint(std::nan("")));
}
