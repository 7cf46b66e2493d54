#pragma once

#include "tools/kxsip/ReadMessage.h"

#include <string>
#include <vector>

namespace CLI {
class App;
}

/** Selects the messages that the user wants to see. For each option that was given, one of its values must match. */
class MessageFilter {
public:
    /** Adds --method, --status, --call-id and --address to the command. The filter must outlive the run of the
        command. */
    void addOptions(CLI::App& command);

    bool accepts(const ReadMessage& read) const;
    bool isEmpty() const;

    /** The text of --help about the options. */
    static const char* const sHelp;

private:
    std::vector<std::string> m_methods;
    std::vector<std::string> m_statuses;
    std::vector<std::string> m_callIds;
    std::vector<std::string> m_addresses;
};
