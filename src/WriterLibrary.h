// Factory of Writer objects: maps one upper-case keyword to one class.
#pragma once

#include <memory>
#include <string>

class Writer;

class WriterLibrary {
public:
    WriterLibrary() = default;
    virtual ~WriterLibrary() = default;
    static std::shared_ptr<Writer> getWriterOstrel(std::string type);
};
