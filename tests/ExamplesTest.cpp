// Every example folder is listed once in examples/README.md, with its row in
// the table, and is run to the end by a case of the result regression
// (reference/cases.txt), so the list, the decks and the runs cannot drift apart.
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>

using namespace testutil;
namespace fs = std::filesystem;

TEST(ExamplesReadme, ListsEveryExampleFolderOnceWithItsTableRowAndARegressionCase) {
    const fs::path examplesDir = fs::path(DRAPEX_ROOT) / "examples";
    std::vector<std::string> listed;
    const std::regex command(R"(^- `build/drapex examples/([A-Za-z0-9_]+)/([A-Za-z0-9_]+)\.txt`$)");
    for (const auto& line : readLines(examplesDir / "README.md")) {
        std::smatch m;
        if (std::regex_match(line, m, command) && m[1] == m[2]) listed.push_back(m[1]);
    }
    ASSERT_FALSE(listed.empty());
    const std::set<std::string> unique(listed.begin(), listed.end());
    EXPECT_EQ(unique.size(), listed.size()) << "an example is listed twice";

    std::set<std::string> folders;
    for (const auto& entry : fs::directory_iterator(examplesDir))
        if (entry.is_directory()) folders.insert(entry.path().filename().string());
    EXPECT_EQ(unique, folders) << "examples/README.md and the folders under examples/ differ";

    const std::string readme = readFile(examplesDir / "README.md");
    const std::string cases = readFile(fs::path(DRAPEX_TEST_DIR) / "reference" / "cases.txt");
    for (const auto& name : listed) {
        EXPECT_TRUE(contains(readme, "| `" + name + "` |")) << name << " has no row in the table";
        // A long example may be run through a coarser deck of its own folder.
        EXPECT_TRUE(contains(cases, " examples/" + name + "/" + name)) << name << " is never run";
    }
}
