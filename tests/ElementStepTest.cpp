#include "StubElement.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// Records the loop operations in the order they are called.
class RecordingElement : public StubElement {
public:
    explicit RecordingElement(int points) : StubElement(1), points(points) {}
    double checkTimestep(double dt) override {
        calls.push_back("timestep");
        return dt / 2.0;
    }
    void updateLocalCoordinateSystem() override { calls.push_back("basis"); }
    int getNumberOfIntegrationPoints() override { return points; }
    void computeStrain(double dt, int ip) override { calls.push_back("strain" + args(dt, ip)); }
    void computeStress(double dt, int ip) override { calls.push_back("stress" + args(dt, ip)); }
    void computeInternalForces(double dt, int ip) override { calls.push_back("force" + args(dt, ip)); }
    void computeExternalForces(double t) override { calls.push_back("external " + std::to_string(t)); }
    void computeContactForces() override { calls.push_back("contact"); }

    std::vector<std::string> calls;

private:
    static std::string args(double dt, int ip) { return " " + std::to_string(dt) + " " + std::to_string(ip); }
    int points;
};

} // namespace

TEST(ElementStepTest, RunsStrainAndStressAtEveryPointBeforeAnyForce) {
    RecordingElement e(2);
    double candidate = 8.0;
    e.runStep(0.5, 3.0, true, candidate);
    const std::vector<std::string> expected = {"basis",
                                               "strain 0.500000 0",
                                               "stress 0.500000 0",
                                               "strain 0.500000 1",
                                               "stress 0.500000 1",
                                               "force 0.500000 0",
                                               "force 0.500000 1",
                                               "external 3.000000",
                                               "contact",
                                               "timestep"};
    EXPECT_EQ(e.calls, expected);
    EXPECT_EQ(candidate, 4.0);
}

TEST(ElementStepTest, FixedStepLeavesTheCandidateAndSkipsTheEstimate) {
    RecordingElement e(0);
    double candidate = 8.0;
    e.runStep(0.5, 3.0, false, candidate);
    const std::vector<std::string> expected = {"basis", "external 3.000000", "contact"};
    EXPECT_EQ(e.calls, expected);
    EXPECT_EQ(candidate, 8.0);
}
