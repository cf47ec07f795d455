// Penalty contact on a straight segment thickened to a cylinder of radius R.
// A node within R of the segment is pushed away with f = FACTOR (1 - d/R)
// along the direction from the closest point; the reaction is shared between
// the segment's two nodes by the position s of the closest point. Two lines
// whose segments come within R of each other are pushed apart the same way.
// Candidates come from the model's chain of nodes ordered by x.
#pragma once

#include "Element.h"

class ContactLine : public Element {
public:
    ContactLine();

    void parseOstrel() override {}
    void parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Node>>& nodes,
                     const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                     const std::vector<std::shared_ptr<Material>>& materials,
                     const std::vector<std::shared_ptr<Load>>& loads) override;
    void assembleMassMatrix() override {}
    void setInitialConditions() override;
    double checkTimestep(double dt) override { return dt; }
    void updateLocalCoordinateSystem() override;
    int getNumberOfIntegrationPoints() override { return 1; }
    void computeStrain(double, int) override {}
    void computeStress(double, int) override {}
    void computeInternalForces(double, int) override {}
    void computeExternalForces(double) override {}
    void computeContactForces() override;
    std::string printVTK(int what, int component) override;

    std::shared_ptr<Node> getNode(int i) const { return nodes.at(i); }
    bool checkContact(std::shared_ptr<Node>& node);
    bool checkContact(ContactLine* other);

    double getRadius() const { return radius; }
    double getFactor() const { return factor; }
    double getFriction() const { return friction; }
    const TNT::Array1D<double>& getDirection() const { return direction; }
    const TNT::Array1D<double>& getContactParameters() const { return contactParameters; }

private:
    void setBoundingBox();
    void applyNodeContact(Node& node);

    double radius = 0.1;
    double factor = 10.0;
    double friction = 0.0;
    bool radiusSet = false, factorSet = false, frictionSet = false;
    TNT::Array1D<double> direction;
    TNT::Array1D<double> contactParameters;
    double boundingBox[4] = {0, 0, 0, 0}; // y-max, y-min, z-max, z-min
    double segment[3] = {0, 0, 0};
    double segmentLength = 0.0;
};
