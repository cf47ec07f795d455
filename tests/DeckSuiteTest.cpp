// Whole decks kept as files: tests/decks/malformed holds one deck per input
// mistake, tests/decks/regress the decks that once crashed, hung or misbehaved
// under the fuzzer. Each NAME.txt runs end to end in a scratch copy; the run
// must end with " Exit Drapex" and exit status 0, and its whole standard
// error must equal NAME.err beside it (empty for a deck that runs cleanly),
// and the job log must carry the innermost message.
#include "TestUtil.h"

#include <algorithm>
#include <cctype>
#include <gtest/gtest.h>

using namespace testutil;

namespace {

const fs::path decksRoot = fs::path(DRAPEX_TEST_DIR) / "decks";

std::vector<std::string> decksIn(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(decksRoot / folder, ec))
        if (entry.path().extension() == ".txt") names.push_back(folder + "/" + entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string testName(const testing::TestParamInfo<std::string>& info) {
    std::string name = info.param.substr(info.param.find('/') + 1);
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    return name;
}

class DeckSuite : public testing::TestWithParam<std::string> {};

} // namespace

TEST_P(DeckSuite, EndsCleanlyWithTheExpectedMessageChain) {
    const fs::path source = decksRoot / (GetParam() + ".txt");
    const fs::path expected = decksRoot / (GetParam() + ".err");
    ASSERT_TRUE(fs::exists(expected)) << "no expected standard error " << expected;

    std::string dirName = "decksuite_" + GetParam();
    std::replace(dirName.begin(), dirName.end(), '/', '_');
    const fs::path dir = scratchDir(dirName);
    const fs::path deck = dir / source.filename();
    fs::copy_file(source, deck);

    const RunResult r = runDrapex(deck);
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(contains(r.out, "\n Exit Drapex\n"));
    const std::string err = readFile(expected);
    EXPECT_EQ(r.err, err);
    // The job log names what went wrong, not only where: the innermost
    // message of the chain, the last line on the console.
    if (!err.empty()) {
        std::string innermost = err.substr(0, err.size() - 1);
        innermost = innermost.substr(innermost.rfind('\n') + 1);
        const std::string prefix = " --> Details: ";
        if (innermost.compare(0, prefix.size(), prefix) == 0) innermost = innermost.substr(prefix.size());
        EXPECT_TRUE(contains(readFile(dir / (source.stem().string() + ".md")), innermost)) << innermost;
    }
}

INSTANTIATE_TEST_SUITE_P(Malformed, DeckSuite, testing::ValuesIn(decksIn("malformed")), testName);
INSTANTIATE_TEST_SUITE_P(Regress, DeckSuite, testing::ValuesIn(decksIn("regress")), testName);
