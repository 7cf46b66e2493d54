#pragma once

#include "tools/kxsip/ReadMessage.h"

#include <string>
#include <vector>

namespace CLI {
class App;
}

/** Which messages the user wants to see. Of each kind of condition one must hold; a kind that is not given holds. */
class MessageFilter {
public:
    /** Adds --method, --status, --call-id and --address to the command. The filter must live until it has run. */
    void addOptions(CLI::App& command);

    bool accepts(const ReadMessage& read) const;
    bool isEmpty() const;

    /** What --help says of the options. */
    static const char* const sHelp;

private:
    std::vector<std::string> m_methods;
    std::vector<std::string> m_statuses;
    std::vector<std::string> m_callIds;
    std::vector<std::string> m_addresses;
};
