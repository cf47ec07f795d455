#include "IOFile.h"

#include <algorithm>
#include <cctype>
#include <exception>
#include <locale>
#include <stdexcept>

void IOFile::init(const std::filesystem::path& p) {
    path = p;
    if (!p.has_filename()) std::throw_with_nested(std::runtime_error("The filename is null"));
    fullPathText = std::filesystem::absolute(p).string();
    relativePathText = p.relative_path().string();
    parentPathText = p.parent_path().string();
    filenameText = p.stem().string();
    extensionText = p.extension().string();
    std::error_code ec;
    exists = std::filesystem::exists(p, ec);
}

void IOFile::ltrim(std::string& s) {
    s.erase(s.begin(), std::find_if(s.begin(), s.end(), [](unsigned char c) { return !std::isspace(c); }));
}

void IOFile::rtrim(std::string& s) {
    s.erase(std::find_if(s.rbegin(), s.rend(), [](unsigned char c) { return !std::isspace(c); }).base(),
            s.end());
}

void IOFile::trim(std::string& s) {
    ltrim(s);
    rtrim(s);
}

void IOFile::uppercase(std::string& s) {
    const std::locale loc;
    for (char& c : s)
        c = std::toupper(c, loc);
}

bool IOFile::inArray(const std::string& s, const std::vector<std::string>& list) {
    return std::find(list.begin(), list.end(), s) != list.end();
}

std::vector<Token> IOFile::tokenize(std::string& line, const std::string& delimiters) {
    std::vector<Token> tokens;
    std::string::size_type pos = 0;
    while (true) {
        const auto start = line.find_first_not_of(delimiters, pos);
        if (start == std::string::npos) break;
        const auto end = line.find_first_of(delimiters, start + 1);
        tokens.emplace_back(line.substr(start, end == std::string::npos ? std::string::npos : end - start));
        if (end == std::string::npos) break;
        pos = end;
    }
    return tokens;
}
