// The deck generator (tools/gendeck.py): the decks it writes are read back and
// checked for numbering and geometry, and run end to end.
#include "ResultReadBack.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <set>
#include <sstream>

using namespace testutil;

namespace {

struct DeckMesh {
    std::map<int, std::array<double, 3>> nodes;
    std::map<std::string, std::map<int, std::vector<int>>> elements; // type -> number -> nodes
    std::map<int, std::string> constraintOf;
};

// Reads the NODES and ELEMENTS blocks of a generated deck (one keyword-value
// layout per line, as the generator writes it).
DeckMesh readDeck(const fs::path& deck) {
    static const std::set<std::string> headers = {"TITLE",     "CONTROLS", "ELEMENTS",
                                                  "NODES",     "LOADS",    "CONSTRAINTS",
                                                  "MATERIALS", "TRACKERS", "AMPLITUDES"};
    DeckMesh mesh;
    std::string block, type;
    for (const auto& line : readLines(deck)) {
        std::istringstream in(line);
        std::vector<std::string> words;
        for (std::string w; in >> w;)
            words.push_back(w);
        if (words.empty()) continue;
        if (headers.count(words[0])) {
            block = words[0];
            type = words.size() > 2 ? words[2] : "";
            continue;
        }
        if (block == "NODES") {
            std::array<double, 3> x{0, 0, 0};
            const int n = std::stoi(words[0]);
            for (std::size_t i = 1; i + 1 < words.size(); i += 2) {
                if (words[i] == "X") x[0] = std::stod(words[i + 1]);
                if (words[i] == "Y") x[1] = std::stod(words[i + 1]);
                if (words[i] == "Z") x[2] = std::stod(words[i + 1]);
                if (words[i] == "CONSTRAINT") mesh.constraintOf[n] = words[i + 1];
            }
            mesh.nodes[n] = x;
        } else if (block == "ELEMENTS") {
            std::vector<int> ids;
            for (std::size_t i = 2; i < words.size() && std::isdigit(static_cast<unsigned char>(words[i][0]));
                 ++i)
                ids.push_back(std::stoi(words[i]));
            mesh.elements[type][std::stoi(words[0])] = ids;
        }
    }
    return mesh;
}

RunResult generate(const fs::path& deck, const std::string& options) {
    return runCommand(std::string(DRAPEX_SYSTEM_PYTHON) + " '" + DRAPEX_ROOT + "/tools/gendeck.py' " +
                      options + " -o '" + deck.string() + "'");
}

// z component of (x2 - x1) x (x3 - x1) / 2.
double signedArea(const DeckMesh& m, const std::vector<int>& t) {
    const auto &a = m.nodes.at(t[0]), &b = m.nodes.at(t[1]), &c = m.nodes.at(t[2]);
    return 0.5 * ((b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]));
}

void expectNumberedWithoutGaps(const DeckMesh& m) {
    int expected = 1;
    for (const auto& [n, x] : m.nodes)
        EXPECT_EQ(n, expected++);
    std::set<int> numbers;
    for (const auto& [type, list] : m.elements)
        for (const auto& [n, ids] : list) {
            EXPECT_TRUE(numbers.insert(n).second) << "element " << n << " twice";
            for (int id : ids)
                EXPECT_TRUE(m.nodes.count(id)) << "element " << n << " names node " << id;
        }
    expected = 1;
    for (int n : numbers)
        EXPECT_EQ(n, expected++);
}

} // namespace

TEST(GenDeck, RectanglePatternsTileTheSheetWithUpwardTriangles) {
    const fs::path dir = scratchDir("gendeck_patterns");
    for (const std::string pattern : {"right", "left", "alternate"}) {
        const fs::path deck = dir / (pattern + ".txt");
        const auto r = generate(deck, "--size 3 2 --div 3 4 --origin 1 -1 0.5 --pattern " + pattern);
        ASSERT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(r.out, deck.string() + ": 20 nodes, 24 elements\n");
        const DeckMesh m = readDeck(deck);
        expectNumberedWithoutGaps(m);
        ASSERT_EQ(m.elements.at("MEMBRANE_3").size(), 24u);
        double total = 0.0;
        for (const auto& [n, ids] : m.elements.at("MEMBRANE_3")) {
            const double a = signedArea(m, ids);
            EXPECT_NEAR(a, 0.25, 1e-12) << pattern << " element " << n;
            total += a;
        }
        EXPECT_NEAR(total, 6.0, 1e-12);
        EXPECT_EQ(m.nodes.at(20), (std::array<double, 3>{4.0, 1.0, 0.5}));
    }
}

TEST(GenDeck, DiscRingsAreInscribedAndOrientedUpwards) {
    const fs::path deck = scratchDir("gendeck_disc") / "disc.txt";
    const int rings = 5;
    const double radius = 2.0;
    ASSERT_EQ(generate(deck, "--mesh disc --radius 2 --rings 5 --clamp rim").status, 0);
    const DeckMesh m = readDeck(deck);
    expectNumberedWithoutGaps(m);
    EXPECT_EQ(m.nodes.size(), 1u + 3u * rings * (rings + 1));
    const auto& tris = m.elements.at("MEMBRANE_3");
    EXPECT_EQ(tris.size(), 6u * rings * rings);
    double total = 0.0;
    for (const auto& [n, ids] : tris) {
        const double a = signedArea(m, ids);
        EXPECT_GT(a, 0.0) << "element " << n;
        total += a;
    }
    // The outer ring is a regular polygon of 6 rings sides inscribed in the circle.
    const int sides = 6 * rings;
    EXPECT_NEAR(total, 0.5 * sides * radius * radius * std::sin(2 * M_PI / sides), 1e-7);
    int onRim = 0;
    for (const auto& [n, c] : m.constraintOf) {
        const auto& x = m.nodes.at(n);
        EXPECT_EQ(c, "CLAMP");
        EXPECT_NEAR(std::hypot(x[0], x[1]), radius, 1e-9);
        ++onRim;
    }
    EXPECT_EQ(onRim, sides);
}

TEST(GenDeck, ToolSurfaceContinuesTheNumberingBelowTheSheet) {
    const fs::path deck = scratchDir("gendeck_tool") / "tool.txt";
    const auto r = generate(deck, "--size 4 2 --div 4 2 --contact BASIC --clamp left --pull right 1 - 0 "
                                  "--tool disc --tool-rings 2 --tool-offset 0.5 --tool-velocity 2");
    ASSERT_EQ(r.status, 0) << r.err;
    const DeckMesh m = readDeck(deck);
    expectNumberedWithoutGaps(m);
    ASSERT_EQ(m.nodes.size(), 15u + 19u);
    const auto& tool = m.elements.at("CONTACT_TRIANGLE");
    ASSERT_EQ(tool.size(), 24u);
    EXPECT_EQ(tool.begin()->first, 17);
    for (const auto& [n, ids] : tool) {
        EXPECT_GT(signedArea(m, ids), 0.0);
        for (int id : ids) {
            EXPECT_GT(id, 15);
            EXPECT_DOUBLE_EQ(m.nodes.at(id)[2], -0.5);
            EXPECT_EQ(m.constraintOf.at(id), "TOOL");
        }
    }
    // Tool centred under the sheet.
    EXPECT_EQ(m.nodes.at(16), (std::array<double, 3>{2.0, 1.0, -0.5}));
    // Corners of a clamped edge stay clamped; the pulled edge keeps the rest.
    EXPECT_EQ(m.constraintOf.at(1), "CLAMP");
    EXPECT_EQ(m.constraintOf.at(5), "PULL1");
    EXPECT_EQ(m.constraintOf.count(3), 0u);
    const std::string text = readFile(deck);
    EXPECT_TRUE(contains(text, "\nPULL1 VX 1 VZ 0 AMPLITUDE RAMP\n"));
    EXPECT_TRUE(contains(text, "\nTOOL VX 0 VY 0 VZ 2 AMPLITUDE RAMP\n"));
    EXPECT_TRUE(contains(text, "\n1 NODES 1 2 7 MATERIAL SHEET T 1 CONTACT BASIC\n"));
}

TEST(GenDeck, DomeToolIsASphericalCapWithATrackerOnAllItsNodes) {
    const fs::path deck = scratchDir("gendeck_dome") / "dome.txt";
    const auto r =
        generate(deck, "--size 4 4 --div 2 2 --tool disc --tool-radius 3 --tool-rings 3 --tool-cap 1 "
                       "--tool-offset 2 --tool-tracker PUNCH CONTACTFORCE Z");
    ASSERT_EQ(r.status, 0) << r.err;
    const DeckMesh m = readDeck(deck);
    ASSERT_EQ(m.nodes.size(), 9u + 37u);
    // Cap of height 1 on a rim of radius 3: sphere radius (9 + 1) / 2 = 5,
    // centre 4 below the top; the rim stays in the tool's plane z = -2.
    const double top = -1.0, sphere = 5.0;
    EXPECT_NEAR(m.nodes.at(10)[2], top, 1e-9);
    for (int n = 10; n <= 46; ++n) {
        const auto& x = m.nodes.at(n);
        EXPECT_NEAR(std::hypot(x[0] - 2, x[1] - 2, x[2] - (top - sphere)), sphere, 1e-8) << n;
    }
    EXPECT_NEAR(m.nodes.at(46)[2], -2.0, 1e-9);
    for (const auto& [n, ids] : m.elements.at("CONTACT_TRIANGLE"))
        EXPECT_GT(signedArea(m, ids), 0.0) << n;
    std::string numbers;
    for (int n = 10; n <= 46; ++n)
        numbers += " " + std::to_string(n);
    EXPECT_TRUE(contains(readFile(deck), "\nPUNCH NODES" + numbers + " DIRECTION Z TYPE CONTACTFORCE\n"));
    EXPECT_EQ(generate(deck, "--tool rect --tool-cap 1").status, 2);
}

TEST(GenDeck, RejectsAnUnknownNodeSet) {
    const fs::path deck = scratchDir("gendeck_bad") / "bad.txt";
    const auto r = generate(deck, "--mesh disc --clamp left");
    EXPECT_EQ(r.status, 2);
    EXPECT_TRUE(contains(r.err, "unknown node set left for a disc mesh (known: rim, center, all)")) << r.err;
    EXPECT_FALSE(fs::exists(deck));
}

TEST(GenDeck, GeneratedMembraneDeckRunsEndToEnd) {
    const fs::path dir = scratchDir("gendeck_membrane_run");
    const fs::path deck = dir / "bulge.txt";
    ASSERT_EQ(generate(deck, "--mesh disc --radius 10 --rings 3 --material ogden --rho 1e-9 --thickness 0.5 "
                             "--clamp rim --pressure 0.01 --end 1e-4 --print 5e-5")
                  .status,
              0);
    const auto r = runDrapex(deck);
    ASSERT_TRUE(contains(r.out, "Solving took")) << r.out << r.err;
    const auto prints = readback::logValues(dir / "bulge.md", "Current time: ").size();
    ASSERT_GE(prints, 2u);
    const auto vtk =
        readback::readVtk(dir / "Results_bulge" / ("bulge_" + std::to_string(prints - 1) + ".vtk"));
    // 1 + 3 + 6 + 9 ... : 37 nodes, 54 triangles, and the dummy point 0.
    ASSERT_EQ(vtk.points.size(), 38u);
    ASSERT_EQ(vtk.cells.size(), 54u);
    EXPECT_EQ(vtk.cells[0], (std::vector<int>{2, 3, 1}));
    for (int type : vtk.cellTypes)
        EXPECT_EQ(type, 5);
    // Rim clamped, pole pushed up by the pressure.
    for (int n = 20; n <= 37; ++n)
        EXPECT_EQ(vtk.points[n][2], 0.0);
    EXPECT_GT(vtk.points[1][2], 0.0);
    EXPECT_EQ(vtk.scalars.at("S12"), std::vector<double>(54, 0.0));
}

TEST(GenDeck, GeneratedContactSurfaceRunsEndToEnd) {
    const fs::path dir = scratchDir("gendeck_run");
    const fs::path deck = dir / "surface.txt";
    ASSERT_EQ(generate(deck, "--size 3 2 --div 3 2 --element CONTACT_TRIANGLE --material none "
                             "--tool disc --tool-rings 2 --step 0.001 --end 0.002 --print 0.001")
                  .status,
              0);
    const auto r = runDrapex(deck);
    ASSERT_TRUE(contains(r.out, " Exit Drapex")) << r.out << r.err;
    const std::string text = readFile(dir / "Results_surface" / "surface_0.vtk");
    EXPECT_TRUE(contains(text, "\nPOINTS 32 float \n"));
    EXPECT_TRUE(contains(text, "\nCELLS 36 144\n"));
    EXPECT_TRUE(contains(text, "\nCELL_TYPES  36\n"));
    const auto vtk = readback::readVtk(dir / "Results_surface" / "surface_0.vtk");
    ASSERT_EQ(vtk.cells.size(), 36u);
    EXPECT_EQ(vtk.cells[0], (std::vector<int>{1, 2, 6}));
    EXPECT_EQ(vtk.cells[12], (std::vector<int>{14, 15, 13}));
}

TEST(GenDeck, SheetDroppedOnAToolComesToRestOnIt) {
    // A 9 x 9 textile sheet falls 1 mm under gravity onto a fixed SOLID tool
    // and settles (damping): the tool carries the sheet's weight, rho A g,
    // and every node sinks into it by its own weight over FACTOR.
    const fs::path dir = scratchDir("gendeck_drop");
    const fs::path deck = dir / "drop.txt";
    ASSERT_EQ(generate(deck, "--size 9 9 --div 3 3 --material textile --rho 1e-6 --kwarp 10 --kweft 10 "
                             "--damping 300 --gravity -9810 --tool rect --tool-size 12 10 --tool-div 1 1 "
                             "--tool-offset 1 --tool-factor 1 --end 0.1 --print 0.01 "
                             "--node-tracker SUPPORT all CONTACTFORCE Z")
                  .status,
              0);
    const auto r = runDrapex(deck);
    ASSERT_TRUE(contains(r.out, "Solving took")) << r.err;
    std::stringstream last(readLines(dir / "SUPPORT.csv").back());
    std::vector<double> values;
    for (std::string cell; std::getline(last, cell, ',');)
        values.push_back(std::stod(cell));
    ASSERT_EQ(values.size(), 1u + 16u + 1u);
    const double weight = 1e-6 * 81.0 * 9810.0;
    EXPECT_NEAR(values.back(), weight, 0.01 * weight);
    // Node 6 (interior, six triangles of area 4.5): depth m g / FACTOR.
    const auto prints = readback::logValues(dir / "drop.md", "Current time: ").size();
    const auto vtk =
        readback::readVtk(dir / "Results_drop" / ("drop_" + std::to_string(prints - 1) + ".vtk"));
    EXPECT_NEAR(vtk.points[6][2], -1.0 - 1e-6 * 9.0 * 9810.0 / 1.0, 1e-3);
}
