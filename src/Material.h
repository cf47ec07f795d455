// Abstract constitutive law. Elements hold a private copy (copyMat) so that a
// law may keep per-element state; rods call computeStress1D, membranes and
// shells computeStress2D with six-component vectors ordered
// 11, 22, 33, 12, 13, 23 (engineering shears). The element's frame (rows e1,
// e2, e3) and the in-plane deformation gradient F travel as plain arrays
// owned by the element.
#pragma once

#include "Token.h"

#include <memory>
#include <string>
#include <vector>

class Material {
public:
    virtual ~Material() = default;

    virtual void parseOstrel(std::vector<Token> tokens) = 0;
    virtual void setInitialConditions(const double (&basis)[3][3]) = 0;
    // Bar and plate wave speeds; fixed once the initial conditions are set.
    virtual double wavespeed1D() = 0;
    virtual double wavespeed2D() = 0;
    virtual void computeStress1D(double& strain, double& strainIncrement, double& stress) = 0;
    virtual void computeStress2D(const double (&F)[2][2], double (&strain)[6], double (&stress)[6],
                                 const double (&basis)[3][3]) = 0;
    virtual std::shared_ptr<Material> copyMat() = 0;
    // The yarn directions of a fabric law in the element plane, as unit
    // vectors of the initial frame (components along e1 and e2); false for
    // a law without yarns.
    virtual bool initialYarnDirections(double (&/*warp*/)[2], double (&/*weft*/)[2]) const { return false; }

    std::string getName() const { return name; }
    const std::string& nameRef() const { return name; }
    std::string getType() const { return type; }
    double getDensity() const { return density; }
    double getNu() const { return nu; }
    double getYoungsModulus() const { return youngsModulus; }
    double getAlpha() const { return alpha; }
    void setName(std::string& n) {
        name = n;
        nameSet = true;
    }

protected:
    // Keyword readers shared by the laws. readNumberRun appends the numbers
    // that follow the keyword at position i, up to the next word or the end
    // of the line, and returns the position after them (the first following
    // token must be a number). readDensityOrDamping reads RHO or DAMPING and
    // its value at position i, moves i past them and returns true; for any
    // other keyword it returns false and leaves i alone.
    std::size_t readNumberRun(const std::vector<Token>& tokens, std::size_t i,
                              std::vector<double>& out) const;
    bool readDensityOrDamping(const std::vector<Token>& tokens, std::size_t& i);

    std::string name;
    std::string type;
    double density = 0.0;
    double nu = 0.0;
    double alpha = 0.0;
    bool nameSet = false;
    bool densitySet = false;
    bool youngsModulusSet = false;
    bool nuSet = false;
    // Last, so that a derived law can keep what it reads with the modulus
    // in the same cache line.
    double youngsModulus = 0.0;
};
