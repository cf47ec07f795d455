// Three-node membrane triangle: in-plane stiffness only, one integration point,
// constant deformation gradient.
//
// The triangle is described in its own current 2D frame (TriangleGeometry:
// e1 along edge 1-2, e3 the unit normal of (x2 - x1) x (x3 - x1),
// e2 = e3 x e1). The columns of the Jacobian J are the local coordinates of
// nodes 2 and 3 relative to node 1,
//   J = [[x2, x3], [0, y3]] = [[|a|, b.e1], [0, |a x b|/|a|]],  det J = 2A,
// and the in-plane deformation gradient is F = J J0^-1 with J0 the Jacobian of
// the initial configuration. The material's 2D law receives F and a strain
// vector that carries (F11, F22, F12); it returns the Cauchy stress
// (s11, s22, s12 in components 0, 1, 3) and leaves in strain component 2 the
// thickness ratio, so the current thickness is t = t0 * strain[2] (a law that
// leaves the vector alone, as the elastic one does, leaves F12 there).
//
// The nodal forces are those of the constant-strain triangle in the current
// configuration, f_a = -A t B_a^T (s11, s22, s12), with B built from the
// transposed inverse of J, returned to global axes through e1 and e2. A
// pressure p acts along e3 with p A / 3 on each node. The mass density is per
// unit area: m = rho A, lumped in thirds; each node also receives the
// rotational inertia (m/3)(t^2/12 + A/12) on the diagonal. The stable step is
// one tenth of the smallest altitude 2A / L_max over the material's 2D wave
// speed, times sqrt(s) once mass scaling has scaled the density by s. With
// CONTACT BASIC the face carries a contact triangle of thickness t, with
// CONTACT EDGE also a contact line of radius t/2 on each edge.
//
// The element owns its state as plain arrays (frame, Jacobian, F, strain,
// stress, forces) and hands them to the material by reference; copies are
// member-wise.
#pragma once

#include "Element.h"
#include "FaceContact.h"
#include "TriangleGeometry.h"

class ContactLine;
class ContactTriangle;

class Membrane3 : public Element {
public:
    Membrane3();
    ~Membrane3() override;

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
    void checkpoint(Archive& archive) override;
    std::string printVTK(int what, int component) override;
    void prefetchForStep() const override;
    void attachContactSearch(ContactSearch& search) override { contact.attachContactSearch(search); }
    std::string getSurfaceName() const override { return contact.getSurfaceName(); }
    // F a and F b of the last strain update, in the frame of that update,
    // turned to global axes and normalised (zero without a fabric law).
    void yarnDirections(double (&warp)[3], double (&weft)[3]) const override;

    // Area, frame and Jacobian of the current triangle.
    void computeJacobian();

    double getArea() const { return geometry.area(); }
    double getThickness() const { return thickness; }
    double getInitialThickness() const { return initialThickness; }
    double getDetJacobian() const { return detJacobian; }
    int getContactType() const { return contact.getType(); }
    const std::shared_ptr<Material>& getMaterial() const { return material; }
    const std::shared_ptr<Load>& getLoad() const { return load; }
    // The frame of the last Jacobian (rows e1, e2, e3).
    const double (&getLocalBasis() const)[3][3] { return geometry.basis(); }
    const double (&getJacobian() const)[2][2] { return jacobian; }
    const double (&getDeformationGradient() const)[2][2] { return deformationGradient; }
    const double (&getShapeDerivatives() const)[3][6] { return shapeDerivatives; }
    const double (&getStrain() const)[6] { return strain; }
    const double (&getStress() const)[6] { return stress; }
    const double (&getInternalForce() const)[9] { return internalForce; }
    const std::shared_ptr<ContactTriangle>& getContactTriangle() const { return contact.getTriangle(); }
    const std::shared_ptr<ContactLine>& getContactLine(int i) const;

protected:
    double addLumpedMass(double factor) override;

private:
    // The three nodes, borrowed from `nodes` once they are known.
    Node& node(int a) const { return nodePointers[a] ? *nodePointers[a] : *nodes.at(a); }
    Node* nodePointers[3] = {nullptr, nullptr, nullptr};
    double thickness = 0.0;
    double initialThickness = 0.0;
    std::shared_ptr<Material> material;
    std::shared_ptr<Load> load;
    // What a step reads and writes, side by side.
    TriangleGeometry geometry;
    double jacobian[2][2] = {};
    double detJacobian = 0.0;
    double initialJacobianInverse[2][2] = {};
    double deformationGradient[2][2] = {};
    double shapeDerivatives[3][6] = {};
    double strain[6] = {};
    double stress[6] = {};
    double internalForce[9] = {};
    bool nodesSet = false;
    bool materialSet = false;
    FaceContact contact;
};
