#include "Logger.h"

#include <iomanip>
#include <iostream>

void Logger::init(const std::filesystem::path& p) {
    IOFile::init(p);
}

void Logger::writeSeparator() {
    std::cout << " " << std::setfill('=') << std::setw(40) << "\n" << std::setfill(' ') << std::flush;
}

void Logger::writeComment(const std::string& /*text*/) {
    Logger::writeSeparator();
}

void Logger::writeSection(const std::string& text, const int& level) {
    switch (level) {
    case 0:
    case 1:
        std::cout << " ";
        break;
    case 2:
        std::cout << "  ";
        break;
    case 3:
        std::cout << "    ";
        break;
    default:
        break;
    }
    std::cout << text << std::endl;
}

void Logger::newLine() {
    file << std::endl;
}

void Logger::writeList(const std::string& text, const int& level) {
    if (level <= 0) {
        std::cout << "  > ";
    } else {
        std::cout << std::string(level, ' ');
        if (level == 1)
            std::cout << "  - ";
        else if (level == 2)
            std::cout << "  * ";
        else
            std::cout << "  . ";
    }
    std::cout << text << std::endl;
}

void Logger::writeError(const std::string& /*where*/, const std::string& /*what*/) {}

void Logger::entry(const std::string& text, const bool& /*flag*/) {
    file << text << std::endl;
    std::cout << text << std::endl;
}

Logger& operator<<(Logger& log, const std::string& text) {
    log.entry(text, true);
    return log;
}
