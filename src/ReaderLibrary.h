// Factory of Reader objects: maps one upper-case keyword to one class.
#pragma once

#include <memory>
#include <string>

class Reader;

class ReaderLibrary {
public:
    ReaderLibrary() = default;
    virtual ~ReaderLibrary() = default;
    static std::shared_ptr<Reader> getReader(const std::string& extension);
};
