#include "tools/kxsip/DeriveCommands.h"

#include "sipobject/messages/KxSipAckMessage.h"
#include "sipobject/messages/KxSipByeMessage.h"
#include "sipobject/messages/KxSipCancelMessage.h"
#include "sipobject/messages/KxSipInviteMessage.h"
#include "sipobject/messages/KxSipPrackMessage.h"
#include "sipobject/messages/KxSipResponse.h"
#include "tools/kxsip/MessageReader.h"
#include "tools/kxsip/ObjectText.h"
#include "tools/kxsip/Terminal.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>

namespace {

constexpr const char* kFooter =
    R"(If the message can't be made, nothing is printed; the reason is on standard error, and the exit code is 2.

Example:
  kxsip )";

using Message = KxHandle<KxSipMessage>;

struct Options {
    std::string file = "-";
    std::size_t number = 0;
    int code = 0; ///< Status code of a response.
};

/** A command that makes a message from another one. */
struct Derivation {
    const char* name;
    const char* description;
    const char* example; ///< The command line after the program's name.
    /** Returns the new message. Throws KxException if it can't be made. */
    Message (*make)(const Message& parent, const Options& options);
};

/** Returns the message as an M. Throws KxException if it is none. */
template <class M>
KxHandle<M> as(const Message& message, const char* expected) {
    M* const typed = message->as<M>();
    if (typed == nullptr) {
        KxException::sThrow(expected);
    }
    return KxHandle<M>(typed);
}

Message responseTo(const Message& parent, const Options& options) {
    const auto request = as<KxSipRequest>(parent, "A response is made from a request");
    return KxMake<KxSipResponse>(options.code, request, nullptr, nullptr, 0U);
}

Message ackOf(const Message& parent, const Options&) {
    const auto response = as<KxSipResponse>(parent, "An ACK is made from a response");
    return KxMake<KxSipAckMessage>(response, nullptr, nullptr, 0U);
}

Message byeOf(const Message& parent, const Options&) {
    if (parent->isResponse()) {
        return KxMake<KxSipByeMessage>(as<KxSipResponse>(parent, ""));
    }
    return KxMake<KxSipByeMessage>(as<KxSipInviteMessage>(parent, "A BYE is made from an INVITE or a response"));
}

Message cancelOf(const Message& parent, const Options&) {
    return KxMake<KxSipCancelMessage>(as<KxSipRequest>(parent, "A CANCEL is made from a request"));
}

Message prackOf(const Message& parent, const Options&) {
    const auto response = as<KxSipResponse>(parent, "A PRACK is made from a response");
    return KxMake<KxSipPrackMessage>(response, nullptr, nullptr, 0U);
}

constexpr Derivation kResponse = {"response", "Print the response to a request", "response 486 samples/invite.sip",
                                  responseTo};
constexpr Derivation kOthers[] = {
    {"ack", "Print the ACK for a final response to an INVITE", "ack --number 3 samples/call.sip", ackOf},
    {"bye", "Print the BYE that ends the call of an INVITE that was received, or of a response",
     "bye --number 3 samples/call.sip", byeOf},
    {"cancel", "Print the CANCEL of a request", "cancel samples/invite.sip", cancelOf},
    {"prack", "Print the PRACK for a provisional response to an INVITE, without its RAck",
     "prack --number 2 samples/call.sip", prackOf},
};

Outcome derive(const ReadMessage& parent, const Derivation& derivation, const Options& options) {
    if (parent.isRefused()) {
        parent.complain(*parent.error);
        return Outcome::Refused;
    }
    try {
        Terminal::write(std::cout, serialized(*derivation.make(parent.message, options)));
        return parent.outcome();
    } catch (const KxHandle<KxException>& why) {
        parent.complain(*why);
        return Outcome::Refused;
    }
}

Outcome run(const Derivation& derivation, const Options& options) {
    return withMessage(options.file, options.number,
                       [&](const ReadMessage& parent) { return derive(parent, derivation, options); });
}

void addCommand(CLI::App& app, const Derivation& derivation, Outcome& outcome) {
    const auto options = std::make_shared<Options>();
    CLI::App* const command = app.add_subcommand(derivation.name, derivation.description);
    if (&derivation == &kResponse) {
        command->add_option("CODE", options->code, "Status code, 100 to 699")->type_name("")->required();
    }
    command->add_option("FILE", options->file, "File of messages, or a capture; \"-\" or none is standard input")
        ->type_name("");
    command->add_option("--number", options->number, "Which message of the file, 0 for the first")
        ->type_name("N")
        ->check(CLI::NonNegativeNumber);
    command->footer(std::string(kFooter) + derivation.example);
    command->callback([&derivation, options, &outcome] { outcome = run(derivation, *options); });
}

} // namespace

void addDeriveCommands(CLI::App& app, Outcome& outcome) {
    addCommand(app, kResponse, outcome);
    for (const Derivation& derivation : kOthers) {
        addCommand(app, derivation, outcome);
    }
}
