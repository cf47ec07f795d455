#include "Hyperelastic.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

Hyperelastic::Hyperelastic() {
    type = "HYPERELASTIC";
    alpha = 0.0;
    alphaTerms.reserve(10);
    muTerms.reserve(10);
}

Hyperelastic::Hyperelastic(const Hyperelastic& other) = default;

void Hyperelastic::parseOstrel(std::vector<Token> tokens) {
    plateSpeedReady = false;
    std::size_t i = 0;
    while (i < tokens.size()) {
        if (readDensityOrDamping(tokens, i)) continue;
        const std::string key = tokens[i].getWord();
        if (key == "TYPE") {
            const Token& value = tokens.at(i + 1);
            if (value.isANumber()) throw std::invalid_argument("Input " + key + " is not recognized");
            const std::string potential = value.getWord();
            if (potential != "OGDEN")
                throw std::invalid_argument("Hyperelastic potential " + potential + " is not recognized");
            potentialType = 1;
            potentialSet = true;
            i += 2;
        } else if (key == "MU") {
            i = readNumberRun(tokens, i, muTerms);
        } else if (key == "ALPHA") {
            i = readNumberRun(tokens, i, alphaTerms);
        } else {
            throw std::invalid_argument("Input " + key + " is not recognized");
        }
    }
}

void Hyperelastic::setInitialConditions(const double (&)[3][3]) {
    if (!nameSet) throw std::invalid_argument("Name is not set for this material ");
    if (!densitySet) throw std::invalid_argument("Density is not set for material: " + name);
    if (!potentialSet)
        throw std::invalid_argument("Hyperelastic potential type is not set for material " + name);
    if (muTerms.empty() || alphaTerms.empty() || muTerms.size() != alphaTerms.size())
        throw std::invalid_argument("Not enough material parameters for material " + name);
    termsInline = muTerms.size() <= inlineTerms;
    if (termsInline) {
        std::copy(muTerms.begin(), muTerms.end(), muInline);
        std::copy(alphaTerms.begin(), alphaTerms.end(), alphaInline);
    }
    plateSpeedReady = false;
    plateSpeed = wavespeed2D();
    plateSpeedReady = true;
}

double Hyperelastic::wavespeed1D() {
    return std::sqrt(youngsModulus / density);
}

// sqrt(3 mu0 / rho) with the small-strain shear modulus mu0 = 1/2 sum mu_i alpha_i.
double Hyperelastic::wavespeed2D() {
    if (plateSpeedReady) return plateSpeed;
    const std::size_t n = std::min(muTerms.size(), alphaTerms.size());
    double sum = 0.0;
    for (std::size_t i = 0; i < n; ++i)
        sum += muTerms[i] * alphaTerms[i];
    return std::sqrt(1.5 * sum / density);
}

void Hyperelastic::computeStress1D(double&, double&, double&) {}

void Hyperelastic::computeStress2D(const double (&F)[2][2], double (&strain)[6], double (&stress)[6],
                                   const double (&)[3][3]) {
    const double f00 = F[0][0], f01 = F[0][1], f10 = F[1][0], f11 = F[1][1];

    // C = F^T F, symmetric by construction.
    const double c00 = f00 * f00 + f10 * f10;
    const double c01 = f00 * f01 + f10 * f11;
    const double c11 = f01 * f01 + f11 * f11;

    // Eigenvalues of C in ascending order. The larger one is free of
    // cancellation; the smaller one follows from det C = (det F)^2, which stays
    // accurate when C is nearly singular.
    const double half = 0.5 * (c00 - c11);
    const double mean = 0.5 * (c00 + c11);
    const double radius = std::sqrt(half * half + c01 * c01);
    const double d1 = mean + radius;
    const double detF = f00 * f11 - f01 * f10;
    const double d0 = detF * detF / d1;

    const double l1 = std::sqrt(d0), l2 = std::sqrt(d1);
    const double l3 = 1.0 / (l1 * l2);

    // Principal second Piola-Kirchhoff stresses; with p_a = l_a^alpha and
    // p3 = l3^alpha = 1 / (p1 p2): S_a = sum mu (p_a - p3) / l_a^2.
    double s1 = 0.0, s2 = 0.0;
    const std::size_t terms = potentialType == 1 ? std::min(muTerms.size(), alphaTerms.size()) : 0;
    const double* mu = termsInline ? muInline : muTerms.data();
    const double* alphas = termsInline ? alphaInline : alphaTerms.data();
    for (std::size_t i = 0; i < terms; ++i) {
        const double halfAlpha = 0.5 * alphas[i];
        const double p1 = std::pow(d0, halfAlpha);
        const double p2 = std::pow(d1, halfAlpha);
        const double p3 = 1.0 / (p1 * p2);
        s1 += mu[i] * (p1 - p3);
        s2 += mu[i] * (p2 - p3);
    }
    s1 /= d0;
    s2 /= d1;
    if (terms > 0) {
        strain[0] = l1;
        strain[1] = l2;
        strain[2] = l3;
    }

    // S = s1 v0 v0^T + s2 v1 v1^T. The projector P0 = v0 v0^T onto the
    // eigenvector of the smaller eigenvalue is (d1 I - C) / (d1 - d0); written
    // with the half-difference and the radius its entries stay within [-1, 1].
    double S00, S01, S11;
    const double inv = 0.5 / radius;
    if (std::isfinite(inv)) {
        const double p00 = (radius - half) * inv;
        const double p11 = (radius + half) * inv;
        const double p01 = -c01 * inv;
        S00 = s1 * p00 + s2 * p11;
        S11 = s1 * p11 + s2 * p00;
        S01 = (s1 - s2) * p01;
    } else {
        // Equal stretches: S is isotropic in the plane.
        S00 = S11 = 0.5 * (s1 + s2);
        S01 = 0.0;
    }

    // Cauchy stress sigma = F S F^T (incompressible, J = 1).
    const double t00 = f00 * S00 + f01 * S01, t01 = f00 * S01 + f01 * S11;
    const double t10 = f10 * S00 + f11 * S01, t11 = f10 * S01 + f11 * S11;
    stress[0] = t00 * f00 + t01 * f01;
    stress[1] = t10 * f10 + t11 * f11;
    stress[2] = 0.0;
    stress[3] = t10 * f00 + t11 * f01;
}

std::shared_ptr<Material> Hyperelastic::copyMat() {
    return std::make_shared<Hyperelastic>(*this);
}
