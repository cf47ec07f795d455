#include "Elastic.h"
#include "MaterialLibrary.h"
#include "MaterialTestUtil.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

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

// An element takes its own copy of the law: parsing more keywords into the
// copy and setting it up in another element frame leave the original alone.
TEST(MaterialCopy, ACopyParsedAndSetUpAgainLeavesTheOriginalAlone) {
    const mattest::Frame turned{{{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}}};
    const std::array<const char*, 3> laws[] = {
        {"ELASTIC", "E 2.1E5 NU 0.3 RHO 7.8E-9", "E 1 RHO 5"},
        {"HYPERELASTIC", "RHO 1 TYPE OGDEN MU 0.8 ALPHA 2", "MU 3 ALPHA 4 RHO 5"},
        {"HYPERTEXTILE", "RHO 1 KSHEAR 1 KELONGWARP 10 KELONGWEFT 20 WARPORI 1 0 0 WEFTORI 0 1 0",
         "KSHEAR 2 WARPORI 0 5 0 RHO 5"}};
    for (const auto& [type, params, more] : laws) {
        SCOPED_TRACE(type);
        auto original = MaterialLibrary::getMaterialOstrel(type);
        std::string name = "MAT";
        original->setName(name);
        original->parseOstrel(tokens(params));
        original->setInitialConditions(mattest::Frame().e);
        mattest::Result increments; // the elastic law reads strain increments
        increments.strain[0] = 1e-3;
        increments.strain[3] = 2e-3;
        const auto F = mattest::mat2(1.2, 0.1, 0.0, 1.0);
        const auto before = mattest::stressOf(*original, F, increments);
        const double speed = original->wavespeed2D();
        auto copy = original->copyMat();
        ASSERT_NE(copy.get(), original.get());
        EXPECT_EQ(copy->getName(), "MAT");
        copy->parseOstrel(tokens(more));
        copy->setInitialConditions(turned.e);
        EXPECT_NE(copy->wavespeed2D(), speed);
        const auto after = mattest::stressOf(*original, F, increments);
        for (int i = 0; i < 6; ++i) {
            EXPECT_EQ(after.stress[i], before.stress[i]) << i;
            EXPECT_EQ(after.strain[i], before.strain[i]) << i;
        }
        EXPECT_EQ(original->wavespeed2D(), speed);
    }
}
