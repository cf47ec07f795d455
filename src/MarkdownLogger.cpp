#include "MarkdownLogger.h"

#include "Version.h"

#include <ctime>
#include <iostream>
#include <pwd.h>
#include <unistd.h>

void MarkdownLogger::init(const std::filesystem::path& p) {
    IOFile::init(p);
    std::filesystem::path logPath = path;
    logPath.replace_extension(".md");
    file.open(logPath, std::ios::out | (appending ? std::ios::app : std::ios::trunc));
    if (!appending) {
        writeHeader();
        return;
    }
    const std::time_t now = std::time(nullptr);
    std::string date(std::ctime(&now));
    if (!date.empty() && date.back() == '\n') date.pop_back();
    file << std::endl;
    writeSeparator();
    writeSection("Resuming job " + path.filename().string() + " (" + date + ")", 0);
}

void MarkdownLogger::writeHeader() {
    const passwd* pw = getpwuid(getuid());
    const std::time_t now = std::time(nullptr);
    const std::string author(pw ? pw->pw_name : nullptr);
    const std::string date(std::ctime(&now));
    file << "--- " << std::endl;
    file << "title: "
         << "Log file for job " << path.filename().string() << std::endl;
    file << "author: " << author << std::endl;
    file << "date: " << date;
    file << "--- " << std::endl;
    newLine();
    writeSection("Logging job " + path.filename().string(), 0);
    file << "This file has been generate automatically by drapex, "
         << "you will find  all the relative information of this job in the following sections. "
         << std::endl;
    file << std::endl;
    file << "**Using Drapex version: "
         << "V" << version_major_drapex_ << "." << version_minor_drapex_ << "." << version_patch_drapex_
         << "**" << std::endl;
    file << std::endl;
    writeSeparator();
    file << std::endl;
}

void MarkdownLogger::writeSeparator() {
    Logger::writeSeparator();
    file << "---" << std::endl;
}

void MarkdownLogger::writeComment(const std::string& text) {
    Logger::writeComment(text);
    file << "<!--" << text << "-->" << std::endl;
}

void MarkdownLogger::writeSection(const std::string& text, const int& level) {
    Logger::writeSection(text, level);
    switch (level) {
    case 0:
        file << "# ";
        break;
    case 1:
        file << "## ";
        break;
    case 2:
        file << "### ";
        break;
    case 3:
        file << "#### ";
        break;
    default:
        break;
    }
    file << text << "\n\n" << std::flush;
}

void MarkdownLogger::writeList(const std::string& text, const int& level) {
    Logger::writeList(text, level);
    file << std::string(level > 0 ? level : 0, '\t') << " - " << text << std::endl;
}

void MarkdownLogger::writeError(const std::string& where, const std::string& what) {
    Logger::writeError(where, what);
    writeSeparator();
    file << " :exclamation: **Error at:** " << where << std::endl;
    file << " ```bash " << std::endl;
    file << what << std::endl;
    file << " ```" << std::endl;
    file << std::endl;
}
