// Piecewise-linear amplitude given as a table of (time, value) pairs. Zero
// outside the table's time range. The search for the current segment starts
// at a cursor that only moves forward, so evaluation at non-decreasing times
// costs a step to the next segment at most.
#pragma once

#include "Amplitude.h"

#include <utility>
#include <vector>

class AmpTabular : public Amplitude {
public:
    // A copy keeps the name, the flags and the count of pairs but starts with
    // an empty table: it must be given values before it is evaluated.
    std::shared_ptr<Amplitude> copyAmp() override;
    void parseOstrel(std::vector<Token> tokens) override;
    void setInitialConditions() override;
    double at(double time) override;
    void checkpoint(Archive& archive) override;

    double getStartTime() const { return startTime; }
    double getEndTime() const { return endTime; }
    int getNumberOfValues() const { return numberOfValues; }
    const std::vector<std::pair<double, double>>& getValues() const { return values; }

private:
    double startTime = 0.0;
    double endTime = 0.0;
    std::vector<std::pair<double, double>> values;
    // Index of the segment the last evaluation found.
    std::size_t cursor = 0;
    bool valuesSet = false;
};
