#include "tools/kxsip/FlowCommand.h"

#include "tools/kxsip/MessageFilter.h"
#include "tools/kxsip/MessageReader.h"
#include "tools/kxsip/Printable.h"
#include "tools/kxsip/Progress.h"
#include "tools/kxsip/capture/CaptureFile.h"
#include "tools/kxsip/flow/Call.h"
#include "tools/kxsip/flow/CallBook.h"
#include "tools/kxsip/flow/Drawing.h"
#include "tools/kxsip/flow/TextLadder.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iostream>
#include <memory>
#include <system_error>

namespace {

constexpr const char* kFooter =
    R"(Each call (all messages of a Call-ID) is a ladder. Each host is a column; a host that sends to itself has a column for
each port. Each message has its number and its time (seconds since the call began). A message with the same bytes as
message 6 (a retransmission) has the remark "repeats 6". Filters select whole calls: those with a matching message. If
the character set of the terminal is not UTF-8, the ladder is drawn in ASCII.
From a pipe, a call is drawn when it has ended: all requests have final responses, a refused INVITE has its ACK, the BYE
of an accepted one is answered, and the last response is not 401 or 407. Later messages that repeat those of a drawn
call are not drawn; others begin a new ladder. Calls that have not ended are kept in memory, and drawn at the end.
Control-C ends the input.
With -o the ladders are drawn into a single, self-contained file: FILE.svg is one picture that shows each message when
pointed at; FILE.html is a page that unfolds each message when clicked on.

Examples:
  kxsip flow samples/captures/call_udp.pcap
  tcpdump -i any -U -w - | kxsip flow -
  kxsip flow --status 486 -o busy.html samples/captures/call_udp.pcap)";

struct Options {
    std::vector<std::string> files;
    std::string output;
    ColourMode colour = ColourMode::Auto;
    MessageFilter filter;
};

bool isHtml(const std::string& name) {
    return name.ends_with(".html") || name.ends_with(".htm");
}

std::string outputFault(const std::string& name) {
    return isHtml(name) || name.ends_with(".svg") ? "" : "\"" + name + "\" must end in .svg or .html";
}

bool writeFile(const std::string& name, const std::string& bytes) {
    std::ofstream out(name, std::ios::binary);
    if (out << bytes && out.flush()) {
        return true;
    }
    std::cerr << "kxsip: cannot write " << printable(name) << ": " << std::generic_category().message(errno) << '\n';
    return false;
}

/** Draws calls: as text each at once, into a file all at the end. */
class Drawer {
public:
    explicit Drawer(const Options& options)
        : m_options(options), m_ladder(std::cout, Colour(options.colour), canDrawLines()) {}

    bool isFile() const { return !m_options.output.empty(); }

    /** Draws a call that has ended. Not for a file. */
    void draw(const Call& call) {
        m_progress.makeRoom();
        m_ladder.draw(call);
        m_hasDrawn = true;
    }

    /** Draws the remaining calls. */
    Outcome finish(const std::vector<Call>& calls) {
        if (calls.empty() && !m_hasDrawn) {
            std::cerr << "kxsip: no call to draw\n";
            return m_options.filter.isEmpty() ? Outcome::Valid : Outcome::NoMatch;
        }
        if (isFile() && !calls.empty()) {
            const std::string drawing = isHtml(m_options.output) ? htmlDrawing(calls) : svgDrawing(calls);
            return writeFile(m_options.output, drawing) ? Outcome::Valid : Outcome::Failed;
        }
        std::for_each(calls.begin(), calls.end(), [this](const Call& call) { draw(call); });
        return Outcome::Valid;
    }

    Progress& progress() { return m_progress; }

private:
    const Options& m_options;
    TextLadder m_ladder;
    Progress m_progress;
    bool m_hasDrawn = false;
};

Outcome flow(const Options& options) {
    CallBook<Call> book;
    Drawer drawer(options);
    const Outcome worst = forEachMessage({options.files, nullptr, &drawer.progress()}, [&](const ReadMessage& read) {
        if (!read.origin) {
            throw CaptureError(printable(read.file) +
                               " is no capture: a ladder needs times and addresses; give a pcap or pcapng file");
        }
        const bool isWanted = options.filter.accepts(read);
        if (!read.isLive || drawer.isFile()) {
            book.add(read, isWanted);
        } else if (const std::optional<Call> ended = book.addLive(read, isWanted)) {
            drawer.draw(*ended);
        }
    });
    return worse(worst, drawer.finish(book.finish()));
}

} // namespace

void addFlowCommand(CLI::App& app, Outcome& outcome) {
    const auto options = std::make_shared<Options>();
    CLI::App* const command = app.add_subcommand("flow", "Draw the ladder of each call of a capture");
    command->add_option("CAPTURE", options->files, "Captures (pcap, pcapng); \"-\" is standard input")
        ->type_name("")
        ->required();
    command->add_option("-o,--output", options->output, "Draw a picture into this file, .svg or .html")
        ->type_name("FILE")
        ->check(CLI::Validator(outputFault, ""));
    addColourOption(*command, options->colour);
    options->filter.addOptions(*command);
    command->footer(std::string(MessageFilter::sHelp) + "\n\n" + kFooter);
    command->callback([options, &outcome] { outcome = flow(*options); });
}
