// The contact search must find exactly the contacts that a scan of every node
// (and every contact line) finds.
#include "ContactSearch.h"
#include "ContactFixtures.h"
#include "ContactLine.h"
#include "ContactTriangle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>

using contact_test::NodeSet;

namespace {

template <class T> std::vector<int> numbers(const std::set<const T*>& s) {
    std::vector<int> v;
    for (const T* x : s)
        v.push_back(x->getNumber());
    std::sort(v.begin(), v.end());
    return v;
}

// Random nodes in clusters of three, a contact triangle or a contact line on
// each cluster: a thin sheet along x and y (layout 0), the same sheet upright
// along x and z (1), or a thicker cloud (2). Every third node sits on a grid
// of x values, so that many nodes share their x.
struct Scene {
    NodeSet s;
    std::vector<std::shared_ptr<ContactTriangle>> triangles;
    std::vector<std::shared_ptr<ContactLine>> lines;
    std::mt19937 rng;

    double uniform(double a, double b) { return std::uniform_real_distribution<double>(a, b)(rng); }

    Scene(unsigned seed, int layout, int clusters) : rng(seed) {
        double cu = 0, cv = 0;
        for (int i = 0; i < 3 * clusters; ++i) {
            if (i % 3 == 0) cu = uniform(1, 9), cv = uniform(1, 9);
            double u = cu + uniform(-1.2, 1.2), v = cv + uniform(-1.2, 1.2), w = uniform(-0.6, 0.6);
            if (i % 3 == 1) u = 0.25 * std::floor(u / 0.25);
            if (layout == 2) w *= 3;
            layout == 1 ? s.add(u, w, v) : s.add(u, v, w);
        }
        for (int k = 0; k < clusters; ++k) {
            const std::string a = std::to_string(3 * k + 1), b = std::to_string(3 * k + 2);
            if (k % 2)
                lines.push_back(s.make<ContactLine>(
                    "NODES " + a + " " + b + " R " + std::to_string(uniform(0.05, 0.8)), true, k + 1));
            else
                triangles.push_back(s.make<ContactTriangle>(
                    "NODES " + a + " " + b + " " + std::to_string(3 * k + 3) + " T " +
                        std::to_string(uniform(0.1, 1.5)) + (k % 4 ? " TYPE SOLID" : " TYPE SHELL"),
                    true, k + 1));
        }
    }

    // Moves every node by up to `reach` in each direction and rebins them.
    void shake(double reach) {
        for (auto& n : s.list)
            s.moveTo(n, n->getX_pos() + uniform(-reach, reach), n->getY_pos() + uniform(-reach, reach),
                     n->getZ_pos() + uniform(-0.3 * reach, 0.3 * reach));
        for (auto& t : triangles)
            t->updateLocalCoordinateSystem();
        for (auto& l : lines)
            l->updateLocalCoordinateSystem();
        s.rebin();
    }

    std::set<const Node*> found(ContactTriangle& t) {
        std::set<const Node*> hits;
        t.visitCandidates([&](Node* n, double x, double y, double z) {
            if (t.checkContact(n, x, y, z)) {
                EXPECT_TRUE(hits.insert(n).second) << "node visited twice";
            }
        });
        return hits;
    }

    std::set<const Node*> scanned(ContactTriangle& t) {
        double lo = 1e300, hi = -1e300;
        for (auto& n : t.getNodes()) {
            lo = std::min(lo, n->getX_pos());
            hi = std::max(hi, n->getX_pos());
        }
        lo -= 0.5 * t.getThickness();
        hi += 0.5 * t.getThickness();
        std::set<const Node*> hits;
        for (auto& n : s.list)
            if (n->getX_pos() > lo && n->getX_pos() < hi && t.checkContact(n.get())) hits.insert(n.get());
        return hits;
    }

    void found(ContactLine& l, std::set<const Node*>& nodeHits, std::set<const ContactLine*>& lineHits) {
        l.visitCandidates(
            [&](Node* n, double x, double y, double z) {
                if (l.checkContact(n, x, y, z)) {
                    EXPECT_TRUE(nodeHits.insert(n).second) << "node visited twice";
                }
            },
            [&](ContactLine* o) {
                if (l.checkContact(o)) {
                    EXPECT_TRUE(lineHits.insert(o).second) << "line visited twice";
                }
            });
    }

    void scanned(ContactLine& l, std::set<const Node*>& nodeHits, std::set<const ContactLine*>& lineHits) {
        const double x0 = l.getNode(0)->getX_pos(), x1 = l.getNode(1)->getX_pos();
        const double lo = std::min(x0, x1) - l.getRadius(), hi = std::max(x0, x1) + l.getRadius();
        auto inStrip = [&](const Node& n) { return n.getX_pos() > lo && n.getX_pos() < hi; };
        for (auto& n : s.list)
            if (inStrip(*n) && l.checkContact(n.get())) nodeHits.insert(n.get());
        for (auto& o : lines)
            if ((inStrip(*o->getNode(0)) || inStrip(*o->getNode(1))) && l.checkContact(o.get()))
                lineHits.insert(o.get());
    }

    // Compares the search with a full scan for every element; returns the
    // number of contacts found.
    int compareAll() {
        int contacts = 0;
        for (auto& t : triangles) {
            const auto brute = scanned(*t);
            EXPECT_EQ(numbers(found(*t)), numbers(brute)) << "triangle " << t->getNumber();
            contacts += static_cast<int>(brute.size());
        }
        for (auto& l : lines) {
            std::set<const Node*> bruteNodes, indexNodes;
            std::set<const ContactLine*> bruteLines, indexLines;
            scanned(*l, bruteNodes, bruteLines);
            found(*l, indexNodes, indexLines);
            EXPECT_EQ(numbers(indexNodes), numbers(bruteNodes)) << "line " << l->getNumber();
            EXPECT_EQ(numbers(indexLines), numbers(bruteLines)) << "line " << l->getNumber();
            contacts += static_cast<int>(bruteNodes.size() + bruteLines.size());
        }
        return contacts;
    }
};

} // namespace

TEST(ContactSearch, FindsExactlyWhatAFullScanFinds) {
    int contacts = 0;
    for (int layout = 0; layout < 3; ++layout)
        for (unsigned seed = 1; seed <= 3; ++seed) {
            Scene scene(seed * 7919u + static_cast<unsigned>(layout), layout, 120);
            contacts += scene.compareAll();
            for (int round = 0; round < 3; ++round) {
                scene.shake(1.2);
                contacts += scene.compareAll();
            }
        }
    EXPECT_GT(contacts, 500); // the scenes do produce contacts of every kind
}
