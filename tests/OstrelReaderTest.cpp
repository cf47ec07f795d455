// The deck reader's block counts and node lines (the messages of bad lines are
// kept as deck files under decks/malformed).
#include "OstrelReader.h"
#include "Node.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

using namespace testutil;

namespace {
std::shared_ptr<OstrelReader> readerFor(const std::string& name, const std::string& deck) {
    const fs::path dir = scratchDir("reader_" + name);
    auto reader = std::make_shared<OstrelReader>();
    reader->init(writeFile(dir / (name + ".txt"), deck));
    return reader;
}

} // namespace

TEST(DeckCounts, SeveralBlocksOfOneKindAddUpAndCommentsAndBlanksDoNotCount) {
    auto r = readerFor("counts", "TITLE\n** comment\nNODES\n1 X 0\n\n** inside\n2 X 1\n"
                                 "MATERIALS TYPE ELASTIC\nSTEEL E 1 NU 0.3 RHO 1\nnodes\n3 x 2\n"
                                 "GEOMETRY\n4 X 3\nCONTROLS\nSTEP 1\nRUN FROM 0 TO 1\n");
    EXPECT_EQ(r->numberOfNodes(), 3);
    EXPECT_EQ(r->numberOfMaterials(), 1);
    EXPECT_EQ(r->numberOfControls(), 2);
    EXPECT_EQ(r->numberOfElements(), 0);
    EXPECT_EQ(r->getNumberOfLines(), 16);

    r->rewindFile();
    std::vector<int> numbers;
    for (int i = 0; i < 3; ++i)
        numbers.push_back(r->getNextNode({}, {})->getNumber());
    EXPECT_EQ(numbers, (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(r->getCurrentLine(), 11);
}
