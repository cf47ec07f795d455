#include "Token.h"

#include <cmath>
#include <gtest/gtest.h>

TEST(TokenClassification, NumbersAreReadByTheirLongestLeadingPrefixNanAndInfinityIncluded) {
    for (const auto& [text, value] : {std::pair<const char*, double>{"12ABC", 12.0},
                                      {"1.5E3", 1500.0},
                                      {"0X1A", 26.0},
                                      {"-1.E-3", -0.001},
                                      {"1E", 1.0}}) {
        const Token t(text);
        EXPECT_TRUE(t.isANumber()) << text;
        EXPECT_EQ(t.getWord(), "") << text;
        EXPECT_DOUBLE_EQ(t.getNumber(), value) << text;
    }
    EXPECT_TRUE(std::isnan(Token("NAN").getNumber()));
    EXPECT_TRUE(std::isinf(Token("INF").getNumber()));
    EXPECT_TRUE(std::isinf(Token("INFINITY").getNumber()));
    EXPECT_TRUE(Token("INFO").isANumber());
}
