// Hyperelastic woven fabric: two yarn families, warp a and weft b, in the
// plane of a membrane or shell, with an in-plane shear term.
//
// With C = F^T F, the squared yarn stretches I4a = a.C.a and I4b = b.C.b, the
// logarithmic yarn strains ea = 1/2 ln I4a, eb = 1/2 ln I4b and the cosine of
// the current angle between the yarns cos(theta) = a.C.b / sqrt(I4a I4b), the
// strain energy per unit reference area is
//     W = sum_k Kwarp_k ea^(2k) + sum_k Kweft_k eb^(2k) + sum_k Kshear_k cos(theta)^(2k).
// A yarn in compression (ea or eb below zero) takes its term times the
// compression factor c (COMPRESSION, 0 <= c <= 1, default 1): the energy and
// its slope stay continuous at zero strain, the yarn tension is c times the
// tensile law's.
// The second Piola-Kirchhoff stress S = 2 dW/dC is pushed forward to the
// Cauchy stress sigma = F S F^T / det F. The yarn directions are projected
// once onto the element plane (setInitialConditions) and then follow the
// material through F; each element therefore owns its own copy of the law,
// whose coefficients all the copies share.
//
// BENDING Dwarp Dweft [Dtwist] gives the fabric's bending stiffnesses per unit
// width (moment per unit width over curvature), which the fabric shell uses
// and the membrane has no use for; the law only keeps them.
#pragma once

#include "Material.h"

#include <memory>
#include <vector>

class HyperTextile : public Material {
public:
    HyperTextile();
    ~HyperTextile() override = default;

    void parseOstrel(std::vector<Token> tokens) override;
    // Projects the yarn directions onto the plane spanned by rows 0 and 1 of
    // the element's basis and builds the yarn tensors a(x)a, b(x)b, a(x)b, b(x)a.
    void setInitialConditions(const double (&basis)[3][3]) override;
    double wavespeed1D() override;
    double wavespeed2D() override;
    void computeStress1D(double& strain, double& strainIncrement, double& stress) override;
    // strain receives the warp and weft log strains, 1.0 and the shear angle
    // in degrees; stress the total Cauchy stress.
    void computeStress2D(const double (&F)[2][2], double (&strain)[6], double (&stress)[6],
                         const double (&basis)[3][3]) override;
    std::shared_ptr<Material> copyMat() override;
    // a and b as projected by setInitialConditions.
    bool initialYarnDirections(double (&warp)[2], double (&weft)[2]) const override;

    const std::vector<double>& getKElongWarp() const { return law->kElongWarp; }
    const std::vector<double>& getKElongWeft() const { return law->kElongWeft; }
    const std::vector<double>& getKShear() const { return law->kShear; }
    const double (&getWarpOrientation() const)[3] { return law->warpOrientation; }
    const double (&getWeftOrientation() const)[3] { return law->weftOrientation; }
    const double (&getWarpTensor() const)[2][2] { return warpTensor; }
    const double (&getWeftTensor() const)[2][2] { return weftTensor; }
    const double (&getWarpWeftTensor() const)[2][2] { return warpWeftTensor; }
    const double (&getWeftWarpTensor() const)[2][2] { return weftWarpTensor; }
    double getCompressionFactor() const { return law->compression; }
    bool hasBending() const { return law->bendingSet; }
    // Dwarp, Dweft and Dtwist as read (Dtwist 1/2 sqrt(Dwarp Dweft) unless given).
    const double (&getBending() const)[3] { return law->bending; }

private:
    // Reads the three components that follow the keyword at position i.
    void readOrientation(const std::vector<Token>& tokens, std::size_t i, double (&out)[3]) const;
    // Reads the numbers of COMPRESSION or BENDING that follow position i and
    // returns the position after them.
    std::size_t readCompression(const std::vector<Token>& tokens, std::size_t i);
    std::size_t readBending(const std::vector<Token>& tokens, std::size_t i);
    // Unit projection of a global direction onto the element plane.
    static void project(const double (&basis)[3][3], const double (&direction)[3], double& p0, double& p1);

    // What the stress update reads comes first, next to the base's density.
    // In-plane yarn directions a and b, the same numbers as in the tensors,
    // kept as plain values for the stress update.
    double a0 = 0.0, a1 = 0.0, b0 = 0.0, b1 = 0.0;
    static constexpr std::size_t inlineTerms = 4;
    // What the deck gives the law, and what follows from it alone: one for
    // all the elements that copy the law, which only keep their own yarn
    // directions (and so stream less per step).
    struct Law {
        std::vector<double> kElongWarp;
        std::vector<double> kElongWeft;
        std::vector<double> kShear;
        // The factor on a yarn's tension while its strain is negative.
        double compression = 1.0;
        // Copies of the coefficient lists, made when all three fit, so that
        // the stress update reads no other memory block.
        double warpInline[inlineTerms] = {};
        double weftInline[inlineTerms] = {};
        double shearInline[inlineTerms] = {};
        bool termsInline = false;
        // The plate wave speed, worked out once the coefficients are checked.
        bool plateSpeedReady = false;
        double plateSpeed = 0.0;
        // Warp and weft directions as read.
        double warpOrientation[3] = {};
        double weftOrientation[3] = {};
        double bending[3] = {};
        bool bendingSet = false;
    };
    std::shared_ptr<Law> law = std::make_shared<Law>();
    // The yarn tensors a(x)a, b(x)b, a(x)b, b(x)a of the element plane.
    double warpTensor[2][2] = {};
    double weftTensor[2][2] = {};
    double warpWeftTensor[2][2] = {};
    double weftWarpTensor[2][2] = {};
};
