// Factory of Constraint objects: maps one upper-case keyword to one class.
#pragma once

#include <memory>
#include <string>

class Constraint;

class ConstraintLibrary {
public:
    ConstraintLibrary() = default;
    virtual ~ConstraintLibrary() = default;
    static std::shared_ptr<Constraint> getConstraintOstrel(std::string type);
};
