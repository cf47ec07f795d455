#include "Checkpoint.h"

#include "Node.h"
#include "Version.h"

#include <zlib.h>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sstream>
#include <unistd.h>

namespace {
const char magicWord[8] = {'D', 'R', 'A', 'P', 'E', 'X', 'C', 'K'};

std::uint32_t crc(const std::string& bytes, std::size_t count) {
    uLong sum = crc32(0L, Z_NULL, 0);
    const auto* p = reinterpret_cast<const Bytef*>(bytes.data());
    // zlib takes at most 4 GiB per call.
    while (count > 0) {
        const uInt part = count > (1u << 30) ? (1u << 30) : static_cast<uInt>(count);
        sum = crc32(sum, p, part);
        p += part;
        count -= part;
    }
    return static_cast<std::uint32_t>(sum);
}

std::string programVersion() {
    return "v" + std::to_string(version_major_drapex_) + "." + std::to_string(version_minor_drapex_) + "." +
           std::to_string(version_patch_drapex_);
}

bool readWhole(const std::filesystem::path& file, std::string& into) {
    std::ifstream in(file, std::ios::binary);
    if (!in) return false;
    into.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return !in.bad();
}

// What follows the magic word and the format version.
void header(Archive& a, CheckpointHeader& h) {
    a.text(h.program);
    a.text(h.deckName);
    a.pod(h.deckSize);
    a.pod(h.deckHash);
    a.pod(h.time);
    a.pod(h.increment);
}

std::string fixedText(double v) {
    char text[64];
    std::snprintf(text, sizeof text, "%f", v);
    return text;
}

volatile std::sig_atomic_t stopRequest = 0;

extern "C" void askToStop(int signal) {
    if (stopRequest == signal) {
        // A second signal of the same kind: the user insists, end as usual.
        std::signal(signal, SIG_DFL);
        std::raise(signal);
        return;
    }
    stopRequest = signal;
}
} // namespace

Archive::Archive() = default;

Archive::Archive(std::string body, const std::unordered_map<int, std::shared_ptr<Node>>* nodes)
    : writing(false), data(std::move(body)), nodeMap(nodes) {}

void Archive::raw(void* p, std::size_t n, std::true_type) {
    if (writing) {
        data.append(static_cast<const char*>(p), n);
        return;
    }
    if (n > data.size() - position) throw std::runtime_error("the state ends early");
    std::memcpy(p, data.data() + position, n);
    position += n;
}

void Archive::text(std::string& s) {
    std::uint32_t n = static_cast<std::uint32_t>(s.size());
    pod(n);
    if (writing) {
        data += s;
        return;
    }
    if (n > data.size() - position) throw std::runtime_error("a text runs past the end of the state");
    s.assign(data, position, n);
    position += n;
}

void Archive::section(const char* tag, std::size_t count) {
    std::string t = tag;
    std::uint64_t n = count;
    if (writing) {
        text(t);
        pod(n);
        return;
    }
    std::string found;
    text(found);
    pod(n);
    if (found != t) throw std::runtime_error("section " + t + " expected, " + found + " found");
    if (n != count)
        throw std::runtime_error("it holds " + std::to_string(n) + " " + t + ", the model " +
                                 std::to_string(count));
}

void Archive::node(const Node*& n) {
    std::int32_t number = n ? n->getNumber() : 0;
    pod(number);
    if (writing) return;
    n = nullptr;
    if (number == 0) return;
    const auto found = nodeMap ? nodeMap->find(number) : decltype(nodeMap->end()){};
    if (!nodeMap || found == nodeMap->end())
        throw std::runtime_error("it names node " + std::to_string(number) +
                                 ", which the deck does not have");
    n = found->second.get();
}

void Archive::finish() const {
    if (!writing && position != data.size())
        throw std::runtime_error(std::to_string(data.size() - position) + " bytes follow the state");
}

namespace checkpoint {

CheckpointHeader describe(const std::filesystem::path& deck) {
    std::string bytes;
    if (!readWhole(deck, bytes)) throw std::runtime_error("Deck " + deck.string() + " cannot be read");
    CheckpointHeader h;
    h.program = programVersion();
    h.deckName = deck.filename().string();
    h.deckSize = bytes.size();
    h.deckHash = crc(bytes, bytes.size());
    return h;
}

std::filesystem::path latestFile(const std::filesystem::path& deck) {
    return deck.parent_path() / (deck.stem().string() + ".ckpt");
}

std::filesystem::path previousFile(const std::filesystem::path& deck) {
    return deck.parent_path() / (deck.stem().string() + ".ckpt.1");
}

void write(const std::filesystem::path& latest, const std::filesystem::path& previous,
           const CheckpointHeader& written, const std::string& body) {
    Archive head;
    char magic[sizeof magicWord];
    std::memcpy(magic, magicWord, sizeof magic);
    head.pod(magic);
    std::uint32_t version = formatVersion;
    head.pod(version);
    CheckpointHeader h = written;
    header(head, h);
    std::uint64_t size = body.size();
    head.pod(size);
    std::string bytes = head.bytes();
    bytes += body;
    const std::uint32_t sum = crc(bytes, bytes.size());
    bytes.append(reinterpret_cast<const char*>(&sum), sizeof sum);

    std::filesystem::path temporary = latest;
    temporary += ".tmp";
    const std::string name = temporary.string();
    const int fd = ::open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) throw std::runtime_error(name + " cannot be created: " + std::strerror(errno));
    std::size_t done = 0;
    int failure = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            failure = n < 0 ? errno : ENOSPC;
            break;
        }
        done += static_cast<std::size_t>(n);
    }
    // The data reaches the disk before the name does: a crash leaves either
    // the old files or the complete new one.
    if (!failure && ::fsync(fd) != 0) failure = errno;
    if (::close(fd) != 0 && !failure) failure = errno;
    if (failure) {
        ::unlink(name.c_str());
        throw std::runtime_error(name + " cannot be written: " + std::strerror(failure));
    }
    std::error_code ec;
    if (std::filesystem::exists(latest, ec)) std::filesystem::rename(latest, previous, ec);
    if (!ec) std::filesystem::rename(temporary, latest, ec);
    if (ec) {
        ::unlink(name.c_str());
        throw std::runtime_error(latest.string() + " cannot be written: " + ec.message());
    }
}

std::string read(const std::filesystem::path& file, const CheckpointHeader& expected,
                 CheckpointHeader& found) {
    std::string bytes;
    std::error_code ec;
    if (!std::filesystem::exists(file, ec)) throw CheckpointRefused("it does not exist");
    if (!readWhole(file, bytes)) throw CheckpointRefused("it cannot be read");
    Archive in(bytes, nullptr);
    char magic[sizeof magicWord] = {};
    std::uint32_t version = 0;
    std::uint64_t size = 0;
    try {
        in.pod(magic);
        if (std::memcmp(magic, magicWord, sizeof magic) != 0)
            throw CheckpointRefused("it is not a Drapex checkpoint");
        in.pod(version);
        if (version != formatVersion)
            throw CheckpointRefused("it is in checkpoint format " + std::to_string(version) +
                                    ", this program reads format " + std::to_string(formatVersion));
        header(in, found);
        in.pod(size);
    } catch (const CheckpointRefused&) {
        throw;
    } catch (const std::exception&) {
        throw CheckpointRefused("it is truncated (" + std::to_string(bytes.size()) +
                                " bytes, shorter than its header)");
    }
    const std::size_t headerSize = in.offset();
    const std::uint64_t total = headerSize + size + sizeof(std::uint32_t);
    if (bytes.size() < total)
        throw CheckpointRefused("it is truncated (" + std::to_string(bytes.size()) + " bytes of " +
                                std::to_string(total) + ")");
    if (bytes.size() > total)
        throw CheckpointRefused("it is longer than it says (" + std::to_string(bytes.size()) +
                                " bytes, not " + std::to_string(total) + ")");
    std::uint32_t stored = 0;
    std::memcpy(&stored, bytes.data() + bytes.size() - sizeof stored, sizeof stored);
    if (stored != crc(bytes, bytes.size() - sizeof stored))
        throw CheckpointRefused("its checksum does not match its content: the file is corrupt");
    if (found.program != expected.program)
        throw CheckpointRefused("it was written by Drapex " + found.program + ", this is Drapex " +
                                expected.program);
    if (found.deckName != expected.deckName)
        throw CheckpointRefused("it belongs to deck " + found.deckName + ", not to " + expected.deckName);
    if (found.deckSize != expected.deckSize || found.deckHash != expected.deckHash)
        throw CheckpointRefused("deck " + expected.deckName +
                                " has been edited since the checkpoint was written at time " +
                                fixedText(found.time));
    return bytes.substr(headerSize, static_cast<std::size_t>(size));
}
} // namespace checkpoint

StopSignals::StopSignals() {
    stopRequest = 0;
    struct sigaction action {};
    action.sa_handler = askToStop;
    sigemptyset(&action.sa_mask);
    // Restarted system calls: a signal during a write must not fail it.
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, &previousInt);
    sigaction(SIGTERM, &action, &previousTerm);
}

StopSignals::~StopSignals() {
    sigaction(SIGINT, &previousInt, nullptr);
    sigaction(SIGTERM, &previousTerm, nullptr);
}

int StopSignals::received() {
    return stopRequest;
}
