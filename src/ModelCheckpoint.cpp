// The model's side of checkpoints and restarts (see Checkpoint.h): what a
// checkpoint holds and in which order, the loop's hooks that write them on
// their schedules and on SIGINT or SIGTERM, and the resume.
#include "Model.h"

#include "Amplitude.h"
#include "Checkpoint.h"
#include "ContactSearch.h"
#include "ContactSurface.h"
#include "ControlSet.h"
#include "Element.h"
#include "Logger.h"
#include "Node.h"
#include "RigidBody.h"
#include "Tracker.h"
#include "Writer.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace {
std::string fixedText(double v) {
    char text[64];
    std::snprintf(text, sizeof text, "%f", v);
    return text;
}

std::string where(double time, long increment) {
    return "time " + fixedText(time) + " (increment " + std::to_string(increment) + ")";
}

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}
} // namespace

void Model::checkpointState(Archive& archive, int& printCount, double& candidateStep) {
    archive.section("loop values", 6);
    archive.pod(currentTime);
    archive.pod(timeStep);
    archive.pod(internalEnergy);
    archive.pod(kineticEnergy);
    archive.pod(printCount);
    archive.pod(candidateStep);
    controlSet->checkpoint(archive);
    archive.section("amplitudes", amplitudes.size());
    for (auto& a : amplitudes)
        a->checkpoint(archive);
    // In deck order, as the nodes lie in memory.
    archive.section("nodes", nodeBlock->size());
    for (Node& n : *nodeBlock)
        n.checkpoint(archive);
    archive.section("elements", elements.size());
    for (auto& e : elements)
        e->checkpoint(archive);
    archive.section("contact surfaces", surfaces.size());
    for (auto& s : surfaces)
        s->checkpoint(archive);
    archive.section("rigid bodies", rigidBodies.size());
    for (auto& b : rigidBodies)
        b->checkpoint(archive);
    energy.checkpoint(archive);
    monitor.checkpoint(archive);
    writer->checkpoint(archive);
    archive.section("trackers", trackers.size());
    for (auto& t : trackers)
        t->checkpoint(archive);
}

std::filesystem::path Model::writeCheckpoint(int printCount, double candidateStep) {
    if (!checkpoints) throw std::logic_error("The loop has not started: there is nothing to checkpoint");
    Archive out;
    checkpointState(out, printCount, candidateStep);
    CheckpointHeader header = checkpoints->deck;
    header.time = currentTime;
    header.increment = energy.increments();
    checkpoint::write(checkpoints->latest, checkpoints->previous, header, out.bytes());
    return checkpoints->latest;
}

void Model::resume() {
    try {
        const auto started = std::chrono::steady_clock::now();
        if (!checkpoints) checkpoints = std::make_unique<CheckpointRun>();
        CheckpointRun& run = *checkpoints;
        run.latest = checkpoint::latestFile(inputPath);
        run.previous = checkpoint::previousFile(inputPath);
        const CheckpointHeader expected = checkpoint::describe(inputPath);
        CheckpointHeader found;
        std::string body;
        std::filesystem::path used = run.latest;
        try {
            body = checkpoint::read(run.latest, expected, found);
        } catch (const CheckpointRefused& latest) {
            std::error_code ec;
            const bool latestExists = std::filesystem::exists(run.latest, ec);
            const bool previousExists = std::filesystem::exists(run.previous, ec);
            if (!latestExists && !previousExists)
                throw std::runtime_error(
                    "No checkpoint to resume from: " + run.latest.string() +
                    " does not exist (run the deck without --restart to start at time 0)");
            try {
                body = checkpoint::read(run.previous, expected, found);
            } catch (const CheckpointRefused& previous) {
                throw std::runtime_error(
                    "Checkpoint " + run.latest.string() + " is refused: " + latest.what() +
                    "; no good checkpoint precedes it (" + run.previous.string() +
                    (previousExists ? " is refused: " + std::string(previous.what()) : " does not exist") +
                    ")");
            }
            used = run.previous;
            if (latestExists)
                logger->writeList("Warning: checkpoint " + run.latest.string() +
                                      " is refused: " + latest.what() +
                                      "; resuming from the previous good one, " + used.string(),
                                  0);
        }
        Archive in(std::move(body), &nodeMap);
        try {
            checkpointState(in, run.printCount, run.candidateStep);
            in.finish();
        } catch (const std::exception& e) {
            throw std::runtime_error("Checkpoint " + used.string() + " does not fit the model: " + e.what());
        }
        // The bins follow from the positions just read.
        if (contactSearch && contactSearch->isUsed()) contactSearch->update(nodes);
        run.resumed = true;
        run.time = currentTime;
        logger->writeSection("Restart", 1);
        logger->writeList("Resumed at " + where(found.time, static_cast<long>(found.increment)) +
                              " from checkpoint " + used.string() + " (read in " +
                              fixedText(secondsSince(started)) + " s)",
                          0);
        logger->newLine();
    } catch (const std::exception& e) {
        logger->writeError(e.what(), "resume() method");
        std::throw_with_nested(std::runtime_error(" --> Restart method"));
    }
}

void Model::beginCheckpoints(int& printCount, double& candidateStep) {
    if (!checkpoints) checkpoints = std::make_unique<CheckpointRun>();
    CheckpointRun& run = *checkpoints;
    run.latest = checkpoint::latestFile(inputPath);
    run.previous = checkpoint::previousFile(inputPath);
    run.minutes = controlSet->getCheckpointMinutes();
    run.last = std::chrono::steady_clock::now();
    try {
        run.deck = checkpoint::describe(inputPath);
    } catch (const std::exception& e) {
        logger->writeList(std::string("Warning: no checkpoints in this run: ") + e.what(), 0);
        run.latest.clear();
    }
    if (const char* hook = std::getenv("DRAPEX_SIGNAL_AT")) {
        long increment = -1;
        int signal = 0;
        if (std::sscanf(hook, "%ld:%d", &increment, &signal) == 2) {
            run.signalAt = increment;
            run.signalToRaise = signal;
        }
    }
    if (!run.resumed) return;
    currentTime = run.time;
    printCount = run.printCount;
    candidateStep = run.candidateStep;
}

bool Model::checkpointAfterIncrement(int printCount, double candidateStep) {
    CheckpointRun& run = *checkpoints;
    const long increment = energy.increments();
    if (increment == run.signalAt) std::raise(run.signalToRaise);
    // This increment ends the run: there is nothing left to resume.
    if (controlSet->getEndTime() < currentTime || run.latest.empty()) return false;
    const int signal = StopSignals::received();
    bool due = controlSet->timeToCheckpoint(currentTime);
    if (run.minutes > 0.0 && secondsSince(run.last) >= 60.0 * run.minutes) due = true;
    if (!due && !signal) return false;

    const std::string at = where(currentTime, increment);
    std::string failure;
    const auto started = std::chrono::steady_clock::now();
    try {
        writeCheckpoint(printCount, candidateStep);
    } catch (const std::exception& e) {
        failure = e.what();
    }
    std::error_code ec;
    if (failure.empty()) {
        const double megabytes = static_cast<double>(std::filesystem::file_size(run.latest, ec)) / 1e6;
        logger->writeList("Checkpoint written at " + at + ": " + run.latest.string() + " (" +
                              fixedText(megabytes) + " MB in " + fixedText(secondsSince(started)) + " s)",
                          0);
    } else {
        logger->writeList("Warning: no checkpoint written at " + at + ": " + failure + "; " +
                              (std::filesystem::exists(run.latest, ec)
                                   ? "the last one, " + run.latest.string() + ", is kept"
                                   : std::string("there is no earlier one")) +
                              (signal ? "" : "; the run goes on"),
                          0);
    }
    run.last = std::chrono::steady_clock::now();
    if (!signal) return false;

    const std::string name = signal == SIGINT ? "SIGINT" : "SIGTERM";
    const std::string resumeWith = "resume with: drapex " + inputPath.string() + " --restart";
    if (failure.empty())
        logger->writeList("Stopped at " + at + " on " + name + ": checkpoint written to " +
                              run.latest.string() + "; " + resumeWith,
                          0);
    else if (std::filesystem::exists(run.latest, ec))
        logger->writeList("Stopped at " + at + " on " + name + " without a new checkpoint; " + resumeWith +
                              " (from the last checkpoint, " + run.latest.string() + ")",
                          0);
    else
        logger->writeList("Stopped at " + at + " on " + name +
                              " without a checkpoint: the run cannot be resumed and must start again",
                          0);
    return true;
}
