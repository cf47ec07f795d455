// The membrane examples run end to end (shortened where they are long); their
// result and tracker files are read back and compared with the kinematics
// and equilibrium they must obey.
#include "ResultReadBack.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <sstream>

using namespace testutil;

namespace {

const double pi = 3.14159265358979323846;

// Runs a copy of an example deck in a scratch directory, its end time
// replaced by `end` when given, and returns the deck path.
fs::path runExample(const std::string& name, const std::string& end = "") {
    std::string text = readFile(fs::path(DRAPEX_ROOT) / "examples" / name / (name + ".txt"));
    EXPECT_FALSE(text.empty());
    if (!end.empty()) {
        const auto from = text.find("RUN FROM 0 TO ");
        const auto eol = text.find('\n', from);
        text.replace(from, eol - from, "RUN FROM 0 TO " + end);
    }
    fs::path deck;
    const RunResult run = runDeck(name, text, &deck);
    EXPECT_TRUE(contains(run.out, "Solving took")) << run.err;
    EXPECT_EQ(run.err, "");
    return deck;
}

fs::path lastResult(const fs::path& deck, double* time = nullptr) {
    const std::string stem = deck.stem().string();
    const auto times = readback::logValues(deck.parent_path() / (stem + ".md"), "Current time: ");
    EXPECT_FALSE(times.empty());
    if (time) *time = times.back();
    return deck.parent_path() / ("Results_" + stem) /
           (stem + "_" + std::to_string(times.size() - 1) + ".vtk");
}

// Last row of a tracker file: the values after the time, the total last.
std::vector<double> lastRow(const fs::path& csv) {
    const auto lines = readLines(csv);
    std::vector<double> values;
    std::stringstream row(lines.back());
    std::string cell;
    std::getline(row, cell, ',');
    while (std::getline(row, cell, ','))
        values.push_back(std::stod(cell));
    return values;
}

// Centroid of a cell from a list of points.
std::array<double, 2> centroid(const readback::VtkResult& r, const std::vector<int>& c) {
    double x = 0, y = 0;
    for (int n : c) {
        x += r.points[n][0] / c.size();
        y += r.points[n][1] / c.size();
    }
    return {x, y};
}

} // namespace

TEST(MembraneExamples, PictureFrameShearsTheFabricAsTheFrameKinematicsDictate) {
    double t = 0;
    const fs::path deck = runExample("picture_frame", "0.8");
    const auto vtk = readback::readVtk(lastResult(deck, &t));
    ASSERT_EQ(vtk.points.size(), 358u);
    ASSERT_EQ(vtk.cells.size(), 772u);

    // Pinned corner fixed; the pulled corner has moved along the diagonal by
    // the time integral of 20 mm/s under a 0.3 s ramp.
    EXPECT_EQ(vtk.points[1], (std::array<double, 3>{0.0, 0.0, 0.0}));
    const double pulled = (vtk.points[289][0] - 100.0) * std::sqrt(2.0);
    EXPECT_NEAR(pulled, 20.0 * (t - 0.15), 0.01);
    EXPECT_NEAR(vtk.points[289][0], vtk.points[289][1], 1e-4);

    // Rigid hinged frame of side L: diagonal d = 2 L cos(theta / 2), shear
    // angle gamma = 90 deg - theta; corner (L, 0) at L (cos, sin)(gamma / 2).
    const double L = 100.0, d = std::sqrt(2.0) * L + pulled;
    const double gamma = pi / 2 - 2.0 * std::acos(d / (2.0 * L));
    EXPECT_NEAR(vtk.points[17][0], L * std::cos(gamma / 2), 0.02);
    EXPECT_NEAR(vtk.points[17][1], L * std::sin(gamma / 2), 0.02);
    EXPECT_NEAR(vtk.points[273][0], L * std::sin(gamma / 2), 0.02);
    const double degrees = gamma * 180.0 / pi;
    for (std::size_t e = 0; e < 512; ++e) {
        ASSERT_EQ(vtk.cellTypes[e], 5);
        EXPECT_NEAR(vtk.scalars.at("E23")[e], degrees, 0.1) << "element " << e + 1;
        // Yarns along the frame bars keep their length.
        EXPECT_LT(std::fabs(vtk.scalars.at("E11")[e]), 2e-3);
        EXPECT_LT(std::fabs(vtk.scalars.at("E22")[e]), 2e-3);
        EXPECT_EQ(vtk.points[vtk.cells[e][0]][2], 0.0);
    }
    for (std::size_t e = 512; e < 772; ++e)
        EXPECT_EQ(vtk.cellTypes[e], 3);

    // The shear tracker holds the same angle twice; the corner is pulled back.
    const auto shear = lastRow(deck.parent_path() / "SHEAR.csv");
    ASSERT_EQ(shear.size(), 3u);
    EXPECT_NEAR(shear[2], 2.0 * degrees, 0.2);
    EXPECT_LT(lastRow(deck.parent_path() / "PULLX.csv").back(), 0.0);
}

TEST(MembraneExamples, BiasExtensionForms3ZonesAndBalancesTheEdgeForces) {
    const fs::path deck = runExample("bias_extension", "0.6");
    const auto vtk = readback::readVtk(lastResult(deck));
    // The first file still holds the reference positions: the pull starts
    // from rest.
    const auto start =
        readback::readVtk(deck.parent_path() / "Results_bias_extension" / "bias_extension_0.vtk");
    ASSERT_EQ(vtk.points.size(), 562u);
    ASSERT_EQ(vtk.cells.size(), 1024u);
    const auto& gamma = vtk.scalars.at("E23");

    // The mesh, the yarns and the loading are symmetric about the strip's
    // long axis; the shear field is too.
    std::map<std::pair<long, long>, double> byCentroid;
    for (std::size_t e = 0; e < vtk.cells.size(); ++e) {
        const auto c = centroid(start, vtk.cells[e]);
        byCentroid[{std::lround(c[0] * 1000), std::lround(c[1] * 1000)}] = gamma[e];
    }
    double centre = 0, nearClamp = 0;
    int centreCount = 0, clampCount = 0;
    for (const auto& [key, g] : byCentroid) {
        const auto mirror = byCentroid.find({100000 - key.first, key.second});
        ASSERT_NE(mirror, byCentroid.end());
        EXPECT_NEAR(g, mirror->second, 1e-3);
        const double x = key.first / 1000.0, y = key.second / 1000.0;
        if (std::fabs(x - 50) < 10 && std::fabs(y - 100) < 10) centre += g, ++centreCount;
        if ((y < 5 || y > 195) && std::fabs(x - 50) < 30) nearClamp += std::fabs(g), ++clampCount;
    }
    centre /= centreCount;
    nearClamp /= clampCount;
    // Central zone: close to the pure trellising of inextensible yarns,
    // gamma = 90 deg - 2 acos((L - W + u) / (sqrt 2 (L - W))), a little below
    // it because the yarns stretch; no shear along the clamped edges.
    const double u = vtk.points[561][1] - 200.0;
    const double ideal = 90.0 - 2.0 * std::acos((100.0 + u) / (std::sqrt(2.0) * 100.0)) * 180.0 / pi;
    EXPECT_GT(u, 5.0);
    EXPECT_LT(centre, ideal);
    EXPECT_GT(centre, 0.8 * ideal);
    EXPECT_LT(nearClamp, 0.05 * centre);
    // The strip necks at mid-height.
    EXPECT_LT(vtk.points[289][0] - vtk.points[273][0], 96.0);

    // Quasi-static: the pulled edge and the clamped edge carry equal and
    // opposite forces.
    const double pull = lastRow(deck.parent_path() / "PULL.csv").back();
    const double clamp = lastRow(deck.parent_path() / "CLAMP.csv").back();
    EXPECT_LT(pull, 0.0);
    EXPECT_NEAR(pull + clamp, 0.0, 0.03 * clamp);
}

TEST(MembraneExamples, InflatedOgdenDiscObeysLaplaceLawAtThePole) {
    double t = 0;
    const fs::path deck = runExample("ogden_inflation", "0.06");
    const auto vtk = readback::readVtk(lastResult(deck, &t));
    ASSERT_EQ(vtk.points.size(), 470u);
    ASSERT_EQ(vtk.cells.size(), 864u);
    const double p = 0.01 * t / 0.1;

    // Pole curvature from the sphere through the pole and ring 3 (18 nodes
    // from node 20 on, radius 12.5 in the reference).
    const double z0 = vtk.points[1][2];
    double r = 0, dz = 0;
    for (int n = 20; n < 38; ++n) {
        r += std::hypot(vtk.points[n][0], vtk.points[n][1]) / 18;
        dz += (z0 - vtk.points[n][2]) / 18;
    }
    const double radius = (r * r + dz * dz) / (2 * dz);
    EXPECT_GT(z0, 15.0);

    // The six pole triangles are in equibiaxial tension: Ogden stretches in
    // E11, E22, lambda3 = 1/(lambda1 lambda2) in E33 (the thickness ratio).
    const double mu[3] = {0.63, 0.0012, -0.01}, alpha[3] = {1.3, 5.0, -2.0};
    for (int e = 0; e < 6; ++e) {
        const double l1 = vtk.scalars.at("E11")[e], l2 = vtk.scalars.at("E22")[e],
                     l3 = vtk.scalars.at("E33")[e];
        EXPECT_NEAR(l1, l2, 2e-3);
        EXPECT_NEAR(l3, 1.0 / (l1 * l2), 2e-6);
        // Principal Cauchy stresses sigma_a = sum mu_i (lambda_a^alpha_i -
        // lambda3^alpha_i); their mean is the mean of S11 and S22.
        double mean = 0;
        for (int i = 0; i < 3; ++i)
            mean +=
                mu[i] * (0.5 * (std::pow(l1, alpha[i]) + std::pow(l2, alpha[i])) - std::pow(l3, alpha[i]));
        const double sigma = 0.5 * (vtk.scalars.at("S11")[e] + vtk.scalars.at("S22")[e]);
        EXPECT_NEAR(sigma, mean, 1e-3 * mean);
        // Laplace: p = 2 sigma t / R with the current thickness t = lambda3 t0.
        EXPECT_NEAR(2.0 * sigma * l3 * 1.0 / radius, p, 0.01 * p);
    }

    // The rim carries the pressure: its forces sum to p times the area of the
    // 72-sided polygon the disc is meshed as.
    const double area = 0.5 * 72 * 50.0 * 50.0 * std::sin(2 * pi / 72);
    EXPECT_NEAR(lastRow(deck.parent_path() / "RIM.csv").back(), p * area, 0.01 * p * area);
    EXPECT_NEAR(lastRow(deck.parent_path() / "POLE.csv").back(), z0, 1e-3);
}
