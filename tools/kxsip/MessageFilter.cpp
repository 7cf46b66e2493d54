#include "tools/kxsip/MessageFilter.h"

#include "tools/kxsip/MessageFacts.h"
#include "util/KxAscii.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace {

/** Returns the error text for a pattern that is not a status; a status is a code or a class, "486" or "4xx". */
std::string statusFault(const std::string& text) {
    const bool isCode =
        text.size() == 3 && text[0] >= '1' && text[0] <= '6' &&
        ((KxAscii::isDigit(text[1]) && KxAscii::isDigit(text[2])) || KxAscii::equalsNoCase(text.substr(1), "xx"));
    return isCode ? "" : "\"" + text + "\" is no status; write a code or a class of them: 486, 4xx";
}

bool isStatus(const std::string& pattern, int code) {
    const std::string text = std::to_string(code);
    return text == pattern || (KxAscii::toLower(pattern[1]) == 'x' && text[0] == pattern[0]);
}

/** Whether the pattern names the endpoint: "192.0.2.1", "192.0.2.1:5060", "2001:db8::1", "[2001:db8::1]:5060". */
bool isAt(const std::string& pattern, const Endpoint& end) {
    return pattern == end.address || pattern == end.text() || pattern == "[" + end.address + "]";
}

template <class Matches>
bool anyOf(const std::vector<std::string>& patterns, Matches matches) {
    return patterns.empty() || std::any_of(patterns.begin(), patterns.end(), matches);
}

CLI::Option* addList(CLI::App& command, const char* name, std::vector<std::string>& values, const char* type,
                     const char* description) {
    return command.add_option(name, values, description)->type_name(type)->delimiter(',')->allow_extra_args(false);
}

} // namespace

const char* const MessageFilter::sHelp =
    R"(Filters:
  Separate several values with commas, or repeat the option. A message is selected if it matches every option given, and
  of each option at least one value. --method selects requests and the responses to them, --status only responses,
  --address messages from or to the address (captures only). The exit code is that of the selected messages.)";

void MessageFilter::addOptions(CLI::App& command) {
    addList(command, "--method", m_methods, "NAME", "Only these methods and the responses to them");
    addList(command, "--status", m_statuses, "CODE", "Only responses with these codes: 486, 4xx")
        ->check(CLI::Validator(statusFault, ""));
    addList(command, "--call-id", m_callIds, "TEXT", "Only these Call-IDs");
    addList(command, "--address", m_addresses, "HOST[:PORT]", "Only what comes from or goes to these addresses");
}

bool MessageFilter::isEmpty() const {
    return m_methods.empty() && m_statuses.empty() && m_callIds.empty() && m_addresses.empty();
}

bool MessageFilter::accepts(const ReadMessage& read) const {
    if (isEmpty()) {
        return true;
    }
    const MessageFacts facts(read);
    const std::optional<Origin>& origin = read.origin;
    return anyOf(m_methods, [&facts](const auto& name) { return KxAscii::equalsNoCase(name, facts.method); }) &&
           anyOf(m_statuses, [&facts](const auto& pattern) { return isStatus(pattern, facts.code); }) &&
           anyOf(m_callIds, [&facts](const auto& text) { return text == facts.callId; }) &&
           anyOf(m_addresses, [&origin](const auto& pattern) {
               return origin && (isAt(pattern, origin->source) || isAt(pattern, origin->destination));
           });
}
