// Reads the fenced blocks of the user documents, so that the tests can run
// every deck the documents show and compare what the program answers with
// what the documents say it answers.
//
// A block opens with a line of three backquotes followed by its info string
// and closes with a line of three backquotes. The first word of the info
// string is the block's kind, the rest its argument:
//   deck [NAME]        a complete deck that runs (written as NAME.txt)
//   deck-error [FILE]  a deck with a mistake; the next block is its stderr
//   stderr             the standard error that the deck before it produces
//   output [DECK:]PATH a file that the last deck (or the deck named DECK)
//                      writes, PATH relative to the deck
//   sh, text           commands and illustrations that nothing runs
#pragma once

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace docblocks {

struct Block {
    std::string kind;
    std::string argument;
    std::string body;
    int line = 0; // line of the opening fence, counted from 1
};

inline std::string rtrim(std::string s) {
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.back())))
        s.pop_back();
    return s;
}

inline std::vector<Block> readBlocks(const std::filesystem::path& file) {
    std::vector<Block> blocks;
    std::ifstream in(file);
    std::string line;
    int number = 0;
    Block* open = nullptr;
    while (std::getline(in, line)) {
        ++number;
        const std::string trimmed = rtrim(line);
        if (open) {
            if (trimmed == "```")
                open = nullptr;
            else
                open->body += line + "\n";
            continue;
        }
        if (trimmed.rfind("```", 0) != 0) continue;
        std::istringstream info(trimmed.substr(3));
        Block b;
        info >> b.kind >> b.argument;
        b.line = number;
        blocks.push_back(b);
        open = &blocks.back();
    }
    return blocks;
}

inline std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> out;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line))
        out.push_back(rtrim(line));
    while (!out.empty() && out.back().empty())
        out.pop_back();
    return out;
}

// Words split at blanks; a comma is a word of its own.
inline std::vector<std::string> words(std::string line) {
    std::string spaced;
    for (char c : line)
        spaced += c == ',' ? std::string(" , ") : std::string(1, c);
    std::vector<std::string> out;
    std::istringstream in(spaced);
    std::string w;
    while (in >> w)
        out.push_back(w);
    return out;
}

inline bool parseNumber(const std::string& text, double& value) {
    if (text.empty()) return false;
    char* end = nullptr;
    value = std::strtod(text.c_str(), &end);
    return end == text.c_str() + text.size();
}

// Two lines agree when their words agree, numbers within a few units of the
// sixth decimal (the precision of the program's fixed-point output), other
// words exactly.
inline bool sameLine(const std::string& expected, const std::string& actual) {
    const auto a = words(expected), b = words(actual);
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        double x, y;
        if (parseNumber(a[i], x) && parseNumber(b[i], y)) {
            const double scale = std::max(std::abs(x), std::abs(y));
            if (!(std::abs(x - y) <= 2e-6 + 1e-6 * scale)) return false;
        } else if (a[i] != b[i]) {
            return false;
        }
    }
    return true;
}

} // namespace docblocks
