// Times the contact search of a deck: a whole increment of the solution loop,
// and the contact part alone (element basis updates, contact forces and the
// refresh of the search's grid).
//
//     ContactSearchBench deck.txt [repeats]
//
// Prints one line: nodes, contact elements, candidate nodes that the
// triangles visit per step, and seconds per step (whole step, contact).
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
        std::cerr << "usage: ContactSearchBench deck.txt [repeats]\n";
        return 1;
    }
    const int repeats = argc > 2 ? std::stoi(argv[2]) : 10;
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
    const std::size_t nodeCount = model->getNodes().size();
    model.reset();
    std::cout.rdbuf(console);
    std::printf("%zu nodes, %zu contact elements, %ld triangle candidates; seconds per step: whole %.3e, "
                "contact %.3e\n",
                nodeCount, triangles.size() + lines.size(), visits, wholeStep, indexed);
    return 0;
}
