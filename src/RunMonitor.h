// Watches a run as it goes: the energy history beside the job log
// (<stem>_energy.csv, one row per print), the energy and progress lines of
// each print, warnings (energy error, kinetic against internal energy, a
// collapsing automatic step) and a heartbeat on the console and in the log,
// and the stop of a run that has blown up. Warnings never stop a run; only
// a blow-up does, through the error chain.
#pragma once

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

class Archive;
class EnergyBalance;
class Logger;
class Node;
class Element;

class RunMonitor {
public:
    struct Limits {
        // Energy error (per cent of the largest term) that earns a warning.
        double errorWarning = 5.0;
        // A blow-up: at `blowUpChecks` checks in a row, the energy error
        // beyond `blowUpError` per cent, or the kinetic energy beyond
        // `blowUpGrowth` times the energy put into the model (work of the
        // loads and prescribed motions, initial kinetic energy, contact
        // energy given back), which no stable run can reach.
        double blowUpError = 100.0;
        int blowUpChecks = 3;
        double blowUpGrowth = 100.0;
        // Kinetic energy of the nodes without a constraint (the prescribed
        // motions apart) over internal energy that earns a warning when it lasts a
        // share `kineticSpan` of the run's time, the internal energy holding
        // at least `meaningfulInternal` of the energy put into the model
        // (below that the structure stores next to nothing: a falling or
        // swinging body, whose kinetic energy is the point).
        double kineticRatio = 10.0;
        double kineticSpan = 0.1;
        double meaningfulInternal = 0.01;
        // The automatic step falling below this share of its first value.
        double stepFraction = 0.1;
        // Heartbeat every so many seconds of wall time; the clock is read
        // every `clockEvery` increments.
        double heartbeatSeconds = 10.0;
        long clockEvery = 256;
        // The energy checks are made every `checkEvery` increments and at
        // each print.
        long checkEvery = 16;
        // No check before this many increments: the first ones carry
        // almost no energy.
        long settleIncrements = 100;
    };

    RunMonitor();
    ~RunMonitor();
    RunMonitor(const RunMonitor&) = delete;
    RunMonitor& operator=(const RunMonitor&) = delete;

    Limits& limits() { return limit; }

    // Opens <deck stem>_energy.csv beside the deck (false when it cannot be
    // written) and notes where the run starts.
    bool start(const std::filesystem::path& deck, Logger& logger, double firstStep, double endTime,
               bool automaticStep);
    std::string energyFile() const { return csvPath.string(); }

    // After each increment of time `time` (the start of the increment just
    // made) with the step `step` that the next increment takes. Throws when
    // the run has blown up.
    void afterIncrement(const EnergyBalance& energy, double time, double step, bool print,
                        const std::vector<std::shared_ptr<Node>>& nodes,
                        const std::vector<std::shared_ptr<Element>>& elements);
    // The warnings given, the blow-up count and the rows of the energy
    // history (Checkpoint.h): reading replaces the history file with them.
    void checkpoint(Archive& archive);
    // The lines of a print in the log and the row of the energy history.
    void writePrint(const EnergyBalance& energy, double time, double step);

private:
    void check(const EnergyBalance& energy, double time, const std::vector<std::shared_ptr<Node>>& nodes);
    void heartbeat(const EnergyBalance& energy, double time, double step);
    void warn(const std::string& text);

    Limits limit;
    Logger* log = nullptr;
    std::FILE* csv = nullptr;
    std::filesystem::path csvPath;
    std::chrono::steady_clock::time_point started, lastBeat;
    double firstStep = 0.0, endTime = 0.0;
    bool automaticStep = false;
    bool errorWarned = false, ratioWarned = false, stepWarned = false;
    int checksOverBound = 0;
    // Start of the span in which the kinetic energy has exceeded the internal one.
    double kineticSince = -1.0;
};
