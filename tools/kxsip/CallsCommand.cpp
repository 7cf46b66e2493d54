#include "tools/kxsip/CallsCommand.h"

#include "tools/kxsip/CallTable.h"
#include "tools/kxsip/MessageFilter.h"
#include "tools/kxsip/MessageReader.h"
#include "tools/kxsip/Progress.h"
#include "tools/kxsip/Terminal.h"
#include "tools/kxsip/capture/PacketOption.h"
#include "tools/kxsip/flow/CallBook.h"
#include "tools/kxsip/flow/CallSelection.h"
#include "tools/kxsip/flow/TextLadder.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>

namespace {

constexpr const char* kFooter =
    R"(Each call (all messages of a Call-ID; without one, all between two addresses) is a line. The columns:
  number    its place in the order in which the calls of all files began, 1 for the first, counted without filters:
            kxsip flow --call 3 draws call 3
  begin     the time of its first message, in UTC
  from, to  the URIs of this message
  method    its method
  code      of the final response to this method: of the first success, else of the last failure
  ring      seconds from the beginning to the first 18x
  answer    seconds from the beginning to the first 2xx to this method
  duration  seconds from the 2xx to an INVITE to the first BYE
  repeats   how many messages have the same bytes, source and destination as one of the 256 of the call before them
  messages  how many messages there are, with these
  call_id   the Call-ID
A terminal shows columns that are aligned and shortened to its width. Elsewhere the columns are separated by tabs, and
the first line has their names. A value that is not known is "-".
--json prints an object for each call with these keys: times as "2026-11-21T13:22:21.935691Z", seconds as numbers, and
null for what is not known.
Filters select whole calls: those with a matching message. The memory needed grows with the number of calls, not with
the size of the files.
From a pipe, a call is printed when it has ended, as kxsip flow --help tells; its number is its place in the order of
first messages. With --sort all calls are printed at the end.
-o writes all packets of the selected calls. For it, filters make files be read twice, and keep the packets of a pipe
in memory.

Examples:
  kxsip calls samples/captures/call_udp.pcap | awk -F '\t' '$6 >= 400'
  kxsip calls --sort -duration --status 2xx samples/captures/call_udp.pcap
  kxsip calls --status 486 -o busy.pcap samples/captures/call_udp.pcap)";

struct Options {
    std::vector<std::string> files;
    std::string sort;
    bool json = false;
    MessageFilter filter;
    PacketOption packets;
};

/** A call that keeps its packets until it is known to be wanted; a record of a CallBook. */
struct PackedCall : CallSummary {
    Packets packets;

    void add(const ReadMessage& read, const MessageFacts& facts, std::size_t index) {
        CallSummary::add(read, facts, index);
        packets.insert(packets.end(), read.packets.begin(), read.packets.end());
    }
};

CallTable::Format formatOf(const Options& options) {
    if (options.json) {
        return CallTable::Format::Json;
    }
    return Terminal::isOutput() ? CallTable::Format::Aligned : CallTable::Format::Tabs;
}

/** Lists the calls, each at once if it comes live and is not to be sorted, else at the end. */
class Lister {
public:
    Lister(Options& options, std::optional<CallKeys> wanted)
        : m_options(options), m_wanted(std::move(wanted)), m_table(std::cout, formatOf(options), terminalWidth()) {}

    template <class Record>
    Outcome run() {
        constexpr bool kHoldsPackets = !std::is_same_v<Record, CallSummary>;
        CallBook<Record> book;
        const Outcome worst = forEachMessage({m_options.files, nullptr, &m_progress, m_options.packets.isChosen()},
                                             [&](const ReadMessage& read) {
                                                 demandCapture(read, "a list of calls");
                                                 const bool isWanted = wants(read);
                                                 if (isWanted && !kHoldsPackets) {
                                                     m_options.packets.write(read.packets);
                                                 }
                                                 if (!read.isLive || !m_options.sort.empty()) {
                                                     book.add(read, isWanted);
                                                 } else {
                                                     list(book.addLive(read, isWanted));
                                                 }
                                             });
        list(book.finish());
        m_options.packets.finish();
        return worse(worst, m_options.filter.outcome(m_hasListed));
    }

private:
    bool wants(const ReadMessage& read) const {
        return m_wanted ? m_wanted->contains(callKeyOf(read, MessageFacts(read))) : m_options.filter.accepts(read);
    }

    template <class Record>
    void list(std::vector<Record> records) {
        if constexpr (!std::is_same_v<Record, CallSummary>) {
            Packets packets;
            for (const Record& record : records) {
                packets.insert(packets.end(), record.packets.begin(), record.packets.end());
            }
            m_options.packets.write(packets);
        }
        std::vector<CallSummary> calls(std::make_move_iterator(records.begin()),
                                       std::make_move_iterator(records.end()));
        if (calls.empty()) {
            return;
        }
        CallTable::sSort(calls, m_options.sort);
        m_progress.makeRoom();
        m_table.write(calls);
        m_hasListed = true;
    }

    Options& m_options;
    std::optional<CallKeys> m_wanted; ///< If it is known before.
    CallTable m_table;
    Progress m_progress;
    bool m_hasListed = false;
};

Outcome calls(Options& options) {
    options.packets.open(options.files);
    if (!options.packets.isChosen() || options.filter.isEmpty()) {
        return Lister(options, std::nullopt).run<CallSummary>();
    }
    if (!canReadAgain(options.files)) {
        return Lister(options, std::nullopt).run<PackedCall>();
    }
    Progress progress;
    return Lister(options, findCalls(options.files, options.filter, std::nullopt, &progress)).run<CallSummary>();
}

} // namespace

void addCallsCommand(CLI::App& app, Outcome& outcome) {
    const auto options = std::make_shared<Options>();
    CLI::App* const command = app.add_subcommand("calls", "List the calls of captures, one line each");
    command->add_option("CAPTURE", options->files, "Captures (pcap, pcapng); \"-\" is standard input")
        ->type_name("")
        ->required();
    command->add_option("--sort", options->sort, "Sort by this column; -COLUMN is in descending order")
        ->type_name("COLUMN")
        ->check(CLI::Validator(CallTable::sFault, ""));
    command->add_flag("--json", options->json, "Print one JSON object per line, one for each call");
    options->filter.addOptions(*command);
    options->packets.addTo(*command);
    command->footer(std::string(MessageFilter::sHelp) + "\n\n" + kFooter);
    command->callback([options, &outcome] { outcome = calls(*options); });
}
