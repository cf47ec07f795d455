#include "ElementLibrary.h"

#include "ContactFacet.h"
#include "ContactLine.h"
#include "ContactTriangle.h"
#include "Element.h"
#include "Fabric3.h"
#include "Membrane3.h"
#include "Rod2.h"
#include "S3L_C0.h"

#include <stdexcept>
#include <typeinfo>

std::shared_ptr<Element> ElementLibrary::getElementOstrel(std::string type) {
    if (type == "ROD_2") return std::make_shared<Rod2>();
    if (type == "MEMBRANE_3") return std::make_shared<Membrane3>();
    if (type == "S3L_C0") return std::make_shared<S3L_C0>();
    if (type == "FABRIC_3") return std::make_shared<Fabric3>();
    if (type == "CONTACT_TRIANGLE") return std::make_shared<ContactTriangle>();
    if (type == "CONTACT_LINE") return std::make_shared<ContactLine>();
    if (type == "CONTACT_FACET") return std::make_shared<ContactFacet>();
    throw std::invalid_argument("Element Type " + type + " is not recognized");
}

namespace {

template <class T> void storeKind(std::vector<std::shared_ptr<Element>>& elements) {
    std::size_t count = 0;
    for (const auto& e : elements)
        if (typeid(*e) == typeid(T)) ++count;
    if (count == 0) return;
    auto block = std::make_shared<std::vector<T>>();
    block->reserve(count);
    for (auto& e : elements)
        if (typeid(*e) == typeid(T)) {
            block->push_back(std::move(static_cast<T&>(*e)));
            e = std::shared_ptr<Element>(block, static_cast<Element*>(&block->back()));
        }
}

} // namespace

void ElementLibrary::storeByKind(std::vector<std::shared_ptr<Element>>& elements) {
    storeKind<Rod2>(elements);
    storeKind<Membrane3>(elements);
    storeKind<S3L_C0>(elements);
    storeKind<Fabric3>(elements);
    storeKind<ContactTriangle>(elements);
    storeKind<ContactLine>(elements);
    storeKind<ContactFacet>(elements);
}
