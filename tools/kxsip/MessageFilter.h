#pragma once

#include "tools/kxsip/AddressPattern.h"
#include "tools/kxsip/ReadMessage.h"
#include "tools/kxsip/TimeBound.h"
#include "tools/kxsip/UserPattern.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}
namespace re2 {
class RE2;
}

/** Selects the messages that the user wants to see. For each option that was given, one of its values must match. */
class MessageFilter {
public:
    MessageFilter();
    ~MessageFilter();
    MessageFilter(const MessageFilter&) = delete;
    MessageFilter& operator=(const MessageFilter&) = delete;

    /** Adds the options of filters to the command. The filter must outlive the run of the command. */
    void addOptions(CLI::App& command);

    /** Whether a message with these bytes may be accepted; to be asked before the message is parsed. */
    bool mayAccept(std::string_view bytes) const;
    /** Throws CaptureError if there is a filter for times or addresses, and the message is not from a capture. */
    bool accepts(const ReadMessage& read) const;
    bool isEmpty() const;
    /** Whether each call is selected by its Call-ID, so that no other message need be read to know it. */
    bool hasOnlyCallIds() const;
    /** Returns the outcome of a run in which something matched, or did not. If there is a filter and nothing matched, this
        is reported on standard error. */
    Outcome outcome(bool hasMatched) const;

    /** The text of --help about the options. */
    static const char* const sHelp;

private:
    void addTimes(CLI::App& command);
    void addTexts(CLI::App& command);
    bool needsCapture() const;
    bool acceptsFacts(const ReadMessage& read) const;
    bool acceptsOrigin(const ReadMessage& read) const;

    std::vector<std::string> m_methods;
    std::vector<std::string> m_statuses;
    std::vector<std::string> m_callIds;
    std::vector<AddressPattern> m_addresses;
    std::vector<UserPattern> m_users;
    std::vector<std::unique_ptr<re2::RE2>> m_texts;
    std::optional<TimeBound> m_since;
    std::optional<TimeBound> m_until;
};
