// Flat three-node shell triangle with independent (C0) rotations, written in a
// local frame that follows the triangle (TriangleGeometry: e1 along edge 1-2,
// e3 the unit normal). The node positions, read into that frame, put node 1
// at (0,0), node 2 at (x2,0) and node 3 at (x3,y3), 2A = x2*y3.
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
// (m/3)(t^2/12 + A/12) about each axis. Stable step 0.1 (2A/Lmax)/c, times
// sqrt(s) once mass scaling has scaled the density by s.
//
// The element owns its state as plain arrays: the frame, the matrices, the
// rates and one Point (z, weight, strain increment, stress, accumulated
// strain) per integration point, in a fixed array inside the element, so
// that a block of shells holds all their state; copies are member-wise.
#pragma once

#include "Element.h"
#include "FaceContact.h"
#include "TriangleGeometry.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class ContactLine;
class ContactTriangle;

class S3L_C0 final : public Element {
public:
    // One integration point through the thickness.
    struct Point {
        double z = 0.0;      // position t/2 xi
        double weight = 0.0; // Gauss weight
        double strainIncrement[6] = {};
        double stress[6] = {};
        double accumulatedStrain[6] = {};
    };

    S3L_C0();

    void parseOstrel() override {}
    void parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Node>>& nodes,
                     const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                     const std::vector<std::shared_ptr<Material>>& materials,
                     const std::vector<std::shared_ptr<Load>>& loads) override;
    void assembleMassMatrix() override;
    void setInitialConditions() override;
    double checkTimestep(double dt) override;
    void updateLocalCoordinateSystem() override;
    int getNumberOfIntegrationPoints() override { return pointCount; }
    void computeStrain(double dt, int ip) override;
    void computeStress(double dt, int ip) override;
    void computeInternalForces(double dt, int ip) override;
    void computeExternalForces(double time) override;
    void computeContactForces() override;
    void checkpoint(Archive& archive) override;
    // Strain and stress components at the first integration point.
    std::string printVTK(int what, int component) override;
    void prefetchForStep() const override;
    void attachContactSearch(ContactSearch& search) override { contact.attachContactSearch(search); }
    std::string getSurfaceName() const override { return contact.getSurfaceName(); }
    void runStep(double dt, double time, bool automaticStep, double& candidateStep) override;

    // Reads the nodes' positions and velocities into the local frame, refreshes A.
    void computeLocalVariables();

    double getArea() const { return area; }
    double getThickness() const { return thickness; }
    int getContactType() const { return contact.getType(); }
    double getLocalX2() const { return localX2; }
    double getLocalX3() const { return localX3; }
    double getLocalY3() const { return localY3; }
    const double (&getLocalBasis() const)[3][3] { return geometry.basis(); }
    // The integration points in use (see setUpIntegration).
    struct PointList {
        const Point* first;
        std::size_t count;
        std::size_t size() const { return count; }
        const Point& operator[](std::size_t i) const { return first[i]; }
    };
    PointList getPoints() const { return {points, static_cast<std::size_t>(pointCount)}; }
    const double (&getMembraneMatrix() const)[3][6] { return membraneMatrix; }
    const double (&getBendingMatrix() const)[3][6] { return bendingMatrix; }
    const double (&getShearMatrix() const)[2][6] { return shearMatrix; }
    const double* getMembraneStrainRate() const { return membraneStrainRate; }
    const double* getCurvatureRate() const { return curvatureRate; }
    const double* getShearStrainRate() const { return shearStrainRate; }
    std::shared_ptr<Material> getMaterial() const { return material; }
    std::shared_ptr<Load> getLoad() const { return load; }
    std::shared_ptr<ContactTriangle> getContactTriangle() const { return contact.getTriangle(); }
    std::shared_ptr<ContactLine> getContactLine(int i) const;

protected:
    double addLumpedMass(double factor) override;

private:
    void setUpIntegration();
    void buildMatrices();
    void computeRates(double dt);
    std::string errorPrefix() const;
    // Integration point ip; out_of_range outside 0 .. NIP-1.
    Point& point(int ip);
    // The three nodes, borrowed from `nodes` once they are known.
    Node& node(int a) { return nodePointers[a] ? *nodePointers[a] : *nodes.at(a); }

    Node* nodePointers[3] = {nullptr, nullptr, nullptr};
    double area = 0.0;
    double thickness = 0.0;
    std::shared_ptr<Material> material;
    std::shared_ptr<Load> load;
    FaceContact contact;
    bool nodesSet = false;
    bool materialSet = false;
    // Set once the rates of the current configuration are known; cleared by a
    // basis update so that every step recomputes them once.
    bool ratesCurrent = false;
    int numberOfIntegrationPoints = 3; // NIP as the deck gives it
    static constexpr int maxPoints = 5;
    int pointCount = 0;

    TriangleGeometry geometry;
    // Node coordinates in the element plane: (0,0), (x2,0), (x3,y3).
    double localX2 = 0.0, localX3 = 0.0, localY3 = 0.0;
    double membraneMatrix[3][6] = {};
    double bendingMatrix[3][6] = {};
    double shearMatrix[2][6] = {};
    double membraneStrainRate[3] = {};
    double curvatureRate[3] = {};
    double shearStrainRate[2] = {};
    // Local translational (u', v', w') and rotational (thx', thy', thz') rates per node.
    double localVelocity[9] = {};
    double localRotationRate[9] = {};
    // Rotation rates less the rigid rotation: (th1x', th1y', th2x', th2y', th3x', th3y').
    double deformationRotationRate[6] = {};
    // Last, so that the step's hint can stop at the last point in use.
    Point points[maxPoints];
};
