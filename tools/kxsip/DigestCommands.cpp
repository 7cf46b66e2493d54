#include "tools/kxsip/DigestCommands.h"

#include "sipobject/auth/KxSipDigestCredentialsInfo.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipProxyAuthenticateHeader.h"
#include "sipobject/headers/KxSipProxyAuthorizationHeader.h"
#include "sipobject/headers/KxSipWWWAuthenticateHeader.h"
#include "sipobject/messages/KxSipRequest.h"
#include "sipobject/messages/KxSipResponse.h"
#include "tools/kxsip/InputFile.h"
#include "tools/kxsip/MessageReader.h"
#include "tools/kxsip/ObjectText.h"
#include "tools/kxsip/Terminal.h"
#include "util/KxAscii.h"
#include "util/KxByteArrayInputStream.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <iterator>
#include <memory>
#include <system_error>

namespace {

constexpr const char* kAnswerFooter =
    R"(The exit code is 2 if the message is not a 401 or 407 with a challenge that can be answered; the reason is on standard
error.

Example:
  kxsip digest answer --user ida --password-file - --uri sip:example.com --qop auth --cnonce 0a4f113b \
      --number 1 samples/register_digest.sip < password)";

constexpr const char* kVerifyFooter =
    R"(Exit code: 0 the credentials are the user's, 1 they are not, 2 the message has none that can be verified, 3 a file can't
be read. Whether nonce, uri and algorithm are the expected ones is not checked.

Example:
  kxsip digest verify --user ida --password-file password --number 2 samples/register_digest.sip && echo yes)";

struct Options {
    std::string file = "-";
    std::size_t number = 0;
    std::string user;
    std::string passwordFile;
    std::string method;
    // Only for "answer":
    std::string uri;
    std::string algorithm;
    std::string qop;
    std::string cnonce;
    std::int32_t nc = 1;
    std::string bodyFile;
};

/** The contents of the files that the options name. */
struct Inputs {
    KxString password;
    std::string body;
};

using Work = Outcome (*)(const ReadMessage& read, const Options& options, const Inputs& inputs);

KxString textOf(std::string_view text) {
    return KxString(text);
}

KxString firstLineOf(std::string_view text) {
    std::string_view line = text.substr(0, text.find('\n'));
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    return textOf(line);
}

/** Returns the object of the handle. Throws KxException if the handle is nil. */
template <class T>
T& required(const KxHandle<T>& handle, const char* otherwise) {
    if (handle.isNil()) {
        KxException::sThrow(otherwise);
    }
    return *handle;
}

/** Returns the topmost header of the class whose challenge can be answered, or else the first. [RFC 8760 2.4] With the
    name of an algorithm, the topmost whose challenge has this algorithm, or else that is of the Digest scheme. */
template <class H>
const KxSipAuthenticateHeader* answerable(const KxSipMessage& message, const std::string& algorithm) {
    const KxSipAuthenticateHeader* best = nullptr;
    for (const H& header : message.values<H>()) {
        const auto digest = header.getDigestChallenge();
        const bool isDigest = !digest.isNil();
        if (algorithm.empty() ? KxSipDigestCredentialsInfo::sCanAnswer(header.getChallenge())
                              : isDigest && KxAscii::equalsNoCase(digest->getAlgorithm().view(), algorithm)) {
            return &header;
        }
        best = best == nullptr && !algorithm.empty() && isDigest ? &header : best;
    }
    return best == nullptr ? message.first<H>() : best;
}

/** Returns the header with the challenge of a 401 or 407. Throws KxException for any other message. */
const KxSipAuthenticateHeader& challengeOf(const KxSipMessage& message, const std::string& algorithm) {
    const auto* const response = message.as<KxSipResponse>();
    const std::uint32_t code = response == nullptr ? 0 : response->getStatusCode();
    if (code != 401 && code != 407) {
        KxException::sThrow("Only a 401 or 407 can be answered");
    }
    const KxSipAuthenticateHeader* const header = code == 401
                                                      ? answerable<KxSipWWWAuthenticateHeader>(message, algorithm)
                                                      : answerable<KxSipProxyAuthenticateHeader>(message, algorithm);
    if (header == nullptr) {
        KxException::sThrow("The response has no challenge");
    }
    return *header;
}

/** Returns the method of the option, or else that of the challenged request. */
KxString methodOf(const KxSipMessage& message, const Options& options) {
    return options.method.empty() ? required(message.getCSeqHeader(), "The message has no CSeq").getMethod()
                                  : textOf(options.method);
}

/** Returns the URI of the option, or else that of To. */
KxHandle<KxURI> uriOf(const KxSipMessage& message, const Options& options) {
    const KxString text =
        options.uri.empty() ? required(message.getToHeader(), "The message has no To").getURL() : textOf(options.uri);
    KxByteArrayInputStream in(text.view());
    return KxURI::sConstructFrom(in, true);
}

Outcome answer(const ReadMessage& read, const Options& options, const Inputs& inputs) {
    const KxSipAuthenticateHeader& header = challengeOf(*read.message, options.algorithm);
    const auto received = header.getDigestChallenge();
    const KxHandle<KxSipDigestChallengeInfo> challenge(
        required(received, "The challenge is not of the Digest scheme").clone());
    if (!options.algorithm.empty()) {
        challenge->setProperty("algorithm", textOf(options.algorithm));
    }
    const auto credentials = KxMake<KxSipDigestCredentialsInfo>(challenge, textOf(options.user), inputs.password);
    credentials->setMethod(methodOf(*read.message, options));
    credentials->setDigestURI(uriOf(*read.message, options));
    if (!options.qop.empty()) {
        credentials->setQop(textOf(options.qop), textOf(options.cnonce), options.nc);
        if (credentials->getProperty("qop").isNil()) {
            KxException::sThrow("The challenge does not offer this qop");
        }
    }
    credentials->setEntityBody(inputs.body.c_str());
    const KxHandle<KxSipCredentialsInfo> answer(credentials);
    if (header.getHeaderID() == KxHeaderIDs::kWWWAuthenticate) {
        Terminal::write(std::cout, serialized(*KxMake<KxSipAuthorizationHeader>(answer)));
    } else {
        Terminal::write(std::cout, serialized(*KxMake<KxSipProxyAuthorizationHeader>(answer)));
    }
    return read.outcome();
}

Outcome verify(const ReadMessage& read, const Options& options, const Inputs& inputs) {
    const KxHandle<KxSipRequest> request(read.message->as<KxSipRequest>());
    const auto header = required(request, "Only a request can be verified").getAuthorizationHeader();
    const auto credentials = required(header, "The request has no credentials").getDigestCredentials();
    required(credentials, "The credentials are not of the Digest scheme");
    credentials->setMethod(options.method.empty() ? KxString(request->getMethod()) : textOf(options.method));
    credentials->setEntityBody(request->getBody());
    return credentials->validate(textOf(options.user), inputs.password, credentials->getRealm()) ? Outcome::Valid
                                                                                                 : Outcome::No;
}

/** Returns the contents of the file, empty if the name is empty. If the file can't be read, reports this on standard
    error and returns nothing. */
std::optional<InputFile> read(const std::string& name) {
    try {
        return name.empty() ? InputFile() : InputFile::sRead(name);
    } catch (const std::system_error& error) {
        complainOfFile(name, error);
        return std::nullopt;
    }
}

Outcome work(const ReadMessage& message, const Options& options, const Inputs& inputs, Work how) {
    try {
        if (!message.isRefused()) {
            return how(message, options, inputs);
        }
        message.complain(*message.error);
    } catch (const KxHandle<KxException>& why) {
        message.complain(*why);
    }
    return Outcome::Refused;
}

Outcome run(const Options& options, Work how) {
    const std::string* const names[] = {&options.file, &options.passwordFile, &options.bodyFile};
    if (std::count_if(std::begin(names), std::end(names), [](const auto* name) { return *name == "-"; }) > 1) {
        throw CLI::ValidationError("only one of message, password and body can be read from standard input");
    }
    const std::optional<InputFile> password = read(options.passwordFile);
    const std::optional<InputFile> body = read(options.bodyFile);
    if (!password || !body) {
        return Outcome::Failed;
    }
    const Inputs inputs{firstLineOf(password->bytes), body->bytes};
    return withMessage(options.file, options.number,
                       [&](const ReadMessage& message) { return work(message, options, inputs, how); });
}

CLI::App* addCommand(CLI::App& group, const char* name, const char* description,
                     const std::shared_ptr<Options>& options, Work how, Outcome& outcome) {
    CLI::App* const command = group.add_subcommand(name, description);
    command->add_option("FILE", options->file, "File of messages, or a capture; \"-\" or none is standard input")
        ->type_name("");
    command->add_option("--number", options->number, "Which message of the file, 0 for the first")
        ->type_name("N")
        ->check(CLI::NonNegativeNumber);
    command->add_option("--user", options->user, "The user's name")->type_name("U")->required();
    command->add_option("--password-file", options->passwordFile, "File whose first line is the password, or \"-\"")
        ->type_name("F")
        ->required();
    command->add_option("--method", options->method, "Method of the request; without it, the message's")
        ->type_name("M");
    command->callback([options, how, &outcome] { outcome = run(*options, how); });
    return command;
}

} // namespace

void addDigestCommands(CLI::App& app, Outcome& outcome) {
    CLI::App* const group = app.add_subcommand("digest", "Answer a challenge, or verify the answer");
    group->require_subcommand(1);
    group->footer("Example:\n  kxsip digest answer --help");

    const auto options = std::make_shared<Options>();
    CLI::App* const answering =
        addCommand(*group, "answer", "Print the header that answers a 401 or 407", options, answer, outcome);
    answering->add_option("--uri", options->uri, "URI of the request; without it, that of To")->type_name("U");
    answering
        ->add_option("--algorithm", options->algorithm,
                     "Algorithm of the answer, such as MD5 or SHA-256; without it, the challenge's")
        ->type_name("A");
    CLI::Option* const qop =
        answering->add_option("--qop", options->qop, "Quality of protection, auth or auth-int; without it, none");
    CLI::Option* const cnonce = answering->add_option("--cnonce", options->cnonce, "The client's nonce");
    qop->type_name("Q")->needs(cnonce->type_name("C"));
    answering->add_option("--nc", options->nc, "How often the nonce was used, 1 for the first time")
        ->type_name("N")
        ->check(CLI::NonNegativeNumber);
    answering->add_option("--body", options->bodyFile, "File with the request's body, for auth-int")->type_name("FILE");
    answering->footer(kAnswerFooter);

    addCommand(*group, "verify", "Say by the exit code whether a request's credentials are the user's",
               std::make_shared<Options>(), verify, outcome)
        ->footer(kVerifyFooter);
}
