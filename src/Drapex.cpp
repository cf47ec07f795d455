// Entry point: prints the banner, takes the deck path from the first argument
// or the console, checks it and runs the model. The exit status is always 0.
#include "Model.h"
#include "Version.h"

#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

namespace {
const char* const banner_letters_[] = {
    "   _|_|_|    _|_|_|      _|_|    _|_|_|    _|_|_|_|  _|      _|  ",
    "   _|    _|  _|    _|  _|    _|  _|    _|  _|          _|  _|    ",
    "   _|    _|  _|_|_|    _|_|_|_|  _|_|_|    _|_|_|        _|      ",
    "   _|    _|  _|    _|  _|    _|  _|        _|          _|  _|    ",
    "   _|_|_|    _|    _|  _|    _|  _|        _|_|_|_|  _|      _|  ",
};

void printBanner() {
    const std::string rule(65, '_');
    const std::string blank(65, ' ');
    std::cout << rule << std::endl;
    std::cout << blank << std::endl;
    for (const char* row : banner_letters_)
        std::cout << row << std::endl;
    std::cout << blank << std::endl;
    std::cout << " An explicit finite element code for Composite Process Modeling  " << std::endl;
    std::cout << blank << std::endl;
    std::cout << " Version v" << version_major_drapex_ << "." << version_minor_drapex_ << "."
              << version_patch_drapex_ << std::endl;
    std::cout << " Build Type: " << build_type_ << std::string(32, ' ') << std::endl;
    std::cout << blank << std::endl;
    std::cout << " Draping of textile reinforcements, membranes and thin shells    " << std::endl;
    std::cout << " under prescribed motion, loads and penalty contact.             " << std::endl;
    std::cout << blank << std::endl;
    std::cout << " The Drapex developers, " << current_year_ << std::endl;
    std::cout << rule << std::endl;
    std::cout << blank << std::endl;
}
} // namespace

int main(int argc, char* argv[]) {
    printBanner();

    std::string deck;
    if (argc > 1) {
        deck = argv[1];
    } else {
        std::cout << " Please enter a file name :" << std::endl;
        std::cout << " > " << std::flush;
        std::cin >> deck;
    }

    int id = 1;
    std::unique_ptr<Model> model;
    const std::filesystem::path deckPath(deck);
    try {
        if (std::filesystem::is_directory(std::filesystem::status(deckPath)))
            throw std::invalid_argument(" The input file: " + deck + " is a directory");
        if (!std::filesystem::exists(std::filesystem::status(deckPath)))
            throw std::invalid_argument(" File : " + deck + " does not exist");
        model = std::make_unique<Model>(id, deck);
        model->run();
        std::cout << " Exit Drapex" << std::endl;
    } catch (const std::exception& e) {
        std::cerr << " " << e.what() << std::endl;
    }
    return 0;
}
