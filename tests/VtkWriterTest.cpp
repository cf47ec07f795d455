#include "VtkWriter.h"
#include "Node.h"
#include "ResultReadBack.h"
#include "StubElement.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace testutil;

namespace {

// Strain component c of element n is 10 + c + n/100, stress component 20 + c + n/100.
std::shared_ptr<Element> stub(int n, std::vector<std::shared_ptr<Node>> nodes, const std::string& cellType) {
    return std::make_shared<StubElement>(n, std::move(nodes), cellType, [](int what, int c, int number) {
        return StubElement::format((what == 100 ? 10 : 20) + c + number / 100.0);
    });
}

std::shared_ptr<Node> node(int n, double x, double y, double z) {
    auto p = std::make_shared<Node>();
    p->setNumber(n);
    p->setXPositionOrigin(x);
    p->setYPositionOrigin(y);
    p->setZPositionOrigin(z);
    return p;
}

std::string section(const std::string& label, const std::string& values) {
    return "SCALARS " + label + " FLOAT\nLOOKUP_TABLE default \n" + values + "\t\n";
}

} // namespace

TEST(VtkWriterTest, ThreeNodeModelFileLayout) {
    const auto deck = writeFile(scratchDir("vtk_three") / "job.txt", "");
    std::vector<std::shared_ptr<Node>> nodes = {node(3, 0, 2.25, -1), node(1, 0, 0, 0), node(2, 1.5, 0, 0)};
    std::vector<std::shared_ptr<Element>> elements = {stub(1, {nodes[1], nodes[2], nodes[0]}, "5")};
    VtkWriter writer;
    writer.init(deck);
    writer.initializeWriter(nodes, elements);
    EXPECT_EQ(writer.nextFile(), deck.parent_path() / "Results_job" / "job_0.vtk");
    writer.writeResults(nodes, elements);

    const std::string expected =
        "# vtk DataFile Version 3.0 \nvtk ouput \nASCII \nDATASET UNSTRUCTURED_GRID\n"
        "POINTS 4 float \n0.0 \t 0.0 \t 0.0 \n0\t0\t0\n1.5\t0\t0\n0\t2.25\t-1\n"
        "CELLS 1 4\n3\t1\t2\t3\nCELL_TYPES  1\n5\nCELL_DATA  1\n" +
        section("E11", "10.010000") + section("E22", "11.010000") + section("E33", "12.010000") +
        section("E12", "15.010000") + section("E13", "14.010000") + section("E23", "13.010000") +
        section("S11", "20.010000") + section("S22", "21.010000") + section("S33", "22.010000") +
        section("S12", "25.010000") + section("S13", "24.010000") + section("S23", "23.010000");
    EXPECT_EQ(readFile(deck.parent_path() / "Results_job" / "job_0.vtk"), expected);

    // The next print goes to the next number and sees the nodes' new place.
    nodes[2]->setX_pos(1.75);
    writer.writeResults(nodes, elements);
    EXPECT_EQ(readback::readVtk(deck.parent_path() / "Results_job" / "job_1.vtk").points[2][0], 1.75);
}

TEST(VtkWriterTest, SevenElementsInNumberOrderWithSixValuesPerLine) {
    const auto deck = writeFile(scratchDir("vtk_seven") / "chain.txt", "");
    std::vector<std::shared_ptr<Node>> nodes, byNumber(9);
    for (int n : {8, 3, 1, 5, 2, 7, 4, 6})
        nodes.push_back(byNumber[n] = node(n, n * 0.5, 0, 0));
    std::vector<std::shared_ptr<Element>> elements;
    for (int e : {5, 2, 7, 1, 6, 3, 4})
        elements.push_back(stub(e, {byNumber[e], byNumber[e + 1]}, "3"));
    VtkWriter writer;
    writer.init(deck);
    writer.initializeWriter(nodes, elements);
    writer.writeResults(nodes, elements);

    const auto file = deck.parent_path() / "Results_chain" / "chain_0.vtk";
    const auto lines = readLines(file);
    const auto at = [&](const std::string& text) {
        return std::find(lines.begin(), lines.end(), text) - lines.begin();
    };
    const auto cells = at("CELLS 7 21");
    ASSERT_LT(cells, static_cast<long>(lines.size()));
    for (int e = 1; e <= 7; ++e)
        EXPECT_EQ(lines[cells + e], "2\t" + std::to_string(e) + "\t" + std::to_string(e + 1));
    EXPECT_EQ(lines[at("POINTS 9 float ") + 2], "0.5\t0\t0");
    const auto s12 = at("SCALARS S12 FLOAT");
    EXPECT_EQ(lines[s12 + 2], "25.010000\t25.020000\t25.030000\t25.040000\t25.050000\t25.060000");
    EXPECT_EQ(lines[s12 + 3], "25.070000\t");
    EXPECT_EQ(lines[s12 + 4], "SCALARS S13 FLOAT");

    const auto vtk = readback::readVtk(file);
    EXPECT_EQ(vtk.scalars.size(), 12u);
    for (int e = 0; e < 7; ++e) {
        EXPECT_DOUBLE_EQ(vtk.scalars.at("E23")[e], 13.0 + (e + 1) / 100.0);
        EXPECT_DOUBLE_EQ(vtk.scalars.at("S33")[e], 22.0 + (e + 1) / 100.0);
    }
}

TEST(VtkWriterTest, ExistingResultsAreReplacedAndMissingDeckIsRefused) {
    const auto dir = scratchDir("vtk_again");
    const auto deck = writeFile(dir / "job.txt", "");
    std::vector<std::shared_ptr<Node>> nodes = {node(1, 0, 0, 0), node(2, 1, 0, 0)};
    std::vector<std::shared_ptr<Element>> elements = {stub(1, {nodes[0], nodes[1]}, "3")};
    std::vector<std::string> console;
    for (double x : {1.0, 4.0}) {
        nodes[1]->setX_pos(x);
        testing::internal::CaptureStdout();
        VtkWriter writer;
        writer.init(deck);
        console.push_back(testing::internal::GetCapturedStdout());
        writer.initializeWriter(nodes, elements);
        writer.writeResults(nodes, elements);
    }
    EXPECT_EQ(console,
              (std::vector<std::string>{"", " The results file exists, the results will be replaced\n"}));
    EXPECT_EQ(readback::readVtk(dir / "Results_job" / "job_0.vtk").points[2][0], 4.0);

    VtkWriter missing;
    try {
        missing.init(dir / "nothing.txt");
        FAIL();
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "File does not exist");
    }
    EXPECT_FALSE(std::filesystem::exists(dir / "Results_nothing"));
}

// A file written by a whole run, read with an independent VTK reader.
TEST(VtkWriterTest, IndependentReaderSeesPointsCellsAndTwelveArrays) {
    std::string text = readFile(std::filesystem::path(DRAPEX_ROOT) / "examples" / "rod_bar" / "rod_bar.txt");
    const std::string full = "RUN FROM 0.0 TO 0.0101";
    ASSERT_NE(text.find(full), std::string::npos);
    text.replace(text.find(full), full.size(), "RUN FROM 0.0 TO 0.0021");
    std::filesystem::path deck;
    const RunResult run = runDeck("vtk_reader", text, &deck);
    ASSERT_TRUE(contains(run.out, " Exit Drapex")) << run.err;
    const auto file = deck.parent_path() / "Results_vtk_reader" / "vtk_reader_2.vtk";
    ASSERT_TRUE(std::filesystem::exists(file));

    const auto script = writeFile(deck.parent_path() / "read.py", R"(import sys
try:
    import vtk
except ImportError:
    sys.exit(3)
r = vtk.vtkUnstructuredGridReader()
r.SetFileName(sys.argv[1])
r.ReadAllScalarsOn()
r.Update()
g = r.GetOutput()
print("POINTS", g.GetNumberOfPoints())
for c in range(g.GetNumberOfCells()):
    ids = g.GetCell(c).GetPointIds()
    print("CELL", g.GetCellType(c), *[ids.GetId(k) for k in range(ids.GetNumberOfIds())])
for i in range(g.GetCellData().GetNumberOfArrays()):
    a = g.GetCellData().GetArray(i)
    print("ARRAY", a.GetName(), *[repr(a.GetValue(k)) for k in range(a.GetNumberOfTuples())])
)");
    const RunResult py =
        runCommand(std::string(DRAPEX_SYSTEM_PYTHON) + " '" + script.string() + "' '" + file.string() + "'");
    if (py.status == 3) GTEST_SKIP() << "the vtk Python module cannot be imported";
    ASSERT_EQ(py.status, 0) << py.err;

    const auto own = readback::readVtk(file);
    std::istringstream in(py.out);
    std::string line;
    int points = -1, cellLines = 0;
    std::vector<std::string> names;
    while (std::getline(in, line)) {
        std::istringstream words(line);
        std::string kind;
        words >> kind;
        if (kind == "POINTS") words >> points;
        if (kind == "CELL") {
            int type, a, b;
            words >> type >> a >> b;
            EXPECT_EQ(type, 3);
            EXPECT_EQ(a, cellLines + 1);
            EXPECT_EQ(b, cellLines + 2);
            ++cellLines;
        }
        if (kind == "ARRAY") {
            std::string name;
            words >> name;
            names.push_back(name);
            const auto& expected = own.scalars.at(name);
            std::size_t k = 0;
            for (double v; words >> v; ++k) {
                ASSERT_LT(k, expected.size());
                EXPECT_NEAR(v, expected[k], 1e-6 * std::fabs(expected[k]) + 1e-12) << name << " " << k;
            }
            EXPECT_EQ(k, 10u) << name;
        }
    }
    EXPECT_EQ(points, 12);
    EXPECT_EQ(cellLines, 10);
    EXPECT_EQ(names, (std::vector<std::string>{"E11", "E22", "E33", "E12", "E13", "E23", "S11", "S22", "S33",
                                               "S12", "S13", "S23"}));
}
