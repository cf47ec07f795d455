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
