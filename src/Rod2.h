// Two-node bar of circular cross-section carrying axial force only.
//   Strain: logarithmic (true) axial strain eps = ln(L/L0), computed as
//           ln((L - L0)/L0 + 1); the volume is kept, so A = A0 L0 / L.
//   Stress: sigma = material 1D law (E eps for the elastic material).
//   Forces: N = sigma A along the unit axis e1 (node 1 -> node 2); node 1
//           receives +N e1 and node 2 -N e1, so tension pulls them together.
//   Mass:   m = rho A0 L0, half lumped on each node; each node also receives
//           the full rotational inertia I = max(m L0^2/12, m D^2/8) on its
//           diagonal. The material's DAMPING goes to the nodes.
//   Step:   the critical step is L / c with c = sqrt(E/rho).
// With CONTACT EDGE the rod creates a contact line along its axis with the
// radius D/2.
// The element's arrays are views of storage inside the element, so that one
// rod's per-step data sits together in memory.
#pragma once

#include "Element.h"

class ContactLine;
class Elastic;

class Rod2 final : public Element {
public:
    Rod2();
    Rod2(const Rod2&) = delete;
    Rod2& operator=(const Rod2&) = delete;

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
    const TNT::Array2D<double>& getInertia() const { return inertia; }
    // The rows are completed here from the axis of the last basis update:
    // the loop itself only needs the unit axis.
    const TNT::Array2D<double>& getLocalBasis() const;
    const TNT::Array1D<double>& getStrain() const {
        syncAxialValues();
        return strain;
    }
    const TNT::Array1D<double>& getStress() const {
        syncAxialValues();
        return stress;
    }

private:
    // Copies the axial values of the step into the six-component arrays and
    // the local force, which are read only for output.
    void syncAxialValues() const {
        storage.strain[0] = axialStrain;
        storage.stress[0] = axialStress;
        storage.strainIncrement[0] = axialStrainIncrement;
        storage.localForce[0] = axialForce;
    }

    // What a step reads and writes sits together, in the order the step uses
    // it, so that one rod fills the fewest cache lines: the nodes and the
    // material, the lengths and areas, the axis and its unit vector (row e1
    // of the basis), and the axial force, strain and stress. Of the strain
    // and stress arrays only the axial component ever changes; it is copied
    // there when the arrays are read.
    Node* node1 = nullptr;
    Node* node2 = nullptr;
    // The private material when it is the linear elastic law: its two
    // operations of a step are then called directly, without the table of
    // virtual functions, and inlined.
    Elastic* elastic = nullptr;
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
    int contactType = noContact;
    // Mutable only so that reading the basis can complete its rows.
    mutable bool basisRowsCurrent = true;

    std::shared_ptr<Material> material;
    struct Storage {
        double localBasis[9];
        double localForce[3];
        double strain[6];
        double stress[6];
        double strainIncrement[6];
        double inertia[9];
    };
    mutable Storage storage{};

    double diameter = 0.0;
    TNT::Array2D<double> inertia;
    mutable TNT::Array2D<double> localBasis;
    TNT::Array1D<double> strain;
    TNT::Array1D<double> stress;
    TNT::Array1D<double> strainIncrement;
    TNT::Array1D<double> localForce;
    bool diameterSet = false;
    bool materialSet = false;
    bool nodesSet = false;
    std::shared_ptr<ContactLine> contactLine;
    double contactFactor = 0.0;
    bool contactFactorSet = false;
};
