// Times the contact search of a deck: a whole increment of the solution loop,
// and the contact part alone (element basis updates, contact forces and the
// refresh of the spatial index), then the contact part again with every
// contact element walking the x-ordered node chain instead of the index.
//
//     ContactSearchBench deck.txt [repeats] [index]
//
// ("index" skips the chain walk).
//
// Prints one line: nodes, contact elements, candidate nodes that the
// triangles visit per step (with the index), and seconds per step (whole
// step, contact with the index, contact by chain walk).
#include "ContactLine.h"
#include "ContactSearch.h"
#include "ContactTriangle.h"
#include "Element.h"
#include "Model.h"
#include "Node.h"

#include <cstdio>
#include <ctime>
#include <functional>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

// Processor time of the process per call: unlike the wall clock it does not
// count the time other jobs on the machine hold the processor.
double secondsPer(int repeats, const std::function<void()>& work) {
    auto now = []() {
        timespec t;
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
        return t.tv_sec + 1e-9 * t.tv_nsec;
    };
    const double start = now();
    for (int i = 0; i < repeats; ++i)
        work();
    return repeats > 0 ? (now() - start) / repeats : 0.0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::cerr << "usage: ContactSearchBench deck.txt [repeats] [index]\n";
        return 1;
    }
    const int repeats = argc > 2 ? std::stoi(argv[2]) : 10;
    const bool walkToo = !(argc > 3 && std::string(argv[3]) == "index");
    std::ostringstream sink;
    std::streambuf* console = std::cout.rdbuf(sink.rdbuf());
    auto model = std::make_unique<Model>(1, argv[1]);
    model->initialize();
    model->assembleMassMatrix();
    model->setInitialConditions();
    double candidate = 90000.0;
    model->step(candidate); // first touch of every array

    std::vector<ContactTriangle*> triangles;
    std::vector<ContactLine*> lines;
    for (const auto& e : model->getElements()) {
        if (auto* t = dynamic_cast<ContactTriangle*>(e.get())) triangles.push_back(t);
        if (auto* l = dynamic_cast<ContactLine*>(e.get())) lines.push_back(l);
    }
    long visits = 0;
    for (ContactTriangle* t : triangles)
        t->visitCandidates([&](Node*, double, double, double) { ++visits; });

    auto clear = [&]() {
        for (const auto& n : model->getNodes())
            n->clearNodalForces();
    };
    auto contactForces = [&]() {
        for (const auto& e : model->getElements()) {
            e->updateLocalCoordinateSystem();
            e->computeContactForces();
        }
    };
    const double wholeStep = secondsPer(repeats, [&]() {
        model->step(candidate);
        clear();
    });
    const double indexed = secondsPer(repeats, [&]() {
        contactForces();
        model->getContactSearch()->update(model->getNodes());
        clear();
    });
    for (ContactTriangle* t : triangles)
        t->setContactSearch(nullptr);
    for (ContactLine* l : lines)
        l->setContactSearch(nullptr);
    const double walked = secondsPer(walkToo ? repeats : 0, [&]() {
        contactForces();
        clear();
    });
    const std::size_t nodeCount = model->getNodes().size();
    model.reset();
    std::cout.rdbuf(console);
    std::printf("%zu nodes, %zu contact elements, %ld triangle candidates; seconds per step: whole %.3e, "
                "contact %.3e (index), %.3e (chain walk)\n",
                nodeCount, triangles.size() + lines.size(), visits, wholeStep, indexed, walked);
    return 0;
}
