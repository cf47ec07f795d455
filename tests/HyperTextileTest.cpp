#include "HyperTextile.h"
#include "Element.h"
#include "MaterialLibrary.h"
#include "MaterialTestUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using mattest::Frame;
using mattest::mat2;
using mattest::Result;
using mattest::stressOf;
using mattest::tokens;

namespace {

std::shared_ptr<HyperTextile> parsed(const std::string& params, std::string name = "TWILL") {
    auto m = std::make_shared<HyperTextile>();
    m->setName(name);
    m->parseOstrel(tokens(params));
    return m;
}

std::shared_ptr<HyperTextile> fabric(const std::string& params, const Frame& basis = Frame()) {
    auto m = parsed(params);
    m->setInitialConditions(basis.e);
    return m;
}

const char* const orthogonal = "RHO 1E-9 WARPORI 1 0 0 WEFTORI 0 1 0 ";

} // namespace

TEST(HyperTextileParse, StoresListsAndOrientations) {
    auto m = parsed("RHO 2E-9 DAMPING 0.1 KSHEAR 0.5 0.25 KELONGWARP 100 KELONGWEFT 80 KELONGWARP 7 "
                    "WARPORI 1 2 3 WEFTORI -1 0 0.5");
    EXPECT_EQ(m->getType(), "HYPERTEXTILE");
    EXPECT_DOUBLE_EQ(m->getDensity(), 2e-9);
    EXPECT_DOUBLE_EQ(m->getAlpha(), 0.1);
    EXPECT_EQ(m->getKShear(), (std::vector<double>{0.5, 0.25}));
    EXPECT_EQ(m->getKElongWarp(), (std::vector<double>{100.0, 7.0}));
    EXPECT_EQ(m->getKElongWeft(), std::vector<double>{80.0});
    EXPECT_EQ(m->getWarpOrientation()[2], 3.0);
    EXPECT_EQ(m->getWeftOrientation()[0], -1.0);
    EXPECT_EQ(m->getWeftOrientation()[2], 0.5);
}

TEST(HyperTextileParse, RejectsMalformedPhrasesWithTheirMessages) {
    auto parse = [](const std::string& text) {
        return mattest::invalidArgumentOf([&] { parsed(text, "SATIN"); });
    };
    const std::string orientation = "Not enough parameters for warp orientation in material : SATIN";
    EXPECT_EQ(parse("RHO 1 KTENSION 3"), "Input KTENSION is not recognized");
    EXPECT_EQ(parse("RHO HEAVY"), "Input RHO is not recognized");
    EXPECT_EQ(parse("KSHEAR RHO 1"), "Input KSHEAR is not recognized");
    EXPECT_EQ(parse("KELONGWARP KELONGWEFT 1"), "Input KELONGWARP is not recognized");
    EXPECT_EQ(parse("KELONGWEFT RHO 1"), "Input KELONGWEFT is not recognized");
    EXPECT_EQ(parse("WARPORI 1 X 0"), orientation);
    // The weft keyword reports the warp text.
    EXPECT_EQ(parse("WEFTORI 1 2 KSHEAR 3"), orientation);
    EXPECT_EQ(parse("WEFTORI 1 2"), orientation);
    EXPECT_EQ(parse("WARPORI RHO 1"), orientation);
    EXPECT_THROW(parsed("KSHEAR 1 RHO"), std::out_of_range);
}

TEST(HyperTextileInit, ValidatesInOrderWithTheMaterialName) {
    const Frame basis;
    auto init = [&](const std::string& text, bool named) {
        return mattest::invalidArgumentOf([&] {
            HyperTextile m;
            std::string name = "PLAIN";
            if (named) m.setName(name);
            m.parseOstrel(tokens(text));
            m.setInitialConditions(basis.e);
        });
    };
    const std::string full = "WARPORI 1 0 0 WEFTORI 0 1 0 KSHEAR 1 KELONGWARP 2 KELONGWEFT 3";
    EXPECT_EQ(init("RHO 1 " + full, false), "Name is not set for this material ");
    EXPECT_EQ(init(full, true), "Density is not set for material: PLAIN");
    EXPECT_EQ(init("RHO 1 WARPORI 1 0 0 WEFTORI 0 1 0 KELONGWARP 2", true),
              "Not enough material parameters for material PLAIN");
    EXPECT_EQ(init("RHO 1 WARPORI 1 0 0 WEFTORI 0 1 0 KSHEAR 1 KELONGWEFT 3", true),
              "Not enough material parameters for material PLAIN");
    // An empty weft list is not checked here...
    EXPECT_EQ(init("RHO 1 WARPORI 1 0 0 WEFTORI 0 1 0 KSHEAR 1 KELONGWARP 2", true), "<no exception>");
    EXPECT_EQ(init("RHO 1 " + full, true), "<no exception>");
}

TEST(HyperTextileInit, EmptyWeftListFailsOnlyAtTheWaveSpeed) {
    auto m = fabric(std::string(orthogonal) + "KSHEAR 1 KELONGWARP 2");
    EXPECT_THROW(m->wavespeed2D(), std::out_of_range);
}

TEST(HyperTextileInit, ProjectsYarnsOntoTheElementPlane) {
    // Element plane spanned by e1 = global y and e2 = global z (normal along x).
    const Frame basis{{{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}};
    auto m = fabric(std::string("RHO 1 KSHEAR 1 KELONGWARP 2 KELONGWEFT 2 ") + "WARPORI 7 3 4 WEFTORI 5 0 -2",
                    basis);
    // a = (3, 4) / 5, b = (0, -1)
    const double a[2] = {0.6, 0.8}, b[2] = {0.0, -1.0};
    for (int i = 0; i < 2; ++i)
        for (int j = 0; j < 2; ++j) {
            EXPECT_NEAR(m->getWarpTensor()[i][j], a[i] * a[j], 1e-15);
            EXPECT_NEAR(m->getWeftTensor()[i][j], b[i] * b[j], 1e-15);
            EXPECT_NEAR(m->getWarpWeftTensor()[i][j], a[i] * b[j], 1e-15);
            EXPECT_NEAR(m->getWeftWarpTensor()[i][j], b[i] * a[j], 1e-15);
        }
}

TEST(HyperTextileInit, PerpendicularYarnMessages) {
    const Frame basis;
    // A projection whose length overflows normalises to exactly zero.
    auto warp = parsed("RHO 1 KSHEAR 1 KELONGWARP 1 WARPORI 1E200 0 0 WEFTORI 0 1 0", "CLOTH");
    EXPECT_EQ(mattest::invalidArgumentOf([&] { warp->setInitialConditions(basis.e); }),
              "Warp direction is perpendicular to the element for material CLOTH");
    auto weft = parsed("RHO 1 KSHEAR 1 KELONGWARP 1 WARPORI 1 0 0 WEFTORI 0 1E200 1E200", "CLOTH");
    EXPECT_EQ(mattest::invalidArgumentOf([&] { weft->setInitialConditions(basis.e); }),
              "Weft direction is perpendicular to the element for material CLOTH");
}

TEST(HyperTextileInit, WarpAlongTheNormalPassesWithUndefinedTensors) {
    auto m = fabric("RHO 1 KSHEAR 1 KELONGWARP 1 WARPORI 0 0 3 WEFTORI 0 1 0");
    EXPECT_TRUE(std::isnan(m->getWarpTensor()[0][0]));
    EXPECT_TRUE(std::isnan(m->getWarpWeftTensor()[1][1]));
    EXPECT_EQ(m->getWeftTensor()[1][1], 1.0);
}

TEST(HyperTextileStress, IdentityWithOrthogonalYarnsIsStressFree) {
    auto m = fabric(std::string(orthogonal) + "KSHEAR 3 1 KELONGWARP 100 20 KELONGWEFT 80");
    const Result r = stressOf(*m, mat2(1, 0, 0, 1));
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(r.stress[i], 0.0);
    EXPECT_EQ(r.strain[0], 0.0);
    EXPECT_EQ(r.strain[1], 0.0);
    EXPECT_EQ(r.strain[2], 1.0);
    EXPECT_EQ(r.strain[3], 0.0);
}

TEST(HyperTextileStress, WarpStretchMatchesClosedForm) {
    // The weft and shear terms see no strain under diag(l, 1) and must not contribute.
    const double K = 120.0;
    auto m = fabric(std::string(orthogonal) + "KSHEAR 5 KELONGWARP 120 KELONGWEFT 70");
    for (double lambda : {1.02, 1.25, 0.85}) {
        const Result r = stressOf(*m, mat2(lambda, 0, 0, 1));
        EXPECT_NEAR(r.stress[0], 2 * K * std::log(lambda) / lambda, 1e-12);
        EXPECT_NEAR(r.stress[1], 0.0, 1e-13);
        EXPECT_NEAR(r.stress[3], 0.0, 1e-13);
        EXPECT_NEAR(r.strain[0], std::log(lambda), 1e-15);
        EXPECT_EQ(r.strain[1], 0.0);
        EXPECT_EQ(r.strain[2], 1.0);
        EXPECT_NEAR(r.strain[3], 0.0, 1e-13);
    }
}

TEST(HyperTextileStress, HigherTensionTermsKeepTheSignOfTheYarnStrain) {
    // W = K1 e^2 + K2 e^4, e = ln l: sigma = (2 K1 e + 4 K2 e^3) / l; compression is negative.
    auto m = fabric(std::string(orthogonal) + "KSHEAR 0 KELONGWARP 1 KELONGWEFT 10 400");
    for (double lambda : {1.3, 0.7}) {
        const Result r = stressOf(*m, mat2(1, 0, 0, lambda));
        const double e = std::log(lambda);
        EXPECT_NEAR(r.stress[1], (2 * 10 * e + 4 * 400 * e * e * e) / lambda, 1e-12);
        EXPECT_NEAR(r.stress[0], 0.0, 1e-13);
        EXPECT_EQ(r.stress[1] < 0, lambda < 1);
    }
}

TEST(HyperTextileStress, ClosingTheYarnAngleTo80DegreesGivesTheShearAngle) {
    const double pi = std::acos(-1.0), angle = 80.0 * pi / 180.0;
    auto m = fabric(std::string(orthogonal) + "KSHEAR 2 KELONGWARP 100 KELONGWEFT 100");
    // Yarns stay of unit length; the weft turns to 80 degrees from the warp.
    const Result r = stressOf(*m, mat2(1, std::cos(angle), 0, std::sin(angle)));
    EXPECT_NEAR(r.strain[3], 10.0 * pi / 3.1416, 1e-12);
    EXPECT_LT(r.strain[3], 10.0);
    EXPECT_NEAR(r.strain[0], 0.0, 1e-15);
    EXPECT_NEAR(r.strain[1], 0.0, 1e-15);
}

TEST(HyperTextileStress, RigidRotationGivesZeroStress) {
    // Orthogonal yarns at 45 degrees to the element axes.
    auto m = fabric("RHO 1 KSHEAR 3 1 KELONGWARP 100 20 KELONGWEFT 80 WARPORI 1 1 0 WEFTORI -1 1 0");
    for (double angle : {0.4, 1.7, -2.5}) {
        const Result r = stressOf(*m, mattest::rotation(angle));
        for (int i = 0; i < 4; ++i)
            EXPECT_NEAR(r.stress[i], 0.0, 1e-12);
        EXPECT_NEAR(r.strain[3], 0.0, 1e-12);
    }
}

TEST(HyperTextileStress, StressIsTheDerivativeOfTheEnergy) {
    // Non-orthogonal yarns and several coefficients per list.
    const std::vector<double> kWarp{120, 3000}, kWeft{80}, kShear{2.5, -0.4, 0.1};
    auto m = fabric(
        "RHO 1 KSHEAR 2.5 -0.4 0.1 KELONGWARP 120 3000 KELONGWEFT 80 WARPORI 1 0.3 0 WEFTORI -0.2 1 0");
    const double na = std::hypot(1.0, 0.3), nb = std::hypot(-0.2, 1.0);
    const double a0 = 1 / na, a1 = 0.3 / na, b0 = -0.2 / nb, b1 = 1 / nb;
    auto series = [](const std::vector<double>& k, double x) {
        double w = 0.0;
        for (std::size_t i = 0; i < k.size(); ++i)
            w += k[i] * std::pow(x, 2.0 * (i + 1));
        return w;
    };
    auto W = [&](double c00, double c01, double c11) {
        const double i4a = c00 * a0 * a0 + 2 * c01 * a0 * a1 + c11 * a1 * a1;
        const double i4b = c00 * b0 * b0 + 2 * c01 * b0 * b1 + c11 * b1 * b1;
        const double i8 = c00 * a0 * b0 + c01 * (a0 * b1 + a1 * b0) + c11 * a1 * b1;
        return series(kWarp, 0.5 * std::log(i4a)) + series(kWeft, 0.5 * std::log(i4b)) +
               series(kShear, i8 / std::sqrt(i4a * i4b));
    };
    std::mt19937 rng(3);
    for (int k = 0; k < 50; ++k) {
        const TNT::Array2D<double> F = mattest::randomF(rng);
        const double J = F[0][0] * F[1][1] - F[0][1] * F[1][0];
        const TNT::Array2D<double> S = mattest::pullBack(F, stressOf(*m, F).stress, J);
        const TNT::Array2D<double> expected = mattest::energyGradient(W, F);
        for (int i = 0; i < 2; ++i)
            for (int j = 0; j < 2; ++j)
                EXPECT_NEAR(S[i][j], expected[i][j], 1e-6 * (1 + std::fabs(expected[i][j])));
    }
}

TEST(HyperTextileWaveSpeed, UsesTheLargerLeadingTensionCoefficient) {
    auto m = fabric("RHO 2E-9 WARPORI 1 0 0 WEFTORI 0 1 0 KSHEAR 1000 KELONGWARP 50 9000 KELONGWEFT 80 1");
    EXPECT_DOUBLE_EQ(m->wavespeed2D(), std::sqrt(80 / 2e-9));
}

TEST(HyperTextileCopy, CopiesOwnTheirYarnsAndLists) {
    auto original = parsed("RHO 1 KSHEAR 1 KELONGWARP 10 KELONGWEFT 20 WARPORI 1 0 0 WEFTORI 0 1 0");
    original->setInitialConditions(Frame().e);

    auto copy = std::dynamic_pointer_cast<HyperTextile>(original->copyMat());
    ASSERT_TRUE(copy);
    ASSERT_NE(copy.get(), original.get());
    EXPECT_EQ(copy->getWarpTensor()[0][0], 1.0);
    // A second element whose plane is turned by 90 degrees about the normal.
    const Frame turned{{{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}}};
    copy->parseOstrel(tokens("KSHEAR 2 WARPORI 0 5 0"));
    copy->setInitialConditions(turned.e);

    EXPECT_EQ(copy->getWarpTensor()[0][0], 1.0);
    EXPECT_EQ(original->getWarpTensor()[0][0], 1.0);
    EXPECT_EQ(original->getWarpTensor()[1][1], 0.0);
    EXPECT_EQ(copy->getWeftTensor()[0][0], 1.0);
    EXPECT_EQ(original->getWeftTensor()[0][0], 0.0);
    EXPECT_EQ(original->getWarpWeftTensor()[0][1], 1.0);
    EXPECT_EQ(copy->getWarpWeftTensor()[0][1], 0.0);
    EXPECT_EQ(original->getWarpOrientation()[1], 0.0);
    EXPECT_EQ(original->getKShear(), std::vector<double>{1.0});

    // The original still answers with its own yarns: warp along local 1.
    const Result r = stressOf(*original, mat2(1.2, 0, 0, 1));
    EXPECT_NEAR(r.stress[0], 2 * 10 * std::log(1.2) / 1.2, 1e-12);
}
