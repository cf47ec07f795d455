#include "Token.h"

#include <cmath>
#include <stdexcept>
#include <utility>

Token::Token(std::string text) {
    try {
        number = std::stod(text);
        isWord = false;
    } catch (const std::invalid_argument&) {
        word = std::move(text);
        number = 0.0;
        isWord = true;
    }
}

Token::Token(std::string text, int) : word(std::move(text)), number(0.0), isWord(true) {}

Token::Token(double value) : number(value), isWord(false) {}

double Token::getFiniteNumber(const std::string& what) const {
    if (!std::isfinite(number)) throw std::invalid_argument("Input " + what + " is not a finite number");
    return number;
}
