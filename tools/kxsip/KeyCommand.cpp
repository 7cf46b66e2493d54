#include "tools/kxsip/KeyCommand.h"

#include "tools/kxsip/MessageReader.h"
#include "tools/kxsip/Printable.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>

namespace {

constexpr const char* kFooter =
    R"(A message that was refused or has no key gives an empty line, so that the lines can be counted, and a note on standard
error.

Example:
  kxsip key samples/call.sip | uniq -c)";

std::string keyOf(const ReadMessage& read) {
    if (read.isRefused()) {
        read.complain(*read.error);
        return "";
    }
    try {
        return printable(read.message->createKey());
    } catch (const KxHandle<KxException>& why) {
        read.complain(*why);
        return "";
    }
}

} // namespace

void addKeyCommand(CLI::App& app, Outcome& outcome) {
    const auto files = std::make_shared<std::vector<std::string>>();
    CLI::App* const command = app.add_subcommand("key", "Print the transaction key of each message, one line each");
    command->add_option("FILE", *files, "Files of messages, or captures; \"-\" or none is standard input")
        ->type_name("");
    command->footer(kFooter);
    command->callback([files, &outcome] {
        outcome = forEachMessage({*files}, [](const ReadMessage& read) { std::cout << keyOf(read) << '\n'; });
    });
}
