#include "Hyperelastic.h"
#include "MaterialTestUtil.h"

#include <gtest/gtest.h>
#include <jama_eig.h>

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
const char* const threeTerms = "RHO 1.1E-9 TYPE OGDEN MU 0.62 1.2E-3 -0.01 ALPHA 1.3 5 -2";

// The stress computed straight from the eigen-decomposition of C by the
// general symmetric eigen-solver, as the reference for the closed form.
Result jamaReference(const TNT::Array2D<double>& F) {
    JAMA::Eigenvalue<double> eig(TNT::matmult(TNT::transpose(F), F));
    TNT::Array1D<double> d;
    TNT::Array2D<double> V;
    eig.getRealEigenvalues(d);
    eig.getV(V);
    const double l1 = std::sqrt(d[0]), l2 = std::sqrt(d[1]);
    double s1 = 0.0, s2 = 0.0;
    for (std::size_t i = 0; i < mu3.size(); ++i) {
        const double a = alpha3[i];
        s1 += mu3[i] * (std::pow(l1, a - 2) - std::pow(l2, -a) * std::pow(l1, -a - 2));
        s2 += mu3[i] * (std::pow(l2, a - 2) - std::pow(l1, -a) * std::pow(l2, -a - 2));
    }
    const TNT::Array2D<double> S = TNT::matmult(TNT::matmult(V, mat2(s1, 0, 0, s2)), TNT::transpose(V));
    const TNT::Array2D<double> sigma = TNT::matmult(TNT::matmult(F, S), TNT::transpose(F));
    Result r;
    r.strain[0] = l1;
    r.strain[1] = l2;
    r.strain[2] = 1.0 / (l1 * l2);
    r.stress[0] = sigma[0][0];
    r.stress[1] = sigma[1][1];
    r.stress[3] = sigma[1][0];
    return r;
}

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
        // Ascending eigenvalues: under stretch the unstretched direction comes first.
        EXPECT_DOUBLE_EQ(r.strain[0], std::min(lambda, 1.0));
        EXPECT_DOUBLE_EQ(r.strain[1], std::max(lambda, 1.0));
        EXPECT_DOUBLE_EQ(r.strain[2], 1.0 / lambda);
    }
}

TEST(HyperelasticStress, EquibiaxialStretchMatchesClosedFormWithTermsGivenInTwoLists) {
    // Equal stretches l: sigma = sum mu (l^alpha - l^(-2 alpha)) in both directions.
    auto m = ogden("RHO 1 TYPE OGDEN MU 0.6 ALPHA 1.5 MU 0.01 ALPHA 4");
    for (double l : {0.9, 1.0, 1.3}) {
        const Result r = stressOf(*m, mat2(l, 0, 0, l));
        const double expected =
            0.6 * (std::pow(l, 1.5) - std::pow(l, -3.0)) + 0.01 * (std::pow(l, 4.0) - std::pow(l, -8.0));
        EXPECT_NEAR(r.stress[0], expected, 1e-13);
        EXPECT_NEAR(r.stress[1], expected, 1e-13);
        EXPECT_EQ(r.stress[3], 0.0);
        EXPECT_DOUBLE_EQ(r.strain[2], 1 / (l * l));
    }
}

TEST(HyperelasticStress, RigidRotationGivesUnitStretchesAndZeroStress) {
    auto m = ogden(threeTerms);
    for (double angle : {0.0, 0.3, 1.2, 2.9, -2.0}) {
        SCOPED_TRACE(angle);
        const Result r = stressOf(*m, mattest::rotation(angle));
        const double tol = angle == 0.0 ? 0.0 : 1e-14;
        for (int i = 0; i < 4; ++i)
            EXPECT_NEAR(r.stress[i], 0.0, tol);
        for (int i = 0; i < 3; ++i)
            EXPECT_NEAR(r.strain[i], 1.0, tol);
    }
}

// Two independent references under random deformations: the general
// eigen-solver, and the derivative of the plane-stress energy
// W(C) = sum mu/alpha (d0^(alpha/2) + d1^(alpha/2) + det(C)^(-alpha/2) - 3),
// d0, d1 the eigenvalues of C, with S = 2 dW/dC and sigma = F S F^T.
TEST(HyperelasticStress, AgreesWithTheGeneralEigenSolverAndIsTheDerivativeOfTheEnergy) {
    auto W = [&](double c00, double c01, double c11) {
        const double mean = 0.5 * (c00 + c11), r = std::hypot(0.5 * (c00 - c11), c01);
        const double d0 = mean - r, d1 = mean + r, det = c00 * c11 - c01 * c01;
        double w = 0.0;
        for (std::size_t i = 0; i < mu3.size(); ++i) {
            const double h = 0.5 * alpha3[i];
            w += mu3[i] / alpha3[i] * (std::pow(d0, h) + std::pow(d1, h) + std::pow(det, -h) - 3.0);
        }
        return w;
    };
    auto m = ogden(threeTerms);
    std::mt19937 rng(7);
    for (int k = 0; k < 500; ++k) {
        const TNT::Array2D<double> F = mattest::randomF(rng);
        const Result r = stressOf(*m, F);
        const Result ref = jamaReference(F);
        for (int i = 0; i < 3; ++i)
            EXPECT_NEAR(r.strain[i], ref.strain[i], 1e-12);
        for (int i : {0, 1, 3})
            EXPECT_NEAR(r.stress[i], ref.stress[i], 1e-11);
        if (k % 10) continue;
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

TEST(HyperelasticCopy, ACopyParsedFurtherLeavesTheOriginalsLawAlone) {
    auto original = ogden("RHO 1 TYPE OGDEN MU 0.8 ALPHA 2");
    auto copy = original->copyMat();
    ASSERT_NE(copy.get(), original.get());
    EXPECT_EQ(copy->getName(), "RUBBER");
    copy->parseOstrel(mattest::tokens("MU 3 ALPHA 4 RHO 5"));
    EXPECT_NEAR(stressOf(*original, mat2(1.5, 0, 0, 1)).stress[0], 0.8 * (2.25 - 1 / 2.25), 1e-13);
    EXPECT_DOUBLE_EQ(original->wavespeed2D(), std::sqrt(1.5 * 1.6));
    EXPECT_DOUBLE_EQ(copy->wavespeed2D(), std::sqrt(1.5 * (1.6 + 12.0) / 5.0));
}
