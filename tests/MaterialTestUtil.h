// Helpers for the constitutive-law suites: token lists from text, small
// matrices, random deformation gradients, a finite-difference derivative of a
// strain energy with respect to C, and a law of scripted stress for the
// element suites.
#pragma once

#include "TestUtil.h"

#include "Material.h"
#include "TntExtras.h"
#include "Token.h"

#include <cmath>
#include <functional>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace mattest {

using testutil::tokens;

inline TNT::Array2D<double> mat2(double a00, double a01, double a10, double a11) {
    double v[4] = {a00, a01, a10, a11};
    return TNT::Array2D<double>(2, 2, v).copy();
}

inline TNT::Array2D<double> rotation(double angle) {
    return mat2(std::cos(angle), -std::sin(angle), std::sin(angle), std::cos(angle));
}

// An element frame, rows e1, e2, e3; the global axes unless set.
struct Frame {
    double e[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
};

// Strain and stress vectors of one 2D stress update.
struct Result {
    double strain[6] = {};
    double stress[6] = {};
};

inline Result stressOf(Material& m, const TNT::Array2D<double>& F, Result r = {}) {
    const double f[2][2] = {{F[0][0], F[0][1]}, {F[1][0], F[1][1]}};
    m.computeStress2D(f, r.strain, r.stress, Frame().e);
    return r;
}

// A deformation gradient with positive determinant, stretches between
// roughly 0.6 and 1.6 and an arbitrary rotation.
inline TNT::Array2D<double> randomF(std::mt19937& rng) {
    std::uniform_real_distribution<double> u(-0.35, 0.35);
    for (;;) {
        TNT::Array2D<double> F = mat2(1.0 + u(rng), u(rng), u(rng), 1.0 + u(rng));
        const double J = F[0][0] * F[1][1] - F[0][1] * F[1][0];
        if (J > 0.4) return TNT::matmult(rotation(10.0 * u(rng)), F);
    }
}

// S = 2 dW/dC by central differences; W receives C as (C00, C01, C11).
inline TNT::Array2D<double> energyGradient(const std::function<double(double, double, double)>& W,
                                           const TNT::Array2D<double>& F) {
    const TNT::Array2D<double> C = TNT::transpose_mult(F, F);
    const double h = 1e-6;
    const double c00 = C[0][0], c01 = C[0][1], c11 = C[1][1];
    TNT::Array2D<double> S(2, 2);
    S[0][0] = (W(c00 + h, c01, c11) - W(c00 - h, c01, c11)) / h; // 2 dW/dC00
    S[1][1] = (W(c00, c01, c11 + h) - W(c00, c01, c11 - h)) / h;
    // C01 and C10 move together: dW = (S01 + S10)/2 dC01 = S01 dC01.
    S[0][1] = S[1][0] = (W(c00, c01 + h, c11) - W(c00, c01 - h, c11)) / (2.0 * h);
    return S;
}

// Second Piola-Kirchhoff stress from the in-plane Cauchy stress vector:
// S = J F^-1 sigma F^-T.
inline TNT::Array2D<double> pullBack(const TNT::Array2D<double>& F, const double (&stress)[6], double J) {
    const TNT::Array2D<double> sigma = mat2(stress[0], stress[3], stress[3], stress[1]);
    const TNT::Array2D<double> Fi = TNT::invert(F);
    return TNT::matmult(TNT::matmult(Fi, sigma), TNT::transpose(Fi)) * J;
}

// A law named STUB whose 2D update is `answer`, which fills the strain and
// stress vectors whatever F is; density and wave speed as given.
struct StubLaw : Material {
    using Answer = std::function<void(double (&strain)[6], double (&stress)[6])>;
    explicit StubLaw(Answer a, double rho = 1.0, double c = 1.0) : answer(std::move(a)), speed(c) {
        name = "STUB";
        density = rho;
    }
    void parseOstrel(std::vector<Token>) override {}
    void setInitialConditions(const double (&)[3][3]) override {}
    double wavespeed1D() override { return speed; }
    double wavespeed2D() override { return speed; }
    void computeStress1D(double&, double&, double&) override {}
    void computeStress2D(const double (&)[2][2], double (&strain)[6], double (&stress)[6],
                         const double (&)[3][3]) override {
        answer(strain, stress);
    }
    std::shared_ptr<Material> copyMat() override { return std::make_shared<StubLaw>(*this); }
    void setAlpha(double a) { alpha = a; }

    Answer answer;
    double speed;
};

} // namespace mattest
