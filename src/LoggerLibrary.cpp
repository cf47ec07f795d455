#include "LoggerLibrary.h"

#include "MarkdownLogger.h"

#include <stdexcept>

std::shared_ptr<Logger> LoggerLibrary::getLogger(const std::string& extension) {
    if (extension == ".md") return std::make_shared<MarkdownLogger>();
    throw std::invalid_argument("Extension" + extension + " is not recognized for loggers");
}
