#include "Hyperelastic.h"
#include "MaterialLibrary.h"
#include "MaterialTestUtil.h"

#include <gtest/gtest.h>
#include <jama_eig.h>

#include <cmath>
#include <random>

using mattest::mat2;
using mattest::Result;
using mattest::stressOf;
using mattest::tokens;

namespace {

std::shared_ptr<Hyperelastic> ogden(const std::string& params, std::string name = "RUBBER") {
    auto m = std::make_shared<Hyperelastic>();
    m->setName(name);
    m->parseOstrel(tokens(params));
    m->setInitialConditions(mattest::Frame().e);
    return m;
}

// The stress computed straight from the eigen-decomposition of C by the
// general symmetric eigen-solver, as the reference for the closed form.
Result jamaReference(const std::vector<double>& mu, const std::vector<double>& alpha,
                     const TNT::Array2D<double>& F) {
    const TNT::Array2D<double> C = TNT::matmult(TNT::transpose(F), F);
    JAMA::Eigenvalue<double> eig(C);
    TNT::Array1D<double> d;
    TNT::Array2D<double> V;
    eig.getRealEigenvalues(d);
    eig.getV(V);
    const double l1 = std::sqrt(d[0]), l2 = std::sqrt(d[1]), l3 = 1.0 / (l1 * l2);
    double s1 = 0.0, s2 = 0.0;
    for (std::size_t i = 0; i < mu.size(); ++i) {
        const double a = alpha[i];
        s1 += mu[i] * (std::pow(l1, a - 2) - std::pow(l2, -a) * std::pow(l1, -a - 2));
        s2 += mu[i] * (std::pow(l2, a - 2) - std::pow(l1, -a) * std::pow(l2, -a - 2));
    }
    const TNT::Array2D<double> S = TNT::matmult(TNT::matmult(V, mat2(s1, 0, 0, s2)), TNT::transpose(V));
    const TNT::Array2D<double> sigma = TNT::matmult(TNT::matmult(F, S), TNT::transpose(F));
    Result r;
    r.strain[0] = l1;
    r.strain[1] = l2;
    r.strain[2] = l3;
    r.stress[0] = sigma[0][0];
    r.stress[1] = sigma[1][1];
    r.stress[3] = sigma[1][0];
    return r;
}

} // namespace

TEST(HyperelasticParse, StoresParametersAndAppendsRepeatedLists) {
    Hyperelastic m;
    m.parseOstrel(tokens("RHO 1.2E-9 DAMPING 0.05 TYPE OGDEN MU 0.5 ALPHA 2 -2 MU 0.25"));
    EXPECT_EQ(m.getType(), "HYPERELASTIC");
    EXPECT_DOUBLE_EQ(m.getDensity(), 1.2e-9);
    EXPECT_DOUBLE_EQ(m.getAlpha(), 0.05);
    EXPECT_EQ(m.getPotentialType(), 1);
    EXPECT_EQ(m.getMuTerms(), (std::vector<double>{0.5, 0.25}));
    EXPECT_EQ(m.getAlphaTerms(), (std::vector<double>{2.0, -2.0}));
}

TEST(HyperelasticParse, DampingDefaultsToZeroAndEmptyListIsAccepted) {
    Hyperelastic m;
    m.parseOstrel({});
    EXPECT_EQ(m.getAlpha(), 0.0);
    EXPECT_TRUE(m.getMuTerms().empty());
}

TEST(HyperelasticParse, RejectsMalformedPhrasesWithTheirMessages) {
    auto parse = [](const std::string& text) {
        return mattest::invalidArgumentOf([&] {
            Hyperelastic m;
            m.parseOstrel(tokens(text));
        });
    };
    EXPECT_EQ(parse("RHO 1 YOUNG 3"), "Input YOUNG is not recognized");
    EXPECT_EQ(parse("RHO DENSE"), "Input RHO is not recognized");
    EXPECT_EQ(parse("DAMPING NONE"), "Input DAMPING is not recognized");
    EXPECT_EQ(parse("TYPE 1"), "Input TYPE is not recognized");
    EXPECT_EQ(parse("TYPE MOONEY"), "Hyperelastic potential MOONEY is not recognized");
    EXPECT_EQ(parse("MU ALPHA 2"), "Input MU is not recognized");
    EXPECT_EQ(parse("MU 1 ALPHA RHO 1"), "Input ALPHA is not recognized");
}

TEST(HyperelasticParse, KeywordWithoutValueIsARangeError) {
    for (const char* text : {"RHO", "TYPE", "MU 1 ALPHA", "RHO 1 DAMPING"}) {
        Hyperelastic m;
        EXPECT_THROW(m.parseOstrel(tokens(text)), std::out_of_range) << text;
    }
}

TEST(HyperelasticInit, ValidatesInOrderWithTheMaterialName) {
    auto init = [&](const std::string& text, bool named) {
        return mattest::invalidArgumentOf([&] {
            Hyperelastic m;
            std::string name = "SKIN";
            if (named) m.setName(name);
            m.parseOstrel(tokens(text));
            m.setInitialConditions(mattest::Frame().e);
        });
    };
    EXPECT_EQ(init("RHO 1 TYPE OGDEN MU 1 ALPHA 2", false), "Name is not set for this material ");
    EXPECT_EQ(init("TYPE OGDEN MU 1 ALPHA 2", true), "Density is not set for material: SKIN");
    EXPECT_EQ(init("RHO 1 MU 1 ALPHA 2", true), "Hyperelastic potential type is not set for material SKIN");
    EXPECT_EQ(init("RHO 1 TYPE OGDEN MU 1 2 ALPHA 2", true),
              "Not enough material parameters for material SKIN");
    EXPECT_EQ(init("RHO 1 TYPE OGDEN ALPHA 2", true), "Not enough material parameters for material SKIN");
    EXPECT_EQ(init("RHO 1 TYPE OGDEN MU 1", true), "Not enough material parameters for material SKIN");
    EXPECT_EQ(init("RHO 1 TYPE OGDEN MU 1 MU 2 ALPHA 2 3", true), "<no exception>");
}

TEST(HyperelasticStress, IdentityGivesUnitStretchesAndZeroStress) {
    auto m = ogden("RHO 1 TYPE OGDEN MU 0.6 -0.02 3E-4 ALPHA 1.3 -2 5");
    const Result r = stressOf(*m, mat2(1, 0, 0, 1));
    for (int i = 0; i < 3; ++i)
        EXPECT_DOUBLE_EQ(r.strain[i], 1.0);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(r.stress[i], 0.0);
}

TEST(HyperelasticStress, NeoHookeanUniaxialStretchMatchesClosedForm) {
    const double mu = 0.8;
    auto m = ogden("RHO 1 TYPE OGDEN MU 0.8 ALPHA 2");
    for (double lambda : {0.7, 1.05, 1.5, 3.0}) {
        const Result r = stressOf(*m, mat2(lambda, 0, 0, 1));
        EXPECT_NEAR(r.stress[0], mu * (lambda * lambda - 1 / (lambda * lambda)), 1e-13 * lambda * lambda);
        EXPECT_NEAR(r.stress[1], mu * (1 - 1 / (lambda * lambda)), 1e-13);
        EXPECT_NEAR(r.stress[3], 0.0, 1e-14);
        // Ascending eigenvalues: under stretch the unstretched direction comes first.
        EXPECT_DOUBLE_EQ(r.strain[0], std::min(lambda, 1.0));
        EXPECT_DOUBLE_EQ(r.strain[1], std::max(lambda, 1.0));
        EXPECT_DOUBLE_EQ(r.strain[2], 1.0 / lambda);
    }
}

TEST(HyperelasticStress, EquibiaxialStretchMatchesClosedForm) {
    // Equal stretches l: sigma = sum mu (l^alpha - l^(-2 alpha)) in both directions.
    auto m = ogden("RHO 1 TYPE OGDEN MU 0.6 0.01 ALPHA 1.5 4");
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

TEST(HyperelasticStress, RigidRotationGivesZeroStress) {
    auto m = ogden("RHO 1 TYPE OGDEN MU 0.6 -0.02 ALPHA 1.3 -2");
    for (double angle : {0.3, 1.2, 2.9, -2.0}) {
        const Result r = stressOf(*m, mattest::rotation(angle));
        for (int i = 0; i < 4; ++i)
            EXPECT_NEAR(r.stress[i], 0.0, 1e-14);
        for (int i = 0; i < 3; ++i)
            EXPECT_NEAR(r.strain[i], 1.0, 1e-15);
    }
}

TEST(HyperelasticStress, ClosedFormEigenSolutionAgreesWithGeneralSolver) {
    const std::vector<double> mu{0.62, 1.2e-3, -0.01}, alpha{1.3, 5.0, -2.0};
    auto m = ogden("RHO 1 TYPE OGDEN MU 0.62 1.2E-3 -0.01 ALPHA 1.3 5 -2");
    std::mt19937 rng(7);
    for (int k = 0; k < 500; ++k) {
        const TNT::Array2D<double> F = mattest::randomF(rng);
        const Result r = stressOf(*m, F);
        const Result ref = jamaReference(mu, alpha, F);
        for (int i = 0; i < 3; ++i)
            EXPECT_NEAR(r.strain[i], ref.strain[i], 1e-12);
        for (int i : {0, 1, 3})
            EXPECT_NEAR(r.stress[i], ref.stress[i], 1e-11);
    }
}

TEST(HyperelasticStress, StressIsTheDerivativeOfThePlaneStressEnergy) {
    // W(C) = sum mu/alpha (d0^(alpha/2) + d1^(alpha/2) + det(C)^(-alpha/2) - 3),
    // d0, d1 the eigenvalues of C; S = 2 dW/dC and sigma = F S F^T.
    const std::vector<double> mu{0.62, 1.2e-3, -0.01}, alpha{1.3, 5.0, -2.0};
    auto W = [&](double c00, double c01, double c11) {
        const double mean = 0.5 * (c00 + c11), r = std::hypot(0.5 * (c00 - c11), c01);
        const double d0 = mean - r, d1 = mean + r, det = c00 * c11 - c01 * c01;
        double w = 0.0;
        for (std::size_t i = 0; i < mu.size(); ++i) {
            const double h = 0.5 * alpha[i];
            w += mu[i] / alpha[i] * (std::pow(d0, h) + std::pow(d1, h) + std::pow(det, -h) - 3.0);
        }
        return w;
    };
    auto m = ogden("RHO 1 TYPE OGDEN MU 0.62 1.2E-3 -0.01 ALPHA 1.3 5 -2");
    std::mt19937 rng(11);
    for (int k = 0; k < 50; ++k) {
        const TNT::Array2D<double> F = mattest::randomF(rng);
        const TNT::Array2D<double> S = mattest::pullBack(F, stressOf(*m, F).stress, 1.0);
        const TNT::Array2D<double> expected = mattest::energyGradient(W, F);
        for (int i = 0; i < 2; ++i)
            for (int j = 0; j < 2; ++j)
                EXPECT_NEAR(S[i][j], expected[i][j], 1e-7);
    }
}

TEST(HyperelasticStress, LeavesTransverseShearsAndZeroesThickness) {
    auto m = ogden("RHO 1 TYPE OGDEN MU 1 ALPHA 2");
    Result r;
    r.stress[2] = 9.0;
    r.stress[4] = 4.0;
    r.stress[5] = 5.0;
    r.strain[3] = 3.0;
    r = stressOf(*m, mat2(1.2, 0.1, 0, 0.9), r);
    EXPECT_EQ(r.stress[2], 0.0);
    EXPECT_EQ(r.stress[4], 4.0);
    EXPECT_EQ(r.stress[5], 5.0);
    EXPECT_EQ(r.strain[3], 3.0);
}

TEST(HyperelasticWaveSpeed, UsesTheSmallStrainShearModulus) {
    auto m = ogden("RHO 1.1E-9 TYPE OGDEN MU 0.62 1.2E-3 -0.01 ALPHA 1.3 5 -2");
    const double sum = 0.62 * 1.3 + 1.2e-3 * 5 + 0.01 * 2;
    EXPECT_DOUBLE_EQ(m->wavespeed2D(), std::sqrt(1.5 * sum / 1.1e-9));
    Hyperelastic empty;
    empty.parseOstrel(tokens("RHO 2"));
    EXPECT_EQ(empty.wavespeed2D(), 0.0);
}

TEST(HyperelasticCopy, CopiesAreIndependent) {
    auto original = ogden("RHO 1 TYPE OGDEN MU 1 ALPHA 2");
    std::shared_ptr<Material> copy = original->copyMat();
    ASSERT_NE(copy.get(), original.get());
    auto typed = std::dynamic_pointer_cast<Hyperelastic>(copy);
    ASSERT_TRUE(typed);
    typed->parseOstrel(tokens("MU 3 ALPHA 4 RHO 5"));
    EXPECT_EQ(original->getMuTerms(), std::vector<double>{1.0});
    EXPECT_EQ(original->getAlphaTerms(), std::vector<double>{2.0});
    EXPECT_EQ(original->getDensity(), 1.0);
    EXPECT_EQ(typed->getMuTerms(), (std::vector<double>{1.0, 3.0}));
    EXPECT_EQ(copy->getName(), "RUBBER");
}
