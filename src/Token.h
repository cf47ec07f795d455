// One lexical item of a deck line: a word or a number, decided once when the
// token is made.
#pragma once

#include <string>

class Token {
public:
    // Classifies the text with std::stod: a text that starts with a number is a
    // number (12ABC is 12, NAN and INF are numbers); otherwise it is a word.
    // A number outside the range of double throws std::out_of_range.
    explicit Token(std::string text);
    // Makes a word without trying to read a number.
    Token(std::string text, int);
    explicit Token(double value);

    bool isAWord() const { return isWord; }
    bool isANumber() const { return !isWord; }
    std::string getWord() const { return word; }
    double getNumber() const { return number; }
    // The value of a number that a parameter needs finite (NAN and INF read as
    // numbers); throws std::invalid_argument "Input <what> is not a finite
    // number" otherwise.
    double getFiniteNumber(const std::string& what) const;

private:
    std::string word;
    double number = 0.0;
    bool isWord = false;
};
