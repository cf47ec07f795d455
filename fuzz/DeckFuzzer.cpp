// libFuzzer target: every input is written as a deck into a private scratch
// directory and taken through the program's whole path: model assembly, mass
// assembly, initial conditions and a bounded number of increments of the
// explicit loop. Input errors are expected and end the run as they would in
// the program (an exception caught and its chain printed); a crash, a leak,
// undefined behaviour or a hang is a finding.
#include "Element.h"
#include "Model.h"
#include "Node.h"
#include "VtkWriter.h"

#include <cstdint>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

// Enough increments to reach the strain, stress, contact and time-step code
// of every element and to let an unstable run blow up; more only slows the
// search down.
constexpr int maxIncrements = 24;
// Simulated time never matters to the search beyond the first increments.
constexpr double maxSimulatedTime = 1e6;

fs::path workDir;
fs::path deckPath;

void removeWorkDir() {
    std::error_code ec;
    fs::remove_all(workDir, ec);
}

void clearWorkDir() {
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(workDir, ec))
        fs::remove_all(entry.path(), ec);
}

void exerciseOutput(Model& model) {
    // What the element trackers would ask of every element, including
    // components outside the six.
    for (const auto& e : model.getElements())
        for (int c = -1; c <= 6; ++c) {
            e->printVTK(100, c);
            e->printVTK(200, c);
        }
    // One result file of the model as it stands, as the loop writes it.
    std::vector<std::shared_ptr<Node>> nodes = model.getNodes();
    std::vector<std::shared_ptr<Element>> elements = model.getElements();
    VtkWriter writer;
    writer.init(deckPath);
    writer.initializeWriter(nodes, elements);
    writer.writeResults(nodes, elements);
}

void runDeck() {
    Model model(1, deckPath.string());
    try {
        model.initialize();
        model.assembleMassMatrix();
        model.setInitialConditions();
        double candidateStep = 90000.0;
        for (int i = 0; i < maxIncrements; ++i) {
            if (model.getEndTime() < model.getCurrentTime() || model.getEndTime() != model.getEndTime() ||
                model.getCurrentTime() > maxSimulatedTime)
                break;
            model.step(candidateStep);
            if (i == 0) exerciseOutput(model);
            model.advanceTime();
        }
    } catch (const std::exception& e) {
        // The chain goes where the program would print it; the standard error
        // stream is libFuzzer's, so it is muted meanwhile.
        std::ostringstream sink;
        std::streambuf* const saved = std::cerr.rdbuf(sink.rdbuf());
        model.print_what(e);
        std::cerr.rdbuf(saved);
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    const char* tmp = std::getenv("TMPDIR");
    std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/drapex_fuzz_XXXXXX";
    if (!mkdtemp(pattern.data())) {
        std::perror("mkdtemp");
        std::abort();
    }
    workDir = pattern;
    deckPath = workDir / "deck.txt";
    std::atexit(removeWorkDir);
    // The program's progress lines go to standard output: silence them.
    const int devNull = open("/dev/null", O_WRONLY);
    if (devNull >= 0) {
        dup2(devNull, STDOUT_FILENO);
        close(devNull);
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    clearWorkDir();
    {
        std::ofstream deck(deckPath, std::ios::binary | std::ios::trunc);
        deck.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    }
    runDeck();
    return 0;
}
