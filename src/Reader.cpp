#include "Reader.h"

#include <exception>
#include <iostream>
#include <stdexcept>

Reader::~Reader() {
    file.close();
    std::cout << " Closing Filename: " << filenameText << std::endl;
}

void Reader::init(const std::filesystem::path& p) {
    IOFile::init(p);
    if (!exists) std::throw_with_nested(std::runtime_error("File does not exist"));
    file.open(p, std::ios::in);
    countNbrOfLines();
}

void Reader::countNbrOfLines() {
    numberOfLines = 0;
    char c;
    while (file.get(c))
        if (c == '\n') ++numberOfLines;
}

void Reader::rewindFile() {
    file.clear();
    file.seekg(0, std::ios::beg);
    currentLine = 0;
}
