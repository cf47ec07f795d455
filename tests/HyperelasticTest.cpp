#include "Hyperelastic.h"
#include "MaterialTestUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using mattest::mat2;
using mattest::Result;
using mattest::stressOf;

namespace {

std::shared_ptr<Hyperelastic> ogden(const std::string& params) {
    auto m = std::make_shared<Hyperelastic>();
    std::string name = "RUBBER";
    m->setName(name);
    m->parseOstrel(mattest::tokens(params));
    m->setInitialConditions(mattest::Frame().e);
    return m;
}

const std::vector<double> mu3{0.62, 1.2e-3, -0.01}, alpha3{1.3, 5.0, -2.0};
// The third term in a list of its own: a later MU ... ALPHA ... adds terms.
const char* const threeTerms = "RHO 1.1E-9 TYPE OGDEN MU 0.62 1.2E-3 ALPHA 1.3 5 MU -0.01 ALPHA -2";

} // namespace

TEST(HyperelasticStress, NeoHookeanUniaxialStretchMatchesClosedFormInPlaneStress) {
    const double mu = 0.8;
    auto m = ogden("RHO 1 TYPE OGDEN MU 0.8 ALPHA 2");
    for (double lambda : {0.7, 1.05, 1.5, 3.0}) {
        // The thickness stress is zeroed, the transverse shears are left alone.
        Result r;
        r.stress[2] = 9.0;
        r.stress[4] = 4.0;
        r.stress[5] = 5.0;
        r.strain[3] = 3.0;
        r = stressOf(*m, mat2(lambda, 0, 0, 1), r);
        EXPECT_NEAR(r.stress[0], mu * (lambda * lambda - 1 / (lambda * lambda)), 1e-13 * lambda * lambda);
        EXPECT_NEAR(r.stress[1], mu * (1 - 1 / (lambda * lambda)), 1e-13);
        EXPECT_NEAR(r.stress[3], 0.0, 1e-14);
        EXPECT_EQ(r.stress[2], 0.0);
        EXPECT_EQ(r.stress[4], 4.0);
        EXPECT_EQ(r.stress[5], 5.0);
        EXPECT_EQ(r.strain[3], 3.0);
    }
}

// Under random deformations the stretches are the roots of the eigenvalues
// d0 <= d1 of C, and the stress is the derivative of the plane-stress energy
// W(C) = sum mu/alpha (d0^(alpha/2) + d1^(alpha/2) + det(C)^(-alpha/2) - 3),
// with S = 2 dW/dC and sigma = F S F^T.
TEST(HyperelasticStress, StretchesAreThoseOfCAndTheStressIsTheDerivativeOfTheEnergy) {
    auto eigenvalues = [](double c00, double c01, double c11) {
        const double mean = 0.5 * (c00 + c11), r = std::hypot(0.5 * (c00 - c11), c01);
        return std::pair<double, double>{mean - r, mean + r};
    };
    auto W = [&](double c00, double c01, double c11) {
        const auto [d0, d1] = eigenvalues(c00, c01, c11);
        const double det = c00 * c11 - c01 * c01;
        double w = 0.0;
        for (std::size_t i = 0; i < mu3.size(); ++i) {
            const double h = 0.5 * alpha3[i];
            w += mu3[i] / alpha3[i] * (std::pow(d0, h) + std::pow(d1, h) + std::pow(det, -h) - 3.0);
        }
        return w;
    };
    auto m = ogden(threeTerms);
    std::mt19937 rng(7);
    for (int k = 0; k < 50; ++k) {
        const TNT::Array2D<double> F = mattest::randomF(rng);
        const Result r = stressOf(*m, F);
        const TNT::Array2D<double> C = TNT::transpose_mult(F, F);
        const auto [d0, d1] = eigenvalues(C[0][0], C[0][1], C[1][1]);
        EXPECT_NEAR(r.strain[0], std::sqrt(d0), 1e-12);
        EXPECT_NEAR(r.strain[1], std::sqrt(d1), 1e-12);
        EXPECT_NEAR(r.strain[2], 1.0 / std::sqrt(d0 * d1), 1e-12);
        const TNT::Array2D<double> S = mattest::pullBack(F, r.stress, 1.0);
        const TNT::Array2D<double> expected = mattest::energyGradient(W, F);
        for (int i = 0; i < 2; ++i)
            for (int j = 0; j < 2; ++j)
                EXPECT_NEAR(S[i][j], expected[i][j], 1e-7);
    }
}

TEST(HyperelasticWaveSpeed, UsesTheSmallStrainShearModulus) {
    const double sum = 0.62 * 1.3 + 1.2e-3 * 5 + 0.01 * 2;
    EXPECT_DOUBLE_EQ(ogden(threeTerms)->wavespeed2D(), std::sqrt(1.5 * sum / 1.1e-9));
}
