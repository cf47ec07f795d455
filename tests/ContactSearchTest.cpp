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

enum class Layout { FlatXY, UprightXZ, Cloud };

template <class T> std::vector<int> numbers(const std::set<const T*>& s) {
    std::vector<int> v;
    for (const T* x : s)
        v.push_back(x->getNumber());
    std::sort(v.begin(), v.end());
    return v;
}

// Random nodes (a jittered sheet or a cloud, with many equal x values) and
// contact triangles and lines on nearby nodes.
struct Scene {
    NodeSet s;
    std::vector<std::shared_ptr<ContactTriangle>> triangles;
    std::vector<std::shared_ptr<ContactLine>> lines;
    std::mt19937 rng;
    Layout layout;

    double uniform(double a, double b) { return std::uniform_real_distribution<double>(a, b)(rng); }

    void place(double u, double v, double w, double out[3]) {
        // u, v span the sheet, w is the thin direction.
        out[0] = u;
        out[1] = layout == Layout::UprightXZ ? w : v;
        out[2] = layout == Layout::UprightXZ ? v : (layout == Layout::Cloud ? 3 * w : w);
    }

    Scene(unsigned seed, Layout l, int count) : rng(seed), layout(l) {
        for (int i = 0; i < count; ++i) {
            double u = uniform(0, 10), v = uniform(0, 10), w = uniform(-0.6, 0.6);
            if (i % 3 == 0) u = 0.25 * std::floor(u / 0.25); // equal x values
            double p[3];
            place(u, v, w, p);
            s.add(p[0], p[1], p[2]);
        }
        s.rebin();
        std::uniform_int_distribution<int> pick(0, count - 1);
        auto near = [&](int i) {
            for (int tries = 0; tries < 200; ++tries) {
                const int j = pick(rng);
                if (j == i) continue;
                const double dx = s.list[j]->getX_pos() - s.list[i]->getX_pos();
                const double dy = s.list[j]->getY_pos() - s.list[i]->getY_pos();
                const double dz = s.list[j]->getZ_pos() - s.list[i]->getZ_pos();
                if (dx * dx + dy * dy + dz * dz < 2.5 * 2.5) return j;
            }
            return (i + 1) % count;
        };
        for (int k = 0; k < count / 6; ++k) {
            const int i = pick(rng), j = near(i);
            int m = near(i);
            if (m == j) m = (j + 1) % count;
            triangles.push_back(s.make<ContactTriangle>(
                "NODES " + std::to_string(i + 1) + " " + std::to_string(j + 1) + " " + std::to_string(m + 1) +
                    " T " + std::to_string(uniform(0.1, 1.5)) + (k % 2 ? " TYPE SOLID" : " TYPE SHELL"),
                true, k + 1));
        }
        for (int k = 0; k < count / 5; ++k) {
            const int i = pick(rng), j = near(i);
            lines.push_back(s.make<ContactLine>("NODES " + std::to_string(i + 1) + " " +
                                                    std::to_string(j + 1) + " R " +
                                                    std::to_string(uniform(0.05, 0.8)),
                                                true, k + 1));
        }
        s.rebin();
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
    for (Layout layout : {Layout::FlatXY, Layout::UprightXZ, Layout::Cloud})
        for (unsigned seed = 1; seed <= 3; ++seed) {
            Scene scene(seed * 7919u + static_cast<unsigned>(layout), layout, 360);
            contacts += scene.compareAll();
            for (int round = 0; round < 3; ++round) {
                scene.shake(1.2);
                contacts += scene.compareAll();
            }
        }
    EXPECT_GT(contacts, 500); // the scenes do produce contacts of every kind
}
