#include "tools/kxsip/ShowCommand.h"

#include "tools/kxsip/JsonView.h"
#include "tools/kxsip/LogView.h"
#include "tools/kxsip/MessageFilter.h"
#include "tools/kxsip/MessageReader.h"
#include "tools/kxsip/TextView.h"
#include "tools/kxsip/WireView.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>

namespace {

constexpr const char* kFooter = R"(Captures (pcap, pcapng):
  SIP is found on any port, in UDP and TCP, IPv4 and IPv6; fragments and segments are put together. Each message comes
  with its time (UTC) and addresses.

Several messages in one file:
  Line ends in front of a message are skipped; in a file that holds nothing else they are a keep-alive, which is
  reported. Behind a message and its body the next one begins at once; without a Content-Length the rest of the file
  is the body. Behind a message that was refused the next one begins at the first line that looks like a start line
  ("METHOD uri SIP/2.0" or "SIP/2.0 200"): the search begins where reading stopped, but never in the first line of
  the refused message. All bytes up to there count as the refused message's.

JSON:
  file, index (0 for the first message of the file), kind ("request", "response" or null), method, uri, code, reason,
  version, status (null when the message was refused), valid, key (of the transaction; null where there is none),
  error (null, or class and text of the exception), headers (in written order, one
  object a value: id, name, class, value), body_bytes, unread_bytes (those of the file behind this message; in a
  capture, of the datagram), line (of the file, where the message begins; null in a capture), and null but in a capture:
  time ("2026-11-21T13:22:21.935691Z"), transport ("UDP" or "TCP"), source and destination (objects of address and
  port). What is not UTF-8 becomes U+FFFD.

Examples:
  kxsip show --status 4xx,5xx samples/captures/call_udp.pcap
  kxsip show --json samples/call.sip | jq -r '.method // .code')";

struct Options {
    std::vector<std::string> files;
    bool wire = false;
    bool json = false;
    bool log = false;
    ColourMode colour = ColourMode::Auto;
    MessageFilter filter;
};

std::unique_ptr<MessageView> makeView(const Options& options) {
    if (options.wire) {
        return std::make_unique<WireView>(std::cout);
    }
    if (options.json) {
        return std::make_unique<JsonView>(std::cout);
    }
    if (options.log) {
        return std::make_unique<LogView>(std::cout);
    }
    return std::make_unique<TextView>(std::cout, Colour(options.colour));
}

Outcome show(const Options& options) {
    const std::unique_ptr<MessageView> view = makeView(options);
    return forEachMessage({options.files, &options.filter}, [&view](const ReadMessage& read) { view->show(read); });
}

} // namespace

void addShowCommand(CLI::App& app, Outcome& outcome) {
    const auto options = std::make_shared<Options>();
    CLI::App* const command = app.add_subcommand("show", "Read messages and print what the library makes of them");
    command->add_option("FILE", options->files, "Files of messages, or captures; \"-\" or none is standard input")
        ->type_name("");
    CLI::Option* const wire = command->add_flag("--wire", options->wire, "Print the bytes that are written again");
    CLI::Option* const json =
        command->add_flag("--json", options->json, "Print one JSON object a line for each message");
    json->excludes(wire);
    command->add_flag("--log", options->log, "Print what a host's log shows of the message")
        ->excludes(wire)
        ->excludes(json);
    addColourOption(*command, options->colour);
    options->filter.addOptions(*command);
    command->footer(std::string(MessageFilter::sHelp) + "\n\n" + kFooter);
    command->callback([options, &outcome] { outcome = show(*options); });
}
