#include "Elastic.h"
#include "MaterialLibrary.h"
#include "MaterialTestUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

using mattest::tokens;

namespace {

std::shared_ptr<Material> steel() {
    auto m = MaterialLibrary::getMaterialOstrel("ELASTIC");
    std::string name = "STEEL";
    m->setName(name);
    // A repeated keyword: the later value wins.
    m->parseOstrel(tokens("E 7 E 2.1E5 NU 0.3 RHO 7.8E-9"));
    m->setInitialConditions(mattest::Frame().e);
    return m;
}

} // namespace

// Checks a deck never reaches: the reader always names a material, and a
// material without density stops the mass assembly before its own check.
TEST(MaterialInit, EveryLawRefusesAMissingNameBeforeAMissingDensity) {
    const std::pair<const char*, const char*> laws[] = {
        {"ELASTIC", "E 1 NU 0.3"},
        {"HYPERELASTIC", "TYPE OGDEN MU 1 ALPHA 2"},
        {"HYPERTEXTILE", "KSHEAR 1 KELONGWARP 2 KELONGWEFT 3 WARPORI 1 0 0 WEFTORI 0 1 0"}};
    for (const auto& [type, params] : laws)
        for (bool named : {false, true}) {
            SCOPED_TRACE(type);
            auto m = MaterialLibrary::getMaterialOstrel(type);
            std::string name = "MAT";
            if (named) m->setName(name);
            m->parseOstrel(tokens(params));
            try {
                m->setInitialConditions(mattest::Frame().e);
                ADD_FAILURE() << "no exception";
            } catch (const std::invalid_argument& e) {
                EXPECT_STREQ(e.what(), named ? "Density is not set for material: MAT"
                                             : "Name is not set for this material ");
            }
        }
}

TEST(ElasticTest, BarAndPlateWaveSpeeds) {
    auto m = steel();
    EXPECT_DOUBLE_EQ(m->wavespeed1D(), std::sqrt(2.1e5 / 7.8e-9));
    EXPECT_DOUBLE_EQ(m->wavespeed2D(), std::sqrt(2.1e5 / (0.91 * 7.8e-9)));
}

TEST(ElasticTest, Stress1DIsTotalStrainTimesE) {
    auto m = steel();
    double strain = 0.001, increment = 0.0005, stress = -3.0;
    m->computeStress1D(strain, increment, stress);
    EXPECT_DOUBLE_EQ(strain, 0.0015);
    EXPECT_DOUBLE_EQ(stress, 2.1e5 * 0.0015);
}

TEST(ElasticTest, PlaneStressIncrementAndThicknessStressZero) {
    auto m = steel();
    const double F[2][2] = {}, basis[3][3] = {};
    double d[6] = {1e-3, 0.0, 0.0, 2e-3, 1e-3, -1e-3}, s[6] = {0.0, 0.0, 123.0, 0.0, 0.0, 0.0};
    m->computeStress2D(F, d, s, basis);
    const double k = 2.1e5 / 0.91, G = 2.1e5 / 2.6;
    EXPECT_NEAR(s[0], k * 1e-3, 1e-9);
    EXPECT_NEAR(s[1], 0.3 * k * 1e-3, 1e-9);
    EXPECT_EQ(s[2], 0.0);
    EXPECT_NEAR(s[3], G * 2e-3, 1e-9);
    EXPECT_NEAR(s[4], 5.0 / 6.0 * G * 1e-3, 1e-9);
    EXPECT_NEAR(s[5], -5.0 / 6.0 * G * 1e-3, 1e-9);
    // Incremental: a second identical increment doubles the in-plane stress.
    m->computeStress2D(F, d, s, basis);
    EXPECT_NEAR(s[0], 2 * k * 1e-3, 1e-9);
    EXPECT_EQ(s[2], 0.0);
}

TEST(ElasticTest, ACopyParsedFurtherLeavesTheOriginalAlone) {
    auto original = steel();
    auto copy = original->copyMat();
    ASSERT_NE(copy.get(), original.get());
    EXPECT_EQ(copy->getName(), "STEEL");
    copy->parseOstrel(tokens("E 1"));
    EXPECT_EQ(copy->getYoungsModulus(), 1.0);
    EXPECT_EQ(original->getYoungsModulus(), 2.1e5);
}
