#include "Elastic.h"

#include <cmath>
#include <stdexcept>

Elastic::Elastic() : planeStressReady(false), D(6, 6, 0.0) {
    type = "ELASTIC";
    alpha = 0.0;
}

Elastic::Elastic(const Elastic& other)
    : Material(other), planeStressReady(other.planeStressReady), D(other.D.copy()) {}

void Elastic::parseOstrel(std::vector<Token> tokens) {
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

void Elastic::setInitialConditions(TNT::Array2D<double>& /*basis*/) {
    if (!nameSet) throw std::invalid_argument("Name is not set for this material ");
    if (!densitySet) throw std::invalid_argument("Density is not set for material: " + name);
    if (!nuSet) throw std::invalid_argument("Poisson ration is not set for material: " + name);
    if (!youngsModulusSet) throw std::invalid_argument("Young modulus is not set for material: " + name);
}

double Elastic::wavespeed1D() {
    return std::sqrt(youngsModulus / density);
}

double Elastic::wavespeed2D() {
    return std::sqrt(youngsModulus / ((1.0 - nu * nu) * density));
}

void Elastic::computeStress1D(double& strain, double& strainIncrement, double& stress) {
    strain += strainIncrement;
    stress = youngsModulus * strain;
}

void Elastic::setPlaneStressModulus() {
    for (int i = 0; i < 6; ++i)
        for (int j = 0; j < 6; ++j)
            D[i][j] = 0.0;
    const double k = youngsModulus / (1.0 - nu * nu);
    D[0][0] = k;
    D[1][1] = k;
    D[0][1] = nu * k;
    D[1][0] = nu * k;
    D[3][3] = (1.0 - nu) * k * 0.5;
    D[4][4] = 0.8333333333333334 * D[3][3];
    D[5][5] = 0.8333333333333334 * D[3][3];
}

void Elastic::computeStress2D(const TNT::Array2D<double>& /*F*/, TNT::Array1D<double>& dStrain,
                              TNT::Array1D<double>& stress, const TNT::Array2D<double>& /*basis*/) {
    // Rebuilding D costs a few multiplications and always gives the same matrix.
    if (!planeStressReady) setPlaneStressModulus();
    stress[0] += D[0][0] * dStrain[0] + D[0][1] * dStrain[1];
    stress[1] += D[1][0] * dStrain[0] + D[1][1] * dStrain[1];
    stress[2] = 0.0;
    stress[3] += D[3][3] * dStrain[3];
    stress[4] += D[4][4] * dStrain[4];
    stress[5] += D[5][5] * dStrain[5];
}

std::shared_ptr<Material> Elastic::copyMat() {
    return std::make_shared<Elastic>(*this);
}
