#include "Writer.h"

#include <exception>
#include <iostream>
#include <stdexcept>

void Writer::init(const std::filesystem::path& deckPath) {
    IOFile::init(deckPath);
    if (!exists) std::throw_with_nested(std::runtime_error("File does not exist"));
    const std::filesystem::path results = deckPath.parent_path() / ("Results_" + filenameText);
    if (std::filesystem::exists(results)) {
        std::cout << " The results file exists, the results will be replaced" << std::endl;
    } else {
        std::filesystem::create_directory(results);
    }
    IOFile::init(results / deckPath.filename());
}
