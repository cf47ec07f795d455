#include "ElementLibrary.h"

#include "ContactLine.h"
#include "ContactTriangle.h"
#include "Element.h"
#include "Membrane3.h"
#include "Rod2.h"
#include "S3L_C0.h"

#include <stdexcept>

std::shared_ptr<Element> ElementLibrary::getElementOstrel(std::string type) {
    if (type == "ROD_2") return std::make_shared<Rod2>();
    if (type == "MEMBRANE_3") return std::make_shared<Membrane3>();
    if (type == "S3L_C0") return std::make_shared<S3L_C0>();
    if (type == "CONTACT_TRIANGLE") return std::make_shared<ContactTriangle>();
    if (type == "CONTACT_LINE") return std::make_shared<ContactLine>();
    throw std::invalid_argument("Element Type " + type + " is not recognized");
}
