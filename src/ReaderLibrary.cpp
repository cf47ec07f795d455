#include "ReaderLibrary.h"

#include "OstrelReader.h"

#include <stdexcept>

std::shared_ptr<Reader> ReaderLibrary::getReader(const std::string& extension) {
    if (extension == ".txt") return std::make_shared<OstrelReader>();
    throw std::invalid_argument("Extension" + extension + " is not recognized");
}
