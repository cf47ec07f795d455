// Flat three-node shell triangle with independent (C0) rotations, written in a
// local frame that follows the triangle (e1 along edge 1-2, e3 the unit normal,
// node 1 at (0,0), node 2 at (x2,0), node 3 at (x3,y3), 2A = x2*y3).
//
// Kinematics in rate form (Mindlin plate):
//   membrane strain rate  (exx, eyy, gxy)' = Bm (u', v')        constant-strain triangle
//   curvature rate        (kxx, kyy, kxy)' = Bb theta'          kxx = -d(thy)/dx,
//                                                               kyy =  d(thx)/dy,
//                                                               kxy =  d(thx)/dx - d(thy)/dy
//   transverse shear rate (gxz, gyz)'      = Bs theta'
// where theta' are the nodal rotation rates less the rigid rotation rate of the
// element, wy = (w1' - w2')/x2 and wx = ((w3' - w1') x2 - (w2' - w1') x3)/(x2 y3),
// read from the out-of-plane velocities. At a point z through the thickness the
// strain increment is
//   de = dt (exx' - z kxx', eyy' - z kyy', 0, gxy' - z kxy', gxz', gyz')
// and the material integrates the stress from it (hypoelastic update).
//
// Thickness integration with NIP points z_i = t/2 xi_i and weights w_i; per point
// with k = A t/2 w_i the resultants are N = k (s11, s22, s12), M = z N and
// Q = k (s13, s23). The element resists with nodal forces Bm^T N, nodal moments
// Bs^T Q - Bb^T M and out-of-plane forces that restore the moment balance of the
// element; the nodes receive the negated values in global axes.
//
// Mass: m = rho A (rho taken per unit area) lumped in thirds, rotational inertia
// (m/3)(t^2/12 + A/12) about each axis. Stable step 0.1 (2A/Lmax)/c.
//
// The element's matrices and, for up to five points, the per-point vectors
// are views of storage inside the element, so that one element's per-step
// data sits together in memory.
#pragma once

#include "Element.h"
#include "FaceContact.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class ContactLine;
class ContactTriangle;

class S3L_C0 final : public Element {
public:
    S3L_C0();
    S3L_C0(const S3L_C0&) = delete;
    S3L_C0& operator=(const S3L_C0&) = delete;

    void parseOstrel() override {}
    void parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Node>>& nodes,
                     const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                     const std::vector<std::shared_ptr<Material>>& materials,
                     const std::vector<std::shared_ptr<Load>>& loads) override;
    void assembleMassMatrix() override;
    void setInitialConditions() override;
    double checkTimestep(double dt) override;
    void updateLocalCoordinateSystem() override;
    int getNumberOfIntegrationPoints() override { return numberOfIntegrationPoints; }
    void computeStrain(double dt, int ip) override;
    void computeStress(double dt, int ip) override;
    void computeInternalForces(double dt, int ip) override;
    void computeExternalForces(double time) override;
    void computeContactForces() override;
    // Strain and stress components at the first integration point.
    std::string printVTK(int what, int component) override;
    void prefetchForStep() const override;
    void attachContactSearch(ContactSearch& search) override { contact.attachContactSearch(search); }
    void runStep(double dt, double time, bool automaticStep, double& candidateStep) override;

    // Reads the nodes' positions and velocities into the local frame, refreshes A.
    void computeLocalVariables();

    double getArea() const { return area; }
    double getThickness() const { return thickness; }
    int getContactType() const { return contact.getType(); }
    double getLocalX2() const { return localX2; }
    double getLocalX3() const { return localX3; }
    double getLocalY3() const { return localY3; }
    const TNT::Array2D<double>& getLocalBasis() const { return localBasis; }
    const TNT::Array1D<double>& getIntegrationPointPositions() const { return integrationPointPositions; }
    const TNT::Array1D<double>& getIntegrationPointWeights() const { return integrationPointWeights; }
    const std::vector<TNT::Array1D<double>>& getStrains() const { return strains; }
    const std::vector<TNT::Array1D<double>>& getStresses() const { return stresses; }
    const std::vector<TNT::Array1D<double>>& getAccumulatedStrains() const { return accumulatedStrains; }
    const TNT::Array2D<double>& getMembraneMatrix() const { return membraneMatrix; }
    const TNT::Array2D<double>& getBendingMatrix() const { return bendingMatrix; }
    const TNT::Array2D<double>& getShearMatrix() const { return shearMatrix; }
    const double* getMembraneStrainRate() const { return membraneStrainRate; }
    const double* getCurvatureRate() const { return curvatureRate; }
    const double* getShearStrainRate() const { return shearStrainRate; }
    std::shared_ptr<Material> getMaterial() const { return material; }
    std::shared_ptr<Load> getLoad() const { return load; }
    std::shared_ptr<ContactTriangle> getContactTriangle() const { return contact.getTriangle(); }
    std::shared_ptr<ContactLine> getContactLine(int i) const;

private:
    void setUpIntegration();
    void buildMatrices();
    void computeRates(double dt);
    std::string errorPrefix() const;
    // The three nodes, borrowed from `nodes` once they are known.
    Node& node(int a) { return nodePointers[a] ? *nodePointers[a] : *nodes.at(a); }

    // Points whose vectors live inside the element; more use the heap.
    static constexpr int inlinePoints = 5;
    struct Storage {
        double inertia[9];
        double localBasis[9];
        double membraneMatrix[18];
        double bendingMatrix[18];
        double shearMatrix[12];
        // z and w of every point, then per point the strain increment, the
        // stress and the accumulated strain (six components each).
        double points[inlinePoints * 20];
    };
    Storage storage{};
    std::vector<double> pointHeap;
    double* pointData = storage.points;
    Node* nodePointers[3] = {nullptr, nullptr, nullptr};
    // Aliases of the first entries of `strains` and `stresses`.
    TNT::Array1D<double> strainViews[inlinePoints];
    TNT::Array1D<double> stressViews[inlinePoints];

    double area;
    double thickness;
    std::shared_ptr<Material> material;
    std::shared_ptr<Load> load;
    TNT::Array2D<double> inertia;
    TNT::Array2D<double> localBasis;
    FaceContact contact;
    bool nodesSet;
    bool materialSet;

    int numberOfIntegrationPoints;
    TNT::Array1D<double> integrationPointPositions;
    TNT::Array1D<double> integrationPointWeights;
    std::vector<TNT::Array1D<double>> strains;            // increment of the step, per point
    std::vector<TNT::Array1D<double>> stresses;           // per point
    std::vector<TNT::Array1D<double>> accumulatedStrains; // sum of the increments, per point
    TNT::Array2D<double> deformationGradient;

    // Node coordinates in the element plane: (0,0), (x2,0), (x3,y3).
    double localX2, localX3, localY3;
    TNT::Array2D<double> membraneMatrix;
    TNT::Array2D<double> bendingMatrix;
    TNT::Array2D<double> shearMatrix;
    double membraneStrainRate[3];
    double curvatureRate[3];
    double shearStrainRate[2];
    // Local translational (u', v', w') and rotational (thx', thy', thz') rates per node.
    double localVelocity[9];
    double localRotationRate[9];
    // Rotation rates less the rigid rotation: (th1x', th1y', th2x', th2y', th3x', th3y').
    double deformationRotationRate[6];
    // Set once the rates of the current configuration are known; cleared by a
    // basis update so that every step recomputes them once.
    bool ratesCurrent;
};
