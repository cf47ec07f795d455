#include "MaterialLibrary.h"

#include "Material.h"

#include <stdexcept>

std::shared_ptr<Material> MaterialLibrary::getMaterialOstrel(std::string type) {
    throw std::invalid_argument("Material Type " + type + " is not recognized");
}
