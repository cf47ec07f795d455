// Two-node bar of circular cross-section carrying axial force only.
//   Strain: logarithmic (true) axial strain eps = ln(L/L0), computed as
//           ln((L - L0)/L0 + 1); the volume is kept, so A = A0 L0 / L.
//   Stress: sigma = material 1D law (E eps for the elastic material).
//   Forces: N = sigma A along the unit axis e1 (node 1 -> node 2); node 1
//           receives +N e1 and node 2 -N e1, so tension pulls them together.
//   Mass:   m = rho A0 L0, half lumped on each node; each node also receives
//           the full rotational inertia I = max(m L0^2/12, m D^2/8) on its
//           diagonal. The material's DAMPING goes to the nodes.
//   Step:   the critical step is L / c with c = sqrt(E/rho); mass scaling by
//           s (density s rho) multiplies it by sqrt(s).
// With CONTACT EDGE the rod creates a contact line along its axis with the
// radius D/2.
// The rod keeps only its axial values and axis as plain members; the
// six-component strain and stress and the frame are formed when read.
#pragma once

#include "Element.h"

#include <array>

class ContactLine;
class TriangleGeometry;

class Rod2 final : public Element {
public:
    Rod2();

    // Diagnostic hook: prints the object's address.
    void parseOstrel() override;
    void parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Node>>& modelNodes,
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
    void attachContactSearch(ContactSearch& search) override;
    void runStep(double dt, double time, bool automaticStep, double& candidateStep) override;

    // Current distance between node 2 and node 1.
    double elementLength() const;

    // Tokens handed to the contact line: NODES n1 n2 R <D/2> [FACTOR f], the
    // reals in six-decimal fixed notation.
    std::vector<Token> contactLineTokens() const;

    double getDiameter() const { return diameter; }
    double getInitialArea() const { return initialArea; }
    double getArea() const { return area; }
    double getInitialLength() const { return initialLength; }
    double getLength() const { return length; }
    int getContactType() const { return contactType; }
    double getContactFactor() const { return contactFactor; }
    bool isContactFactorSet() const { return contactFactorSet; }
    std::shared_ptr<Material> getMaterial() const { return material; }
    std::shared_ptr<ContactLine> getContactLine() const { return contactLine; }
    // The frame of the last basis update: e1 the unit axis, e2 and e3 fixed by
    // an auxiliary point (undefined for axes along (1, 1, -1)).
    std::array<std::array<double, 3>, 3> getLocalBasis() const;
    // (eps, 0, 0, 0, 0, 0) and (sigma, 0, 0, 0, 0, 0).
    std::array<double, 6> getStrain() const { return {axialStrain, 0.0, 0.0, 0.0, 0.0, 0.0}; }
    std::array<double, 6> getStress() const { return {axialStress, 0.0, 0.0, 0.0, 0.0, 0.0}; }

protected:
    double addLumpedMass(double factor) override;

private:
    // The frame through the origin, the axis d and the point (d3, -d1, d2).
    TriangleGeometry frame() const;

    // What a step reads and writes sits together, in the order the step uses
    // it, so that one rod fills the fewest cache lines: the nodes and the
    // material, the lengths and areas, the axis and its unit vector, and the
    // axial force, strain and stress.
    Node* node1 = nullptr;
    Node* node2 = nullptr;
    std::shared_ptr<Material> material;
    double initialArea = 0.0;
    double area = 0.0;
    double initialLength = 0.0;
    double length = 0.0;
    // d = x2 - x1 at the last basis update, from which the basis follows,
    // and |d|, always the root of d.d for the d stored here.
    double axis[3] = {0.0, 0.0, 0.0};
    double axisLength = 0.0;
    // The axial values stand between the length and the unit axis: stored
    // side by side, the four results of the basis update were merged by the
    // compiler into one wide store that cost more than the four.
    double axialStrain = 0.0;
    double axialStress = 0.0;
    double axialStrainIncrement = 0.0;
    double axialForce = 0.0;
    double unitAxis[3] = {0.0, 0.0, 0.0};
    // The material's bar wave speed.
    double barSpeed = 0.0;
    int contactType = noContact;

    double diameter = 0.0;
    bool diameterSet = false;
    bool materialSet = false;
    bool nodesSet = false;
    std::shared_ptr<ContactLine> contactLine;
    double contactFactor = 0.0;
    bool contactFactorSet = false;
};
