// Whole-model benchmark: builds the model of one deck exactly as the program
// does, then times the explicit loop's increments (element pass, node update,
// contact search, force clearing and time advance) as the program runs the
// increments that write no results.
//
//   drapex_bench DECK [--seconds S] [--increments N]
//
// (logged is the number of nodal contributions the last element pass kept
// in the logs of its blocks, see ForceLog.h)
//
// Prints the program's own start-up lines, then one line
//   RESULT elements=.. nodes=.. increments=.. us_per_increment=..
//          us_per_element_step=.. allocations_per_increment=..
//          model_bytes=.. peak_bytes=.. max_rss_kb=.. setup_seconds=..
//          time_step=.. wall_us_per_increment=.. threads=.. logged=..
// where the times per increment are processor time (the wall-clock time
// is given last), model_bytes is the heap the assembled model holds and peak_bytes the
// most heap held at once from reading the deck to the end of the timed loop.
#include "AllocationCounter.h"
#include "ErrorChain.h"
#include "Model.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <iostream>
#include <string>
#include <sys/resource.h>

namespace {
double seconds(std::chrono::steady_clock::duration d) {
    return std::chrono::duration<double>(d).count();
}

// Processor time of this process: on a shared machine it counts only the
// cycles the loop itself was given.
double cpuSeconds() {
    timespec ts{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) + 1e-9 * static_cast<double>(ts.tv_nsec);
}
} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::cerr << "usage: drapex_bench DECK [--seconds S] [--increments N]\n";
        return 2;
    }
    const std::string deck = argv[1];
    double targetSeconds = 2.0;
    long fixedIncrements = 0;
    for (int i = 2; i + 1 < argc; i += 2) {
        const std::string option = argv[i];
        if (option == "--seconds")
            targetSeconds = std::atof(argv[i + 1]);
        else if (option == "--increments")
            fixedIncrements = std::atol(argv[i + 1]);
        else {
            std::cerr << "unknown option " << option << "\n";
            return 2;
        }
    }

    try {
        const auto base = allocation::snapshot();
        allocation::resetPeak();
        const auto setupStart = std::chrono::steady_clock::now();
        Model model(1, deck);
        model.initialize();
        model.assembleMassMatrix();
        model.setInitialConditions();
        const double setupSeconds = seconds(std::chrono::steady_clock::now() - setupStart);
        const auto built = allocation::snapshot();

        double candidateStep = 90000.0;
        auto increment = [&] {
            model.step(candidateStep, true);
            model.advanceTime(true);
        };
        for (int i = 0; i < 5; ++i)
            increment();

        long done = 0;
        double elapsed = 0.0;
        const double cpuStart = cpuSeconds();
        const auto before = allocation::snapshot();
        long batch = fixedIncrements > 0 ? fixedIncrements : 10;
        while (true) {
            const auto start = std::chrono::steady_clock::now();
            for (long i = 0; i < batch; ++i)
                increment();
            elapsed += seconds(std::chrono::steady_clock::now() - start);
            done += batch;
            if (fixedIncrements > 0 || elapsed >= targetSeconds) break;
            batch = elapsed > 0.0
                        ? std::max(1L, static_cast<long>(done * (targetSeconds - elapsed) / elapsed) + 1)
                        : batch * 2;
        }
        const auto after = allocation::snapshot();
        const double cpu = cpuSeconds() - cpuStart;

        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        const double elements = static_cast<double>(model.getElements().size());
        const double perIncrement = cpu / static_cast<double>(done) * 1e6;
        const double wallPerIncrement = elapsed / static_cast<double>(done) * 1e6;
        std::printf(
            "RESULT elements=%zu nodes=%zu increments=%ld us_per_increment=%.3f "
            "us_per_element_step=%.5f allocations_per_increment=%.2f model_bytes=%lld "
            "peak_bytes=%lld max_rss_kb=%ld setup_seconds=%.3f time_step=%g wall_us_per_increment=%.3f threads=%d "
            "logged=%zu\n",
            model.getElements().size(), model.getNodes().size(), done, perIncrement,
            elements > 0 ? perIncrement / elements : 0.0,
            static_cast<double>(after.allocations - before.allocations) / static_cast<double>(done),
            static_cast<long long>(built.liveBytes - base.liveBytes),
            static_cast<long long>(after.peakBytes - base.liveBytes), usage.ru_maxrss, setupSeconds,
            model.getTimeStep(), wallPerIncrement, ParallelLoop::threads(),
            model.getParallelLoop().loggedContributions());
    } catch (const std::exception& e) {
        std::cerr << "drapex_bench: " << chainOf(e) << "\n";
        return 1;
    }
    return 0;
}
