// Factory of Logger objects: maps one upper-case keyword to one class.
#pragma once

#include <memory>
#include <string>

class Logger;

class LoggerLibrary {
public:
    LoggerLibrary() = default;
    virtual ~LoggerLibrary() = default;
    static std::shared_ptr<Logger> getLogger(const std::string& extension);
};
