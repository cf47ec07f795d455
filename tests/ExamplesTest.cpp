// Every example listed in examples/README.md runs to the end on a copy of its
// deck, and every example folder is listed there, so the list and the decks
// cannot drift apart.
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>

using namespace testutil;
namespace fs = std::filesystem;

namespace {

const fs::path examplesDir = fs::path(DRAPEX_ROOT) / "examples";

// The examples named by the README's run commands, in README order.
std::vector<std::string> listedExamples() {
    std::vector<std::string> names;
    const std::regex command(R"(^- `build/drapex examples/([A-Za-z0-9_]+)/([A-Za-z0-9_]+)\.txt`$)");
    for (const auto& line : readLines(examplesDir / "README.md")) {
        std::smatch m;
        if (std::regex_match(line, m, command) && m[1] == m[2]) names.push_back(m[1]);
    }
    return names;
}

// End times for the examples that take longer than the suite should wait;
// the copy run in the test stops there.
const std::map<std::string, std::string> shortenedEndTime = {{"cantilever", "0.002"},
                                                             {"picture_frame", "0.1"},
                                                             {"bias_extension", "0.1"},
                                                             {"ogden_inflation", "0.02"}};

class Example : public ::testing::TestWithParam<std::string> {};

TEST_P(Example, RunsToTheEnd) {
    const std::string name = GetParam();
    const fs::path source = examplesDir / name / (name + ".txt");
    ASSERT_TRUE(fs::exists(source)) << source;
    std::string deck = readFile(source);
    const auto shorter = shortenedEndTime.find(name);
    if (shorter != shortenedEndTime.end()) {
        const std::string cut = withEndTime(deck, shorter->second);
        ASSERT_NE(cut, deck) << name << ": no RUN FROM ... TO ... phrase to shorten";
        deck = cut;
    }
    fs::path path;
    const RunResult run = runDeck("example_" + name, deck, &path);
    EXPECT_EQ(run.err, "") << name;
    EXPECT_TRUE(contains(run.out, "\n Exit Drapex\n")) << name;
    const std::string stem = path.stem().string();
    EXPECT_TRUE(contains(readFile(path.parent_path() / (stem + ".md")), " Solving took : ")) << name;
    EXPECT_TRUE(fs::exists(path.parent_path() / ("Results_" + stem) / (stem + "_0.vtk"))) << name;
}

INSTANTIATE_TEST_SUITE_P(Listed, Example, ::testing::ValuesIn(listedExamples()),
                         [](const ::testing::TestParamInfo<std::string>& info) { return info.param; });

TEST(ExamplesReadme, ListsEveryExampleFolderOnceWithItsTableRow) {
    const auto listed = listedExamples();
    ASSERT_FALSE(listed.empty());
    const std::set<std::string> unique(listed.begin(), listed.end());
    EXPECT_EQ(unique.size(), listed.size()) << "an example is listed twice";

    std::set<std::string> folders;
    for (const auto& entry : fs::directory_iterator(examplesDir))
        if (entry.is_directory()) folders.insert(entry.path().filename().string());
    EXPECT_EQ(unique, folders) << "examples/README.md and the folders under examples/ differ";

    const std::string readme = readFile(examplesDir / "README.md");
    for (const auto& name : listed)
        EXPECT_TRUE(contains(readme, "| `" + name + "` |")) << name << " has no row in the table";
}

} // namespace
