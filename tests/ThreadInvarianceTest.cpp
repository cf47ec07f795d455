// A run gives the same results, bit for bit, on any number of threads: every
// VTK and CSV file of a deck run on 1, 2 and 3 threads is compared byte for
// byte. The decks are large enough for the element and node passes to share
// their work (a model below ParallelLoop::parallelFrom runs on one thread),
// and cover forces shared between element blocks, contact triangles and
// surfaces with friction pushing nodes of other blocks, rigid bodies, shells
// with moments and rods.
#include "ResultReadBack.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <regex>

using namespace testutil;

namespace {

// Every .vtk and .csv file under dir, by path relative to it.
std::map<std::string, std::string> resultFiles(const fs::path& dir) {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(dir)) {
        const std::string ext = entry.path().extension().string();
        if (ext == ".vtk" || ext == ".csv")
            files[fs::relative(entry.path(), dir).string()] = readFile(entry.path());
    }
    return files;
}

// Runs the deck (a file in its own scratch folder) on 1, 2 and 3 threads and
// expects the same result files from each; returns the folder of the
// one-thread run.
fs::path expectSameOnAnyThreads(const fs::path& deck) {
    std::map<std::string, std::string> one;
    fs::path first;
    for (int threads = 1; threads <= 3; ++threads) {
        const fs::path dir = scratchDir(deck.stem().string() + "_threads_" + std::to_string(threads));
        fs::copy_file(deck, dir / deck.filename());
        // Threads that sleep at once when idle: the suite shares the machine.
        const RunResult run =
            runCommand("cd '" + dir.string() + "' && OMP_NUM_THREADS=" + std::to_string(threads) +
                       " OMP_WAIT_POLICY=passive '" + DRAPEX_EXE + "' '" + deck.filename().string() + "'");
        EXPECT_EQ(run.err, "") << deck << " on " << threads << " threads";
        EXPECT_TRUE(
            contains(readFile(dir / (deck.stem().string() + ".md")), "Threads: " + std::to_string(threads)));
        const auto files = resultFiles(dir);
        if (threads == 1) {
            one = files;
            first = dir;
            EXPECT_GT(one.size(), 2u) << deck;
            continue;
        }
        EXPECT_EQ(files.size(), one.size()) << deck << " on " << threads << " threads";
        for (const auto& [name, bytes] : one) {
            const auto same = files.find(name);
            EXPECT_TRUE(same != files.end() && same->second == bytes)
                << name << " differs between 1 and " << threads << " threads";
        }
    }
    return first;
}

// A deck written by a generator of tools/, run with the arguments given.
fs::path generatedDeck(const std::string& name, const std::string& script, const std::string& arguments) {
    const fs::path deck = scratchDir(name) / (name + ".txt");
    const RunResult gen = runCommand(std::string(DRAPEX_SYSTEM_PYTHON) + " '" + DRAPEX_ROOT + "/tools/" +
                                     script + "' " + arguments + " '" + deck.string() + "'");
    EXPECT_EQ(gen.status, 0) << gen.err;
    return deck;
}

// The largest contact force magnitude at any node of the last print.
double largestContactForce(const fs::path& dir, const std::string& stem) {
    const auto vtk = readback::readVtk(readback::lastResult(dir / (stem + ".txt")));
    double largest = 0.0;
    for (const auto& f : vtk.pointVectors.at("CONTACT_FORCE"))
        largest = std::max(largest, std::sqrt(f[0] * f[0] + f[1] * f[1] + f[2] * f[2]));
    return largest;
}

} // namespace

TEST(ThreadInvariance, HemisphereFormingWithToolsFrictionAndHolderIsTheSameOnAnyThreads) {
    // The start of the stroke, printed three times.
    std::string text = readFile(fs::path(DRAPEX_ROOT) / "examples/hemisphere/hemisphere.txt");
    text = withEndTime(text, "0.003");
    text = std::regex_replace(text, std::regex("PRINT EVERY \\S+"), "PRINT EVERY 0.001");
    const fs::path deck = writeFile(scratchDir("hemisphere_threads") / "hemisphere.txt", text);
    const fs::path dir = expectSameOnAnyThreads(deck);
    // The comparison covers contact: the holder already presses the blank.
    EXPECT_GT(largestContactForce(dir, "hemisphere"), 0.0);
}

TEST(ThreadInvariance, GeneratedSheetsOfShellsRodsAndFabricOnAToolAreTheSameOnAnyThreads) {
    // 3200 shells with moments at their shared nodes.
    expectSameOnAnyThreads(generatedDeck("shells_threads", "cantilever_deck.py",
                                         "--nx 40 --ny 40 --width 100 --end 0.00005 --prints 4"));
    // 2520 rods and 2304 fabric triangles on as many contact triangles with
    // friction, pressed on by gravity.
    expectSameOnAnyThreads(
        generatedDeck("rods_threads", "gendeck.py",
                      "--mesh rect --size 100 100 --div 35 35 --element ROD_2 --material elastic "
                      "--clamp left --pull right 100 0 -50 --end 0.0002 -o"));
    const fs::path tool = generatedDeck(
        "fabric_tool_threads", "gendeck.py",
        "--mesh rect --size 100 100 --div 34 34 --element MEMBRANE_3 --material textile --thickness 0.5 "
        "--gravity -9810 --tool rect --tool-div 34 34 --tool-offset 0.001 --tool-thickness 0.5 --tool-type "
        "SOLID "
        "--tool-friction 0.2 --end 0.0008 -o");
    const fs::path dir = expectSameOnAnyThreads(tool);
    EXPECT_GT(largestContactForce(dir, "fabric_tool_threads"), 0.0);
}
