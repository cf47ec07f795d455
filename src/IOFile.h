// Base of every file object: the path resolved once into its parts, and the
// line-cleaning operations used on deck lines.
#pragma once

#include "Token.h"

#include <filesystem>
#include <string>
#include <vector>

class IOFile {
public:
    IOFile() = default;
    virtual ~IOFile() = default;

    virtual void init(const std::filesystem::path& p);

    std::string filename() const { return filenameText; }
    std::string fullPath() const { return fullPathText; }
    std::string parentPath() const { return parentPathText; }
    std::string relativePath() const { return relativePathText; }
    std::string extension() const { return extensionText; }
    bool fileExists() const { return exists; }

    static void ltrim(std::string& s);
    static void rtrim(std::string& s);
    static void trim(std::string& s);
    static void uppercase(std::string& s);
    static bool inArray(const std::string& s, const std::vector<std::string>& list);
    static std::vector<Token> tokenize(std::string& line, const std::string& delimiters);

protected:
    std::filesystem::path path;
    std::string filenameText;
    std::string fullPathText;
    std::string parentPathText;
    std::string relativePathText;
    std::string extensionText;
    bool exists = false;
};
