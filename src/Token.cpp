#include "Token.h"

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
