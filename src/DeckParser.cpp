#include "DeckParser.h"

#include "Node.h"

#include <climits>
#include <cmath>
#include <cstdio>
#include <sstream>

void DeckParser::read(const std::vector<Keyword>& table, const Reader& fallback) const {
    std::size_t i = 0;
    while (i < tokens.size()) {
        const Token& key = tokens[i];
        const Keyword* taken = nullptr;
        if (key.isAWord())
            for (const Keyword& k : table)
                if (key.getWord() == k.name && follows(i, k.follows)) {
                    taken = &k;
                    break;
                }
        if (taken)
            i += taken->read(i);
        else if (fallback)
            i += fallback(i);
        else
            throw notRecognized(key.getWord());
    }
}

bool DeckParser::follows(std::size_t i, Follows kind) const {
    if (kind == Follows::Anything) return true;
    if (atEnd == AtEnd::Lenient && i + 1 >= tokens.size()) return false;
    const Token& value = tokens.at(i + 1);
    return kind == Follows::Word ? value.isAWord() : value.isANumber();
}

std::shared_ptr<Node> DeckParser::node(const Token& t,
                                       const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap) {
    const double v = t.getNumber();
    if (std::isfinite(v) && v > double(INT_MIN) - 1.0 && v < double(INT_MAX) + 1.0) {
        const int wanted = static_cast<int>(v);
        const auto found = nodeMap.find(wanted);
        if (found != nodeMap.end()) return found->second;
        throw nodeNotFound(std::to_string(wanted));
    }
    throw nodeNotFound(text(t));
}

std::vector<std::shared_ptr<Node>>
DeckParser::nodes(std::size_t first, std::size_t count, const char* shortMessage,
                  const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap, NodeOrder order) const {
    if (atEnd == AtEnd::Lenient && first + count > tokens.size()) throw std::invalid_argument(shortMessage);
    std::vector<std::shared_ptr<Node>> found;
    if (order == NodeOrder::FetchFirst) {
        for (std::size_t k = first; k < first + count; ++k)
            tokens.at(k);
        for (std::size_t k = first; k < first + count; ++k)
            if (tokens[k].isAWord()) throw std::invalid_argument(shortMessage);
    }
    if (order == NodeOrder::WholeList) {
        for (std::size_t k = first; k < first + count; ++k) {
            const Token& t = tokens.at(k);
            if (t.isAWord()) throw std::invalid_argument(shortMessage);
            const double v = t.getNumber();
            if (!(v > INT_MIN - 1.0 && v < INT_MAX + 1.0)) throw nodeNotFound(text(t));
        }
    }
    for (std::size_t k = first; k < first + count; ++k) {
        const Token& t = tokens.at(k);
        if (t.isAWord()) throw std::invalid_argument(shortMessage);
        found.push_back(node(t, nodeMap));
    }
    return found;
}

std::string DeckParser::number(double v) {
    char text[64];
    std::snprintf(text, sizeof text, "%g", v);
    return text;
}

std::string DeckParser::text(const Token& t) {
    if (t.isAWord()) return t.getWord();
    std::ostringstream s;
    s << t.getNumber();
    return s.str();
}
