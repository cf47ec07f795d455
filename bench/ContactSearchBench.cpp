// Times the contact search of a deck: a whole increment of the solution loop,
// and the contact part alone (element basis updates, contact forces and the
// refresh of the spatial index), then the contact part again with every
// contact element walking the x-ordered node chain instead of the index.
//
//     ContactSearchBench deck.txt [repeats]
//
// Prints one line: nodes, contact elements, seconds per step (whole step,
// contact with index, contact by chain walk).
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
    return (now() - start) / repeats;
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

    long visits = 0;
    for (const auto& e : model->getElements())
        if (auto* t = dynamic_cast<ContactTriangle*>(e.get())) t->visitCandidates([&](Node*) { ++visits; });
    std::fprintf(stderr, "candidates visited per step: %ld\n", visits);
    int contactElements = 0;
    for (const auto& e : model->getElements())
        if (dynamic_cast<ContactTriangle*>(e.get()) || dynamic_cast<ContactLine*>(e.get())) ++contactElements;
    auto contactPart = [&]() {
        for (const auto& e : model->getElements()) {
            e->updateLocalCoordinateSystem();
            e->computeContactForces();
        }
        if (model->getContactSearch()) model->getContactSearch()->update(model->getNodes());
        for (const auto& n : model->getNodes())
            n->clearNodalForces();
    };
    const double wholeStep = secondsPer(repeats, [&]() {
        model->step(candidate);
        for (const auto& n : model->getNodes())
            n->clearNodalForces();
    });
    const double indexed = secondsPer(repeats, contactPart);
    const double refresh =
        secondsPer(repeats, [&]() { model->getContactSearch()->update(model->getNodes()); });
    const double bases = secondsPer(repeats, [&]() {
        for (const auto& e : model->getElements())
            e->updateLocalCoordinateSystem();
    });
    std::fprintf(stderr, "index refresh %.3e s, element bases %.3e s\n", refresh, bases);

    auto index = model->getContactSearch();
    for (const auto& e : model->getElements()) {
        if (auto* t = dynamic_cast<ContactTriangle*>(e.get())) t->setContactSearch(nullptr);
        if (auto* l = dynamic_cast<ContactLine*>(e.get())) l->setContactSearch(nullptr);
    }
    const double walked = secondsPer(repeats, [&]() {
        for (const auto& e : model->getElements()) {
            e->updateLocalCoordinateSystem();
            e->computeContactForces();
        }
        for (const auto& n : model->getNodes())
            n->clearNodalForces();
    });
    const std::size_t nodeCount = model->getNodes().size();
    model.reset();
    std::cout.rdbuf(console);
    std::printf("%zu nodes %d contact elements: step %.3e s, contact %.3e s (index), %.3e s (chain walk)\n",
                nodeCount, contactElements, wholeStep, indexed, walked);
    return 0;
}
