// How the explicit loop shares its work among the threads (OpenMP) so that
// the results are the same bit for bit for any number of threads.
//
// The element pass splits the elements, in the model's element order, into
// blocks of a fixed size; threads take chunks of consecutive blocks, and
// forces on nodes that another chunk owns go through the block's ForceLog
// (ForceLog.h), added in block order after the pass. The node pass splits the nodes, in update
// order, into runs of a fixed size; each run sums its energies on its own and
// the runs are added in order. Neither size depends on the number of threads,
// and the chunks change no order of a sum, so no sum depends on it.
//
// The threads are those of the OpenMP runtime: started once, at the first
// pass, and kept waiting between passes (OMP_NUM_THREADS sets how many; all
// cores by default). A pass allocates nothing once its logs have grown.
#pragma once

#include "ForceLog.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <memory>
#include <vector>

class Element;
class Node;

class ParallelLoop {
public:
    // The size of the blocks and runs for `count` items: about 16 of them,
    // of 256 to 4096 items each. It depends on the model alone, never on the
    // number of threads.
    static std::size_t share(std::size_t count);
    // Passes over fewer items run on the calling thread alone: the threads
    // would cost more to start and wait for than they save. The results are
    // the same either way.
    static constexpr std::size_t parallelFrom = 2048;

    // `count` items cut into consecutive pieces of share(count) items; the
    // same cut for any number of threads.
    struct Pieces {
        std::size_t count = 0, size = 1, number = 0;
        Pieces() = default;
        explicit Pieces(std::size_t n) : count(n), size(share(n)), number((n + size - 1) / size) {}
        std::size_t begin(std::size_t k) const { return k * size; }
        std::size_t end(std::size_t k) const { return std::min(count, (k + 1) * size); }
        // Whether a pass over them is worth the threads (see parallelFrom).
        bool parallel() const { return count >= parallelFrom && number > 1; }
    };

    // The number of threads the passes run on.
    static int threads();

    // Blocks over the elements and runs over the nodes (in update order);
    // marks each node with the block that owns it. A model of one block runs
    // its element pass as a plain loop. `contact`: some element may push a
    // node of another block (a contact element).
    void setUp(const std::vector<std::shared_ptr<Element>>& elements,
               const std::vector<std::shared_ptr<Node>>& nodes, bool contact);

    // Every element's share of the increment (Element::runStep), the nodal
    // forces added in element order; lowers candidateStep to the smallest
    // stable step of the elements. An element that fails stops the pass with
    // the failure a one-thread pass would have met first.
    void elementPass(const std::vector<std::shared_ptr<Element>>& elements, double dt, double time,
                     bool automaticStep, double& candidateStep);

    // The runs of the node pass.
    const Pieces& nodeRuns() const { return runs; }
    // Contributions logged by the last element pass (for the benchmarks).
    std::size_t loggedContributions() const { return lastLogged; }

    // Runs task(k) for k = 0 .. count - 1, each on one thread. A task that
    // throws ends only itself; once all are done the exception of the lowest
    // k is thrown again: the one a loop in order would have met first.
    // `parallel` false runs them in order on the calling thread.
    template <class Task> void forEach(std::size_t count, bool parallel, Task&& task);

private:
    void rethrowFirst(std::size_t count);

    Pieces blocks, runs;
    bool contactPushes = false;
    std::vector<ForceLog> logs;
    std::size_t chunks = 1;
    std::vector<double> chunkStep;
    std::vector<std::exception_ptr> failures;
    std::size_t lastLogged = 0;
};

template <class Task> void ParallelLoop::forEach(std::size_t count, bool parallel, Task&& task) {
    if (!parallel || count < 2) {
        for (std::size_t k = 0; k < count; ++k)
            task(k);
        return;
    }
    if (failures.size() < count) failures.resize(count);
    const long n = static_cast<long>(count);
    bool failed = false;
#pragma omp parallel for schedule(dynamic, 1) reduction(|| : failed)
    for (long k = 0; k < n; ++k) {
        try {
            task(static_cast<std::size_t>(k));
        } catch (...) {
            failures[static_cast<std::size_t>(k)] = std::current_exception();
            failed = true;
        }
    }
    if (failed) rethrowFirst(count);
}
