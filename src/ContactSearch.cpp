#include "ContactSearch.h"

#include "ParallelLoop.h"

#include "ContactLine.h"
#include "Node.h"

#include <algorithm>

namespace {
// Lines whose rectangle covers more cells than this are scanned by every
// query instead of being copied into all of their cells.
constexpr int max_cells_per_line_ = 64;
} // namespace

double ContactSearch::secondary(const Node& n) const {
    return axis == 1 ? n.getY_pos() : n.getZ_pos();
}

ContactSearch::~ContactSearch() {
    for (ContactLine* line : lines) {
        line->search = nullptr;
        line->searchSlot = -1;
    }
}

void ContactSearch::addLine(ContactLine* line) {
    if (line->searchSlot >= 0) return;
    line->searchSlot = static_cast<int>(lines.size());
    lines.push_back(line);
}

void ContactSearch::removeLine(ContactLine* line) {
    const int slot = line->searchSlot;
    if (slot < 0 || slot >= static_cast<int>(lines.size()) || lines[slot] != line) return;
    lines[slot] = lines.back();
    lines[slot]->searchSlot = slot;
    lines.pop_back();
    line->searchSlot = -1;
    // The bins may still hold the line until the next update.
    auto drop = [line](std::vector<ContactLine*>& v) {
        std::replace(v.begin(), v.end(), line, (ContactLine*)nullptr);
    };
    drop(lineItems);
    looseLines.erase(std::remove(looseLines.begin(), looseLines.end(), line), looseLines.end());
}

bool ContactSearch::cellRange(double xLow, double xHigh, double yLow, double yHigh, double zLow, double zHigh,
                              int& x0, int& x1, int& s0, int& s1) const {
    if (!(xLow <= xHigh)) return false;
    x0 = cellX(xLow);
    x1 = cellX(xHigh);
    const double sLow = axis == 1 ? yLow : zLow, sHigh = axis == 1 ? yHigh : zHigh;
    if (sLow <= sHigh) {
        s0 = cellS(sLow);
        s1 = cellS(sHigh);
    } else if (sLow > sHigh) {
        return false;
    } else {
        // An undefined box rejects nothing in the elements' own test: search all.
        s0 = 0;
        s1 = cellsS - 1;
    }
    return true;
}

bool ContactSearch::lineCells(const ContactLine& line, int& x0, int& x1, int& s0, int& s1) const {
    const Node& a = *line.getNodes()[0];
    const Node& b = *line.getNodes()[1];
    const double xa = a.getX_pos(), xb = b.getX_pos(), sa = secondary(a), sb = secondary(b);
    if (!std::isfinite(xa) || !std::isfinite(xb) || !std::isfinite(sa) || !std::isfinite(sb)) return false;
    x0 = cellX(std::min(xa, xb));
    x1 = cellX(std::max(xa, xb));
    s0 = cellS(std::min(sa, sb));
    s1 = cellS(std::max(sa, sb));
    return (x1 - x0 + 1) * (s1 - s0 + 1) <= max_cells_per_line_;
}

void ContactSearch::update(const std::vector<std::shared_ptr<Node>>& nodes, ParallelLoop* loop) {
    // Nodes are read in number order, which is the order the deck reader made
    // them in and so follows memory; reading them in x order instead would
    // jump through memory once the model outgrows the caches.
    if (&nodes != source || nodes.size() != ordered.size()) {
        source = &nodes;
        ordered.clear();
        for (const auto& n : nodes)
            ordered.push_back(n.get());
        std::stable_sort(ordered.begin(), ordered.end(),
                         [](const Node* a, const Node* b) { return a->getNumber() < b->getNumber(); });
    }
    const std::size_t count = ordered.size();

    // One read of every position; extent of the finite ones, each run of
    // nodes on its own and then the runs in order (a least and a greatest
    // value do not depend on the order they are taken in).
    packed.resize(count);
    looseNodes.clear();
    const ParallelLoop::Pieces runs(count);
    extents.resize(runs.number);
    auto forEachRun = [&](auto&& task) {
        if (loop)
            loop->forEach(runs.number, runs.parallel(), task);
        else
            for (std::size_t r = 0; r < runs.number; ++r)
                task(r);
    };
    forEachRun([&](std::size_t r) {
        // Found here and stored once (neighbouring runs share cache lines).
        Extent x;
        x.binned = 0;
        x.loose = false;
        for (std::size_t i = runs.begin(r); i < runs.end(r); ++i) {
            Node* n = ordered[i];
            Entry& e = packed[i];
            e = {n->getX_pos(), n->getY_pos(), n->getZ_pos(), n};
            if (!std::isfinite(e.x) || !std::isfinite(e.y) || !std::isfinite(e.z)) {
                x.loose = true;
                continue;
            }
            const double c[3] = {e.x, e.y, e.z};
            for (int k = 0; k < 3; ++k) {
                if (x.binned == 0 || c[k] < x.lo[k]) x.lo[k] = c[k];
                if (x.binned == 0 || c[k] > x.hi[k]) x.hi[k] = c[k];
            }
            ++x.binned;
        }
        extents[r] = x;
    });
    double lo[3] = {0, 0, 0}, hi[3] = {0, 0, 0};
    int binned = 0;
    for (std::size_t r = 0; r < runs.number; ++r) {
        const Extent& x = extents[r];
        if (x.loose)
            for (std::size_t i = runs.begin(r); i < runs.end(r); ++i) {
                const Entry& e = packed[i];
                if (!std::isfinite(e.x) || !std::isfinite(e.y) || !std::isfinite(e.z))
                    looseNodes.push_back(e);
            }
        if (x.binned == 0) continue;
        for (int k = 0; k < 3; ++k) {
            if (binned == 0 || x.lo[k] < lo[k]) lo[k] = x.lo[k];
            if (binned == 0 || x.hi[k] > hi[k]) hi[k] = x.hi[k];
        }
        binned += x.binned;
    }
    // The second axis is the wider of y and z.
    axis = (hi[2] - lo[2] > hi[1] - lo[1]) ? 2 : 1;
    originX = lo[0];
    originS = lo[axis];
    double lengthX = hi[0] - lo[0], lengthS = hi[axis] - lo[axis];
    // Finite coordinates more than the largest double apart have no finite
    // extent to divide into cells: search that axis as one cell.
    if (!std::isfinite(lengthX)) lengthX = 0.0;
    if (!std::isfinite(lengthS)) lengthS = 0.0;

    // About one cell per node, square where both spreads allow it.
    const int target = std::max(binned, 1);
    cellsX = cellsS = 1;
    if (lengthX > 0.0 && lengthS > 0.0) {
        const double side = std::sqrt(lengthX * lengthS / target);
        const double nx = std::floor(lengthX / side), ns = std::floor(lengthS / side);
        if (nx < 1.0) {
            cellsS = target;
        } else if (ns < 1.0) {
            cellsX = target;
        } else {
            cellsX = static_cast<int>(std::min<double>(nx, target));
            cellsS = static_cast<int>(std::min<double>(ns, target));
        }
    } else if (lengthX > 0.0) {
        cellsX = target;
    } else if (lengthS > 0.0) {
        cellsS = target;
    }
    sizeX = lengthX > 0.0 ? lengthX / cellsX : 1.0;
    sizeS = lengthS > 0.0 ? lengthS / cellsS : 1.0;
    const int cells = cellsX * cellsS;

    // Counting sort into the cells, keeping number order within a cell; the
    // cells are found run by run, counted and filled in node order.
    nodeStart.assign(cells + 1, 0);
    cellOfNode.resize(count);
    forEachRun([&](std::size_t r) {
        for (std::size_t i = runs.begin(r); i < runs.end(r); ++i) {
            const Entry& e = packed[i];
            cellOfNode[i] = !std::isfinite(e.x) || !std::isfinite(e.y) || !std::isfinite(e.z)
                                ? -1
                                : cellX(e.x) * cellsS + cellS(axis == 1 ? e.y : e.z);
        }
    });
    for (std::size_t i = 0; i < count; ++i)
        if (cellOfNode[i] >= 0) ++nodeStart[cellOfNode[i] + 1];
    for (int c = 0; c < cells; ++c)
        nodeStart[c + 1] += nodeStart[c];
    nodeItems.resize(nodeStart[cells]);
    cursor.assign(nodeStart.begin(), nodeStart.end() - 1);
    for (std::size_t i = 0; i < count; ++i)
        if (cellOfNode[i] >= 0) nodeItems[cursor[cellOfNode[i]]++] = packed[i];

    // Lines: every cell that the segment's rectangle covers.
    lineStart.assign(cells + 1, 0);
    looseLines.clear();
    int x0, x1, s0, s1;
    for (ContactLine* line : lines) {
        if (!lineCells(*line, x0, x1, s0, s1)) {
            looseLines.push_back(line);
            continue;
        }
        for (int i = x0; i <= x1; ++i)
            for (int j = s0; j <= s1; ++j)
                ++lineStart[i * cellsS + j + 1];
    }
    for (int c = 0; c < cells; ++c)
        lineStart[c + 1] += lineStart[c];
    lineItems.resize(lineStart[cells]);
    cursor.assign(lineStart.begin(), lineStart.end() - 1);
    for (ContactLine* line : lines) {
        if (!lineCells(*line, x0, x1, s0, s1)) continue;
        for (int i = x0; i <= x1; ++i)
            for (int j = s0; j <= s1; ++j)
                lineItems[cursor[i * cellsS + j]++] = line;
    }
}
