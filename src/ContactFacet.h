// One facet of a named contact surface (ContactSurface): three nodes and the
// surface's name, no mass, no stiffness. The surface does the pushing for
// all its facets at once, so the facet has nothing to do in the element
// pass; it appears in the result files as a triangle with zero values, like
// the other contact elements.
#pragma once

#include "Element.h"

class ContactFacet final : public Element {
public:
    ContactFacet();

    void parseOstrel() override {}
    void parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Node>>& nodes,
                     const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                     const std::vector<std::shared_ptr<Material>>& materials,
                     const std::vector<std::shared_ptr<Load>>& loads) override;
    void assembleMassMatrix() override {}
    void setInitialConditions() override {}
    double checkTimestep(double dt) override { return dt; }
    void updateLocalCoordinateSystem() override {}
    int getNumberOfIntegrationPoints() override { return 0; }
    void computeStrain(double, int) override {}
    void computeStress(double, int) override {}
    void computeInternalForces(double, int) override {}
    void computeExternalForces(double) override {}
    void computeContactForces() override {}
    // A facet only hands its face to its surface: it keeps no history.
    void checkpoint(Archive&) override {}
    void runStep(double, double, bool, double&) override {}
    std::string printVTK(int what, int component) override;
    std::string getSurfaceName() const override { return surface; }

private:
    std::string surface;
};
