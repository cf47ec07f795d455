// Every deck shown in the user documents runs with the built program: complete
// decks run to the end without an error and write the files the documents
// show, and each deck with a mistake produces exactly the error chain that the
// documents print after it.
#include "DocBlocks.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

using namespace testutil;
using docblocks::Block;

namespace {

const char* const documents[] = {"README.md", "docs/deck-format.md", "docs/outputs.md",
                                 "docs/development.md"};

struct DeckCase {
    std::string document;
    Block deck;
    std::vector<Block> expected; // the stderr block or the output blocks that follow the deck
    std::string name;
};

std::string identifier(const std::string& document, int line) {
    std::string id = std::filesystem::path(document).stem().string();
    for (char& c : id)
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    return id + "_line_" + std::to_string(line);
}

// Output blocks belong to the deck before them, or, with an argument of the
// form "<deck name>:<path>", to the deck of that name in the same document.
std::vector<DeckCase> collectDecks() {
    std::vector<DeckCase> cases;
    for (const char* document : documents) {
        const auto blocks = docblocks::readBlocks(std::filesystem::path(DRAPEX_ROOT) / document);
        const std::size_t first = cases.size();
        for (const Block& b : blocks) {
            if (b.kind == "deck" || b.kind == "deck-error") {
                cases.push_back(DeckCase{document, b, {}, identifier(document, b.line)});
                continue;
            }
            if (b.kind != "stderr" && b.kind != "output") continue;
            Block expected = b;
            DeckCase* owner = cases.size() > first ? &cases.back() : nullptr;
            const auto colon = b.argument.find(':');
            if (b.kind == "output" && colon != std::string::npos) {
                owner = nullptr;
                for (std::size_t k = first; k < cases.size(); ++k)
                    if (cases[k].deck.argument == b.argument.substr(0, colon)) owner = &cases[k];
                expected.argument = b.argument.substr(colon + 1);
            }
            if (owner) owner->expected.push_back(expected);
        }
    }
    return cases;
}

// Matches expected lines against actual ones; an expected line "..." stands
// for any number of lines.
::testing::AssertionResult linesMatch(const std::vector<std::string>& expected,
                                      const std::vector<std::string>& actual) {
    std::size_t j = 0;
    bool skipping = false;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (expected[i] == "...") {
            skipping = true;
            continue;
        }
        while (skipping && j < actual.size() && !docblocks::sameLine(expected[i], actual[j]))
            ++j;
        if (j >= actual.size())
            return ::testing::AssertionFailure() << "missing line " << i + 1 << ": \"" << expected[i] << "\"";
        if (!docblocks::sameLine(expected[i], actual[j]))
            return ::testing::AssertionFailure()
                   << "line " << i + 1 << ": expected \"" << expected[i] << "\", got \"" << actual[j] << "\"";
        skipping = false;
        ++j;
    }
    if (!skipping && j != actual.size())
        return ::testing::AssertionFailure() << "unexpected line: \"" << actual[j] << "\"";
    return ::testing::AssertionSuccess();
}

// Names the block in failure reports instead of dumping its bytes.
void PrintTo(const DeckCase& c, std::ostream* os) {
    *os << c.document << ":" << c.deck.line;
}

class DocumentDeck : public ::testing::TestWithParam<DeckCase> {};

TEST_P(DocumentDeck, RunsAsDocumented) {
    const DeckCase& c = GetParam();
    const auto dir = scratchDir("docs_" + c.name);
    const std::string file = c.deck.argument.empty()                          ? c.name + ".txt"
                             : c.deck.argument.find('.') == std::string::npos ? c.deck.argument + ".txt"
                                                                              : c.deck.argument;
    writeFile(dir / file, c.deck.body);
    const RunResult run = runCommand("cd '" + dir.string() + "' && '" + DRAPEX_EXE + "' '" + file + "'");
    const std::string where = c.document + ":" + std::to_string(c.deck.line);
    EXPECT_EQ(run.status, 0) << where;

    if (c.deck.kind == "deck") {
        EXPECT_EQ(run.err, "") << where;
        EXPECT_TRUE(contains(run.out, "\n Exit Drapex\n")) << where;
        EXPECT_TRUE(contains(run.out, " Solving took : ")) << where;
        for (const Block& out : c.expected) {
            ASSERT_EQ(out.kind, "output") << where << ": a complete deck is followed by output blocks only";
            const auto path = dir / out.argument;
            ASSERT_TRUE(std::filesystem::exists(path)) << where << ": no file " << out.argument;
            EXPECT_TRUE(linesMatch(docblocks::lines(out.body), docblocks::lines(readFile(path))))
                << c.document << ":" << out.line << " (" << out.argument << ")";
        }
    } else {
        ASSERT_EQ(c.expected.size(), 1u) << where << ": a deck with a mistake is followed by its stderr";
        ASSERT_EQ(c.expected[0].kind, "stderr") << where;
        EXPECT_TRUE(linesMatch(docblocks::lines(c.expected[0].body), docblocks::lines(run.err)))
            << where << "\nstderr was:\n"
            << run.err;
        // A failed job still closes properly.
        EXPECT_TRUE(contains(run.out, "\n Exit Drapex\n")) << where;
    }
}

INSTANTIATE_TEST_SUITE_P(Documents, DocumentDeck, ::testing::ValuesIn(collectDecks()),
                         [](const ::testing::TestParamInfo<DeckCase>& info) { return info.param.name; });

// A block of an unknown kind would go unchecked; the order of the blocks
// (a stderr block after each deck with a mistake, output blocks after a
// complete deck) is checked where the decks run.
TEST(DocumentBlocks, EveryBlockHasAKnownKind) {
    const std::set<std::string> kinds = {"deck", "deck-error", "stderr", "output", "sh", "text"};
    for (const char* document : documents)
        for (const Block& b : docblocks::readBlocks(std::filesystem::path(DRAPEX_ROOT) / document))
            EXPECT_TRUE(kinds.count(b.kind))
                << document << ":" << b.line << ": unknown kind \"" << b.kind << "\"";
}

TEST(DocumentDecks, LowerCaseCopyOfTheFirstDeckGivesTheSameResults) {
    const auto blocks = docblocks::readBlocks(std::filesystem::path(DRAPEX_ROOT) / "docs/deck-format.md");
    std::map<std::string, std::string> decks;
    for (const Block& b : blocks)
        if (b.kind == "deck") decks[b.argument] = b.body;
    ASSERT_TRUE(decks.count("first") && decks.count("lower"));

    std::vector<std::string> results;
    for (const std::string name : {"first", "lower"}) {
        std::filesystem::path deck;
        const RunResult run = runDeck(name, decks[name], &deck);
        ASSERT_EQ(run.err, "") << name;
        const auto files = deck.parent_path() / ("Results_" + name);
        results.push_back(readFile(files / (name + "_2.vtk")));
        ASSERT_FALSE(results.back().empty()) << name;
    }
    EXPECT_EQ(results[0], results[1]);
}

} // namespace
