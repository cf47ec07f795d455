#include "ControlSet.h"

#include "Checkpoint.h"
#include "DeckParser.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>

void ControlSet::parseOstrel(std::vector<Token> tokens) {
    std::size_t i = 0;
    while (i < tokens.size()) {
        const std::string key = tokens.at(i).getWord();
        if (key == "RUN" && tokens.at(i + 1).getWord() == "FROM" && tokens.at(i + 3).getWord() == "TO") {
            if (tokens.at(i + 2).isAWord() || tokens.at(i + 4).isAWord())
                throw std::invalid_argument("Wrong Start/end time");
            startTime = tokens.at(i + 2).getNumber();
            endTime = tokens.at(i + 4).getNumber();
            runGiven = true;
            i += 5;
        } else if (key == "STEP" && tokens.at(i + 1).isANumber()) {
            timeStep = tokens.at(i + 1).getNumber();
            i += 2;
        } else if (key == "PRINT" && tokens.at(i + 1).getWord() == "EVERY") {
            if (tokens.at(i + 2).isAWord()) throw std::invalid_argument("Wrong print time");
            printStep = tokens.at(i + 2).getNumber();
            i += 3;
        } else if (key == "MASS" && i + 1 < tokens.size() && tokens.at(i + 1).getWord() == "SCALING") {
            if (i + 2 >= tokens.size() || !tokens.at(i + 2).isANumber())
                throw std::invalid_argument("MASS SCALING needs a target step: MASS SCALING <target step>");
            const double target = tokens.at(i + 2).getNumber();
            if (!(std::isfinite(target) && target > 0.0))
                throw std::invalid_argument(
                    "The target step of MASS SCALING must be a positive finite number, not " +
                    DeckParser::number(target));
            massScalingTarget = target;
            i += 3;
        } else if (key == "TRACK" && i + 1 < tokens.size() && tokens.at(i + 1).getWord() == "EVERY") {
            if (i + 2 >= tokens.size() || !tokens.at(i + 2).isANumber())
                throw std::invalid_argument("TRACK EVERY needs an interval: TRACK EVERY <interval>");
            const double interval = tokens.at(i + 2).getNumber();
            if (!(std::isfinite(interval) && interval > 0.0))
                throw std::invalid_argument(
                    "The interval of TRACK EVERY must be a positive finite number, not " +
                    DeckParser::number(interval));
            trackStep = interval;
            trackLine = currentLine;
            i += 3;
        } else if (key == "CHECKPOINT") {
            i += readCheckpoint(tokens, i);
        } else if (key == "WRITER" && tokens.at(i + 1).getWord() == "TYPE") {
            if (!tokens.at(i + 2).isAWord()) throw std::invalid_argument("Wrong writer command");
            writer = tokens.at(i + 2).getWord();
            i += 3;
        } else {
            throw std::invalid_argument("Input " + key + " is not recognized");
        }
    }
}

std::size_t ControlSet::readCheckpoint(const std::vector<Token>& tokens, std::size_t i) {
    const auto word = [&](std::size_t k) { return k < tokens.size() ? tokens[k].getWord() : std::string(); };
    const std::string usage = "CHECKPOINT needs EVERY <interval>, EVERY <minutes> MINUTES or OFF";
    // The first phrase replaces the default of every 10 minutes.
    if (!checkpointGiven) checkpointMinutes = checkpointStep = 0.0;
    checkpointGiven = true;
    if (word(i + 1) == "OFF") {
        checkpointMinutes = checkpointStep = 0.0;
        return 2;
    }
    if (word(i + 1) != "EVERY" || i + 2 >= tokens.size() || !tokens[i + 2].isANumber())
        throw std::invalid_argument(usage);
    const double interval = tokens[i + 2].getNumber();
    if (!(std::isfinite(interval) && interval > 0.0))
        throw std::invalid_argument(
            "The interval of CHECKPOINT EVERY must be a positive finite number, not " +
            DeckParser::number(interval));
    if (word(i + 3) == "MINUTES") {
        checkpointMinutes = interval;
        return 4;
    }
    checkpointStep = interval;
    return 3;
}

bool ControlSet::timeToCheckpoint(double t) {
    if (!(checkpointStep > 0.0) || t < static_cast<double>(checkpointCount + 1) * checkpointStep)
        return false;
    checkpointCount = std::max(checkpointCount + 1, static_cast<long>(t / checkpointStep));
    return true;
}

void ControlSet::checkpoint(Archive& archive) {
    archive.section("schedules", 3);
    archive.pod(printCount);
    archive.pod(trackCount);
    archive.pod(checkpointCount);
}

bool ControlSet::timeToPrint(double t) {
    if (printCount * printStep <= t) {
        ++printCount;
        return true;
    }
    return false;
}

bool ControlSet::timeToTrack(double t) {
    if (trackCount * trackStep <= t) {
        ++trackCount;
        return true;
    }
    return false;
}

void ControlSet::checkTrackInterval() const {
    if (!hasTrackInterval() || trackStep <= endTime) return;
    try {
        throw std::invalid_argument("The interval of TRACK EVERY (" + DeckParser::number(trackStep) +
                                    ") is longer than the run (end time " + DeckParser::number(endTime) +
                                    "): the trackers would write their first row only");
    } catch (const std::exception&) {
        std::throw_with_nested(std::runtime_error("At line " + std::to_string(trackLine)));
    }
}
