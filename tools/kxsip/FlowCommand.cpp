#include "tools/kxsip/FlowCommand.h"

#include "tools/kxsip/MessageFilter.h"
#include "tools/kxsip/MessageReader.h"
#include "tools/kxsip/Printable.h"
#include "tools/kxsip/Progress.h"
#include "tools/kxsip/flow/CallBook.h"
#include "tools/kxsip/flow/Drawing.h"
#include "tools/kxsip/flow/TextLadder.h"

#include <CLI/CLI.hpp>

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
With -o the ladders are drawn into a single, self-contained file: FILE.svg is one picture that shows each message when
pointed at; FILE.html is a page that unfolds each message when clicked on.

Examples:
  kxsip flow samples/captures/call_udp.pcap
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

Outcome draw(const std::vector<Call>& calls, const Options& options) {
    if (options.output.empty()) {
        TextLadder ladder(std::cout, Colour(options.colour), canDrawLines());
        for (const Call& call : calls) {
            ladder.draw(call);
        }
        return Outcome::Valid;
    }
    const std::string drawing = isHtml(options.output) ? htmlDrawing(calls) : svgDrawing(calls);
    return writeFile(options.output, drawing) ? Outcome::Valid : Outcome::Failed;
}

Outcome flow(const Options& options) {
    CallBook book;
    Progress progress;
    std::string noCapture;
    const Outcome worst = forEachMessage({options.files, nullptr, &progress}, [&](const ReadMessage& read) {
        if (read.origin) {
            book.add(read, options.filter.accepts(read));
        } else {
            noCapture = read.file;
        }
    });
    if (!noCapture.empty()) {
        std::cerr << "kxsip: " << printable(noCapture)
                  << " is no capture: a ladder needs times and addresses; give a pcap or pcapng file\n";
        return Outcome::Failed;
    }
    const std::vector<Call> calls = book.finish();
    if (calls.empty()) {
        std::cerr << "kxsip: no call to draw\n";
    }
    return worse(worst, calls.empty() ? Outcome::Valid : draw(calls, options));
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
