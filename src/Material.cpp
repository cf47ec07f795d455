#include "Material.h"

#include <stdexcept>

std::size_t Material::readNumberRun(const std::vector<Token>& tokens, std::size_t i,
                                    std::vector<double>& out) const {
    const std::string key = tokens[i].getWord();
    if (tokens.at(i + 1).isAWord()) throw std::invalid_argument("Input " + key + " is not recognized");
    ++i;
    while (i < tokens.size() && tokens[i].isANumber())
        out.push_back(tokens[i++].getFiniteNumber(key + " of material " + name));
    return i;
}

bool Material::readDensityOrDamping(const std::vector<Token>& tokens, std::size_t& i) {
    const std::string key = tokens[i].getWord();
    if (key != "RHO" && key != "DAMPING") return false;
    const Token& value = tokens.at(i + 1);
    if (value.isAWord()) throw std::invalid_argument("Input " + key + " is not recognized");
    const double v = value.getFiniteNumber(key + " of material " + name);
    if (key == "RHO") {
        density = v;
        densitySet = true;
    } else {
        alpha = v;
    }
    i += 2;
    return true;
}
