#include "Elastic.h"
#include "MaterialLibrary.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

namespace {

using testutil::tokens;

std::string initError(Material& m) {
    const double basis[3][3] = {};
    try {
        m.setInitialConditions(basis);
    } catch (const std::invalid_argument& e) {
        return e.what();
    }
    return "";
}

std::shared_ptr<Material> steel(const std::string& name = "STEEL") {
    auto m = MaterialLibrary::getMaterialOstrel("ELASTIC");
    std::string n = name;
    m->setName(n);
    m->parseOstrel(tokens({"E", "2.1E5", "NU", "0.3", "RHO", "7.8E-9"}));
    return m;
}

} // namespace

TEST(ElasticTest, ValidationReportsNameThenDensityThenPoissonThenYoung) {
    Elastic unnamed;
    EXPECT_EQ(initError(unnamed), "Name is not set for this material ");

    Elastic m;
    std::string name = "MAT";
    m.setName(name);
    EXPECT_EQ(initError(m), "Density is not set for material: MAT");
    m.parseOstrel(tokens({"E", "100"}));
    EXPECT_EQ(initError(m), "Density is not set for material: MAT");
    m.parseOstrel(tokens({"RHO", "1"}));
    EXPECT_EQ(initError(m), "Poisson ration is not set for material: MAT");
    m.parseOstrel(tokens({"NU", "0.2"}));
    EXPECT_EQ(initError(m), "");

    Elastic noYoung;
    noYoung.setName(name);
    noYoung.parseOstrel(tokens({"RHO", "1E-9", "NU", "0.3"}));
    EXPECT_EQ(initError(noYoung), "Young modulus is not set for material: MAT");
}

TEST(ElasticTest, ParseErrors) {
    Elastic m;
    try {
        m.parseOstrel(tokens({"E", "STIFF"}));
        FAIL();
    } catch (const std::invalid_argument& e) {
        EXPECT_STREQ(e.what(), "Input E is not recognized");
    }
    try {
        m.parseOstrel(tokens({"G", "1"}));
        FAIL();
    } catch (const std::invalid_argument& e) {
        EXPECT_STREQ(e.what(), "Input G is not recognized");
    }
    EXPECT_THROW(m.parseOstrel(tokens({"NU", "0.3", "RHO"})), std::out_of_range);
    EXPECT_NO_THROW(m.parseOstrel({}));
}

TEST(ElasticTest, LaterValuesWin) {
    auto m = steel();
    m->parseOstrel(tokens({"E", "7", "E", "9"}));
    EXPECT_EQ(m->getYoungsModulus(), 9.0);
}

TEST(ElasticTest, WaveSpeeds) {
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

TEST(ElasticTest, CopiesAreIndependent) {
    auto shared = steel();
    auto a = shared->copyMat();
    auto b = shared->copyMat();
    ASSERT_NE(a.get(), b.get());
    ASSERT_NE(a.get(), shared.get());
    EXPECT_EQ(a->getName(), "STEEL");
    EXPECT_EQ(b->getYoungsModulus(), 2.1e5);
    a->parseOstrel(tokens({"E", "1"}));
    EXPECT_EQ(b->getYoungsModulus(), 2.1e5);
    EXPECT_EQ(shared->getYoungsModulus(), 2.1e5);

    // The plane-stress matrix is deep-copied, not shared.
    auto& ea = static_cast<Elastic&>(*a);
    auto& eb = static_cast<Elastic&>(*b);
    ea.setPlaneStressModulus();
    eb.setPlaneStressModulus();
    EXPECT_DOUBLE_EQ(ea.getPlaneStressModulus()[0][0], 1.0 / 0.91);
    EXPECT_DOUBLE_EQ(eb.getPlaneStressModulus()[0][0], 2.1e5 / 0.91);
}
