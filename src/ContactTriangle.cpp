#include "ContactTriangle.h"

ContactTriangle::ContactTriangle() {
    numberOfNodes = 3;
    vtkCellType = "5";
}

void ContactTriangle::parseOstrel(std::vector<Token>, const std::vector<std::shared_ptr<Node>>&,
                                  const std::unordered_map<int, std::shared_ptr<Node>>&,
                                  const std::vector<std::shared_ptr<Material>>&,
                                  const std::vector<std::shared_ptr<Load>>&) {}
void ContactTriangle::setInitialConditions() {}
void ContactTriangle::updateLocalCoordinateSystem() {}
void ContactTriangle::computeContactForces() {}
std::string ContactTriangle::printVTK(int what, int component) {
    return Element::printVTK(what, component);
}
bool ContactTriangle::checkContact(std::shared_ptr<Node>&) {
    return false;
}
void ContactTriangle::computeFrictionForces(std::shared_ptr<Node>) {}
