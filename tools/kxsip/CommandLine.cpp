#include "tools/kxsip/CommandLine.h"

#include "sipheaders/KxSipHeaderLibrary.h"
#include "sipobject/KxSipGrammar.h"
#include "tools/kxsip/CallsCommand.h"
#include "tools/kxsip/CheckCommand.h"
#include "tools/kxsip/DeriveCommands.h"
#include "tools/kxsip/DigestCommands.h"
#include "tools/kxsip/FlowCommand.h"
#include "tools/kxsip/KeyCommand.h"
#include "tools/kxsip/ShowCommand.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <map>
#include <string>

namespace {

constexpr int kUsageError = 64; // EX_USAGE of sysexits.h

constexpr const char* kFooter = R"(Exit code (the worst of all messages):
  0   all messages are valid
  1   a header line was dropped
  2   a message was refused or can't be used
  3   a file can't be read, or output can't be written
  4   no message matches the filters
  64  the command line is wrong

Example:
  kxsip show samples/invite.sip
  kxsip show --help)";

Outcome flushed(Outcome outcome) {
    if (std::cout.flush()) {
        return outcome;
    }
    std::cerr << "kxsip: cannot write standard output\n";
    return Outcome::Failed;
}

using Grammar = KxSipGrammar::Choice;

/** Adds --grammar to all commands that read messages. */
void addGrammarOption(CLI::App& app, Grammar& grammar) {
    static const std::map<std::string, Grammar> s_choices = {{"rfc", Grammar::RFC}, {"classic", Grammar::Classic}};
    for (CLI::App* const command : app.get_subcommands(nullptr)) {
        if (!command->get_subcommands(nullptr).empty()) {
            addGrammarOption(*command, grammar);
            continue;
        }
        command
            ->add_option_function<std::string>(
                "--grammar", [&grammar](const std::string& name) { grammar = s_choices.at(name); },
                "How messages are read and written: rfc (the default) or classic")
            ->check(CLI::IsMember(s_choices).description(""))
            ->type_name("NAME");
    }
}

} // namespace

int runCommandLine(int argc, const char* const* argv) {
    Grammar grammar = Grammar::RFC; // the tool shows what others sent
    Outcome outcome = Outcome::Valid;
    CLI::App app("Reads SIP messages the way libkxsipobject does, and says what became of them.", "kxsip");
    app.set_version_flag("--version", "kxsip " KX_VERSION);
    app.footer(kFooter);
    app.require_subcommand(1);
    addShowCommand(app, outcome);
    addCheckCommand(app, outcome);
    addFlowCommand(app, outcome);
    addCallsCommand(app, outcome);
    addKeyCommand(app, outcome);
    addDeriveCommands(app, outcome);
    addDigestCommands(app, outcome);
    addGrammarOption(app, grammar);
    app.parse_complete_callback([&grammar] { // comes after all options, and before the command
        KxSipGrammar::sChoose(grammar);
        if (grammar == Grammar::RFC) {
            KxSipHeaderLibrary::sEnable();
        }
    });
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kUsageError;
    }
    return static_cast<int>(flushed(outcome));
}
