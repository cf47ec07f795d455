// Job log: the console side of every log operation. Subclasses add the file
// form.
#pragma once

#include "IOFile.h"

#include <fstream>
#include <string>

class Logger : public IOFile {
public:
    ~Logger() override = default;
    void init(const std::filesystem::path& p) override;
    virtual void writeHeader() {}
    virtual void writeSeparator();
    virtual void writeComment(const std::string& text);
    virtual void writeSection(const std::string& text, const int& level);
    virtual void newLine();
    virtual void writeList(const std::string& text, const int& level);
    virtual void writeError(const std::string& where, const std::string& what);
    virtual void entry(const std::string& text, const bool& flag);
    // Before init: the log of a resumed run continues the file of the run it
    // resumes instead of replacing it.
    void continueExisting() { appending = true; }

protected:
    std::ofstream file;
    bool appending = false;
};

Logger& operator<<(Logger& log, const std::string& text);
