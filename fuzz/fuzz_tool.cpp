// Runs of kxsip. The first byte chooses the command, the second how the rest becomes its input: as a file, through a
// pipe, or as packets of a capture that the rest lists. Laws: the tool ends with one of its exit codes; what is written
// for a terminal is printable text; each line of JSON can be read.

#include "fuzz/FuzzSupport.h"
#include "fuzz/ListedCapture.h"
#include "tools/kxsip/CommandLine.h"

#include <nlohmann/json.hpp>

#include <array>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

namespace {

enum class Shown { Text, Json, Bytes };

struct Command {
    std::vector<const char*> arguments; ///< Without input and output.
    Shown shown = Shown::Text;
    const char* output = nullptr; ///< The name of the file that it writes, if any.
};

const std::array kCommands = {
    Command{{"show"}},
    Command{{"show", "--json"}, Shown::Json},
    Command{{"show", "--wire"}, Shown::Bytes},
    Command{{"show", "--log"}, Shown::Bytes},
    Command{{"check"}},
    Command{{"key"}},
    Command{{"flow"}},
    Command{{"flow"}, Shown::Text, "ladders.html"},
    Command{{"flow"}, Shown::Text, "ladders.svg"},
    Command{{"show", "--method", "INVITE,OPTIONS", "--status", "2xx,486"}, Shown::Text, "packets.pcap"},
    Command{{"calls"}},
    Command{{"calls", "--json", "--sort", "-duration"}, Shown::Json},
    Command{{"calls", "--user", "a", "--text", "(a|b)+"}, Shown::Text, "packets.pcapng"},
    Command{{"flow", "--width", "40", "--time", "utc"}},
    Command{
        {"flow", "--address", "192.0.2.0/24,2001:db8::/32", "--until", "2026-11-22"}, Shown::Text, "packets.pcapng"},
    Command{{"check"}, Shown::Text, "packets.pcap"},
    Command{{"flow", "--call", "1"}},
};

/** Takes what a stream gets while this object exists. */
class Caught {
public:
    explicit Caught(std::ostream& stream) : m_stream(stream), m_before(stream.rdbuf(m_text.rdbuf())) {}
    ~Caught() { m_stream.rdbuf(m_before); }
    std::string text() const { return m_text.str(); }

private:
    std::ostringstream m_text;
    std::ostream& m_stream;
    std::streambuf* m_before;
};

/** A file in memory, which has a name as long as this object exists. */
class MemoryFile {
public:
    explicit MemoryFile(std::string_view bytes) : m_descriptor(memfd_create("input", 0)) {
        if (write(m_descriptor, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
            fail("the input can be stored", "", "");
        }
    }
    ~MemoryFile() { close(m_descriptor); }
    std::string name() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

private:
    int m_descriptor;
};

/** A pipe that holds the bytes, or as many of them as it has room for, and then ends. */
class FullPipe {
public:
    explicit FullPipe(std::string_view bytes) {
        constexpr std::size_t kRoom = 65536;
        std::array<int, 2> ends{};
        if (pipe(ends.data()) != 0 || write(ends[1], bytes.data(), std::min(bytes.size(), kRoom)) < 0) {
            fail("the input can be put into a pipe", "", "");
        }
        close(ends[1]);
        m_descriptor = ends[0];
    }
    ~FullPipe() { close(m_descriptor); }
    std::string name() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

private:
    int m_descriptor;
};

void checkPrintable(std::string_view text) {
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte < ' ' && c != '\n' && c != '\t') || byte == 0x7F) {
            fail("what is written for a terminal is printable", text, std::to_string(byte));
        }
    }
    if (!nlohmann::json::accept(nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::ignore)) ||
        nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace).find("\uFFFD") !=
            std::string::npos) {
        fail("what is written for a terminal is UTF-8", text, "");
    }
}

void checkJson(const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (!nlohmann::json::accept(line)) {
            fail("each line of JSON can be read", line, "");
        }
    }
}

/** A folder for what the tool writes, removed at the end. */
class ScratchFolder {
public:
    ScratchFolder() : m_path(std::filesystem::temp_directory_path() / ("kxfuzz-" + std::to_string(getpid()))) {
        std::filesystem::create_directories(m_path);
    }
    ~ScratchFolder() { std::filesystem::remove_all(m_path); }
    std::string path(const char* name) const { return (m_path / name).string(); }

private:
    std::filesystem::path m_path;
};

void run(const Command& command, const std::string& input) {
    static const ScratchFolder s_folder;
    const std::string output = command.output == nullptr ? "" : s_folder.path(command.output);
    std::vector<const char*> arguments{"kxsip"};
    arguments.insert(arguments.end(), command.arguments.begin(), command.arguments.end());
    if (command.output != nullptr) {
        arguments.insert(arguments.end(), {"-o", output.c_str()});
    }
    arguments.insert(arguments.end(), {"--grammar", isRFC() ? "rfc" : "classic", input.c_str()});
    const Caught out(std::cout);
    const Caught errors(std::cerr);
    const int code = runCommandLine(static_cast<int>(arguments.size()), arguments.data());
    if (code < 0 || code > 4) {
        fail("the tool ends with one of its exit codes", errors.text(), std::to_string(code));
    }
    checkPrintable(errors.text());
    if (command.shown == Shown::Text) {
        checkPrintable(out.text());
    } else if (command.shown == Shown::Json) {
        checkJson(out.text());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) {
        return 0;
    }
    const Command& command = kCommands.at(data[0] % kCommands.size());
    const std::string_view rest(reinterpret_cast<const char*>(data) + 2, size - 2);
    switch (data[1] % 4) {
    case 0:
        run(command, MemoryFile(rest).name());
        break;
    case 1:
        run(command, FullPipe(rest).name());
        break;
    default:
        run(command, MemoryFile(listedCapture(rest, data[1])).name());
    }
    return 0;
}
