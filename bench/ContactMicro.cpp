// One contact search: a contact triangle of a finely meshed tool looks for
// the nodes of a sheet that lies on the tool, and pushes back those that
// penetrate it. The sheet's nodes sit 0.05 below the tool surface, inside the
// contact thickness, so that every search finds and loads a few nodes.
#include "ErrorChain.h"
#include "MicroFixtures.h"

#include "Model.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <unistd.h>

namespace {

// Tool and sheet of d x d cells each over the square [0, d] x [0, d].
std::string contactDeck(int d) {
    std::string deck = "CONTROLS\nRUN FROM 0 TO 1\nSTEP 1e-6\nPRINT EVERY 1\nNODES\n";
    auto grid = [&](int first, double z, double shift) {
        for (int j = 0; j <= d; ++j)
            for (int i = 0; i <= d; ++i)
                deck += std::to_string(first + j * (d + 1) + i) + " X " + std::to_string(i + shift) + " Y " +
                        std::to_string(j + shift) + " Z " + std::to_string(z) + "\n";
    };
    const int perGrid = (d + 1) * (d + 1);
    grid(1, 0.0, 0.0);
    grid(1 + perGrid, -0.05, 0.25);
    deck += "ELEMENTS TYPE CONTACT_TRIANGLE\n";
    int e = 0;
    auto node = [d](int i, int j) { return std::to_string(j * (d + 1) + i + 1); };
    for (int j = 0; j < d; ++j)
        for (int i = 0; i < d; ++i) {
            deck += std::to_string(++e) + " NODES " + node(i, j) + " " + node(i + 1, j) + " " +
                    node(i + 1, j + 1) + " T 0.5 TYPE SHELL\n";
            deck += std::to_string(++e) + " NODES " + node(i, j) + " " + node(i + 1, j + 1) + " " +
                    node(i, j + 1) + " T 0.5 TYPE SHELL\n";
        }
    return deck;
}

void BM_ContactTriangleSearch(benchmark::State& state) {
    const int d = static_cast<int>(state.range(0));
    // A folder of this process's own: another run of the benchmarks may be
    // using, and removing, its own at the same time.
    const auto dir = std::filesystem::temp_directory_path() /
                     ("drapex_contact_micro_" + std::to_string(::getpid()) + "_" + std::to_string(d));
    std::filesystem::create_directories(dir);
    const auto deck = dir / "contact.txt";
    std::ofstream(deck) << contactDeck(d);
    Model model(1, deck.string());
    // The model's start-up lines would interleave with the benchmark table.
    std::ostringstream quiet;
    auto* console = std::cout.rdbuf(quiet.rdbuf());
    try {
        model.initialize();
        model.assembleMassMatrix();
        model.setInitialConditions();
        double candidate = 90000.0;
        model.step(candidate, true);
    } catch (const std::exception& e) {
        std::cout.rdbuf(console);
        state.SkipWithError(chainOf(e).c_str());
        std::filesystem::remove_all(dir);
        return;
    }
    std::cout.rdbuf(console);
    auto& elements = model.getElements();
    std::size_t next = 0;
    micro::PerItem perSearch(state, 1);
    for (auto _ : state) {
        Element& triangle = *elements[next];
        triangle.updateLocalCoordinateSystem();
        triangle.computeContactForces();
        next = next + 1 == elements.size() ? 0 : next + 1;
    }
    std::filesystem::remove_all(dir);
}
BENCHMARK(BM_ContactTriangleSearch)->Arg(32)->Arg(64)->Arg(128);

} // namespace
