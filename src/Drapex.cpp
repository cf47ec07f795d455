// Entry point: prints the banner, takes the deck path from the first argument
// or the console, checks it and runs the model. The exit status is always 0.
// A first argument of exactly --help or --version prints the usage or the
// version instead and runs nothing; any other argument is a deck path. A
// second argument of exactly --restart resumes the deck's run from its latest
// good checkpoint; other further arguments are ignored.
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
std::string versionText() {
    return "v" + std::to_string(version_major_drapex_) + "." + std::to_string(version_minor_drapex_) + "." +
           std::to_string(version_patch_drapex_);
}

void printUsage() {
    std::cout << "Usage: drapex DECK.txt [--restart]\n"
                 "       drapex --help | --version\n"
                 "\n"
                 "Drapex is an explicit finite-element solver for composite forming: the draping\n"
                 "of textile reinforcements, membranes and thin shells under prescribed motion,\n"
                 "loads and contact. It reads one input deck (a .txt file of blocks: nodes,\n"
                 "elements, materials, constraints, loads, amplitudes, trackers and controls)\n"
                 "and integrates it in time with central differences.\n"
                 "\n"
                 "A run of path/to/job.txt writes:\n"
                 "  path/to/job.md                     the job log (Markdown), echoed on the console\n"
                 "  path/to/Results_job/job_N.vtk      one legacy VTK result file per print, N = 0, 1, ...\n"
                 "  path/to/Results_job/job.vtk.series the result files with their model times,\n"
                 "                                     for ParaView\n"
                 "  path/to/<TRACKER>.csv              one history per tracker of the deck\n"
                 "  path/to/job.ckpt, job.ckpt.1       the last two checkpoints (every 10 minutes\n"
                 "                                     by default, and on Ctrl-C or SIGTERM)\n"
                 "Errors go to the standard error; the exit status is always 0. Without an\n"
                 "argument drapex asks for the deck's name.\n"
                 "\n"
                 "Options:\n"
                 "  --help     print this text and exit\n"
                 "  --version  print the version and exit\n"
                 "  --restart  (after the deck) resume the run from its latest good checkpoint\n"
                 "\n"
                 "The guide is in the docs folder of the Drapex sources: docs/deck-format.md\n"
                 "(writing a deck) and docs/outputs.md (reading the results).\n";
    if (!drapex_path_.empty()) std::cout << "This build's sources: " << drapex_path_ << "/docs\n";
    std::cout << std::flush;
}
} // namespace

int main(int argc, char* argv[]) {
    if (argc > 1 && std::string(argv[1]) == "--help") {
        printUsage();
        return 0;
    }
    if (argc > 1 && std::string(argv[1]) == "--version") {
        std::cout << "Drapex " << versionText() << " (" << build_type_ << " build)" << std::endl;
        return 0;
    }
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
        model->setRestart(argc > 2 && std::string(argv[2]) == "--restart");
        model->run();
        std::cout << " Exit Drapex" << std::endl;
    } catch (const std::exception& e) {
        std::cerr << " " << e.what() << std::endl;
    }
    return 0;
}
