#include "Elastic.h"

#include <cmath>
#include <stdexcept>

Elastic::Elastic() {
    type = "ELASTIC";
    alpha = 0.0;
}

void Elastic::parseOstrel(std::vector<Token> tokens) {
    speedsReady = false;
    for (std::size_t i = 0; i < tokens.size(); i += 2) {
        const std::string key = tokens[i].getWord();
        if (key != "E" && key != "NU" && key != "RHO" && key != "DAMPING")
            throw std::invalid_argument("Input " + key + " is not recognized");
        const Token& value = tokens.at(i + 1);
        if (value.isAWord()) throw std::invalid_argument("Input " + key + " is not recognized");
        const double v = value.getFiniteNumber(key + " of material " + name);
        if (key == "E") {
            youngsModulus = v;
            youngsModulusSet = true;
        } else if (key == "NU") {
            nu = v;
            nuSet = true;
        } else if (key == "RHO") {
            density = v;
            densitySet = true;
        } else {
            alpha = v;
        }
    }
}

void Elastic::setInitialConditions(const double (&)[3][3]) {
    if (!nameSet) throw std::invalid_argument("Name is not set for this material ");
    if (!densitySet) throw std::invalid_argument("Density is not set for material: " + name);
    if (!nuSet) throw std::invalid_argument("Poisson ration is not set for material: " + name);
    if (!youngsModulusSet) throw std::invalid_argument("Young modulus is not set for material: " + name);
    speedsReady = false;
    barSpeed = wavespeed1D();
    plateSpeed = wavespeed2D();
    speedsReady = true;
}

double Elastic::wavespeed2D() {
    if (speedsReady) return plateSpeed;
    return std::sqrt(youngsModulus / ((1.0 - nu * nu) * density));
}

void Elastic::setPlaneStressModulus() {
    double* d = D[0];
    // Row by row in straight-line stores, which the compiler merges into
    // vector stores; a fill of the whole block would become a string
    // instruction that is slow to start for so few bytes.
    for (double* row = d; row != d + 36; row += 6)
        row[0] = row[1] = row[2] = row[3] = row[4] = row[5] = 0.0;
    const double k = youngsModulus / (1.0 - nu * nu);
    d[0] = k;                           // D00
    d[7] = k;                           // D11
    d[1] = nu * k;                      // D01
    d[6] = nu * k;                      // D10
    d[21] = (1.0 - nu) * k * 0.5;       // D33
    d[28] = 0.8333333333333334 * d[21]; // D44
    d[35] = 0.8333333333333334 * d[21]; // D55
}

void Elastic::computeStress2D(const double (&)[2][2], double (&dStrain)[6], double (&stress)[6],
                              const double (&)[3][3]) {
    // Rebuilding D costs a few multiplications and always gives the same matrix.
    if (!planeStressReady) setPlaneStressModulus();
    const double* d = D[0];
    stress[0] += d[0] * dStrain[0] + d[1] * dStrain[1];
    stress[1] += d[6] * dStrain[0] + d[7] * dStrain[1];
    stress[2] = 0.0;
    stress[3] += d[21] * dStrain[3];
    stress[4] += d[28] * dStrain[4];
    stress[5] += d[35] * dStrain[5];
}

std::shared_ptr<Material> Elastic::copyMat() {
    return std::make_shared<Elastic>(*this);
}
