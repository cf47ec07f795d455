// Helpers shared by the test suites: scratch directories, deck files and
// end-to-end runs of the built program.
#pragma once

#include "AmpTabular.h"
#include "Token.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace testutil {

namespace fs = std::filesystem;

// Tokens of a parameter list written with blanks, classified as the deck does.
inline std::vector<Token> tokens(const std::string& text) {
    std::istringstream in(text);
    std::vector<Token> out;
    std::string word;
    while (in >> word)
        out.emplace_back(word);
    return out;
}

// A tabular amplitude RAMP rising from 0 at time 0 to 1 at time 1, ready to use.
inline std::vector<std::shared_ptr<Amplitude>> ramp() {
    auto a = std::make_shared<AmpTabular>();
    std::string name = "RAMP";
    a->setName(name);
    a->parseOstrel(tokens("VALUES 0 0 1 1"));
    a->setInitialConditions();
    return {a};
}

// A fresh, empty directory under the test's working directory (the build
// tree), so that separate builds never share scratch files.
inline fs::path scratchDir(const std::string& name) {
    fs::path dir = fs::current_path() / "scratch" / name;
    fs::remove_all(dir);
    fs::create_directories(dir);
    return dir;
}

inline fs::path writeFile(const fs::path& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary);
    out << text;
    return path;
}

inline std::string readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

inline std::vector<std::string> readLines(const fs::path& path) {
    std::ifstream in(path);
    std::vector<std::string> lines;
    std::string line;
    while (std::getline(in, line))
        lines.push_back(line);
    return lines;
}

struct RunResult {
    std::string out;
    std::string err;
    int status = -1;
};

// Runs a shell command, capturing standard output and standard error.
inline RunResult runCommand(const std::string& command, const std::string& input = "") {
    const fs::path dir = fs::temp_directory_path();
    const std::string tag = std::to_string(::getpid()) + "_" + std::to_string(std::rand());
    const fs::path outFile = dir / ("drapex_out_" + tag), errFile = dir / ("drapex_err_" + tag),
                   inFile = dir / ("drapex_in_" + tag);
    writeFile(inFile, input);
    const std::string full =
        command + " < '" + inFile.string() + "' > '" + outFile.string() + "' 2> '" + errFile.string() + "'";
    const int raw = std::system(full.c_str());
    RunResult r;
    r.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    r.out = readFile(outFile);
    r.err = readFile(errFile);
    fs::remove(outFile);
    fs::remove(errFile);
    fs::remove(inFile);
    return r;
}

// Runs the drapex binary on a deck (quoted, so paths with blanks work).
inline RunResult runDrapex(const fs::path& deck) {
    return runCommand(std::string("'") + DRAPEX_EXE + "' '" + deck.string() + "'");
}

// Writes a deck into a scratch directory and runs it.
inline RunResult runDeck(const std::string& name, const std::string& deckText, fs::path* deckOut = nullptr) {
    const fs::path dir = scratchDir(name);
    const fs::path deck = writeFile(dir / (name + ".txt"), deckText);
    if (deckOut) *deckOut = deck;
    return runDrapex(deck);
}

// The deck with the end time of its "RUN FROM a TO b" phrase (any case, any
// blanks) replaced; "-" or a deck without the phrase is returned as it is.
inline std::string withEndTime(const std::string& deck, const std::string& endTime) {
    if (endTime == "-") return deck;
    static const std::regex run(R"((RUN\s+FROM\s+\S+\s+TO\s+)(\S+))", std::regex::icase);
    std::smatch m;
    if (!std::regex_search(deck, m, run)) return deck;
    const auto at = static_cast<std::size_t>(m.position(2));
    return deck.substr(0, at) + endTime + deck.substr(at + static_cast<std::size_t>(m.length(2)));
}

// Rotation of v by the angle |t| about t (Rodrigues).
inline std::array<double, 3> rotate(const std::array<double, 3>& t, const std::array<double, 3>& v) {
    const double angle = std::sqrt(t[0] * t[0] + t[1] * t[1] + t[2] * t[2]);
    const double k[3] = {t[0] / angle, t[1] / angle, t[2] / angle};
    const double kv[3] = {k[1] * v[2] - k[2] * v[1], k[2] * v[0] - k[0] * v[2], k[0] * v[1] - k[1] * v[0]};
    const double kdotv = k[0] * v[0] + k[1] * v[1] + k[2] * v[2];
    std::array<double, 3> out;
    for (int i = 0; i < 3; ++i)
        out[i] = v[i] * std::cos(angle) + kv[i] * std::sin(angle) + k[i] * kdotv * (1.0 - std::cos(angle));
    return out;
}

inline bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

} // namespace testutil
