#include "ElementLibrary.h"

#include "Element.h"

#include <stdexcept>

std::shared_ptr<Element> ElementLibrary::getElementOstrel(std::string type) {
    throw std::invalid_argument("Element Type " + type + " is not recognized");
}
