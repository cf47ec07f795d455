#include "Load.h"

#include "DeckParser.h"

#include "Amplitude.h"

#include <stdexcept>

void Load::parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Amplitude>>& amplitudes) {
    static const char* const loadKeys[6] = {"FX", "FY", "FZ", "MX", "MY", "MZ"};
    static const char* const accKeys[6] = {"AX", "AY", "AZ", "ARX", "ARY", "ARZ"};
    const DeckParser line(tokens, DeckParser::AtEnd::Lenient);
    using K = DeckParser::Follows;
    auto value = [&](double& target, bool& set, const char* key) {
        return [&, key](std::size_t i) {
            target = line.finiteNumber(i + 1, std::string(key) + " of load " + name);
            set = true;
            return std::size_t(2);
        };
    };
    std::vector<DeckParser::Keyword> table = {{"AMPLITUDE", K::Word,
                                               [&](std::size_t i) {
                                                   amplitude.reset();
                                                   amplitude = DeckParser::require(
                                                       amplitudes, line.at(i + 1).getWord(), "Amplitude");
                                                   hasAmplitude = true;
                                                   return 2;
                                               }},
                                              {"P", K::Number, value(pressure, pressureSet, "P")}};
    for (int k = 0; k < 6; ++k) {
        table.push_back({loadKeys[k], K::Number, value(loadVector[k], loadSet[k], loadKeys[k])});
        table.push_back({accKeys[k], K::Number, value(accVector[k], accSet[k], accKeys[k])});
    }
    line.read(table, [&](std::size_t i) -> std::size_t {
        // A number after an unknown word is read first, so that a value that
        // is not finite is reported as such.
        const std::string key = tokens[i].getWord();
        if (i + 1 < tokens.size() && tokens[i + 1].isANumber())
            line.finiteNumber(i + 1, key + " of load " + name);
        throw DeckParser::notRecognized(key);
    });
}

double Load::factor(double time) {
    return hasAmplitude ? amplitude->at(time) : 1.0;
}

Load::Values Load::at(double time) {
    const double f = factor(time);
    Values v;
    for (int i = 0; i < 6; ++i) {
        v.force[i] = loadVector[i] * f;
        v.acceleration[i] = accVector[i] * f;
    }
    return v;
}

double Load::getPressure(double time) {
    return pressure * factor(time);
}
