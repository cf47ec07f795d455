#include "ControlSet.h"
#include "IOFile.h"

#include <cmath>
#include <gtest/gtest.h>
#include <stdexcept>

namespace {
ControlSet parsed(std::string line) {
    IOFile::uppercase(line);
    ControlSet c;
    c.parseOstrel(IOFile::tokenize(line, " ,\t=[]"));
    return c;
}

} // namespace

TEST(ControlSetParsing, PhrasesInAnyOrderAndTheLastValueWins) {
    const ControlSet c = parsed("print every 0.5 step 1e-3 run from 0 to 2 step 2e-3 writer type vtk");
    EXPECT_DOUBLE_EQ(c.getEndTime(), 2.0);
    EXPECT_DOUBLE_EQ(c.getTimeStep(), 2e-3);
    EXPECT_DOUBLE_EQ(c.getPrintStep(), 0.5);
    EXPECT_EQ(c.getWriter(), "VTK");
}

TEST(PrintSchedule, FirstCallAtZeroAlwaysPrintsAndAtMostOnePrintPerCall) {
    ControlSet c = parsed("PRINT EVERY 0.1");
    EXPECT_TRUE(c.timeToPrint(0.0));
    EXPECT_FALSE(c.timeToPrint(0.05));
    EXPECT_TRUE(c.timeToPrint(0.1));
    // A step longer than the print interval: the schedule lags behind time.
    EXPECT_TRUE(c.timeToPrint(0.45));
    EXPECT_TRUE(c.timeToPrint(0.46));
    EXPECT_TRUE(c.timeToPrint(0.47));
    EXPECT_FALSE(c.timeToPrint(0.48));
}

TEST(PrintSchedule, ZeroPrintStepPrintsEveryStepAndNanNever) {
    ControlSet c = parsed("STEP 1");
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(c.timeToPrint(0.0));
    EXPECT_FALSE(c.timeToPrint(std::nan("")));
    EXPECT_DOUBLE_EQ(c.getEndTime(), 0.0);
}
