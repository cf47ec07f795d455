// Three-node woven-fabric shell: the fabric law in the plane, and a bending
// stiffness of its own per unit width about the yarns, given independently
// of the tensile stiffness (BENDING on the HYPERTEXTILE material).
//
// In-plane: as the membrane triangle. In the current frame of the triangle
// (TriangleGeometry: e1 along edge 1-2, e3 the normal) the Jacobian
// J = [[x2, x3], [0, y3]] gives F = J J0^-1; the fabric law turns F into the
// Cauchy stress sigma, and the nodes resist with f_a = A t B_a^T sigma, t the
// thickness T (with T 1 the K coefficients are forces per unit width).
//
// Bending: the C0 kinematics of the shell triangle, in rate form. The nodal
// rotation rates less the rigid rotation rate of the plane (read from the
// out-of-plane velocities) give the curvature rate (kxx, kyy, kxy)' = Bb th'
// and the transverse shear rate (gxz, gyz)' = Bs th'; both are accumulated in
// the element's frame, which follows it through large rotations. With the
// current yarn directions a = F a0 / |F a0| and b = F b0 / |F b0| (in that
// frame) and the curvature tensor K = [[kxx, kxy/2], [kxy/2, kyy]], the
// bending energy per unit area is
//     Wb = 1/2 Dwarp (a.K.a)^2 + 1/2 Dweft (b.K.b)^2 + 1/2 Dtwist (2 a.K.b)^2
// and the moments per unit width are m = dWb / d(kxx, kyy, kxy). The
// transverse shear is a penalty q = ks (gxz, gyz), ks = 300 max(D) / A0 per
// unit width, that keeps the rotations tied to the slope of the sheet without
// adding a stiffness of its own worth measuring. The nodes receive
// A (Bs^T q + Bb^T m) as resisting moments and the out-of-plane forces that
// balance them.
//
// Mass: m = rho A (rho per unit area) in thirds, rotational inertia
// (m/3)(t^2/12 + A/12) about each axis. Stable step: the smaller of the
// membrane's, a tenth of the smallest altitude over sqrt(K/rho), and the
// bending step 0.0027 A / sqrt(max(D)/rho), times sqrt(s) under mass scaling.
// Contact as for the membrane and the shell.
//
// All state is in plain arrays inside the element; copies are member-wise.
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

class Fabric3 final : public Element {
public:
    Fabric3();

    void parseOstrel() override {}
    void parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Node>>& nodes,
                     const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                     const std::vector<std::shared_ptr<Material>>& materials,
                     const std::vector<std::shared_ptr<Load>>& loads) override;
    void assembleMassMatrix() override;
    void setInitialConditions() override;
    double checkTimestep(double dt) override;
    void updateLocalCoordinateSystem() override;
    int getNumberOfIntegrationPoints() override { return 1; }
    void computeStrain(double dt, int ip) override;
    void computeStress(double dt, int ip) override;
    void computeInternalForces(double dt, int ip) override;
    void computeExternalForces(double time) override;
    void computeContactForces() override;
    // Strain and stress as the membrane writes them (the fabric law's strain
    // and Cauchy stress).
    std::string printVTK(int what, int component) override;
    void prefetchForStep() const override;
    void attachContactSearch(ContactSearch& search) override { contact.attachContactSearch(search); }
    std::string getSurfaceName() const override { return contact.getSurfaceName(); }
    void yarnDirections(double (&warp)[3], double (&weft)[3]) const override;
    void runStep(double dt, double time, bool automaticStep, double& candidateStep) override;
    void checkpoint(Archive& archive) override;

    double getArea() const { return geometry.area(); }
    double getThickness() const { return thickness; }
    double getShearPenalty() const { return shearPenalty; }
    const double (&getLocalBasis() const)[3][3] { return geometry.basis(); }
    const double (&getDeformationGradient() const)[2][2] { return deformationGradient; }
    const double (&getCurvature() const)[3] { return curvature; }
    const double (&getMoment() const)[3] { return moment; }
    const double (&getStress() const)[6] { return stress; }
    const std::shared_ptr<Material>& getMaterial() const { return material; }
    std::shared_ptr<ContactTriangle> getContactTriangle() const { return contact.getTriangle(); }

protected:
    double addLumpedMass(double factor) override;

private:
    std::string errorPrefix() const;
    Node& node(int a) const { return nodePointers[a] ? *nodePointers[a] : *nodes.at(a); }
    // Curvature and transverse shear increments of the step, from the
    // rotation rates of the nodes less the rigid rotation of the plane.
    void integrateBending(double dt);

    Node* nodePointers[3] = {nullptr, nullptr, nullptr};
    double thickness = 0.0;
    std::shared_ptr<Material> material;
    std::shared_ptr<Load> load;
    FaceContact contact;
    bool nodesSet = false;

    // Bending stiffnesses Dwarp, Dweft, Dtwist, the shear penalty, and the
    // initial yarn directions in the initial frame.
    double stiffness[3] = {};
    double shearPenalty = 0.0;
    double warp0[2] = {}, weft0[2] = {};

    // What a step reads and writes.
    TriangleGeometry geometry;
    double initialJacobianInverse[2][2] = {};
    double deformationGradient[2][2] = {};
    double strain[6] = {};
    double stress[6] = {};
    double bendingMatrix[3][6] = {};
    double shearMatrix[2][6] = {};
    double curvature[3] = {};       // kxx, kyy, kxy (engineering twist)
    double transverseShear[2] = {}; // gxz, gyz
    double moment[3] = {};          // mxx, myy, mxy per unit width
    double shearForce[2] = {};      // qx, qy per unit width
};
