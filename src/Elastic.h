// Isotropic linear elastic law.
//   Rods (total-strain form):      eps += d_eps,  sigma = E eps.
//   Membranes and shells (incremental, hypoelastic plane stress):
//     d_sigma = D d_eps with D11 = D22 = E/(1-nu^2), D12 = nu E/(1-nu^2),
//     D44 = G = E/(2(1+nu)) for the in-plane engineering shear and
//     D55 = D66 = 5/6 G for the transverse shears; sigma33 = 0.
//   Wave speeds: c1 = sqrt(E/rho) (bar), c2 = sqrt(E/((1-nu^2) rho)) (plate).
#pragma once

#include "Material.h"

#include <cmath>

class Elastic final : public Material {
public:
    Elastic();

    void parseOstrel(std::vector<Token> tokens) override;
    void setInitialConditions(const double (&basis)[3][3]) override;
    double wavespeed1D() override {
        if (speedsReady) return barSpeed;
        return std::sqrt(youngsModulus / density);
    }
    double wavespeed2D() override;
    void computeStress1D(double& strain, double& strainIncrement, double& stress) override {
        strain += strainIncrement;
        stress = youngsModulus * strain;
    }
    void computeStress2D(const double (&F)[2][2], double (&strain)[6], double (&stress)[6],
                         const double (&basis)[3][3]) override;
    std::shared_ptr<Material> copyMat() override;

    // Fills the 6x6 plane-stress matrix D from E and nu.
    void setPlaneStressModulus();
    const double (&getPlaneStressModulus() const)[6][6] { return D; }

private:
    // The wave speeds depend on E, nu and rho only: worked out once the
    // parameters are checked, then read by every stable-step estimate.
    bool speedsReady = false;
    double barSpeed = 0.0;
    double plateSpeed = 0.0;
    bool planeStressReady = false;
    double D[6][6] = {};
};
