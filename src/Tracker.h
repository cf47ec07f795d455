// Base of trackers: the history of one quantity on chosen nodes or elements,
// one CSV row per print time, written to <deck directory>/<name>.csv.
#pragma once

#include "IOFile.h"

#include <fstream>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class Archive;
class Node;
class Element;

class Tracker : public IOFile {
public:
    ~Tracker() override = default;
    // Takes the deck path; the tracker's file lies in the deck's directory.
    void init(const std::filesystem::path& p) override;
    virtual void parseOstrel(std::vector<Token> tokens,
                             const std::unordered_map<int, std::shared_ptr<Node>>& nodesByNumber,
                             const std::unordered_map<int, std::shared_ptr<Element>>& elementsByNumber) = 0;
    // Opens the tracker's file for writing, replacing any earlier content.
    virtual void initializeTracker();
    virtual void printCSV(double time) = 0;
    // The rows written so far (Checkpoint.h): read from the file when
    // saving; when reading, they replace the file, and the next row follows
    // them, so a run killed after the checkpoint repeats no row.
    void checkpoint(Archive& archive);

    // Names the tracker and points its file at <deck directory>/<name>.csv.
    void setName(const std::string& n);
    std::string getName() const { return name; }
    std::string csvPath() const { return csvFile.string(); }
    // False when the file could not be opened: its rows are then lost.
    bool isWritable() const { return file.is_open() && file.good(); }

protected:
    // The text of a token as the user wrote it: the word, or the number.
    static std::string tokenText(const Token& t);
    // Converts a node or element number of the deck to an int (truncating, as
    // the reader does for element numbers); a number that no int can hold is
    // reported as not found.
    static int entityNumber(const Token& t);
    // The "%f" text of a time value.
    static void formatTime(double time, char (&buffer)[64]);

    std::string name;
    std::filesystem::path csvFile;
    std::ofstream file;
};
