// Factory of Element objects: maps one upper-case keyword to one class.
#pragma once

#include <memory>
#include <string>
#include <vector>

class Element;

class ElementLibrary {
public:
    ElementLibrary() = default;
    virtual ~ElementLibrary() = default;
    static std::shared_ptr<Element> getElementOstrel(std::string type);
    // Moves the elements of each kind into one block of that kind, in deck
    // order, so that the loop streams each kind's state; every pointer in
    // `elements` is replaced by one into the block, which it keeps alive.
    // Call it before anything else holds the elements.
    static void storeByKind(std::vector<std::shared_ptr<Element>>& elements);
};
