#include "HyperTextile.h"

#include "DeckParser.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace {

// sum_k K_k 2k x^(2k-1): the derivative of sum_k K_k x^(2k). Odd powers keep
// the sign of x, so a compressed yarn (x < 0) gives a negative tension.
double seriesDerivative(const double* k, std::size_t n, double x) {
    const double x2 = x * x;
    double power = x, sum = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        sum += k[i] * double(2 * (i + 1)) * power;
        power *= x2;
    }
    return sum;
}

} // namespace

HyperTextile::HyperTextile() {
    type = "HYPERTEXTILE";
    alpha = 0.0;
}

void HyperTextile::readOrientation(const std::vector<Token>& tokens, std::size_t i, double (&out)[3]) const {
    // The same text serves the warp and the weft keyword.
    for (std::size_t c = 0; c < 3; ++c) {
        if (i + 1 + c >= tokens.size() || tokens[i + 1 + c].isAWord())
            throw std::invalid_argument("Not enough parameters for warp orientation in material : " + name);
        out[c] = tokens[i + 1 + c].getFiniteNumber(tokens[i].getWord() + " of material " + name);
    }
}

void HyperTextile::parseOstrel(std::vector<Token> tokens) {
    // A copy that reads keywords of its own stops sharing the coefficients:
    // the law it was copied from keeps its own.
    if (law.use_count() > 1) law = std::make_shared<Law>(*law);
    law->plateSpeedReady = false;
    std::size_t i = 0;
    while (i < tokens.size()) {
        if (readDensityOrDamping(tokens, i)) continue;
        const std::string key = tokens[i].getWord();
        if (key == "KSHEAR") {
            i = readNumberRun(tokens, i, law->kShear);
        } else if (key == "KELONGWARP") {
            i = readNumberRun(tokens, i, law->kElongWarp);
        } else if (key == "KELONGWEFT") {
            i = readNumberRun(tokens, i, law->kElongWeft);
        } else if (key == "COMPRESSION") {
            i = readCompression(tokens, i);
        } else if (key == "BENDING") {
            i = readBending(tokens, i);
        } else if (key == "WARPORI") {
            readOrientation(tokens, i, law->warpOrientation);
            i += 4;
        } else if (key == "WEFTORI") {
            readOrientation(tokens, i, law->weftOrientation);
            i += 4;
        } else {
            throw std::invalid_argument("Input " + key + " is not recognized");
        }
    }
}

std::size_t HyperTextile::readCompression(const std::vector<Token>& tokens, std::size_t i) {
    const std::string what = "COMPRESSION of material " + name;
    if (i + 1 >= tokens.size() || tokens[i + 1].isAWord())
        throw std::invalid_argument(what + " needs a factor between 0 and 1");
    const double c = tokens[i + 1].getFiniteNumber(what);
    if (!(c >= 0.0 && c <= 1.0))
        throw std::invalid_argument(what + " must lie between 0 and 1, not " +
                                    DeckParser::text(tokens[i + 1]));
    law->compression = c;
    return i + 2;
}

std::size_t HyperTextile::readBending(const std::vector<Token>& tokens, std::size_t i) {
    const std::string what = "BENDING of material " + name;
    std::size_t count = 0;
    while (i + 1 + count < tokens.size() && tokens[i + 1 + count].isANumber()) {
        if (count == 3)
            throw std::invalid_argument(what + " takes at most three numbers: Dwarp Dweft [Dtwist]");
        const double d = tokens[i + 1 + count].getFiniteNumber(what);
        if (!(d > 0.0))
            throw std::invalid_argument(what + " must be positive, not " +
                                        DeckParser::text(tokens[i + 1 + count]));
        law->bending[count++] = d;
    }
    if (count < 2) throw std::invalid_argument(what + " needs two numbers, Dwarp and Dweft");
    // Huber's torsional rigidity of an orthotropic plate without Poisson
    // coupling: half the geometric mean. Without any, a twisted sheet would
    // be a mechanism.
    if (count == 2) law->bending[2] = 0.5 * std::sqrt(law->bending[0] * law->bending[1]);
    law->bendingSet = true;
    return i + 1 + count;
}

void HyperTextile::project(const double (&basis)[3][3], const double (&direction)[3], double& p0,
                           double& p1) {
    p0 = basis[0][0] * direction[0] + basis[0][1] * direction[1] + basis[0][2] * direction[2];
    p1 = basis[1][0] * direction[0] + basis[1][1] * direction[1] + basis[1][2] * direction[2];
    const double length = std::sqrt(p0 * p0 + p1 * p1);
    p0 /= length;
    p1 /= length;
}

void HyperTextile::setInitialConditions(const double (&basis)[3][3]) {
    if (!nameSet) throw std::invalid_argument("Name is not set for this material ");
    if (!densitySet) throw std::invalid_argument("Density is not set for material: " + name);
    if (law->kShear.empty() || law->kElongWarp.empty())
        throw std::invalid_argument("Not enough material parameters for material " + name);

    // A direction along the normal projects to zero length and leaves NaN
    // components, which do not compare equal to zero: such a direction passes.
    project(basis, law->warpOrientation, a0, a1);
    if (a0 == 0.0 && a1 == 0.0)
        throw std::invalid_argument("Warp direction is perpendicular to the element for material " + name);
    project(basis, law->weftOrientation, b0, b1);
    if (b0 == 0.0 && b1 == 0.0)
        throw std::invalid_argument("Weft direction is perpendicular to the element for material " + name);

    law->termsInline = law->kElongWarp.size() <= inlineTerms && law->kElongWeft.size() <= inlineTerms &&
                       law->kShear.size() <= inlineTerms;
    if (law->termsInline) {
        std::copy(law->kElongWarp.begin(), law->kElongWarp.end(), law->warpInline);
        std::copy(law->kElongWeft.begin(), law->kElongWeft.end(), law->weftInline);
        std::copy(law->kShear.begin(), law->kShear.end(), law->shearInline);
    }
    const double a[2] = {a0, a1}, b[2] = {b0, b1};
    for (int i = 0; i < 2; ++i)
        for (int j = 0; j < 2; ++j) {
            warpTensor[i][j] = a[i] * a[j];
            weftTensor[i][j] = b[i] * b[j];
            warpWeftTensor[i][j] = a[i] * b[j];
            weftWarpTensor[i][j] = b[i] * a[j];
        }
    // Without weft coefficients the speed is not defined: it is left to the
    // step estimate to report that, should one be made.
    law->plateSpeedReady = false;
    if (!law->kElongWeft.empty()) {
        law->plateSpeed = wavespeed2D();
        law->plateSpeedReady = true;
    }
}

double HyperTextile::wavespeed1D() {
    return std::sqrt(youngsModulus / density);
}

// Only the leading tension coefficients size the step.
double HyperTextile::wavespeed2D() {
    if (law->plateSpeedReady) return law->plateSpeed;
    if (law->termsInline && !law->kElongWarp.empty() && !law->kElongWeft.empty())
        return std::sqrt(std::max(law->warpInline[0], law->weftInline[0]) / density);
    return std::sqrt(std::max(law->kElongWarp.at(0), law->kElongWeft.at(0)) / density);
}

void HyperTextile::computeStress1D(double&, double&, double&) {}

void HyperTextile::computeStress2D(const double (&F)[2][2], double (&strain)[6], double (&stress)[6],
                                   const double (&)[3][3]) {
    const double f00 = F[0][0], f01 = F[0][1], f10 = F[1][0], f11 = F[1][1];

    const double c00 = f00 * f00 + f10 * f10;
    const double c01 = f00 * f01 + f10 * f11;
    const double c11 = f01 * f01 + f11 * f11;

    // I4a = a.C.a, I4b = b.C.b, I8 = a.C.b.
    const double i4a = c00 * a0 * a0 + 2.0 * c01 * a0 * a1 + c11 * a1 * a1;
    const double i4b = c00 * b0 * b0 + 2.0 * c01 * b0 * b1 + c11 * b1 * b1;
    const double i8 = c00 * a0 * b0 + c01 * (a0 * b1 + a1 * b0) + c11 * a1 * b1;
    const double ln4a = std::log(i4a), ln4b = std::log(i4b);
    const double rootAB = std::sqrt(i4a * i4b);
    const double cosTheta = i8 / rootAB;

    const double tensionA = seriesDerivative(law->termsInline ? law->warpInline : law->kElongWarp.data(),
                                             law->kElongWarp.size(), 0.5 * ln4a);
    const double tensionB = seriesDerivative(law->termsInline ? law->weftInline : law->kElongWeft.data(),
                                             law->kElongWeft.size(), 0.5 * ln4b);
    // A compressed yarn carries the compression factor times its tensile law.
    // Written as a factor that is 1 in tension, so that no branch waits on
    // the sign of the strain (c times the tension is the same number).
    const double tA = tensionA * (ln4a < 0.0 ? law->compression : 1.0);
    const double tB = tensionB * (ln4b < 0.0 ? law->compression : 1.0);
    const double tS = seriesDerivative(law->termsInline ? law->shearInline : law->kShear.data(),
                                       law->kShear.size(), cosTheta);

    // S = tA/I4a a(x)a + tB/I4b b(x)b
    //   + tS [(a(x)b + b(x)a)/sqrt(I4a I4b) - cos/I4a a(x)a - cos/I4b b(x)b]
    const double ca = (tA - tS * cosTheta) / i4a;
    const double cb = (tB - tS * cosTheta) / i4b;
    const double cab = tS / rootAB;
    const double S00 = ca * a0 * a0 + cb * b0 * b0 + 2.0 * cab * a0 * b0;
    const double S01 = ca * a0 * a1 + cb * b0 * b1 + cab * (a0 * b1 + a1 * b0);
    const double S11 = ca * a1 * a1 + cb * b1 * b1 + 2.0 * cab * a1 * b1;

    // Cauchy stress sigma = F S F^T / J.
    const double invJ = 1.0 / (f00 * f11 - f01 * f10);
    const double t00 = f00 * S00 + f01 * S01, t01 = f00 * S01 + f01 * S11;
    const double t10 = f10 * S00 + f11 * S01, t11 = f10 * S01 + f11 * S11;
    stress[0] = (t00 * f00 + t01 * f01) * invJ;
    stress[1] = (t10 * f10 + t11 * f11) * invJ;
    stress[2] = 0.0;
    stress[3] = (t10 * f00 + t11 * f01) * invJ;

    // Yarn log strains and the shear angle in degrees, converted with 3.1416 for
    // pi (intended; see the user guide, "Quirks worth knowing").
    strain[0] = 0.5 * ln4a;
    strain[1] = 0.5 * ln4b;
    strain[2] = 1.0;
    strain[3] = std::asin(cosTheta) * 180.0 / 3.1416;
}

std::shared_ptr<Material> HyperTextile::copyMat() {
    return std::make_shared<HyperTextile>(*this);
}

bool HyperTextile::initialYarnDirections(double (&warp)[2], double (&weft)[2]) const {
    warp[0] = a0;
    warp[1] = a1;
    weft[0] = b0;
    weft[1] = b1;
    return true;
}
