#include "MaterialLibrary.h"

#include "Elastic.h"
#include "HyperTextile.h"
#include "Hyperelastic.h"
#include "Material.h"

#include <stdexcept>

std::shared_ptr<Material> MaterialLibrary::getMaterialOstrel(std::string type) {
    if (type == "ELASTIC") return std::make_shared<Elastic>();
    if (type == "HYPERELASTIC") return std::make_shared<Hyperelastic>();
    if (type == "HYPERTEXTILE") return std::make_shared<HyperTextile>();
    throw std::invalid_argument("Material Type " + type + " is not recognized");
}
