// Three-node membrane triangle: in-plane stiffness only, one integration point,
// constant deformation gradient.
//
// The triangle is described in its own current 2D frame (e1 along edge 1-2, e3
// the unit normal of (x2 - x1) x (x3 - x1), e2 = e3 x e1). The columns of the
// Jacobian J are the local coordinates of nodes 2 and 3 relative to node 1,
//   J = [[|a|, b.e1], [0, |a x b|/|a|]],  det J = |a x b| = 2A,
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
// speed. With CONTACT BASIC the face carries a contact triangle of thickness
// t, with CONTACT EDGE also a contact line of radius t/2 on each edge.
#pragma once

#include "Element.h"
#include "FaceContact.h"

class ContactLine;
class ContactTriangle;

class Membrane3 : public Element {
public:
    Membrane3();
    ~Membrane3() override;
    // The arrays handed to the material are views into this element's own
    // storage, which a copy would share.
    Membrane3(const Membrane3&) = delete;
    Membrane3& operator=(const Membrane3&) = delete;

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
    std::string printVTK(int what, int component) override;
    void prefetchForStep() const override;
    void attachContactSearch(ContactSearch& search) override { contact.attachContactSearch(search); }

    // Area, frame and Jacobian of the current triangle.
    void computeJacobian();

    double getArea() const { return area; }
    double getThickness() const { return thickness; }
    double getInitialThickness() const { return initialThickness; }
    double getDetJacobian() const { return detJacobian; }
    int getContactType() const { return contact.getType(); }
    const std::shared_ptr<Material>& getMaterial() const { return material; }
    const std::shared_ptr<Load>& getLoad() const { return load; }
    // The basis of the last update of the local frame. The step forms it
    // together with the Jacobian; read on its own, it is formed here.
    const TNT::Array2D<double>& getLocalBasis() const;
    const double (&getJacobian() const)[2][2] { return jacobian; }
    const TNT::Array2D<double>& getDeformationGradient() const { return deformationGradient; }
    const double (&getShapeDerivatives() const)[3][6] { return shapeDerivatives; }
    const TNT::Array1D<double>& getStrain() const { return strain; }
    const TNT::Array1D<double>& getStress() const { return stress; }
    const double (&getInternalForce() const)[9] { return internalForce; }
    const TNT::Array2D<double>& getInertia() const { return inertia; }
    const std::shared_ptr<ContactTriangle>& getContactTriangle() const { return contact.getTriangle(); }
    const std::shared_ptr<ContactLine>& getContactLine(int i) const;

private:
    // The three nodes, borrowed from `nodes` once they are known.
    Node& node(int a) const { return nodePointers[a] ? *nodePointers[a] : *nodes.at(a); }
    // The basis, formed from the nodes unless the Jacobian already did.
    TNT::Array2D<double>& currentBasis();
    bool basisCurrent = false;
    Node* nodePointers[3] = {nullptr, nullptr, nullptr};
    double area = 0.0;
    double thickness = 0.0;
    double initialThickness = 0.0;
    std::shared_ptr<Material> material;
    std::shared_ptr<Load> load;
    TNT::Array2D<double> inertia;
    // The arrays handed to the material law are views of lawData below.
    TNT::Array2D<double> localBasis;
    TNT::Array1D<double> strain;
    TNT::Array1D<double> stress;
    // The element's own per-step arrays are plain members: no indirection,
    // and they sit next to each other in memory.
    double internalForce[9] = {};
    TNT::Array2D<double> deformationGradient;
    double jacobian[2][2] = {};
    double initialJacobianInverse[2][2] = {};
    double shapeDerivatives[3][6] = {};
    double detJacobian = 0.0;
    bool nodesSet = false;
    bool materialSet = false;
    FaceContact contact;

    enum : int { kBasis = 0, kStrain = 9, kStress = 15, kF = 21, kLawDataSize = 25 };
    double lawData[kLawDataSize] = {};
};
