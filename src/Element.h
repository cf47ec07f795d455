// Abstract element: the virtual interface through which the model assembles
// lumped masses, sets initial conditions and runs the explicit loop.
#pragma once

#include "TntExtras.h"
#include "Token.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class Archive;
class ContactSearch;
class Node;
class Material;
class Load;

// Contact that a structural element carries, as its CONTACT keyword sets it
// (the numbers are the codes the element keeps).
enum ContactKind : int {
    noContact = 300,
    faceContact = 301,     // CONTACT BASIC: a contact triangle on the face
    faceEdgeContact = 302, // CONTACT EDGE: the face and a contact line on each edge
};

// What printVTK answers: the cell type line, the cell line, a strain or a
// stress component.
enum VtkField : int {
    vtkCellTypeLine = 0,
    vtkCellLine = 1,
    vtkStrain = 100,
    vtkStress = 200,
    // No writer asks for it; contact elements answer it with "0.0" like the
    // stress (intended; see the user guide, "Quirks worth knowing").
    vtkStressExtra = 201,
};

class Element {
public:
    Element();
    virtual ~Element();

    virtual void parseOstrel() = 0;
    virtual void parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Node>>& nodes,
                             const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                             const std::vector<std::shared_ptr<Material>>& materials,
                             const std::vector<std::shared_ptr<Load>>& loads) = 0;
    virtual void assembleMassMatrix() = 0;
    virtual void setInitialConditions() = 0;
    virtual double checkTimestep(double dt) = 0;
    virtual void updateLocalCoordinateSystem() = 0;
    virtual int getNumberOfIntegrationPoints() = 0;
    virtual void computeStrain(double dt, int ip) = 0;
    virtual void computeStress(double dt, int ip) = 0;
    virtual void computeInternalForces(double dt, int ip) = 0;
    virtual void computeExternalForces(double time) = 0;
    virtual void computeContactForces() = 0;
    // Text for the result writer and the trackers (`what` is a VtkField):
    // the VTK cell type line, the cell line, strain or stress component c.
    virtual std::string printVTK(int what, int component);
    // Asks the processor to start loading what the next step of this element
    // reads (a hint only: it changes no value). The loop calls it a few
    // elements ahead, so that the element's memory, its material and its
    // nodes arrive while the elements before it are worked on.
    virtual void prefetchForStep() const {}
    // Hands the model's contact search to the contact objects of this
    // element (nothing for an element without contact); called once, in
    // element order, before the initial conditions.
    virtual void attachContactSearch(ContactSearch& /*search*/) {}
    // Writes or reads what the element carries from one increment to the
    // next (Checkpoint.h). Every element kind says what that is (nothing for
    // one that keeps no history), so that a new kind cannot resume from a
    // checkpoint without its state.
    virtual void checkpoint(Archive& archive) = 0;
    // The contact surface whose facet this element's face is (SURFACE on its
    // line), or nothing.
    virtual std::string getSurfaceName() const { return {}; }
    // The current warp and weft directions of a fabric element as unit
    // vectors in global axes, for the result files: the initial yarn
    // directions carried by the deformation gradient of the last strain
    // update. Zero vectors for an element without yarns.
    virtual void yarnDirections(double (&warp)[3], double (&weft)[3]) const {
        for (int k = 0; k < 3; ++k)
            warp[k] = weft[k] = 0.0;
    }
    // One element's share of an increment, in the loop's order: basis
    // update; strain then stress at every integration point; forces at
    // every point; external and contact forces; and, with an automatic
    // step, the stable-step estimate, which lowers `candidateStep`. An
    // element type may override it to run the same operations with direct
    // calls, so that what one operation leaves in registers serves the next.
    virtual void runStep(double dt, double time, bool automaticStep, double& candidateStep);

    // The sequence of runStep on an element seen as type E: through the
    // table of virtual functions for Element itself, as direct (and
    // inlinable) calls for a final element type.
    template <class E>
    static void runStepAs(E& e, double dt, double time, bool automaticStep, double& candidateStep) {
        e.updateLocalCoordinateSystem();
        const int points = e.getNumberOfIntegrationPoints();
        for (int ip = 0; ip < points; ++ip) {
            e.computeStrain(dt, ip);
            e.computeStress(dt, ip);
        }
        for (int ip = 0; ip < points; ++ip)
            e.computeInternalForces(dt, ip);
        e.computeExternalForces(time);
        e.computeContactForces();
        if (automaticStep) candidateStep = e.checkTimestep(candidateStep);
    }

    // Mass scaling (CONTROLS MASS SCALING), done once after the initial
    // conditions, before the first increment: scales the element's density
    // by s, so that its nodes receive s - 1 times the lumped mass and
    // rotational inertia the element gave them and its stable-step estimate
    // grows by sqrt(s) from then on. Returns the mass added; an element that
    // carries no mass (a contact element) takes none and keeps the scale 1.
    double scaleMass(double s);
    // The factor on the element's density: exactly 1 unless scaled.
    double getMassScale() const { return massScale; }

    int getNumber() const { return number; }
    void setNumber(int n) { number = n; }
    int getNumberOfNodes() const { return numberOfNodes; }
    const std::vector<std::shared_ptr<Node>>& getNodes() const { return nodes; }

protected:
    // Adds `factor` times the lumped mass and rotational inertia that the
    // element gives its nodes, from its initial geometry, and returns the mass
    // added (factor times the element's mass); nothing for an element without
    // mass.
    virtual double addLumpedMass(double /*factor*/) { return 0.0; }
    // A stable step of the unscaled element turned into the scaled one's; the
    // step itself, without any arithmetic, while the scale is 1.
    double scaledStep(double step) const { return massScale == 1.0 ? step : step * stepScale; }

    // Formats an element value for the result file: "%f", or "0.0" for
    // magnitudes of at most 1e-10 when zeroSmall is set.
    static std::string formatValue(double v, bool zeroSmall);
    int number;
    int numberOfNodes;
    std::vector<std::shared_ptr<Node>> nodes;
    std::string vtkCellType;
    // The density factor of mass scaling and its square root, the factor on
    // the stable step.
    double massScale = 1.0;
    double stepScale = 1.0;
};
