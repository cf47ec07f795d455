#include "MaterialLibrary.h"

#include "Elastic.h"
#include "Material.h"

#include <stdexcept>

std::shared_ptr<Material> MaterialLibrary::getMaterialOstrel(std::string type) {
    if (type == "ELASTIC") return std::make_shared<Elastic>();
    throw std::invalid_argument("Material Type " + type + " is not recognized");
}
