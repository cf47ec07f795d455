// tools/render_vtk.py on the result files of a real run: a folder or a file
// becomes a PNG of the requested size; bad input is refused with a message.
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

namespace fs = std::filesystem;
using testutil::runCommand;

const std::string python = DRAPEX_SYSTEM_PYTHON;
const std::string script = std::string(DRAPEX_ROOT) + "/tools/render_vtk.py";

std::string shellQuoted(const fs::path& p) {
    return "'" + p.string() + "'";
}

// Width and height from the PNG header (IHDR chunk), or 0 x 0.
std::pair<unsigned, unsigned> pngSize(const fs::path& file) {
    const std::string bytes = testutil::readFile(file);
    if (bytes.size() < 24 || bytes.compare(0, 8, "\x89PNG\r\n\x1a\n") != 0) return {0, 0};
    auto word = [&](std::size_t at) {
        unsigned v = 0;
        for (std::size_t k = 0; k < 4; ++k)
            v = (v << 8) | static_cast<unsigned char>(bytes[at + k]);
        return v;
    };
    return {word(16), word(20)};
}

class RenderVtkTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (runCommand(python + " -c 'import vtk'").status != 0)
            GTEST_SKIP() << "vtk cannot be imported by " << python << " (Debian: python3-vtk9)";
        if (!std::getenv("DISPLAY") && runCommand("command -v xvfb-run").status != 0)
            GTEST_SKIP() << "no display and no xvfb-run (Debian: xvfb)";
        fs::path deck;
        const auto run = testutil::runDeck(
            std::string("render_") + ::testing::UnitTest::GetInstance()->current_test_info()->name(),
            "TITLE\nCONTROLS\nRUN FROM 0 TO 0.0021\nSTEP 0\nPRINT EVERY 0.001\n"
            "CONSTRAINTS TYPE BOUNDARY_CONDITION\nFIXED VX 0 VY 0 VZ 0\nPULL VX 1 VY 0 VZ 0\n"
            "MATERIALS TYPE ELASTIC\nSTEEL E 2.1E11 NU 0.3 RHO 7850\n"
            "NODES\n1 X 0 CONSTRAINT FIXED\n2 X 0.5 Y 0.1\n3 X 1 CONSTRAINT PULL\n"
            "ELEMENTS TYPE ROD_2\n1 NODES 1 2 MATERIAL STEEL D 0.01\n2 NODES 2 3 MATERIAL STEEL D 0.01\n",
            &deck);
        ASSERT_EQ(run.err, "");
        results = deck.parent_path() / ("Results_" + deck.stem().string());
        ASSERT_TRUE(fs::exists(results / (deck.stem().string() + "_2.vtk")));
    }

    testutil::RunResult render(const std::string& arguments) {
        return runCommand(python + " " + shellQuoted(script) + " " + arguments);
    }

    fs::path results;
};

TEST_F(RenderVtkTest, FolderRendersItsLastFileAtTheRequestedSize) {
    const fs::path png = results / "last.png";
    const auto r = render(shellQuoted(results) + " --array E11 --size 320 200 -o " + shellQuoted(png));
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(testutil::contains(r.out, "E11 of ")) << r.out;
    EXPECT_TRUE(testutil::contains(r.out, "_2.vtk")) << r.out;
    const auto size = pngSize(png);
    EXPECT_EQ(size.first, 320u);
    EXPECT_EQ(size.second, 200u);
}

TEST_F(RenderVtkTest, BadInputIsRefusedWithAMessage) {
    const fs::path png = results / "none.png";
    auto r = render(shellQuoted(results / "missing.vtk") + " -o " + shellQuoted(png));
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "render_vtk.py: " + (results / "missing.vtk").string() + " does not exist\n");

    const fs::path empty = results / "empty";
    fs::create_directories(empty);
    r = render(shellQuoted(empty) + " -o " + shellQuoted(png));
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "render_vtk.py: " + empty.string() + " holds no result files (<stem>_<N>.vtk)\n");
    EXPECT_FALSE(fs::exists(png));

    // At time 0 the rods carry nothing: every cell of the first file is zero.
    const fs::path first = results / (results.filename().string().substr(8) + "_0.vtk");
    r = render(shellQuoted(first) + " --hide-zero-cells -o " + shellQuoted(png));
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "render_vtk.py: " + first.string() + " holds only cells whose arrays are all zero\n");
    EXPECT_FALSE(fs::exists(png));
}

} // namespace
