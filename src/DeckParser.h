// Reading of one data line of a deck, for every component that the deck
// describes: the keyword table a component reads its line with, the one
// lookup of a named object (material, load, constraint, amplitude), the one
// reader of node numbers, and every message that a data line can get.
//
// A line is read left to right. At each position the first keyword of the
// table whose name is the token's word, and whose value has the kind the
// keyword wants, reads its values and says how many tokens it used; a
// position that no keyword takes goes to the table's fallback, which for
// most components throws "Input <word> is not recognized".
#pragma once

#include "Token.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

class Node;

class DeckParser {
public:
    // What must follow a keyword for the keyword to be taken.
    enum class Follows { Anything, Word, Number };
    // What a keyword at the end of the line meets when it wants a value:
    // `Checked` reads the value with a bounds check and so stops the line
    // with std::out_of_range, `Lenient` leaves the keyword unmatched.
    enum class AtEnd { Checked, Lenient };
    // In what order a node reader checks the node numbers: `InTurn` reads
    // and looks up each before the next, `WholeList` first makes sure that
    // every value is a number that a node can have, then looks them up,
    // `FetchFirst` reaches every token, then makes sure none is a word, then
    // looks them up (so a line cut short is reported before a word).
    enum class NodeOrder { InTurn, WholeList, FetchFirst };

    // Reads the keyword at position i and returns how many tokens it used.
    using Reader = std::function<std::size_t(std::size_t i)>;
    struct Keyword {
        const char* name;
        Follows follows;
        Reader read;
    };

    DeckParser(const std::vector<Token>& tokens, AtEnd atEnd) : tokens(tokens), atEnd(atEnd) {}

    // Reads the whole line with the table; a position that no keyword takes
    // goes to `fallback` (which may read it and return the tokens it used,
    // or throw), by default "Input <word> is not recognized".
    void read(const std::vector<Keyword>& table, const Reader& fallback = nullptr) const;

    const Token& at(std::size_t i) const { return tokens.at(i); }
    std::size_t size() const { return tokens.size(); }
    double finiteNumber(std::size_t i, const std::string& what) const {
        return tokens.at(i).getFiniteNumber(what);
    }

    // The object of a list that has the name, or none.
    template <class T>
    static std::shared_ptr<T> find(const std::vector<std::shared_ptr<T>>& list, const std::string& name) {
        for (const auto& item : list)
            if (item->getName() == name) return item;
        return nullptr;
    }
    // The same, or "<kind> name <name> is not found".
    template <class T>
    static std::shared_ptr<T> require(const std::vector<std::shared_ptr<T>>& list, const std::string& name,
                                      const char* kind) {
        auto found = find(list, name);
        if (!found) throw notFound(kind, name);
        return found;
    }

    // The node a deck names by number (truncated toward zero); "Node <number>
    // is not found" when there is none, also for a value that no int can hold
    // (NaN, INF, 1E20).
    static std::shared_ptr<Node> node(const Token& t,
                                      const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap);
    // The `count` nodes named by the tokens from `first` on; `shortMessage`
    // when fewer tokens follow or one of them is a word (with `InTurn` a
    // missing node ahead of the word is reported first). A missing token
    // with AtEnd::Checked stops with std::out_of_range.
    std::vector<std::shared_ptr<Node>> nodes(std::size_t first, std::size_t count, const char* shortMessage,
                                             const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                                             NodeOrder order = NodeOrder::InTurn) const;

    // The text of a token in messages: the word, or the number as %g gives it.
    static std::string text(const Token& t);
    // A number in messages and log lines, as %g gives it.
    static std::string number(double v);

    // The messages of a data line.
    static std::invalid_argument notRecognized(const std::string& input) {
        return std::invalid_argument("Input " + input + " is not recognized");
    }
    static std::invalid_argument notFound(const char* kind, const std::string& name) {
        return std::invalid_argument(std::string(kind) + " name " + name + " is not found");
    }
    static std::invalid_argument nodeNotFound(const std::string& number) {
        return std::invalid_argument("Node " + number + " is not found");
    }
    static std::invalid_argument notEnoughNodes(const char* element) {
        return std::invalid_argument(std::string("Not enough nodes inputs for Element ") + element);
    }
    static std::invalid_argument nodesNotSet(int element) {
        return std::invalid_argument("Nodes are not set for element number " + std::to_string(element));
    }

private:
    bool follows(std::size_t i, Follows kind) const;

    const std::vector<Token>& tokens;
    AtEnd atEnd;
};
