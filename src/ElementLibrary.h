// Factory of Element objects: maps one upper-case keyword to one class.
#pragma once

#include <memory>
#include <string>

class Element;

class ElementLibrary {
public:
    ElementLibrary() = default;
    virtual ~ElementLibrary() = default;
    static std::shared_ptr<Element> getElementOstrel(std::string type);
};
