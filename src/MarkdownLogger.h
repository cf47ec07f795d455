// Job log in Markdown beside the deck (<stem>.md): a front-matter header,
// sections, lists, comments and errors; every operation echoes to the console.
#pragma once

#include "Logger.h"

class MarkdownLogger : public Logger {
public:
    void init(const std::filesystem::path& p) override;
    void writeHeader() override;
    void writeSeparator() override;
    void writeComment(const std::string& text) override;
    void writeSection(const std::string& text, const int& level) override;
    void writeList(const std::string& text, const int& level) override;
    void writeError(const std::string& where, const std::string& what) override;
};
