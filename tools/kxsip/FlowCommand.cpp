#include "tools/kxsip/FlowCommand.h"

#include "tools/kxsip/MessageFilter.h"
#include "tools/kxsip/MessageReader.h"
#include "tools/kxsip/Printable.h"
#include "tools/kxsip/Progress.h"
#include "tools/kxsip/WholeFile.h"
#include "tools/kxsip/capture/CaptureFile.h"
#include "tools/kxsip/capture/PacketOption.h"
#include "tools/kxsip/flow/Call.h"
#include "tools/kxsip/flow/CallBook.h"
#include "tools/kxsip/flow/CallSelection.h"
#include "tools/kxsip/flow/Drawing.h"
#include "tools/kxsip/flow/TextLadder.h"
#include "tools/kxsip/flow/TimeText.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <map>
#include <memory>
#include <system_error>

namespace {

constexpr const char* kFooter =
    R"(Each call (all messages of a Call-ID) is a ladder. Each host is a column; a host that sends to itself has a column for
each port. Each message has its number and its time: seconds since the call began, or with --time the time of day, UTC or
of the local time zone (after the first day with "+1d" before it); the date above the ladder is in the same zone. Remarks:
  repeats 6   the message has the same bytes as message 6 (a retransmission)
  incomplete  a header line was dropped
  unusable    the message was kept, but can't be used
  refused     the message was not kept
After the ladder, or with the text of the message, is why; as "kxsip check" prints it.
Filters select whole calls: those with a matching message. Messages without a Call-ID are a call for each two addresses.
--call N draws the call to which "kxsip calls" gives this number for the same files. Files are read twice if filters or
--call select calls, unless by Call-IDs alone, and only those calls are kept in memory. If the character set of the terminal is not UTF-8, the ladder
is drawn in ASCII.
A ladder is as wide as the terminal at most, or as --width says; otherwise (a pipe, a file) there is no limit. Names and
labels are shortened as needed; "!" before a label that lost its end means incomplete, unusable or refused. Where the
arrows would be too short for labels, the columns have letters, which a key above the ladder explains, and the labels are
at the right. With still more columns the ladder is wider than the terminal. A call with more than 100 columns is a list
of its messages, each with both addresses.
From a pipe, a call is drawn when it has ended: all requests have final responses, a refused INVITE has its ACK, the BYE
of an accepted one is answered, and the last response is not 401 or 407. Later messages that repeat those of a drawn
call are not drawn; others begin a new ladder. A call that has not ended is kept in memory and drawn at the end, or when
the capture has no message of it for two hours, or when it has 10,000 messages; "did not end" above the ladder then says
which. Control-C ends the input.
With -o the ladders are drawn into a single, self-contained file: FILE.svg is one picture that shows each message when
pointed at; FILE.html is a page that unfolds each message when clicked on. The file is complete when it gets its name.
Before more than 100 MB are written, a line on standard error says so. FILE.pcap or FILE.pcapng gets the packets of the
calls that would be drawn; a pcap file can have one link type only.

Examples:
  kxsip flow samples/captures/call_udp.pcap
  kxsip flow --time local --width 100 samples/captures/call_udp.pcap
  tcpdump -i any -U -w - | kxsip flow -
  kxsip flow --call 2 samples/captures/call_udp.pcap
  kxsip flow --status 486 -o busy.pcap samples/captures/call_udp.pcap
  kxsip flow --status 486 -o busy.html samples/captures/call_udp.pcap)";

struct Options {
    std::vector<std::string> files;
    std::string output;
    ColourMode colour = ColourMode::Auto;
    TimeMode time = TimeMode::Elapsed;
    std::size_t width = 0;           ///< 0 if the user gave none.
    std::optional<std::size_t> call; ///< The number of the only call to be drawn.
    MessageFilter filter;

    bool selects() const { return call || !filter.isEmpty(); }
};

bool isHtml(const std::string& name) {
    return name.ends_with(".html") || name.ends_with(".htm");
}

bool isCapture(const std::string& name) {
    return name.ends_with(".pcap") || name.ends_with(".pcapng");
}

std::string outputFault(const std::string& name) {
    return isHtml(name) || isCapture(name) || name.ends_with(".svg")
               ? ""
               : "\"" + name + "\" must end in .svg, .html, .pcap or .pcapng";
}

TextLadder::Style styleOf(const Options& options) {
    return {canDrawLines(), options.width > 0 ? options.width : terminalWidth(), TimeText(options.time)};
}

std::size_t messagesOf(const std::vector<Call>& calls) {
    std::size_t count = 0;
    for (const Call& call : calls) {
        count += call.steps.size();
    }
    return count;
}

/** Says what a picture will have if it takes long to write, and to open. */
void announce(const std::string& name, const std::vector<Call>& calls) {
    constexpr std::size_t kMegabyte = 1000000;
    constexpr std::size_t kMuch = 100 * kMegabyte;
    if (const std::size_t size = drawingSize(calls); size > kMuch) {
        std::cerr << "kxsip: " << printable(name) << " will have " << calls.size() << " calls, " << messagesOf(calls)
                  << " messages and about " << size / kMegabyte << " MB\n";
    }
}

Outcome drawFile(const std::string& name, const std::vector<Call>& calls, TimeText time) {
    announce(name, calls);
    try {
        writeWholeFile(
            name, [&](std::ostream& out) { isHtml(name) ? drawHtml(out, calls, time) : drawSvg(out, calls, time); });
        return Outcome::Valid;
    } catch (const std::system_error& error) {
        std::cerr << "kxsip: cannot write " << printable(name) << ": " << error.code().message() << '\n';
        return Outcome::Failed;
    }
}

/** Writes the packets of the calls, in the order in which they were read. */
void writePackets(const Options& options, const std::vector<Call>& calls) {
    std::map<std::size_t, const Step*> steps;
    for (const Call& call : calls) {
        for (const Step& step : call.steps) {
            steps.emplace(step.index, &step);
        }
    }
    PacketOption file(options.output);
    file.open(options.files);
    for (const auto& [index, step] : steps) {
        file.write(step->packets);
    }
    file.finish();
}

/** Draws calls: as text each at once, into a file all at the end. */
class Drawer {
public:
    explicit Drawer(const Options& options)
        : m_options(options), m_ladder(std::cout, Colour(options.colour), styleOf(options)) {}

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
            return m_options.selects() ? Outcome::NoMatch : Outcome::Valid;
        }
        if (isFile() && !calls.empty()) {
            return writeFile(calls);
        }
        std::for_each(calls.begin(), calls.end(), [this](const Call& call) { draw(call); });
        return Outcome::Valid;
    }

    Progress& progress() { return m_progress; }

private:
    Outcome writeFile(const std::vector<Call>& calls) {
        if (!isCapture(m_options.output)) {
            return drawFile(m_options.output, calls, TimeText(m_options.time));
        }
        writePackets(m_options, calls);
        return Outcome::Valid;
    }

    const Options& m_options;
    TextLadder m_ladder;
    Progress m_progress;
    bool m_hasDrawn = false;
};

void addTimeOption(CLI::App& command, TimeMode& mode) {
    static const std::map<std::string, TimeMode> s_modes = {
        {"elapsed", TimeMode::Elapsed}, {"utc", TimeMode::Utc}, {"local", TimeMode::Local}};
    command
        .add_option_function<std::string>(
            "--time", [&mode](const std::string& name) { mode = s_modes.at(name); },
            "Time of each message: elapsed since the call began (the default), utc or local")
        ->check(CLI::IsMember(s_modes).description(""))
        ->type_name("WHICH");
}

/** Returns the calls to be drawn if files have to be read twice to know them: the first time only to find them, so that no
    other call is kept in memory. */
std::optional<CallKeys> findWanted(const Options& options, Progress& progress) {
    const bool isKnownAtOnce = !options.call && (options.filter.isEmpty() || options.filter.hasOnlyCallIds());
    if (isKnownAtOnce || !canReadAgain(options.files)) {
        return std::nullopt;
    }
    return findCalls(options.files, options.filter, options.call, &progress);
}

Outcome flow(const Options& options) {
    CallBook<Call> book;
    Drawer drawer(options);
    const std::optional<CallKeys> wanted = findWanted(options, drawer.progress());
    const bool onlyCallIds = options.filter.hasOnlyCallIds() && !options.call;
    const auto isOther = [&options, &wanted](const Call& call) {
        return options.call && !wanted && call.number != *options.call;
    };
    const Outcome worst = forEachMessage(
        {options.files, nullptr, &drawer.progress(), isCapture(options.output)}, [&](const ReadMessage& read) {
            demandCapture(read, "a ladder");
            const bool isWanted =
                wanted ? wanted->contains(callKeyOf(read, MessageFacts(read))) : options.filter.accepts(read);
            if (!isWanted && (wanted || onlyCallIds)) {
                book.skip();
            } else if (!read.isLive || drawer.isFile()) {
                book.add(read, isWanted);
            } else {
                for (const Call& call : book.addLive(read, isWanted)) {
                    if (!isOther(call)) {
                        drawer.draw(call);
                    }
                }
            }
        });
    std::vector<Call> calls = book.finish();
    std::erase_if(calls, isOther);
    return worse(worst, drawer.finish(calls));
}

} // namespace

void addFlowCommand(CLI::App& app, Outcome& outcome) {
    const auto options = std::make_shared<Options>();
    CLI::App* const command = app.add_subcommand("flow", "Draw the ladder of each call of a capture");
    command->add_option("CAPTURE", options->files, "Captures (pcap, pcapng); \"-\" is standard input")
        ->type_name("")
        ->required();
    command
        ->add_option("-o,--output", options->output,
                     "Draw a picture into this file, .svg or .html, or write the packets into a .pcap or .pcapng")
        ->type_name("FILE")
        ->check(CLI::Validator(outputFault, ""));
    addTimeOption(*command, options->time);
    command
        ->add_option("--width", options->width,
                     "Columns that the ladder may take; on a terminal, those of the terminal")
        ->type_name("COLUMNS")
        ->check(CLI::Range(20, 100000).description(""));
    command->add_option("--call", options->call, "Only the call with this number, as kxsip calls prints it")
        ->type_name("N")
        ->check(CLI::PositiveNumber.description(""));
    addColourOption(*command, options->colour);
    options->filter.addOptions(*command);
    command->footer(std::string(MessageFilter::sHelp) + "\n\n" + kFooter);
    command->callback([options, &outcome] { outcome = flow(*options); });
}
