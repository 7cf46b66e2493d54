#include "tools/kxsip/CheckCommand.h"

#include "sipobject/KxSipGrammar.h"
#include "tools/kxsip/MessageFilter.h"
#include "tools/kxsip/MessageReader.h"
#include "tools/kxsip/Printable.h"
#include "tools/kxsip/Progress.h"
#include "tools/kxsip/Verdict.h"
#include "tools/kxsip/capture/PacketOption.h"

#include <CLI/CLI.hpp>

#include <array>
#include <iostream>
#include <memory>

namespace {

constexpr const char* kFooter =
    R"(Each line has four columns, separated by tabs: the file, the number of the message in it (0 for the first), the verdict
and the reason. The verdicts:
  valid       nothing is wrong; the reason is empty
  incomplete  a header line was dropped; the reason is the line's number in the message and what is wrong with it
  unusable    the message was kept, but can't be used
  refused     the message was not kept
From a pipe, each line is printed when its message has arrived; Control-C ends the input.
At the end the number of messages with each verdict, the grammar in use, and of a capture what was passed over
(keep-alives, datagrams without SIP) are printed on standard error. If standard error is a terminal, it shows progress.

Examples:
  kxsip check samples/*.sip samples/broken/*.sip | grep refused
  kxsip check --quiet --method INVITE samples/captures/call_udp.pcap)";

struct Options {
    std::vector<std::string> files;
    MessageFilter filter;
    PacketOption packets;
    bool quiet = false;
};

/** The number of messages of each kind. */
class Tally {
public:
    void add(Verdict::Kind kind) { ++m_counts.at(kind); }

    void print(std::ostream& out) const {
        std::size_t total = 0;
        std::string parts;
        for (std::size_t i = 0; i < m_counts.size(); ++i) {
            total += m_counts.at(i);
            if (m_counts.at(i) > 0) {
                parts += (parts.empty() ? ": " : ", ") + std::to_string(m_counts.at(i)) + " " + Verdict::sNames.at(i);
            }
        }
        const bool isRFC = KxSipGrammar::sChosen() == KxSipGrammar::Choice::RFC;
        out << total << (total == 1 ? " message" : " messages") << " (" << (isRFC ? "RFC" : "classic") << " grammar)"
            << parts << '\n';
    }

private:
    std::array<std::size_t, 4> m_counts{};
};

Outcome check(Options& options) {
    options.packets.open(options.files);
    Tally tally;
    std::unique_ptr<Progress> progress = options.quiet ? nullptr : std::make_unique<Progress>();
    const Outcome worst =
        forEachMessage({options.files, &options.filter, progress.get(), options.packets.isChosen(), !options.quiet},
                       [&](const ReadMessage& read) {
                           const Verdict verdict = Verdict::sOf(read);
                           tally.add(verdict.kind);
                           if (progress != nullptr) {
                               progress->makeRoom();
                           }
                           std::cout << printable(read.file) << '\t' << read.index << '\t' << verdict.name() << '\t'
                                     << verdict.why << '\n';
                           options.packets.write(read.packets);
                       });
    options.packets.finish();
    if (!options.quiet) {
        std::cout.flush();
        tally.print(std::cerr);
    }
    return worst;
}

} // namespace

void addCheckCommand(CLI::App& app, Outcome& outcome) {
    const auto options = std::make_shared<Options>();
    CLI::App* const command = app.add_subcommand("check", "Print for each message whether it is valid, one line each");
    command->add_option("FILE", options->files, "Files of messages, or captures; \"-\" is standard input")
        ->type_name("")
        ->required();
    command->add_flag("-q,--quiet", options->quiet, "No progress and no count at the end");
    options->filter.addOptions(*command);
    options->packets.addTo(*command);
    command->footer(std::string(MessageFilter::sHelp) + "\n\n" + kFooter);
    command->callback([options, &outcome] { outcome = check(*options); });
}
