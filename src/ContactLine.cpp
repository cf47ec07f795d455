#include "ContactLine.h"

ContactLine::ContactLine() : direction(3, 0.0), contactParameters(3, 0.0) {
    numberOfNodes = 2;
    vtkCellType = "3";
}

void ContactLine::parseOstrel(std::vector<Token>, const std::vector<std::shared_ptr<Node>>&,
                              const std::unordered_map<int, std::shared_ptr<Node>>&,
                              const std::vector<std::shared_ptr<Material>>&,
                              const std::vector<std::shared_ptr<Load>>&) {}
void ContactLine::setInitialConditions() {}
void ContactLine::updateLocalCoordinateSystem() {}
void ContactLine::computeContactForces() {}
std::string ContactLine::printVTK(int what, int component) {
    return Element::printVTK(what, component);
}
bool ContactLine::checkContact(std::shared_ptr<Node>&) {
    return false;
}
bool ContactLine::checkContact(ContactLine*) {
    return false;
}
void ContactLine::setBoundingBox() {}
void ContactLine::applyNodeContact(Node&) {}
