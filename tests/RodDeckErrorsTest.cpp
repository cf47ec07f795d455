// Input errors of rod decks, as the user sees them on standard error.
#include "TestUtil.h"

#include <gtest/gtest.h>

using namespace testutil;

namespace {

const std::vector<std::string> baseDeck = {
    "CONTROLS",                            // line 1
    "RUN FROM 0 TO 0.001",                 // 2
    "AMPLITUDES TYPE TABULAR",             // 3
    "RAMP VALUES 0 0 1 1",                 // 4
    "CONSTRAINTS TYPE BOUNDARY_CONDITION", // 5
    "FIXED VX 0 VY 0 VZ 0 AMPLITUDE RAMP", // 6
    "LOADS",                               // 7
    "PULL FX 1 AMPLITUDE RAMP",            // 8
    "MATERIALS TYPE ELASTIC",              // 9
    "STEEL E 1000 NU 0.3 RHO 1",           // 10
    "NODES",                               // 11
    "1 X 0 CONSTRAINT FIXED",              // 12
    "2 X 1 LOAD PULL",                     // 13
    "ELEMENTS TYPE ROD_2",                 // 14
    "1 NODES 1 2 MATERIAL STEEL D 0.1",    // 15
};

struct Case {
    int line;
    std::string replacement;
    std::string expected;
};

// Each case runs in a directory of its own: test cases may run in parallel.
std::string runWith(const std::string& name, const Case& c) {
    std::string text;
    for (std::size_t i = 0; i < baseDeck.size(); ++i)
        text += (static_cast<int>(i) + 1 == c.line ? c.replacement : baseDeck[i]) + "\n";
    const RunResult r = runDeck("rod_errors_" + name, text);
    EXPECT_TRUE(contains(r.out, " Exit Drapex"));
    EXPECT_EQ(r.status, 0);
    return r.err;
}

std::string chain(const std::vector<std::string>& messages) {
    std::string out = " --> Exception caught \n" + messages.front() + "\n";
    for (std::size_t i = 1; i < messages.size(); ++i)
        out += " --> Details: " + messages[i] + "\n";
    return out;
}

std::string atLine(int line, const std::string& message) {
    return chain({" --> Initialize method ", "At line " + std::to_string(line), message});
}

} // namespace

TEST(RodDeckErrorsTest, EachBrokenLineGivesItsMessage) {
    const std::vector<Case> cases = {
        {0, "", ""}, // the deck itself runs clean
        {15, "1 NODES 1 2 MATERIAL WOOD D 0.1", atLine(15, "Material name WOOD is not found")},
        {15, "1 NODES 1 2 MATERIAL STEEL D 0.1 CONTACT BASIC", atLine(15, "Invalid CONTACT type")},
        {14, "ELEMENTS TYPE ROD2", atLine(15, "Element Type ROD2 is not recognized")},
        {15, "7 NODES 1 2 MATERIAL STEEL D 0",
         chain({" --> Assemble Mass Matrix method: Elements",
                "Error in rod element 7, Cross section area is zero or negative"})},
        {10, "STEEL E 1000 NU 0.3 RHO 0",
         chain({" --> Assemble Mass Matrix method: Elements",
                "Error in rod element 1. Element mass is zero or negative"})},
        {13, "2 X 0 LOAD PULL",
         chain({" --> Assemble Mass Matrix method: Elements",
                "Error in rod element 1. Element mass is zero or negative"})},
        {10, "STEEL NU 0.3 RHO 1",
         chain({" --> Initial conditions method", "Young modulus is not set for material: STEEL"})},
        // Without RHO the rod's mass is zero, which assembly finds first.
        {10, "STEEL E 1000 NU 0.3",
         chain({" --> Assemble Mass Matrix method: Elements",
                "Error in rod element 1. Element mass is zero or negative"})},
        {10, "STEEL E STIFF", atLine(10, "Input E is not recognized")},
        {9, "MATERIALS TYPE LINEAR", atLine(10, "Material Type LINEAR is not recognized")},
        {12, "1 X 0 CONSTRAINT NOSUCH",
         chain({" --> Initialize method ", "Constraint name NOSUCH is not found"})},
        {13, "2 X 1 LOAD NOSUCH", chain({" --> Initialize method ", "Load name NOSUCH is not found"})},
        {6, "FIXED VX 0 AMPLITUDE NOSUCH", atLine(6, "Amplitude name NOSUCH is not found")},
        {5, "CONSTRAINTS TYPE FIXED", atLine(6, "Constraint Type FIXED is not recognized")},
        {8, "PULL FX 1 AMPLITUDE NOSUCH", atLine(8, "Amplitude name NOSUCH is not found")},
        {4, "RAMP VALUES 1", atLine(4, "Input VALUES has not enough parameters")},
        {4, "RAMP", chain({" --> Initial conditions method", "No values for amplitude RAMP"})},
        {3, "AMPLITUDES TYPE SMOOTH", atLine(4, "Amplitude Type SMOOTH is not recognized")},
    };
    for (std::size_t i = 0; i < cases.size(); ++i)
        EXPECT_EQ(runWith(std::to_string(i), cases[i]), cases[i].expected) << cases[i].replacement;
}
