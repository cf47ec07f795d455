#include "AmpTabular.h"
#include "AmplitudeLibrary.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

std::shared_ptr<Amplitude> table(const std::string& values, const std::string& name = "RAMP") {
    auto a = AmplitudeLibrary::getAmplitudeOstrel("TABULAR");
    std::string n = name;
    a->setName(n);
    a->parseOstrel(testutil::tokens("VALUES " + values));
    a->setInitialConditions();
    return a;
}

} // namespace

// Each table is asked at the times in order: the search moves forward only.
TEST(AmpTabularTest, PiecewiseLinearInTimeOrderZeroOutsideAndSearchedForwardOnly) {
    const struct {
        const char* values;
        std::vector<std::pair<double, double>> at; // time, value
    } cases[] = {
        {"0 0 1 10", {{-0.1, 0.0}, {0.0, 0.0}, {0.5, 5.0}, {1.0, 10.0}, {1.5, 0.0}}},
        // Pairs out of order are sorted by time.
        {"3 -2 1 10 0 0",
         {{0.0, 0.0}, {0.25, 2.5}, {0.9, 9.0}, {1.0, 10.0}, {2.0, 4.0}, {2.5, 1.0}, {3.0, -2.0}}},
        // An earlier time than the last one asked runs to the end of the
        // table and answers the last value.
        {"0 0 1 10 2 0", {{1.5, 5.0}, {0.5, 0.0}}},
        {"0 1 1 3 2 7", {{1.5, 5.0}, {0.5, 7.0}, {1.75, 6.0}}},
        // A word ends a list, a later list adds to it, an unpaired number is dropped.
        {"0 0 1 10 5 VALUES 2 20", {{1.5, 15.0}, {3.0, 0.0}}},
    };
    for (const auto& c : cases) {
        auto a = table(c.values);
        for (const auto& [t, value] : c.at)
            EXPECT_DOUBLE_EQ(a->at(t), value) << c.values << " at " << t;
    }
}
