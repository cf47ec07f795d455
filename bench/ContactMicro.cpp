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

// A deck in a folder of this process's own (another run of the benchmarks
// may be using, and removing, its own at the same time), its model brought
// through one increment with the console silenced, since the model's
// start-up lines would interleave with the benchmark table.
class ScratchModel {
public:
    ScratchModel(const std::string& folder, const std::string& deckText)
        : dir(std::filesystem::temp_directory_path() / (folder + "_" + std::to_string(::getpid()))),
          model(1, writeDeck(dir, deckText).string()) {}
    ~ScratchModel() { std::filesystem::remove_all(dir); }
    // False, with the benchmark skipped and the reason given, when the model
    // cannot be built or stepped.
    bool start(benchmark::State& state) {
        std::ostringstream quiet;
        auto* console = std::cout.rdbuf(quiet.rdbuf());
        try {
            model.initialize();
            model.assembleMassMatrix();
            model.setInitialConditions();
            step();
        } catch (const std::exception& e) {
            std::cout.rdbuf(console);
            state.SkipWithError(chainOf(e).c_str());
            return false;
        }
        std::cout.rdbuf(console);
        return true;
    }
    void step() {
        model.step(candidate, true);
        model.advanceTime(true);
    }

    std::filesystem::path dir;
    Model model;

private:
    static std::filesystem::path writeDeck(const std::filesystem::path& folder, const std::string& text) {
        std::filesystem::create_directories(folder);
        const auto deck = folder / "contact.txt";
        std::ofstream(deck) << text;
        return deck;
    }
    double candidate = 90000.0;
};

void BM_ContactTriangleSearch(benchmark::State& state) {
    const int d = static_cast<int>(state.range(0));
    ScratchModel scratch("drapex_contact_micro_" + std::to_string(d), contactDeck(d));
    if (!scratch.start(state)) return;
    Model& model = scratch.model;
    auto& elements = model.getElements();
    std::size_t next = 0;
    micro::PerItem perSearch(state, 1);
    for (auto _ : state) {
        Element& triangle = *elements[next];
        triangle.updateLocalCoordinateSystem();
        triangle.computeContactForces();
        next = next + 1 == elements.size() ? 0 : next + 1;
    }
}
BENCHMARK(BM_ContactTriangleSearch)->Arg(32)->Arg(64)->Arg(128);

// One whole increment of the same tool and sheet, every node held in place:
// the tool as contact triangles (each pushes every node inside it) or as the
// facets of one contact surface (each node pushed once, by its facet). Per
// increment: the element pass, the surface's push, the node update and the
// rebinning of the search.
std::string heldContactDeck(int d, bool surface) {
    std::string deck = contactDeck(d);
    deck.replace(deck.find("NODES\n"), 6,
                 "CONSTRAINTS TYPE BOUNDARY_CONDITION\nHELD VX 0 VY 0 VZ 0\nNODES\n");
    for (std::size_t at = deck.find(" Z "); at != std::string::npos; at = deck.find(" Z ", at + 1))
        deck.insert(deck.find('\n', at), " CONSTRAINT HELD");
    if (!surface) return deck;
    std::string out = "CONTACT_SURFACES\nTOOL TYPE SHELL T 0.5 FACTOR 10\n";
    std::istringstream in(deck);
    std::string line;
    while (std::getline(in, line)) {
        if (line == "ELEMENTS TYPE CONTACT_TRIANGLE")
            line = "ELEMENTS TYPE CONTACT_FACET";
        else if (line.find(" T 0.5 TYPE SHELL") != std::string::npos)
            line.replace(line.find(" T 0.5 TYPE SHELL"), 17, " SURFACE TOOL");
        out += line + "\n";
    }
    return out;
}

void BM_ContactIncrement(benchmark::State& state, bool surface) {
    const int d = static_cast<int>(state.range(0));
    ScratchModel scratch("drapex_contact_step_" + std::to_string(d), heldContactDeck(d, surface));
    if (!scratch.start(state)) return;
    micro::PerItem perIncrement(state, 1);
    for (auto _ : state)
        scratch.step();
}
BENCHMARK_CAPTURE(BM_ContactIncrement, triangles, false)->Arg(32)->Arg(64)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_ContactIncrement, surface, true)->Arg(32)->Arg(64)->Unit(benchmark::kMicrosecond);

} // namespace
