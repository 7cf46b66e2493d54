#include "tools/kxsip/MessageFilter.h"

#include "sipheaders/KxSipParameterValue.h"
#include "tools/kxsip/MessageFacts.h"
#include "tools/kxsip/Printable.h"
#include "tools/kxsip/capture/CaptureFile.h"
#include "util/KxAscii.h"

#include <CLI/CLI.hpp>
#include <re2/re2.h>

#include <algorithm>
#include <iostream>

namespace {

using Texts = std::vector<std::string>;

/** Returns the error text for a pattern that is not a status; a status is a code or a class, "486" or "4xx". */
std::string statusFault(const std::string& text) {
    const bool isCode =
        text.size() == 3 && text[0] >= '1' && text[0] <= '6' &&
        ((KxAscii::isDigit(text[1]) && KxAscii::isDigit(text[2])) || KxAscii::equalsNoCase(text.substr(1), "xx"));
    return isCode ? "" : "\"" + printable(text) + "\" is no status; write a code or a class of them: 486, 4xx";
}

bool isStatus(const std::string& pattern, int code) {
    const std::string text = std::to_string(code);
    return text == pattern || (KxAscii::toLower(pattern[1]) == 'x' && text[0] == pattern[0]);
}

/** Returns the error text for what is no method. */
std::string methodFault(const std::string& text) {
    return KxSipParameterValue::sIsToken(text) ? "" : "\"" + printable(text) + "\" is no method";
}

/** Reads the bytes of messages, which need not be UTF-8. "^" is the beginning of any line. */
std::unique_ptr<re2::RE2> expressionOf(const std::string& text) {
    re2::RE2::Options options;
    options.set_encoding(re2::RE2::Options::EncodingLatin1);
    options.set_log_errors(false);
    return std::make_unique<re2::RE2>("(?m)" + text, options);
}

std::string expressionFault(const std::string& text) {
    const std::unique_ptr<re2::RE2> expression = expressionOf(text);
    return expression->ok() ? "" : "\"" + printable(text) + "\" is no regular expression: " + expression->error();
}

template <class Patterns, class Matches>
bool anyOf(const Patterns& patterns, Matches matches) {
    return patterns.empty() || std::any_of(patterns.begin(), patterns.end(), matches);
}

CLI::Option* asList(CLI::Option* option, const char* type) {
    return option->type_name(type)->delimiter(',')->allow_extra_args(false);
}

} // namespace

const char* const MessageFilter::sHelp =
    R"(Filters:
  Separate several values with commas (those of --text have commas of their own), or repeat the option. A message is
  selected if it matches every option given, and of each option at least one value. --method selects requests and the responses to them,
  --status only responses, --user messages with this user in From, To, P-Asserted-Identity or the Request-URI (or this
  number, if that is a tel URI).
  --text searches the bytes of the message, as received, for a regular expression of RE2: "^" and "$" are the beginning
  and the end of a line (before its LF: "\r$"), (?i) before it ignores the letter case.
  Only for captures: --address selects messages from or to an address (192.0.2.1, 192.0.2.1:5060, [2001:db8::1]:5060) or
  network (10.0.0.0/8), --since and --until those from or up to a time: 2026-11-21, 2026-11-21T13:22:21.5,
  2026-11-21T14:22:21+01:00, or 13:22:21 of any day; in UTC, unless it has a zone. What is left out of a time belongs to
  it: --until 2026-11-21 ends with this day.
  The exit code is that of the selected messages; 4 if there is none.)";

MessageFilter::MessageFilter() = default;
MessageFilter::~MessageFilter() = default;

void MessageFilter::addOptions(CLI::App& command) {
    asList(command.add_option("--method", m_methods, "Only these methods and the responses to them"), "NAME")
        ->check(CLI::Validator(methodFault, ""));
    asList(command.add_option("--status", m_statuses, "Only responses with these codes: 486, 4xx"), "CODE")
        ->check(CLI::Validator(statusFault, ""));
    asList(command.add_option("--call-id", m_callIds, "Only these Call-IDs"), "TEXT");
    addTexts(command);
    addTimes(command);
}

void MessageFilter::addTexts(CLI::App& command) {
    const auto takeUsers = [this](const Texts& names) {
        std::transform(names.begin(), names.end(), std::back_inserter(m_users),
                       [](const std::string& name) { return UserPattern(name); });
    };
    asList(command.add_option_function<Texts>("--user", takeUsers, "Only messages from, to or about these users"),
           "NAME");
    const auto takeExpressions = [this](const Texts& texts) {
        std::transform(texts.begin(), texts.end(), std::back_inserter(m_texts), expressionOf);
    };
    command.add_option_function<Texts>("--text", takeExpressions, "Only messages in which this is found")
        ->type_name("REGEX")
        ->allow_extra_args(false)
        ->check(CLI::Validator(expressionFault, ""));
}

void MessageFilter::addTimes(CLI::App& command) {
    const auto takeAddresses = [this](const Texts& texts) {
        for (const std::string& text : texts) {
            m_addresses.push_back(*AddressPattern::sRead(text));
        }
    };
    const char* const addresses = "Only what comes from or goes to these addresses or networks";
    asList(command.add_option_function<Texts>("--address", takeAddresses, addresses), "ADDRESS")
        ->check(CLI::Validator(AddressPattern::sFault, ""));
    const auto takeSince = [this](const std::string& text) { m_since = TimeBound::sRead(text); };
    command.add_option_function<std::string>("--since", takeSince, "Only messages from this time on")
        ->type_name("TIME")
        ->check(CLI::Validator(TimeBound::sFault, ""));
    const auto takeUntil = [this](const std::string& text) { // comes after takeSince
        m_until = TimeBound::sRead(text);
        if (m_since && !m_since->isTimeOfDay && !m_until->isTimeOfDay && m_since->first > m_until->last) {
            throw CLI::ValidationError("--until", "is before --since");
        }
    };
    command.add_option_function<std::string>("--until", takeUntil, "Only messages up to this time")
        ->type_name("TIME")
        ->check(CLI::Validator(TimeBound::sFault, ""));
}

bool MessageFilter::needsCapture() const {
    return !m_addresses.empty() || m_since || m_until;
}

bool MessageFilter::hasOnlyCallIds() const {
    return !m_callIds.empty() && m_methods.empty() && m_statuses.empty() && m_users.empty() && m_texts.empty() &&
           !needsCapture();
}

bool MessageFilter::isEmpty() const {
    return m_callIds.empty() && m_methods.empty() && m_statuses.empty() && m_users.empty() && m_texts.empty() &&
           !needsCapture();
}

bool MessageFilter::mayAccept(std::string_view bytes) const {
    return anyOf(m_callIds, [bytes](const auto& text) { return bytes.find(text) != std::string_view::npos; });
}

bool MessageFilter::accepts(const ReadMessage& read) const {
    if (needsCapture() && !read.origin) {
        throw CaptureError(printable(read.file) +
                           " is no capture: --address, --since and --until need a pcap or pcapng file");
    }
    return acceptsOrigin(read) && acceptsFacts(read) &&
           anyOf(m_users,
                 [&read](const UserPattern& user) { return !read.object().isNil() && user.matches(*read.object()); }) &&
           anyOf(m_texts, [&read](const auto& expression) { return re2::RE2::PartialMatch(read.text, *expression); });
}

bool MessageFilter::acceptsOrigin(const ReadMessage& read) const {
    return !needsCapture() || (TimeBound::sIsBetween(read.origin->time, m_since, m_until) &&
                               anyOf(m_addresses, [&origin = *read.origin](const AddressPattern& pattern) {
                                   return pattern.matches(origin.source) || pattern.matches(origin.destination);
                               }));
}

bool MessageFilter::acceptsFacts(const ReadMessage& read) const {
    if (m_methods.empty() && m_statuses.empty() && m_callIds.empty()) {
        return true;
    }
    const MessageFacts facts(read);
    return anyOf(m_methods, [&facts](const auto& name) { return KxAscii::equalsNoCase(name, facts.method); }) &&
           anyOf(m_statuses, [&facts](const auto& pattern) { return isStatus(pattern, facts.code); }) &&
           anyOf(m_callIds, [&facts](const auto& text) { return text == facts.callId; });
}

Outcome MessageFilter::outcome(bool hasMatched) const {
    if (hasMatched || isEmpty()) {
        return Outcome::Valid;
    }
    std::cerr << "kxsip: no message matches the filters\n";
    return Outcome::NoMatch;
}
