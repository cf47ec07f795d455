#include "ConstraintLibrary.h"

#include "Constraint.h"

#include <stdexcept>

std::shared_ptr<Constraint> ConstraintLibrary::getConstraintOstrel(std::string type) {
    throw std::invalid_argument("Constraint Type " + type + " is not recognized");
}
