#include "ElementLibrary.h"

#include "Element.h"
#include "Membrane3.h"
#include "Rod2.h"
#include "S3L_C0.h"

#include <stdexcept>

std::shared_ptr<Element> ElementLibrary::getElementOstrel(std::string type) {
    if (type == "ROD_2") return std::make_shared<Rod2>();
    if (type == "MEMBRANE_3") return std::make_shared<Membrane3>();
    if (type == "S3L_C0") return std::make_shared<S3L_C0>();
    throw std::invalid_argument("Element Type " + type + " is not recognized");
}
