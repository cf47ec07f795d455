#include "Token.h"
#include "IOFile.h"

#include <cmath>
#include <gtest/gtest.h>
#include <stdexcept>

namespace {

std::vector<Token> tokens(std::string line) {
    IOFile::trim(line);
    IOFile::uppercase(line);
    return IOFile::tokenize(line, " ,\t=[]");
}

} // namespace

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

TEST(TokenClassification, TextWithoutLeadingNumberIsAWord) {
    const Token t("E11");
    EXPECT_TRUE(t.isAWord());
    EXPECT_FALSE(t.isANumber());
    EXPECT_EQ(t.getWord(), "E11");
    EXPECT_EQ(t.getNumber(), 0.0);
    EXPECT_TRUE(Token("123", 0).isAWord());
    EXPECT_TRUE(Token(2.5).isANumber());
}

TEST(Tokenizer, SplitsOnTheSixDelimitersWithoutEmptyTokensInUpperCase) {
    const auto t = tokens("  node 1 ,2 \r");
    ASSERT_EQ(t.size(), 3u);
    EXPECT_EQ(t[0].getWord(), "NODE");
    EXPECT_EQ(t[1].getNumber(), 1.0);
    EXPECT_EQ(t[2].getNumber(), 2.0);

    const auto a = tokens("NODE 1, 0.0 = [1.0]\tx"), b = tokens("NODE 1 0.0 1.0 X");
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        EXPECT_EQ(a[i].isAWord(), b[i].isAWord());
        EXPECT_EQ(a[i].getNumber(), b[i].getNumber());
        EXPECT_EQ(a[i].getWord(), b[i].getWord());
    }
    EXPECT_TRUE(tokens(" ,,=[]\t ").empty());
}

TEST(IOFilePaths, APathWithoutFileNameIsRefused) {
    try {
        IOFile().init("case/");
        FAIL() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "The filename is null");
    }
    EXPECT_THROW(IOFile().init(""), std::runtime_error);
}
