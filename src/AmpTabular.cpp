#include "AmpTabular.h"

#include "Checkpoint.h"

#include <algorithm>
#include <stdexcept>

std::shared_ptr<Amplitude> AmpTabular::copyAmp() {
    auto copy = std::make_shared<AmpTabular>();
    copy->name = name;
    copy->nameSet = nameSet;
    copy->numberOfValues = numberOfValues;
    copy->valuesSet = valuesSet;
    copy->cursor = 0;
    return copy;
}

void AmpTabular::parseOstrel(std::vector<Token> tokens) {
    std::size_t i = 0;
    while (i < tokens.size()) {
        const std::string key = tokens[i].getWord();
        if (key != "VALUES") throw std::invalid_argument("Input " + key + " is not recognized");
        if (i + 2 >= tokens.size())
            throw std::invalid_argument("Input " + key + " has not enough parameters");
        ++i;
        while (i + 1 < tokens.size() && tokens[i].isANumber() && tokens[i + 1].isANumber()) {
            // Times are sorted and compared, values interpolated: both finite.
            const std::string what = "VALUES of amplitude " + name;
            values.emplace_back(tokens[i].getFiniteNumber(what), tokens[i + 1].getFiniteNumber(what));
            ++numberOfValues;
            i += 2;
        }
        // A lone number left before the next word or the end has no partner.
        if (i < tokens.size() && tokens[i].isANumber()) ++i;
        valuesSet = true;
    }
    cursor = 0;
}

void AmpTabular::setInitialConditions() {
    if (!nameSet) throw std::invalid_argument("Name is not set for this amplitude ");
    if (numberOfValues == 0 || values.empty()) throw std::invalid_argument("No values for amplitude " + name);
    std::sort(values.begin(), values.end(),
              [](const std::pair<double, double>& a, const std::pair<double, double>& b) {
                  return a.first < b.first;
              });
    startTime = values.front().first;
    endTime = values.back().first;
    cursor = 0;
}

double AmpTabular::at(double time) {
    if (time < startTime || time > endTime || values.empty()) return 0.0;
    const std::pair<double, double>& last = values.back();
    for (std::size_t k = cursor; k < values.size(); ++k) {
        const auto it = values.begin() + static_cast<std::ptrdiff_t>(k);
        if (*it == last) return it->second;
        const auto next = it + 1;
        if (it->first <= time && time < next->first) {
            if (cursor != k) cursor = k; // read-only once on the segment: threads share it
            return it->second + (time - it->first) * (next->second - it->second) / (next->first - it->first);
        }
    }
    return last.second;
}

void AmpTabular::checkpoint(Archive& archive) {
    archive.pod(cursor);
}
