#include "ControlSet.h"

#include <cmath>
#include <cstdio>
#include <stdexcept>

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
            if (!(std::isfinite(target) && target > 0.0)) {
                char text[64];
                std::snprintf(text, sizeof text, "%g", target);
                throw std::invalid_argument(
                    std::string("The target step of MASS SCALING must be a positive finite number, not ") +
                    text);
            }
            massScalingTarget = target;
            i += 3;
        } else if (key == "WRITER" && tokens.at(i + 1).getWord() == "TYPE") {
            if (!tokens.at(i + 2).isAWord()) throw std::invalid_argument("Wrong writer command");
            writer = tokens.at(i + 2).getWord();
            i += 3;
        } else {
            throw std::invalid_argument("Input " + key + " is not recognized");
        }
    }
}

bool ControlSet::timeToPrint(double t) {
    if (printCount * printStep <= t) {
        ++printCount;
        return true;
    }
    return false;
}
