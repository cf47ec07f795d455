// Checkpoints and restarts, end to end on a deck with contact and friction:
// runs stopped by SIGTERM or killed by SIGKILL and resumed (twice in a row)
// write the same files, byte for byte, as the run that went through; a
// damaged or foreign checkpoint is refused with its reason and the older
// good one is used; a checkpoint that cannot be written leaves the run going.
#include "TestUtil.h"
#include "Version.h"

#include <csignal>
#include <fcntl.h>
#include <map>
#include <zlib.h>

using namespace testutil;

namespace {
struct Outcome {
    int status; // exit status, or minus the signal that ended it
    std::string out, err;
};

// Runs drapex on `deck` in `dir` in a child process. With `at` >= 0 the child
// stops itself (SIGSTOP through the DRAPEX_SIGNAL_AT hook) after that
// increment; it is then sent `signal` from here, and let go.
Outcome run(const fs::path& dir, const char* deck, bool restart, long at = -1, int signal = 0,
            int threads = 0) {
    const pid_t pid = fork();
    if (pid == 0) {
        if (threads > 0) setenv("OMP_NUM_THREADS", std::to_string(threads).c_str(), 1);
        dup2(open((dir / "out.txt").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), 1);
        dup2(open((dir / "err.txt").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), 2);
        if (chdir(dir.c_str()) != 0) _exit(127);
        const std::string hook = std::to_string(at) + ":" + std::to_string(SIGSTOP);
        setenv("DRAPEX_SIGNAL_AT", hook.c_str(), 1);
        execl(DRAPEX_EXE, DRAPEX_EXE, deck, restart ? "--restart" : nullptr, nullptr);
        _exit(127);
    }
    int status = 0;
    if (at >= 0) {
        waitpid(pid, &status, WUNTRACED);
        EXPECT_TRUE(WIFSTOPPED(status)) << "the run ended before increment " << at;
        kill(pid, signal);
        kill(pid, SIGCONT);
    }
    waitpid(pid, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), readFile(dir / "out.txt"),
            readFile(dir / "err.txt")};
}

fs::path deckDir(const std::string& name) {
    const fs::path dir = scratchDir(name);
    fs::copy_file(fs::path(DRAPEX_TEST_DIR) / "decks/restart/restart.txt", dir / "restart.txt");
    return dir;
}

// Every result, tracker and energy file under dir, by relative path.
std::map<std::string, std::string> outputs(const fs::path& dir) {
    std::map<std::string, std::string> files;
    for (const auto& e : fs::recursive_directory_iterator(dir)) {
        const std::string ext = e.path().extension().string();
        if (ext == ".vtk" || ext == ".csv" || ext == ".series")
            files[fs::relative(e.path(), dir).string()] = readFile(e.path());
    }
    return files;
}

void expectSameFiles(const fs::path& dir, const std::map<std::string, std::string>& expected) {
    const auto got = outputs(dir);
    EXPECT_EQ(got.size(), expected.size());
    for (const auto& [name, bytes] : expected)
        EXPECT_TRUE(got.count(name) && got.at(name) == bytes) << name << " differs";
}

// The files of the run that goes through, in a directory of the test's own
// (CTest runs the tests side by side).
std::map<std::string, std::string> uninterrupted(const std::string& name) {
    const fs::path dir = deckDir(name + "_whole");
    EXPECT_EQ(run(dir, "restart.txt", false).status, 0);
    return outputs(dir);
}
} // namespace

TEST(Checkpoint, StoppedAndKilledRunsResumeToTheSameFilesByteForByte) {
    const auto expected = uninterrupted("restart_cut");
    ASSERT_EQ(expected.size(), 24u); // 20 prints, their series, 2 trackers, the energy history
    const fs::path dir = deckDir("restart_cut");
    Outcome r = run(dir, "restart.txt", false, 1500, SIGTERM);
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(contains(r.out,
                         "  > Stopped at time 0.031500 (increment 1500) on SIGTERM: checkpoint written to "
                         "restart.ckpt; resume with: drapex restart.txt --restart\n"))
        << r.out;
    // Killed between the checkpoints at 0.04 and 0.06: the next resume repeats what followed 0.04.
    EXPECT_EQ(run(dir, "restart.txt", true, 2500, SIGKILL).status, -SIGKILL);
    r = run(dir, "restart.txt", true);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err, "");
    EXPECT_TRUE(
        contains(r.out, "  > Resumed at time 0.040007 (increment 1914) from checkpoint restart.ckpt"));
    expectSameFiles(dir, expected);
    const std::string log = readFile(dir / "restart.md");
    EXPECT_TRUE(contains(log, "# Resuming job restart.txt ("));
    EXPECT_TRUE(contains(log, " - Resumed at time 0.031500 (increment 1500) from checkpoint restart.ckpt"));
}

TEST(Checkpoint, RefusedCheckpointsSayWhyAndTheOlderGoodOneIsUsed) {
    const auto expected = uninterrupted("restart_refused");
    const fs::path dir = deckDir("restart_refused");
    EXPECT_EQ(run(dir, "restart.txt", false, 2500, SIGTERM).status, 0);
    const std::string latest = readFile(dir / "restart.ckpt"), previous = readFile(dir / "restart.ckpt.1");
    const std::string resumed = "; resuming from the previous good one, restart.ckpt.1\n";
    const auto resumeWith = [&](const std::string& damaged, const std::string& reason) {
        writeFile(dir / "restart.ckpt", damaged);
        writeFile(dir / "restart.ckpt.1", previous);
        const Outcome r = run(dir, "restart.txt", true);
        EXPECT_TRUE(contains(r.out, "  > Warning: checkpoint restart.ckpt is refused: " + reason + resumed))
            << r.out;
        EXPECT_TRUE(
            contains(r.out, "  > Resumed at time 0.040007 (increment 1914) from checkpoint restart.ckpt.1"));
        expectSameFiles(dir, expected);
    };
    std::string corrupt = latest;
    corrupt[latest.size() / 2] ^= 1;
    resumeWith(corrupt, "its checksum does not match its content: the file is corrupt");
    resumeWith(latest.substr(0, 1000),
               "it is truncated (1000 bytes of " + std::to_string(latest.size()) + ")");
    // Another program version, its checksum made right.
    const std::string version = "v" + std::to_string(version_major_drapex_) + "." +
                                std::to_string(version_minor_drapex_) + "." +
                                std::to_string(version_patch_drapex_);
    std::string older = latest;
    older.replace(older.find(version), version.size(), "v0.0.0");
    const auto sum = static_cast<std::uint32_t>(
        crc32(0L, reinterpret_cast<const Bytef*>(older.data()), static_cast<uInt>(older.size() - 4)));
    older.replace(older.size() - 4, 4, reinterpret_cast<const char*>(&sum), 4);
    resumeWith(older, "it was written by Drapex v0.0.0, this is Drapex " + version);

    // Both refused: the run does not start.
    fs::copy_file(dir / "restart.txt", dir / "other.txt");
    fs::copy_file(dir / "restart.ckpt", dir / "other.ckpt");
    fs::copy_file(dir / "restart.ckpt.1", dir / "other.ckpt.1");
    const std::string foreign = "it belongs to deck restart.txt, not to other.txt";
    Outcome r = run(dir, "other.txt", true);
    EXPECT_TRUE(contains(r.err, " --> Details: Checkpoint other.ckpt is refused: " + foreign +
                                    "; no good checkpoint precedes it (other.ckpt.1 is refused: " + foreign +
                                    ")\n"))
        << r.err;
    EXPECT_EQ(r.status, 0);
    writeFile(dir / "restart.ckpt", latest);
    writeFile(dir / "restart.ckpt.1", previous);
    writeFile(dir / "restart.txt", readFile(dir / "restart.txt") + "** an edit\n");
    r = run(dir, "restart.txt", true);
    EXPECT_TRUE(contains(r.err,
                         "is refused: deck restart.txt has been edited since the checkpoint was written "
                         "at time 0.040007)\n"))
        << r.err;
    fs::remove(dir / "restart.ckpt");
    fs::remove(dir / "restart.ckpt.1");
    r = run(dir, "restart.txt", true);
    EXPECT_TRUE(contains(r.err,
                         " --> Details: No checkpoint to resume from: restart.ckpt does not exist (run "
                         "the deck without --restart to start at time 0)\n"))
        << r.err;
}

TEST(Checkpoint, ACheckpointThatCannotBeWrittenLeavesTheRunGoing) {
    // A directory where the temporary file goes fails every write, as a full disk does.
    const fs::path dir = deckDir("restart_unwritable");
    fs::create_directory(dir / "restart.ckpt.tmp");
    const Outcome r = run(dir, "restart.txt", false);
    EXPECT_TRUE(contains(r.out,
                         "  > Warning: no checkpoint written at time 0.020020 (increment 950): "
                         "restart.ckpt.tmp cannot be created: Is a directory; there is no earlier one; "
                         "the run goes on\n"))
        << r.out;
    expectSameFiles(dir, uninterrupted("restart_unwritable"));
}

TEST(Checkpoint, ARunStoppedOnTwoThreadsResumesOnThreeToTheFilesOfOne) {
    // 2312 fabric triangles on as many contact triangles with friction: the
    // element pass shares its blocks among the threads.
    const fs::path whole = scratchDir("restart_threads_whole");
    const RunResult gen =
        runCommand(std::string(DRAPEX_SYSTEM_PYTHON) + " '" + DRAPEX_ROOT +
                   "/tools/gendeck.py' --mesh rect --size 100 100 --div 34 34 --element "
                   "MEMBRANE_3 --material textile --thickness 0.5 --gravity -9810 --tool rect "
                   "--tool-div 34 34 --tool-offset 0.001 --tool-thickness 0.5 --tool-type SOLID "
                   "--tool-friction 0.2 --end 0.0008 -o '" +
                   (whole / "sheet.txt").string() + "'");
    ASSERT_EQ(gen.status, 0) << gen.err;
    EXPECT_EQ(run(whole, "sheet.txt", false, -1, 0, 1).status, 0);
    const auto expected = outputs(whole);
    const fs::path dir = scratchDir("restart_threads");
    fs::copy_file(whole / "sheet.txt", dir / "sheet.txt");
    EXPECT_EQ(run(dir, "sheet.txt", false, 400, SIGTERM, 2).status, 0);
    EXPECT_EQ(run(dir, "sheet.txt", true, -1, 0, 3).err, "");
    expectSameFiles(dir, expected);
}

TEST(Checkpoint, AFabricShellResumesWithTheCurvatureItHadBent) {
    // The strip bends under its weight; a resume without the curvature and
    // transverse shear the shells accumulated would release the bending.
    auto copyDeck = [](const std::string& name) {
        const fs::path dir = scratchDir(name);
        fs::copy_file(fs::path(DRAPEX_TEST_DIR) / "decks/restart/fabric.txt", dir / "fabric.txt");
        return dir;
    };
    const fs::path whole = copyDeck("restart_fabric_whole");
    EXPECT_EQ(run(whole, "fabric.txt", false).status, 0);
    const fs::path dir = copyDeck("restart_fabric");
    EXPECT_EQ(run(dir, "fabric.txt", false, 300, SIGTERM).status, 0);
    EXPECT_EQ(run(dir, "fabric.txt", true).err, "");
    expectSameFiles(dir, outputs(whole));
}
