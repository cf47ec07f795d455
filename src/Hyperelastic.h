// Incompressible Ogden law for membranes and shells under plane stress.
//
// Strain energy per unit reference volume
//     W = sum_i (mu_i / alpha_i) (l1^alpha_i + l2^alpha_i + l3^alpha_i - 3),  l3 = 1 / (l1 l2),
// with l1 <= l2 the in-plane principal stretches, the square roots of the
// eigenvalues of C = F^T F. The through-thickness pressure is chosen so that
// the normal stress across the thickness vanishes, which gives the principal
// second Piola-Kirchhoff stresses
//     S_a = sum_i mu_i (l_a^(alpha_i - 2) - l3^alpha_i / l_a^2),
// rotated back with the eigenvectors of C and pushed forward to the Cauchy
// stress sigma = F S F^T (J = 1). The law has no history: every call starts
// from the total in-plane deformation gradient F.
#pragma once

#include "Material.h"

#include <cstdint>
#include <vector>

class Hyperelastic : public Material {
public:
    Hyperelastic();
    Hyperelastic(const Hyperelastic& other);
    ~Hyperelastic() override = default;

    void parseOstrel(std::vector<Token> tokens) override;
    void setInitialConditions(const double (&basis)[3][3]) override;
    double wavespeed1D() override;
    double wavespeed2D() override;
    void computeStress1D(double& strain, double& strainIncrement, double& stress) override;
    void computeStress2D(const double (&F)[2][2], double (&strain)[6], double (&stress)[6],
                         const double (&basis)[3][3]) override;
    std::shared_ptr<Material> copyMat() override;

    const std::vector<double>& getMuTerms() const { return muTerms; }
    const std::vector<double>& getAlphaTerms() const { return alphaTerms; }
    std::int32_t getPotentialType() const { return potentialType; }

private:
    std::vector<double> alphaTerms;
    std::vector<double> muTerms;
    std::int32_t potentialType = 0;
    bool potentialSet = false;
    // Copies of the terms inside the object, made by setInitialConditions
    // when they fit, so that the stress update reads no other memory block.
    static constexpr std::size_t inlineTerms = 4;
    double muInline[inlineTerms] = {};
    double alphaInline[inlineTerms] = {};
    bool termsInline = false;
    // The plate wave speed, worked out once the terms are checked.
    bool plateSpeedReady = false;
    double plateSpeed = 0.0;
};
