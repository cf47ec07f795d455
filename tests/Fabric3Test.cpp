// The woven-fabric shell against the fabric cantilever test: strips that
// overhang a ledge (clamped at its edge) bend under their own weight to the
// shape of the heavy elastica, which depends only on the overhang over the
// bending length c = (D / w)^(1/3), w the weight per unit area.
#include "ResultReadBack.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <utility>

using namespace testutil;

namespace {

// The heavy elastica of a strip clamped level at s = 0 with a free end at
// s = l, lengths in units of c: theta'' = -(l - s) cos(theta), theta(0) = 0,
// theta'(l) = 0, theta the slope below the horizontal. Shooting on theta'(0)
// with RK4; returns the tip (x, -z) in units of c.
std::pair<double, double> elasticaTip(double l) {
    auto shoot = [l](double slope, double& x, double& z) {
        const int n = 4000;
        const double h = l / n;
        double s[4] = {0.0, slope, 0.0, 0.0}; // theta, theta', x, z
        auto rate = [l](double u, const double(&y)[4], double(&d)[4]) {
            d[0] = y[1];
            d[1] = -(l - u) * std::cos(y[0]);
            d[2] = std::cos(y[0]);
            d[3] = std::sin(y[0]);
        };
        for (int i = 0; i < n; ++i) {
            double k[4][4], y[4];
            const double u = i * h, step[4] = {0.0, 0.5 * h, 0.5 * h, h};
            for (int stage = 0; stage < 4; ++stage) {
                for (int j = 0; j < 4; ++j)
                    y[j] = s[j] + (stage ? step[stage] * k[stage - 1][j] : 0.0);
                rate(u + step[stage], y, k[stage]);
            }
            for (int j = 0; j < 4; ++j)
                s[j] += h / 6.0 * (k[0][j] + 2.0 * k[1][j] + 2.0 * k[2][j] + k[3][j]);
        }
        x = s[2];
        z = s[3];
        return s[1];
    };
    double lo = 0.0, hi = l * l, x = 0.0, z = 0.0;
    for (int i = 0; i < 60; ++i) {
        const double mid = 0.5 * (lo + hi);
        (shoot(mid, x, z) > 0.0 ? hi : lo) = mid;
    }
    shoot(0.5 * (lo + hi), x, z);
    return {x, z};
}

} // namespace

TEST(FabricShellCantilever, OverhangingStripsBendToTheHeavyElasticaAlongWarpAndWeft) {
    // mm, N, t: a 200 g/m^2 fabric; bending length 25 mm about the warp and
    // 25 / 1.75 mm about the weft. Three strips 5 mm wide in elements of 5 mm:
    // along the warp 40 and 70 mm long, along the weft 40 mm.
    const double rho = 2e-10, g = 9810.0, w = rho * g, cWarp = 25.0, cWeft = cWarp / 1.75;
    struct Strip {
        double length;
        bool alongWeft;
        double c;
    };
    const Strip strips[] = {{40.0, false, cWarp}, {70.0, false, cWarp}, {40.0, true, cWeft}};
    std::ostringstream nodes, elements, tips;
    int node = 1, element = 1;
    for (const Strip& s : strips) {
        const int n = int(s.length / 5.0);
        for (int i = 0; i <= n; ++i)
            for (int j = 0; j <= 1; ++j) {
                const double along = 5.0 * i, across = 5.0 * j + (s.alongWeft ? 0.0 : 100.0 * element);
                nodes << node + 2 * i + j << " X " << (s.alongWeft ? across : along) << " Y "
                      << (s.alongWeft ? along : across) << (i ? " LOAD GRAVITY\n" : " CONSTRAINT CLAMP\n");
            }
        for (int i = 0; i < n; ++i) {
            const int a = node + 2 * i, c = a + 3;
            int b = a + 2, d = a + 1;
            // Counter-clockwise seen from +z for both orientations.
            if (s.alongWeft) std::swap(b, d);
            elements << element << " NODES " << a << ' ' << b << ' ' << c << " MATERIAL CLOTH T 0.3\n"
                     << element + 1 << " NODES " << a << ' ' << c << ' ' << d << " MATERIAL CLOTH T 0.3\n";
            element += 2;
        }
        tips << ' ' << node + 2 * n;
        node += 2 * (n + 1);
    }
    std::ostringstream deck;
    deck << "TITLE\n** fabric strips overhanging a ledge\nCONTROLS\nRUN FROM 0 TO 1.21\nSTEP 0\nPRINT EVERY "
            "0.6\n"
         << "CONSTRAINTS TYPE BOUNDARY_CONDITION\nCLAMP VX 0 VY 0 VZ 0 VRX 0 VRY 0 VRZ 0\n"
         << "LOADS\nGRAVITY AZ " << -g << "\nMATERIALS TYPE HYPERTEXTILE\n"
         << "CLOTH RHO " << rho << " KELONGWARP 0.5 KELONGWEFT 0.5 KSHEAR 0.005 WARPORI 1 0 0 WEFTORI 0 1 0"
         << " BENDING " << std::pow(cWarp, 3) * w << ' ' << std::pow(cWeft, 3) * w << " DAMPING 18\n"
         << "NODES\n"
         << nodes.str() << "ELEMENTS TYPE FABRIC_3\n"
         << elements.str() << "TRACKERS TYPE NODE\n";
    for (const char* axis : {"X", "Y", "Z"})
        deck << "TIP" << axis << " NODES" << tips.str() << " DIRECTION " << axis << " TYPE POSITION\n";
    fs::path path;
    const RunResult run = runDeck("fabric_cantilever", deck.str(), &path);
    ASSERT_EQ(run.err, "");
    const auto x = readback::lastRow(path.parent_path() / "TIPX.csv");
    const auto y = readback::lastRow(path.parent_path() / "TIPY.csv");
    const auto z = readback::lastRow(path.parent_path() / "TIPZ.csv");
    ASSERT_EQ(z.size(), 5u);
    const double degree = 45.0 / std::atan(1.0);
    for (int k = 0; k < 3; ++k) {
        const Strip& s = strips[k];
        SCOPED_TRACE(k);
        const auto [ex, ez] = elasticaTip(s.length / s.c);
        const double reach = s.alongWeft ? y[k + 1] : x[k + 1];
        // The angle of the line from the ledge to the tip, which the test reads.
        const double angle = std::atan2(-z[k + 1], reach) * degree;
        EXPECT_NEAR(angle, std::atan2(ez, ex) * degree, 0.15);
        EXPECT_NEAR(-z[k + 1], ez * s.c, 0.002 * s.length);
    }
}
