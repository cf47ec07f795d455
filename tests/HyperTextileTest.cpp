#include "HyperTextile.h"
#include "MaterialTestUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using mattest::Frame;
using mattest::mat2;
using mattest::Result;
using mattest::stressOf;

namespace {

std::shared_ptr<HyperTextile> fabric(const std::string& params, const Frame& basis = Frame()) {
    auto m = std::make_shared<HyperTextile>();
    std::string name = "TWILL";
    m->setName(name);
    m->parseOstrel(mattest::tokens(params));
    m->setInitialConditions(basis.e);
    return m;
}

const char* const orthogonal = "RHO 1E-9 WARPORI 1 0 0 WEFTORI 0 1 0 ";

} // namespace

TEST(HyperTextileInit, ProjectsYarnsOntoTheElementPlane) {
    // Element plane spanned by e1 = global y and e2 = global z (normal along x).
    const Frame basis{{{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}};
    auto m = fabric("RHO 1 KSHEAR 1 KELONGWARP 2 KELONGWEFT 2 WARPORI 7 3 4 WEFTORI 5 0 -2", basis);
    // a = (3, 4) / 5, b = (0, -1)
    const double a[2] = {0.6, 0.8}, b[2] = {0.0, -1.0};
    for (int i = 0; i < 2; ++i)
        for (int j = 0; j < 2; ++j) {
            EXPECT_NEAR(m->getWarpTensor()[i][j], a[i] * a[j], 1e-15);
            EXPECT_NEAR(m->getWeftTensor()[i][j], b[i] * b[j], 1e-15);
        }
}

TEST(HyperTextileStress, YarnStretchMatchesClosedFormAndKeepsTheSignOfTheYarnStrain) {
    // W = K1 e^2 + K2 e^4 per yarn, e = ln l: sigma = (2 K1 e + 4 K2 e^3) / l along
    // the yarn; the other yarn and the shear see no strain and must not contribute.
    auto m = fabric(std::string(orthogonal) + "KSHEAR 5 KELONGWARP 120 KELONGWEFT 10 400");
    for (double lambda : {1.02, 1.25, 0.85, 1.3, 0.7}) {
        SCOPED_TRACE(lambda);
        const double e = std::log(lambda);
        const Result warp = stressOf(*m, mat2(lambda, 0, 0, 1));
        EXPECT_NEAR(warp.stress[0], 2 * 120 * e / lambda, 1e-12);
        EXPECT_NEAR(warp.stress[1], 0.0, 1e-13);
        EXPECT_NEAR(warp.stress[3], 0.0, 1e-13);
        EXPECT_NEAR(warp.strain[0], e, 1e-15);
        EXPECT_EQ(warp.strain[1], 0.0);
        EXPECT_EQ(warp.strain[2], 1.0);
        EXPECT_NEAR(warp.strain[3], 0.0, 1e-13);
        const Result weft = stressOf(*m, mat2(1, 0, 0, lambda));
        EXPECT_NEAR(weft.stress[1], (2 * 10 * e + 4 * 400 * e * e * e) / lambda, 1e-12);
        EXPECT_NEAR(weft.stress[0], 0.0, 1e-13);
    }
}

TEST(HyperTextileStress, RigidRotationGivesZeroStrainAndStress) {
    // Yarns along the element axes (exactly stress-free at the identity) and at 45 degrees.
    const std::pair<const char*, bool> cases[] = {{"WARPORI 1 0 0 WEFTORI 0 1 0", true},
                                                  {"WARPORI 1 1 0 WEFTORI -1 1 0", false}};
    for (const auto& [yarns, exactAtIdentity] : cases) {
        auto m = fabric(std::string("RHO 1 KSHEAR 3 1 KELONGWARP 100 20 KELONGWEFT 80 ") + yarns);
        for (double angle : {0.0, 0.4, 1.7, -2.5}) {
            SCOPED_TRACE(std::string(yarns) + " " + std::to_string(angle));
            const Result r = stressOf(*m, mattest::rotation(angle));
            const double tol = angle == 0.0 && exactAtIdentity ? 0.0 : 1e-12;
            for (int i = 0; i < 4; ++i)
                EXPECT_NEAR(r.stress[i], 0.0, tol);
            for (int i : {0, 1, 3})
                EXPECT_NEAR(r.strain[i], 0.0, tol);
            EXPECT_EQ(r.strain[2], 1.0);
        }
    }
}

TEST(HyperTextileStress, StressIsTheDerivativeOfTheEnergy) {
    // Non-orthogonal yarns and several coefficients per list, the warp's given in two lists.
    const std::vector<double> kWarp{120, 3000}, kWeft{80}, kShear{2.5, -0.4, 0.1};
    auto m = fabric("RHO 1 KSHEAR 2.5 -0.4 0.1 KELONGWARP 120 KELONGWEFT 80 KELONGWARP 3000 "
                    "WARPORI 1 0.3 0 WEFTORI -0.2 1 0");
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

TEST(HyperTextileStress, CompressedYarnCarriesTheCompressionFactorTimesItsTension) {
    // Warp pushed to -1 % and weft pulled to +1 %, then the other way round
    // (J = 1): sigma = 2 K e along a stretched yarn, c times that along a compressed one.
    auto m = fabric(std::string(orthogonal) + "KSHEAR 5 KELONGWARP 120 KELONGWEFT 80 COMPRESSION 0.05 "
                                              "BENDING 0.2 0.1");
    const double e = 0.01, l = std::exp(e);
    const Result r = stressOf(*m, mat2(1 / l, 0, 0, l));
    EXPECT_NEAR(r.strain[0], -e, 1e-15);
    EXPECT_NEAR(r.stress[0], 0.05 * 2 * 120 * -e, 1e-13);
    EXPECT_NEAR(r.stress[1], 2 * 80 * e, 1e-13);
    const Result s = stressOf(*m, mat2(l, 0, 0, 1 / l));
    EXPECT_NEAR(s.stress[0], 2 * 120 * e, 1e-13);
    EXPECT_NEAR(s.stress[1], 0.05 * 2 * 80 * -e, 1e-13);
    // The default factor is 1: the same yarn law both ways.
    auto plain = fabric(std::string(orthogonal) + "KSHEAR 5 KELONGWARP 120 KELONGWEFT 80");
    EXPECT_NEAR(stressOf(*plain, mat2(1 / l, 0, 0, l)).stress[0], -2 * 120 * e, 1e-13);
    EXPECT_EQ(m->getBending()[0], 0.2);
    EXPECT_DOUBLE_EQ(m->getBending()[2], 0.5 * std::sqrt(0.02));
}
