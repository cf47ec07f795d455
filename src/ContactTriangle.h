// Penalty contact surface on a triangle. Each step the nodes near the triangle
// (found through the model's chain of nodes ordered by x) are tested; a node
// that penetrates by a gap g (SHELL: two-sided, thickness T; SOLID: one-sided)
// receives the normal force f_n = FACTOR g / (T/2) (SHELL) or FACTOR g (SOLID)
// pushing it out, plus an optional Coulomb-like friction force; the reaction
// goes to the triangle's nodes by the area coordinates of the contact point.
#pragma once

#include "Element.h"

class ContactTriangle : public Element {
public:
    ContactTriangle();

    void parseOstrel() override {}
    void parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Node>>& nodes,
                     const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                     const std::vector<std::shared_ptr<Material>>& materials,
                     const std::vector<std::shared_ptr<Load>>& loads) override;
    void assembleMassMatrix() override {}
    void setInitialConditions() override;
    double checkTimestep(double dt) override { return dt; }
    void updateLocalCoordinateSystem() override;
    int getNumberOfIntegrationPoints() override { return 0; }
    void computeStrain(double, int) override {}
    void computeStress(double, int) override {}
    void computeInternalForces(double, int) override {}
    void computeExternalForces(double) override {}
    void computeContactForces() override;
    std::string printVTK(int what, int component) override;

    bool checkContact(std::shared_ptr<Node>& node);
    void computeFrictionForces(std::shared_ptr<Node> node);

    double getGap() const { return gap; }
    double getTotalContactForce() const { return totalContactForce; }

private:
    double gap = 0.0;
    double totalContactForce = 0.0;
};
