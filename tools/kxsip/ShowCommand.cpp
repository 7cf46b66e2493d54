#include "tools/kxsip/ShowCommand.h"

#include "tools/kxsip/JsonView.h"
#include "tools/kxsip/LogView.h"
#include "tools/kxsip/MessageFilter.h"
#include "tools/kxsip/MessageReader.h"
#include "tools/kxsip/TextView.h"
#include "tools/kxsip/WireView.h"
#include "tools/kxsip/capture/PacketOption.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>

namespace {

constexpr const char* kFooter = R"(Captures (pcap, pcapng; captures and text may be gzipped):
  SIP is found on any port, in UDP and TCP, IPv4 and IPv6, also within VLAN, PPPoE, GRE, VXLAN and IP in IP; fragments
  and segments are put together. The time (UTC) and the addresses of each message are printed too. On the ports 5060,
  5061 and 5080, and between endpoints that have exchanged SIP, what does not begin like a message is a refused message,
  unless it is a keep-alive, encrypted, or on such a port media (RTP).

Several messages in one file:
  Line ends before a message are skipped; in a file that holds nothing else they are a keep-alive, which is reported.
  The next message begins directly after the body; without a Content-Length the rest of the file is the body. After a
  refused message the next one begins at the first line that looks like a start line ("METHOD uri SIP/2.0" or
  "SIP/2.0 200"). The search begins where reading stopped, but never in the first line of the refused message. All
  bytes up to there belong to the refused message.

Live input (a pipe, a terminal):
  Each message is printed when it has arrived. Control-C ends the input; what has arrived is printed.

Terminals:
  No byte of a message can control a terminal: --wire and --log write \xNN for control characters, JSON \u00NN. A pipe or
  a file gets the bytes.

Headers that can't be written (such as Digest credentials in the classic grammar that need an unknown algorithm):
  The text shows the error in place of the value. --wire writes the message without the header, and reports the error.

JSON:
  file, index (0 for the first message of the file), kind ("request", "response" or null), method, uri, code, reason,
  version, status (null when the message was refused), valid, key (of the transaction; null if there is none), error
  (null, or class and text of the exception), headers (in written order, one object for each value: id, name, class,
  value, fields), body_bytes, unread_bytes (the bytes of the file, or of a capture's datagram, after this message; null
  for text from a live input or a gzipped file), line (of the file, where the message begins; null in a capture). Null
  except in a capture:
  time ("2026-11-21T13:22:21.935691Z"), transport ("UDP" or "TCP"), source and destination (objects of address and
  port). dropped: the header lines that can't be read, of a refused message too, one object for each: line (1 for the
  start line of the message), text, why. call_id, from_tag, to_tag, cseq (an object of number and method): null if the
  message has none; of a refused message, if they can be read. body: its text; null if there is none, or if it has NULs
  or is not UTF-8: then body_base64 has it. Other bytes that are not UTF-8 become U+FFFD.
  A header that can't be written has the value null, and error (class and text).
  fields has the parts of a value; there is none for a header whose value is one text. Addresses: display_name, uri,
  scheme, user, host, port, number (of tel), uri_parameters, uri_headers, wildcard. Via: transport, host, port, branch,
  received, rport. Numbers, tokens and others have names of their own: seconds, method, option_tag, event, type,
  subtype ... Credentials and challenges: scheme. All: parameters (of the header; quotes and escapes are removed, and ""
  is one without a value). What is absent has no key.

Examples:
  kxsip show --status 4xx,5xx samples/captures/call_udp.pcap
  tcpdump -i any -U -w - | kxsip show -
  kxsip show --text '(?i)^user-agent:.*sipp' --since 13:22:25 trace.pcap
  kxsip show --json samples/call.sip | jq -r '.method // .code')";

struct Options {
    std::vector<std::string> files;
    bool wire = false;
    bool json = false;
    bool log = false;
    ColourMode colour = ColourMode::Auto;
    MessageFilter filter;
    PacketOption packets;
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

Outcome show(Options& options) {
    const std::unique_ptr<MessageView> view = makeView(options);
    options.packets.open(options.files);
    const Outcome worst = forEachMessage({options.files, &options.filter, nullptr, options.packets.isChosen()},
                                         [&view, &options](const ReadMessage& read) {
                                             view->show(read);
                                             options.packets.write(read.packets);
                                         });
    options.packets.finish();
    return worst;
}

} // namespace

void addShowCommand(CLI::App& app, Outcome& outcome) {
    const auto options = std::make_shared<Options>();
    CLI::App* const command = app.add_subcommand("show", "Read messages and print what the library makes of them");
    command->add_option("FILE", options->files, "Files of messages, or captures; \"-\" or none is standard input")
        ->type_name("");
    CLI::Option* const wire =
        command->add_flag("--wire", options->wire, "Print the bytes that the library writes for the message");
    CLI::Option* const json =
        command->add_flag("--json", options->json, "Print one JSON object per line, one for each message");
    json->excludes(wire);
    command->add_flag("--log", options->log, "Print what a host's log shows of the message")
        ->excludes(wire)
        ->excludes(json);
    addColourOption(*command, options->colour);
    options->filter.addOptions(*command);
    options->packets.addTo(*command);
    command->footer(std::string(MessageFilter::sHelp) + "\n\n" + kFooter);
    command->callback([options, &outcome] { outcome = show(*options); });
}
