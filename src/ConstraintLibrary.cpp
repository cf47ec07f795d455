#include "ConstraintLibrary.h"

#include "BoundaryCondition.h"
#include "Constraint.h"

#include <stdexcept>

std::shared_ptr<Constraint> ConstraintLibrary::getConstraintOstrel(std::string type) {
    if (type == "BOUNDARY_CONDITION") return std::make_shared<BoundaryCondition>();
    throw std::invalid_argument("Constraint Type " + type + " is not recognized");
}
