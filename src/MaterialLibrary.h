// Factory of Material objects: maps one upper-case keyword to one class.
#pragma once

#include <memory>
#include <string>

class Material;

class MaterialLibrary {
public:
    MaterialLibrary() = default;
    virtual ~MaterialLibrary() = default;
    static std::shared_ptr<Material> getMaterialOstrel(std::string type);
};
