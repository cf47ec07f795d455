// tools/plot_trackers.py on the tracker files of a real run: a time history and
// a one-against-another curve become non-empty PNG files; bad input is refused.
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <string>

namespace {

namespace fs = std::filesystem;
using testutil::runCommand;

const std::string python = DRAPEX_SYSTEM_PYTHON;
const std::string script = std::string(DRAPEX_ROOT) + "/tools/plot_trackers.py";

std::string shellQuoted(const fs::path& p) {
    return "'" + p.string() + "'";
}

bool isPng(const fs::path& file) {
    const std::string bytes = testutil::readFile(file);
    return bytes.size() > 1000 && bytes.compare(0, 8, "\x89PNG\r\n\x1a\n") == 0;
}

class PlotTrackersTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (runCommand(python + " -c 'import matplotlib'").status != 0)
            GTEST_SKIP() << "matplotlib cannot be imported by " << python << " (Debian: python3-matplotlib)";
        fs::path deck;
        const auto run = testutil::runDeck(
            std::string("plot_") + ::testing::UnitTest::GetInstance()->current_test_info()->name(),
            "TITLE\nCONTROLS\nRUN FROM 0.0 TO 1.0\nSTEP 0.1\nPRINT EVERY 0.1\n"
            "LOADS\nPULL AX 2.0 FX 1e-15\n"
            "NODES\n1 X 0.0 LOAD PULL\n2 X 1.0 LOAD PULL\n"
            "TRACKERS TYPE NODE\n"
            "DISP NODES 1 2 DIRECTION X TYPE POSITION\n"
            "FORCE NODES 1 2 DIRECTION X TYPE FORCE\n"
            "TURN NODES 1 2 DIRECTION X TYPE MOMENT\n",
            &deck);
        ASSERT_EQ(run.err, "");
        dir = deck.parent_path();
        ASSERT_TRUE(fs::exists(dir / "DISP.csv"));
    }

    testutil::RunResult plot(const std::string& arguments) {
        return runCommand(python + " " + shellQuoted(script) + " " + arguments);
    }

    fs::path dir;
};

TEST_F(PlotTrackersTest, TimeHistoryOfSeveralTrackersBecomesAPng) {
    const fs::path png = dir / "history.png";
    const auto r =
        plot(shellQuoted(dir / "DISP.csv") + " " + shellQuoted(dir / "TURN.csv") + " -o " + shellQuoted(png));
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(isPng(png));
}

TEST_F(PlotTrackersTest, ForceAgainstDisplacementBecomesAPng) {
    const fs::path png = dir / "curve.png";
    const auto r = plot("--x " + shellQuoted(dir / "DISP.csv") + " --y " + shellQuoted(dir / "FORCE.csv") +
                        " -o " + shellQuoted(png));
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(isPng(png));
}

TEST_F(PlotTrackersTest, BadInputIsRefusedWithAMessage) {
    const fs::path png = dir / "none.png";
    auto r = plot(shellQuoted(dir / "ABSENT.csv") + " -o " + shellQuoted(png));
    EXPECT_EQ(r.status, 2);
    EXPECT_TRUE(testutil::contains(r.err, "cannot read")) << r.err;

    r = plot("--x " + shellQuoted(dir / "DISP.csv") + " --y " + shellQuoted(dir / "FORCE.csv") +
             " --y-column 'Node 9' -o " + shellQuoted(png));
    EXPECT_EQ(r.status, 2);
    EXPECT_TRUE(testutil::contains(r.err, "has no column 'Node 9'")) << r.err;

    testutil::writeFile(dir / "BROKEN.csv", "Time , Node 1, Total \n0.000000, x, 1\n");
    r = plot(shellQuoted(dir / "BROKEN.csv") + " -o " + shellQuoted(png));
    EXPECT_EQ(r.status, 2);
    EXPECT_TRUE(testutil::contains(r.err, "line 2")) << r.err;

    r = plot("--x " + shellQuoted(dir / "DISP.csv") + " -o " + shellQuoted(png));
    EXPECT_NE(r.status, 0);
    EXPECT_FALSE(fs::exists(png));
}

} // namespace
