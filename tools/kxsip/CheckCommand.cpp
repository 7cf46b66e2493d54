#include "tools/kxsip/CheckCommand.h"

#include "tools/kxsip/MessageReader.h"
#include "tools/kxsip/Printable.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>

namespace {

constexpr const char* kFooter =
    R"(Each line has four columns with tabs between them: the file, the message's number in it (0 for the first), the verdict
and why. The verdicts:
  valid       nothing is wrong; why is empty
  incomplete  a header line was dropped
  unusable    the message was kept, but can't be used
  refused     the message was not kept

Example:
  kxsip check samples/*.sip samples/broken/*.sip | grep refused)";

struct Verdict {
    const char* name;
    std::string why;
};

Verdict judge(const ReadMessage& read) {
    if (read.isRefused()) {
        return {"refused", printable(read.error->getExceptionMessage())};
    }
    if (read.message->isValid()) {
        return {"valid", ""};
    }
    switch (read.message->getStatus()) {
    case KX_STATUS_INCOMPLETE:
        return {"incomplete", "a header line could not be read"};
    case KX_STATUS_VALID:
        return {"unusable", "the CSeq method is not spelled as the request's"};
    default:
        return {"unusable", "the Accept header does not list the body's type"};
    }
}

void print(const ReadMessage& read) {
    const Verdict verdict = judge(read);
    std::cout << printable(read.file) << '\t' << read.index << '\t' << verdict.name << '\t' << verdict.why << '\n';
}

} // namespace

void addCheckCommand(CLI::App& app, Outcome& outcome) {
    const auto files = std::make_shared<std::vector<std::string>>();
    CLI::App* const command = app.add_subcommand("check", "Say of each message whether it is valid, a line a message");
    command->add_option("FILE", *files, "Files of one or more messages; \"-\" is standard input")
        ->type_name("")
        ->required();
    command->footer(kFooter);
    command->callback([files, &outcome] { outcome = forEachMessage(*files, print); });
}
