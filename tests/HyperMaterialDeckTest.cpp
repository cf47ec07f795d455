// Hyperelastic material blocks read from deck files: the reader hands each
// line to the law, and errors reach the console with the line number.
#include "Element.h"
#include "HyperTextile.h"
#include "Hyperelastic.h"
#include "MaterialTestUtil.h"
#include "OstrelReader.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

const char* const header = "TITLE\n"
                           "** two laws\n"
                           "CONTROLS\n"
                           "RUN FROM 0 TO 1E-4\n"
                           "STEP 1E-5\n"
                           "PRINT EVERY 1E-4\n";

std::vector<std::shared_ptr<Material>> readMaterials(const std::string& name, const std::string& deck) {
    const auto dir = testutil::scratchDir(name);
    const auto path = testutil::writeFile(dir / (name + ".txt"), deck);
    OstrelReader reader;
    reader.init(path);
    const int n = reader.numberOfMaterials();
    reader.rewindFile();
    std::vector<std::shared_ptr<Material>> out;
    for (int i = 0; i < n; ++i)
        out.push_back(reader.getNextMaterial());
    return out;
}

} // namespace

TEST(HyperMaterialDeck, BlocksAreReadCaseInsensitivelyWithAnyDelimiters) {
    const std::string deck = std::string(header) +
                             "materials type hyperelastic\n"
                             "rubber rho=1.1e-9, type ogden, mu=[0.5, 0.01] alpha [2, 4]\n"
                             "Skin RHO 1E-9 TYPE OGDEN MU 1 ALPHA 2 DAMPING 0.2\n"
                             "MATERIALS TYPE HYPERTEXTILE\n"
                             "fabric rho 5e-10 kshear 0.1 kelongwarp 300 kelongweft 200 warpori [1, 0, 0] "
                             "weftori [0, 1, 0]\n";
    const auto materials = readMaterials("hyper_deck_read", deck);
    ASSERT_EQ(materials.size(), 3u);

    auto rubber = std::dynamic_pointer_cast<Hyperelastic>(materials[0]);
    ASSERT_TRUE(rubber);
    EXPECT_EQ(rubber->getName(), "RUBBER");
    EXPECT_DOUBLE_EQ(rubber->getDensity(), 1.1e-9);
    EXPECT_EQ(rubber->getMuTerms(), (std::vector<double>{0.5, 0.01}));
    EXPECT_EQ(rubber->getAlphaTerms(), (std::vector<double>{2.0, 4.0}));
    EXPECT_EQ(materials[1]->getName(), "SKIN");
    EXPECT_DOUBLE_EQ(materials[1]->getAlpha(), 0.2);

    auto fabric = std::dynamic_pointer_cast<HyperTextile>(materials[2]);
    ASSERT_TRUE(fabric);
    EXPECT_EQ(fabric->getName(), "FABRIC");
    EXPECT_EQ(fabric->getKElongWeft(), std::vector<double>{200.0});
    EXPECT_DOUBLE_EQ(fabric->wavespeed2D(), std::sqrt(300 / 5e-10));
}

TEST(HyperMaterialDeck, ParseErrorsNameTheLineOnTheConsole) {
    struct Case {
        const char* block;
        const char* line;
        const char* message;
    };
    const Case cases[] = {
        {"HYPERELASTIC", "RUBBER RHO 1E-9 TYPE MOONEY MU 1 ALPHA 2",
         "Hyperelastic potential MOONEY is not recognized"},
        {"HYPERELASTIC", "RUBBER RHO 1E-9 TYPE OGDEN MU 1 ALPHA 2 BOGUS 1", "Input BOGUS is not recognized"},
        {"HYPERTEXTILE", "FABRIC RHO 1E-9 WEFTORI 0 1 KSHEAR 1",
         "Not enough parameters for warp orientation in material : FABRIC"},
    };
    for (const Case& c : cases) {
        const std::string deck =
            std::string(header) + "MATERIALS TYPE " + c.block + "\n" + c.line + "\n"; // data line is line 8
        const auto run = testutil::runDeck("hyper_deck_error", deck);
        EXPECT_EQ(run.status, 0);
        EXPECT_TRUE(testutil::contains(run.err, " --> Details: At line 8\n")) << run.err;
        EXPECT_TRUE(testutil::contains(run.err, std::string(" --> Details: ") + c.message + "\n")) << run.err;
    }
}

TEST(HyperMaterialDeck, UnusedMaterialsAreNeverValidated) {
    // No element takes a copy, so the missing density and parameters go unnoticed.
    const std::string deck = std::string(header) + "MATERIALS TYPE HYPERELASTIC\n"
                                                   "RUBBER MU 1 2 ALPHA 2\n"
                                                   "MATERIALS TYPE HYPERTEXTILE\n"
                                                   "FABRIC KSHEAR 1\n";
    const auto run = testutil::runDeck("hyper_deck_unused", deck);
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(testutil::contains(run.out, " Exit Drapex")) << run.out;
}
