// What the result files add to the twelve cell arrays, read back from whole
// runs: the yarn directions of fabric cells, the displacement, velocity and
// contact force of every point, the series file after a shorter rerun (its
// layout is a block of docs/outputs.md); and the two options that run
// nothing (--help, --version).
#include "ResultReadBack.h"
#include "TestUtil.h"
#include "Version.h"

#include <gtest/gtest.h>

#include <cmath>
#include <regex>

using namespace testutil;

namespace {

// A unit square of fabric in the global y-z plane, its yarns along y and z,
// sheared homogeneously: every node moves at v = (a z, b y) in (y, z), so
// F = [[1, a t], [b t, 1]] in (y, z) at time t and the yarns point along
// (1, b t) and (a t, 1) (F, not its transpose, turns them: a differs from b).
// (Cells without yarns write zero vectors: bar_2.vtk in docs/outputs.md.)
const double rateA = 0.4, rateB = 0.2, shearStep = 0.001;
const std::string shearDeck = R"(TITLE
** Fabric square in the y-z plane under homogeneous shear
CONTROLS
RUN FROM 0 TO 0.5005
STEP 0.001
PRINT EVERY 0.25
CONSTRAINTS TYPE BOUNDARY_CONDITION
BASE VX 0 VY 0 VZ 0
ALONGZ VX 0 VY 0 VZ 0.2
CORNER VX 0 VY 0.4 VZ 0.2
ALONGY VX 0 VY 0.4 VZ 0
MATERIALS TYPE HYPERTEXTILE
FABRIC RHO 0.3 KELONGWARP 1000 KELONGWEFT 1000 KSHEAR 1 WARPORI 0 1 0 WEFTORI 0 0 1
NODES
1 X 0 Y 0 Z 0 CONSTRAINT BASE
2 X 0 Y 1 Z 0 CONSTRAINT ALONGZ
3 X 0 Y 1 Z 1 CONSTRAINT CORNER
4 X 0 Y 0 Z 1 CONSTRAINT ALONGY
ELEMENTS TYPE MEMBRANE_3
1 NODES 1 2 3 MATERIAL FABRIC T 1
2 NODES 1 3 4 MATERIAL FABRIC T 1
)";

} // namespace

TEST(ResultFields, ShearedFabricWritesClosedFormYarnsAndNodeMotionListedInTheSeries) {
    fs::path deck;
    const RunResult run = runDeck("fields_shear", shearDeck, &deck);
    ASSERT_EQ(run.err, "");
    const fs::path folder = deck.parent_path() / "Results_fields_shear";
    // The print times with all their digits (the energy history's first
    // column); the series file that lists them is a block of docs/outputs.md.
    const auto energyRows = readback::csvRows(deck.parent_path() / "fields_shear_energy.csv");
    ASSERT_EQ(energyRows.size(), 3u);
    EXPECT_NEAR(energyRows.back()[0], 0.5, shearStep);

    const double origin[5][3] = {{0, 0, 0}, {0, 0, 0}, {0, 1, 0}, {0, 1, 1}, {0, 0, 1}};
    for (std::size_t k = 0; k < energyRows.size(); ++k) {
        SCOPED_TRACE("print " + std::to_string(k));
        const auto r = readback::readVtk(readback::resultFile(deck, k));
        const double t = energyRows[k][0];
        // Cells hold the state the step of the print started from (time t).
        const double sa = rateA * t, sb = rateB * t;
        const double na = std::sqrt(1.0 + sb * sb), nb = std::sqrt(1.0 + sa * sa);
        const std::array<double, 3> warp = {0.0, 1.0 / na, sb / na}, weft = {0.0, sa / nb, 1.0 / nb};
        const double cosine = warp[1] * weft[1] + warp[2] * weft[2];
        const double shearAngle = 90.0 - std::acos(cosine) * 180.0 / M_PI;
        ASSERT_EQ(r.cellVectors.at("WARP").size(), 2u);
        for (int c = 0; c < 2; ++c) {
            for (int i = 0; i < 3; ++i) {
                EXPECT_NEAR(r.cellVectors.at("WARP")[c][i], warp[i], 1e-9) << c;
                EXPECT_NEAR(r.cellVectors.at("WEFT")[c][i], weft[i], 1e-9) << c;
            }
            // The yarns drawn are those of the shear angle E23 (whose degrees
            // use 3.1416 for pi).
            EXPECT_NEAR(r.scalars.at("E23")[c], shearAngle * M_PI / 3.1416, 2e-6);
        }
        // Points hold the state after that step: the displacement of a
        // node moving at v is v (t + dt), and point k is node k.
        ASSERT_EQ(r.pointVectors.at("DISPLACEMENT").size(), 5u);
        for (int p = 0; p < 5; ++p) {
            const double v[3] = {0.0, rateA * origin[p][2], rateB * origin[p][1]};
            for (int i = 0; i < 3; ++i) {
                EXPECT_NEAR(r.pointVectors.at("DISPLACEMENT")[p][i], v[i] * (t + shearStep), 1e-9) << p;
                EXPECT_NEAR(r.points[p][i] - r.pointVectors.at("DISPLACEMENT")[p][i], origin[p][i], 1e-5)
                    << p;
                EXPECT_EQ(r.pointVectors.at("VELOCITY")[p][i], v[i]) << p;
                EXPECT_EQ(r.pointVectors.at("CONTACT_FORCE")[p][i], 0.0) << p;
            }
        }
    }

    // A shorter rerun in the same folder leaves the last file of the first
    // run there, and a series of its own two files only.
    writeFile(deck, std::regex_replace(shearDeck, std::regex("TO 0.5005"), "TO 0.2505"));
    ASSERT_EQ(runDrapex(deck).err, "");
    const std::string rerun = readFile(folder / "fields_shear.vtk.series");
    EXPECT_TRUE(contains(rerun, "\"fields_shear_1.vtk\"")) << rerun;
    EXPECT_FALSE(contains(rerun, "fields_shear_2.vtk")) << rerun;
    EXPECT_TRUE(fs::exists(folder / "fields_shear_2.vtk"));
    EXPECT_FALSE(fs::exists(folder / "fields_shear.vtk.series.tmp"));
}

TEST(ResultFields, HelpAndVersionPrintAndRunNothingWhileOtherArgumentsStayDeckNames) {
    const fs::path dir = scratchDir("fields_options");
    const std::string cd = "cd '" + dir.string() + "' && '" + DRAPEX_EXE + "' ";

    const RunResult help = runCommand(cd + "--help");
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.err, "");
    EXPECT_EQ(help.out.rfind("Usage: drapex DECK.txt [--restart]\n", 0), 0u) << help.out;
    for (const char* mention :
         {"Results_job/job_N.vtk", "job.vtk.series", "docs/outputs.md", "--version", "--restart"})
        EXPECT_TRUE(contains(help.out, mention)) << mention;

    const RunResult version = runCommand(cd + "--version");
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.err, "");
    EXPECT_EQ(version.out, "Drapex v" + std::to_string(version_major_drapex_) + "." +
                               std::to_string(version_minor_drapex_) + "." +
                               std::to_string(version_patch_drapex_) + " (" + build_type_ + " build)\n");
    EXPECT_TRUE(fs::is_empty(dir));

    // Only the exact words are options: anything else is a deck's name.
    const RunResult other = runCommand(cd + "--HELP");
    EXPECT_EQ(other.status, 0);
    EXPECT_TRUE(contains(other.out, " Version v")) << other.out;
    EXPECT_EQ(other.err, "  File : --HELP does not exist\n");
}
