// Whole-model benchmark: builds the model of one deck exactly as the program
// does, then times the explicit loop's increments (element pass, node update,
// contact search, force clearing and time advance) as the program runs the
// increments that write no results.
//
//   drapex_bench DECK [--seconds S] [--increments N] [--alternate R]
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
//
// --alternate R then runs R rounds of the same number of increments, each
// round first on one thread and then on all of them, and prints
//   ALTERNATE rounds=.. increments=.. threads=.. one_thread_us=..
//             all_threads_us=.. speedup=..
// with the fastest round of each (wall-clock time per increment). The two
// counts take turns within seconds of each other in one process, so that a
// shared machine's drift hits both alike; the results do not depend on the
// number of threads, so the model runs on unchanged.
#include "AllocationCounter.h"
#include "ErrorChain.h"
#include "Model.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <iostream>
#include <omp.h>
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
    int alternateRounds = 0;
    for (int i = 2; i + 1 < argc; i += 2) {
        const std::string option = argv[i];
        if (option == "--seconds")
            targetSeconds = std::atof(argv[i + 1]);
        else if (option == "--increments")
            fixedIncrements = std::atol(argv[i + 1]);
        else if (option == "--alternate")
            alternateRounds = std::atoi(argv[i + 1]);
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
        std::printf("RESULT elements=%zu nodes=%zu increments=%ld us_per_increment=%.3f "
                    "us_per_element_step=%.5f allocations_per_increment=%.2f model_bytes=%lld "
                    "peak_bytes=%lld max_rss_kb=%ld setup_seconds=%.3f time_step=%g "
                    "wall_us_per_increment=%.3f threads=%d "
                    "logged=%zu\n",
                    model.getElements().size(), model.getNodes().size(), done, perIncrement,
                    elements > 0 ? perIncrement / elements : 0.0,
                    static_cast<double>(after.allocations - before.allocations) / static_cast<double>(done),
                    static_cast<long long>(built.liveBytes - base.liveBytes),
                    static_cast<long long>(after.peakBytes - base.liveBytes), usage.ru_maxrss, setupSeconds,
                    model.getTimeStep(), wallPerIncrement, ParallelLoop::threads(),
                    model.getParallelLoop().loggedContributions());
        if (alternateRounds > 0) {
            const int all = omp_get_max_threads();
            // About a quarter of a second a round on one thread.
            const long round =
                std::max(1L, static_cast<long>(0.25 * 1e6 / std::max(wallPerIncrement, 1.0) * all));
            double best[2] = {1e300, 1e300};
            for (int r = 0; r < alternateRounds; ++r)
                for (int k = 0; k < 2; ++k) {
                    omp_set_num_threads(k == 0 ? 1 : all);
                    const auto start = std::chrono::steady_clock::now();
                    for (long i = 0; i < round; ++i)
                        increment();
                    best[k] = std::min(best[k], seconds(std::chrono::steady_clock::now() - start) /
                                                    static_cast<double>(round) * 1e6);
                }
            omp_set_num_threads(all);
            std::printf(
                "ALTERNATE rounds=%d increments=%ld threads=%d one_thread_us=%.3f all_threads_us=%.3f "
                "speedup=%.3f\n",
                alternateRounds, round, all, best[0], best[1], best[0] / best[1]);
        }
    } catch (const std::exception& e) {
        std::cerr << "drapex_bench: " << chainOf(e) << "\n";
        return 1;
    }
    return 0;
}
