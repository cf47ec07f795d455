#include "ParallelLoop.h"

#include "Element.h"
#include "Node.h"

#include <omp.h>

#include <algorithm>

int ParallelLoop::threads() {
    return omp_get_max_threads();
}

std::size_t ParallelLoop::share(std::size_t count) {
    return std::min<std::size_t>(4096, std::max<std::size_t>(256, count / 16));
}

void ParallelLoop::setUp(const std::vector<std::shared_ptr<Element>>& elements,
                         const std::vector<std::shared_ptr<Node>>& nodes, bool contact) {
    contactPushes = contact;
    blocks = Pieces(elements.size());
    runs = Pieces(nodes.size());
    for (const auto& n : nodes)
        n->setOwnerBlock(-1);
    // A node belongs to the first block that uses it: its forces from that
    // block come first in element order, and all later ones are logged.
    for (std::size_t b = 0; b < blocks.number; ++b) {
        for (std::size_t i = blocks.begin(b); i < blocks.end(b); ++i)
            for (const auto& n : elements[i]->getNodes())
                if (n && n->getOwnerBlock() < 0) n->setOwnerBlock(static_cast<int>(b));
    }
    logs.assign(blocks.number, ForceLog{});
    chunkStep.assign(blocks.number, 0.0);
    failures.assign(std::max(blocks.number, runs.number), nullptr);
}

void ParallelLoop::elementPass(const std::vector<std::shared_ptr<Element>>& elements, double dt, double time,
                               bool automaticStep, double& candidateStep) {
    constexpr std::size_t ahead = 3;
    // The elements of [first, end) in order, each loading a few ahead of it.
    auto runElements = [&](std::size_t first, std::size_t end, double& step) {
        for (std::size_t i = first; i < end && i < first + ahead; ++i)
            elements[i]->prefetchForStep();
        for (std::size_t i = first; i < end; ++i) {
            if (i + ahead < end) elements[i + ahead]->prefetchForStep();
            elements[i]->runStep(dt, time, automaticStep, step);
        }
    };
    // A model of one block runs as a plain loop, and so does one thread
    // without contact elements: its blocks would run in order and log
    // nothing, since no block then adds to a node that a later block owns.
    const bool several = threads() > 1;
    if (!blocks.parallel() || (!several && !contactPushes)) {
        runElements(0, elements.size(), candidateStep);
        lastLogged = 0;
        return;
    }
    // The threads take chunks of consecutive blocks, each chunk run in block
    // order by one thread: inside a chunk a block adds at once to the nodes
    // of the blocks before it, and only forces on nodes of another chunk are
    // logged. Several chunks a thread balance the load; how the blocks are
    // cut into chunks changes no sum (ForceLog.h).
    chunks = several ? std::min<std::size_t>(blocks.number, 4 * static_cast<std::size_t>(threads())) : 1;
    const double start = candidateStep;
    try {
        forEach(chunks, several, [&](std::size_t c) {
            const std::size_t firstBlock = c * blocks.number / chunks,
                              endBlock = (c + 1) * blocks.number / chunks;
            ForceLog::chunkStart = static_cast<int>(firstBlock);
            double step = start;
            try {
                for (std::size_t b = firstBlock; b < endBlock; ++b) {
                    ForceLog::active = &logs[b];
                    ForceLog::activeBlock = static_cast<int>(b);
                    runElements(blocks.begin(b), blocks.end(b), step);
                }
            } catch (...) {
                ForceLog::active = nullptr;
                throw;
            }
            ForceLog::active = nullptr;
            chunkStep[c] = step;
        });
    } catch (...) {
        // The run stops here: what the other chunks logged is dropped.
        for (auto& log : logs)
            log.clear();
        throw;
    }
    lastLogged = 0;
    for (const auto& log : logs)
        lastLogged += log.size();
    ForceLog::replay(logs);
    for (std::size_t c = 0; c < chunks; ++c) {
        // The smallest of the chunks' steps, as the elements in order would
        // have lowered it (a NaN estimate lowers nothing).
        if (chunkStep[c] < candidateStep) candidateStep = chunkStep[c];
    }
}

void ParallelLoop::rethrowFirst(std::size_t count) {
    for (std::size_t k = 0; k < count; ++k)
        if (failures[k]) {
            std::exception_ptr first = failures[k];
            for (std::size_t j = k; j < count; ++j)
                failures[j] = nullptr;
            std::rethrow_exception(first);
        }
}
