#include "RunMonitor.h"

#include "Checkpoint.h"
#include "DeckParser.h"
#include "Element.h"
#include "EnergyBalance.h"
#include "Logger.h"
#include "Node.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace {
std::string format(const char* pattern, double v) {
    char text[64];
    std::snprintf(text, sizeof text, pattern, v);
    return text;
}

std::string fixedTime(double v) {
    return format("%f", v);
}

double secondsBetween(std::chrono::steady_clock::time_point a, std::chrono::steady_clock::time_point b) {
    return std::chrono::duration<double>(b - a).count();
}
} // namespace

RunMonitor::RunMonitor() = default;

RunMonitor::~RunMonitor() {
    if (csv) std::fclose(csv);
}

bool RunMonitor::start(const std::filesystem::path& deck, Logger& logger, double step, double end,
                       bool automatic) {
    log = &logger;
    firstStep = step;
    endTime = end;
    automaticStep = automatic;
    started = lastBeat = std::chrono::steady_clock::now();
    csvPath = deck.parent_path() / (deck.stem().string() + "_energy.csv");
    if (csv) std::fclose(csv);
    csv = std::fopen(csvPath.string().c_str(), "w");
    if (!csv) return false;
    std::fputs("Time,Increments,Step,Kinetic,Internal,External work,Prescribed work,Contact,Damping,"
               "Initial kinetic,Error,Error per cent,Free kinetic\n",
               csv);
    std::fflush(csv);
    return true;
}

void RunMonitor::warn(const std::string& text) {
    log->writeList("Warning: " + text, 0);
}

void RunMonitor::afterIncrement(const EnergyBalance& energy, double time, double step, bool print,
                                const std::vector<std::shared_ptr<Node>>& nodes,
                                const std::vector<std::shared_ptr<Element>>& elements) {
    const long n = energy.increments();
    if (print || n % limit.checkEvery == 0) check(energy, time, nodes);
    if (automaticStep && !stepWarned && step < limit.stepFraction * firstStep) {
        stepWarned = true;
        // Which element sets the step: asked once, when it is worth a warning.
        const Element* smallest = nullptr;
        double least = HUGE_VAL;
        for (const auto& e : elements) {
            const double stable = e->checkTimestep(HUGE_VAL);
            if (stable < least) {
                least = stable;
                smallest = e.get();
            }
        }
        warn("the automatic step fell to " + DeckParser::number(step) + " at time " + fixedTime(time) +
             ", below a tenth of its first value " + DeckParser::number(firstStep) +
             (smallest ? "; element " + std::to_string(smallest->getNumber()) + " sets it" : std::string()) +
             ": an element is being squeezed or distorted there");
    }
    if (n % limit.clockEvery == 0) {
        const auto now = std::chrono::steady_clock::now();
        if (secondsBetween(lastBeat, now) >= limit.heartbeatSeconds) {
            lastBeat = now;
            heartbeat(energy, time, step);
        }
    }
}

void RunMonitor::check(const EnergyBalance& energy, double time,
                       const std::vector<std::shared_ptr<Node>>& nodes) {
    if (energy.increments() < limit.settleIncrements) return;
    const EnergyBalance::Totals& e = energy.totals();
    const double percent = energy.errorPercent();
    if (!errorWarned && std::fabs(percent) >= limit.errorWarning) {
        errorWarned = true;
        warn("the energy error reached " + DeckParser::number(percent) + " % at time " + fixedTime(time) +
             " (see the energy history " + csvPath.filename().string() + ")");
    }
    const double input = std::fabs(e.external) + std::fabs(e.prescribed) + e.initialKinetic;
    const bool inertial = e.internal > 0.0 && e.internal >= limit.meaningfulInternal * input &&
                          e.freeKinetic > limit.kineticRatio * e.internal;
    if (!inertial)
        kineticSince = -1.0;
    else if (kineticSince < 0.0)
        kineticSince = time;
    if (inertial && !ratioWarned && time - kineticSince >= limit.kineticSpan * endTime) {
        ratioWarned = true;
        warn("the kinetic energy of the free nodes has been more than " +
             DeckParser::number(limit.kineticRatio) + " times the internal energy since time " +
             fixedTime(kineticSince) + " (" + DeckParser::number(e.freeKinetic / e.internal) +
             " times at time " + fixedTime(time) +
             "): inertia drives the motion, the run is not quasi-static");
    }
    const double given = input + std::max(0.0, -e.contact);
    const bool errorOver = std::fabs(percent) > limit.blowUpError;
    const bool over = errorOver || e.kinetic > limit.blowUpGrowth * given;
    checksOverBound = over ? checksOverBound + 1 : 0;
    if (checksOverBound >= limit.blowUpChecks) {
        // The node moving fastest is where the instability shows first.
        const Node* fastest = nullptr;
        double speed = -1.0;
        for (const auto& node : nodes) {
            if (node->isRigidMember()) continue;
            const double* v = node->movingVelocity();
            const double s = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
            if (s > speed) {
                speed = s;
                fastest = node.get();
            }
        }
        throw std::runtime_error(
            "The run blew up at time " + fixedTime(time) + ": " +
            (errorOver ? "energy error " + format("%.3g", percent) + " %"
                       : "kinetic energy " + format("%.3g", e.kinetic) + " against " + format("%.3g", given) +
                             " put into the model") +
            (fastest ? "; node " + std::to_string(fastest->getNumber()) + " moves fastest" : std::string()) +
            ": the integration is unstable (check the time step against the critical one, the loads and the "
            "material parameters)");
    }
}

void RunMonitor::heartbeat(const EnergyBalance& energy, double time, double step) {
    const double elapsed = secondsBetween(started, std::chrono::steady_clock::now());
    const double share = endTime > 0.0 ? time / endTime : 1.0;
    std::string text = "Progress: time " + DeckParser::number(time) + " of " + DeckParser::number(endTime) +
                       " (" + format("%.1f", 100.0 * share) + " %), " + std::to_string(energy.increments()) +
                       " increments, step " + DeckParser::number(step) + ", " + format("%.0f", elapsed) +
                       " s so far";
    if (share > 0.0 && share < 1.0)
        text += ", about " + format("%.0f", elapsed * (1.0 - share) / share) + " s left";
    log->writeList(text, 0);
}

void RunMonitor::writePrint(const EnergyBalance& energy, double time, double step) {
    const EnergyBalance::Totals& e = energy.totals();
    log->writeList("Increments: " + std::to_string(energy.increments()), 1);
    log->writeList("Step: " + format("%.17g", step), 1);
    log->writeList("Energy balance: kinetic " + DeckParser::number(e.kinetic) + " (free nodes " +
                       DeckParser::number(e.freeKinetic) + "), internal " + DeckParser::number(e.internal) +
                       ", external work " + DeckParser::number(e.external) + ", prescribed work " +
                       DeckParser::number(e.prescribed) + ", contact " + DeckParser::number(e.contact) +
                       ", damping " + DeckParser::number(e.damping),
                   1);
    log->writeList("Energy error: " + DeckParser::number(energy.errorPercent()) + " % of " +
                       DeckParser::number(energy.largest()),
                   1);
    if (!csv) return;
    std::fprintf(csv, "%.17g,%ld,%.17g,%.17g,%.17g,%.17g,%.17g,%.17g,%.17g,%.17g,%.17g,%.17g,%.17g\n", time,
                 energy.increments(), step, e.kinetic, e.internal, e.external, e.prescribed, e.contact,
                 e.damping, e.initialKinetic, energy.error(), energy.errorPercent(), e.freeKinetic);
    std::fflush(csv);
}

void RunMonitor::checkpoint(Archive& archive) {
    archive.pod(errorWarned);
    archive.pod(ratioWarned);
    archive.pod(stepWarned);
    archive.pod(checksOverBound);
    archive.pod(kineticSince);
    std::string rows;
    if (archive.saving() && csv) {
        std::fflush(csv);
        std::ifstream in(csvPath, std::ios::binary);
        rows.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    archive.text(rows);
    if (archive.saving() || !csv) return;
    std::fclose(csv);
    csv = std::fopen(csvPath.string().c_str(), "w");
    if (!csv) return;
    std::fwrite(rows.data(), 1, rows.size(), csv);
    std::fflush(csv);
}
