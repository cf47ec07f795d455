// Checkpoints: the whole state of a run in one file, from which
// `drapex job.txt --restart` resumes it as if it had never stopped.
//
// A checkpoint file (native byte order, x86-64 little-endian):
//   "DRAPEXCK"                 magic word, 8 bytes
//   u32 format version         bumped whenever the state layout changes
//   text program version       "v0.5.0"; another version's file is refused
//   text deck name, u64 deck size, u32 CRC-32 of the deck's bytes
//   f64 model time, i64 increment   where the run stood, for the messages
//   u64 body size, body        the state, written by the classes' checkpoint()
//   u32 CRC-32 of every byte before it
// (a text is a u32 length and its bytes). The body is a sequence of sections,
// each opened by a tag and a count that the reading model checks against its
// own, so a file that does not fit the deck is refused instead of misread.
//
// Every class with state has one `checkpoint(Archive&)` that lists its
// members once, for writing and for reading alike, so the two cannot drift
// apart. What the set-up rebuilds from the deck (masses, initial frames, the
// contact search's bins, which follow from the positions) is not stored:
// a restart runs the set-up as usual, then reads the file over it.
#pragma once

#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <vector>

class Node;

class Archive {
public:
    // An archive that collects what is written into its bytes.
    Archive();
    // An archive that reads `body`; node numbers resolve through `nodes`.
    Archive(std::string body, const std::unordered_map<int, std::shared_ptr<Node>>* nodes);

    bool saving() const { return writing; }
    const std::string& bytes() const { return data; }
    // Bytes read so far.
    std::size_t offset() const { return position; }

    // One plain value or array (a double, an int, double[6], a struct of them).
    template <class T> void pod(T& value) { raw(&value, sizeof(T), std::is_trivially_copyable<T>{}); }
    // A vector of plain values: its length, then its elements; reading
    // resizes it.
    template <class T> void vector(std::vector<T>& v) {
        static_assert(std::is_trivially_copyable<T>::value, "only plain values are archived");
        std::uint64_t n = v.size();
        pod(n);
        if (!writing) {
            if (n > (data.size() - position) / (sizeof(T) ? sizeof(T) : 1))
                throw std::runtime_error("a list runs past the end of the state");
            v.resize(static_cast<std::size_t>(n));
        }
        if (n) raw(v.data(), sizeof(T) * static_cast<std::size_t>(n), std::true_type{});
    }
    void text(std::string& s);
    // Opens a section: writes the tag and the count, or reads them and
    // refuses a file whose tag or count differs from the model's.
    void section(const char* tag, std::size_t count);
    // A node written as its number, read back as the model's node.
    void node(const Node*& n);
    // Every byte has been read (refuses trailing bytes).
    void finish() const;

private:
    void raw(void* p, std::size_t n, std::true_type);
    void raw(void*, std::size_t, std::false_type) = delete;

    bool writing = true;
    std::string data;
    std::size_t position = 0;
    const std::unordered_map<int, std::shared_ptr<Node>>* nodeMap = nullptr;
};

// Where a run stood when its checkpoint was written.
struct CheckpointHeader {
    std::string program;  // version of the program that wrote it
    std::string deckName; // file name of the deck
    std::uint64_t deckSize = 0;
    std::uint32_t deckHash = 0; // CRC-32 of the deck's bytes
    double time = 0.0;
    std::int64_t increment = 0;
};

// Why a checkpoint cannot be used (the message says it in words).
class CheckpointRefused : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

namespace checkpoint {
constexpr std::uint32_t formatVersion = 1;

// The header a checkpoint of `deck` written by this program carries (time
// and increment left at zero); throws when the deck cannot be read.
CheckpointHeader describe(const std::filesystem::path& deck);
// `<deck directory>/<stem>.ckpt`, and the one before it, `<stem>.ckpt.1`.
std::filesystem::path latestFile(const std::filesystem::path& deck);
std::filesystem::path previousFile(const std::filesystem::path& deck);

// Writes header and body to `<latest>.tmp`, flushes it to the disk, moves the
// latest file to the previous one's name and the new file to the latest's:
// at every moment a complete checkpoint exists. Throws (leaving the existing
// files as they were and no temporary behind) when the file cannot be
// written, for example on a full disk.
void write(const std::filesystem::path& latest, const std::filesystem::path& previous,
           const CheckpointHeader& header, const std::string& body);
// Reads `file` and checks it against `expected` (this program and this
// deck); returns the body and fills `found`. Throws CheckpointRefused
// saying why the file cannot be used.
std::string read(const std::filesystem::path& file, const CheckpointHeader& expected,
                 CheckpointHeader& found);
} // namespace checkpoint

// SIGINT and SIGTERM, while an object of this class lives, ask the run to
// stop at the end of its increment instead of ending the program; a second
// signal of the same kind ends it at once, as without the object.
class StopSignals {
public:
    StopSignals();
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;
    // The signal received (0 while none).
    static int received();

private:
    struct sigaction previousInt {};
    struct sigaction previousTerm {};
};

// What the loop needs to write checkpoints and to stop on a signal: the
// deck's identity, the files, the wall-clock schedule and, after a restart,
// the loop's counters as the checkpoint left them.
struct CheckpointRun {
    CheckpointHeader deck;
    std::filesystem::path latest, previous;
    double minutes = 0.0; // 0: no wall-clock schedule
    std::chrono::steady_clock::time_point last;
    StopSignals signals;
    // Test hook: DRAPEX_SIGNAL_AT=<increment>:<signal number> raises that
    // signal in the process once that increment has been made.
    long signalAt = -1;
    int signalToRaise = 0;
    bool resumed = false;
    double time = 0.0;
    int printCount = 0;
    double candidateStep = 0.0;
};
