#pragma once

#include "util/KxParameters.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

/** Plain reader of a property list: a character at a time, everything is kept in one buffer. The
    text is that of a challenge or of credentials or, without limit and failures, of an authentication info. */
struct PlainPropertyList {
    PlainPropertyList(std::string_view text, bool isInfo) {
        while (read < text.size() && !isStopped && failure.empty()) {
            take(text[read++], isInfo);
        }
        if (!failure.empty() || isStopped) {
            return;
        }
        if (isOpen && !name.empty() && start != buffer.size()) {
            if (!isInfo) {
                std::transform(name.begin(), name.end(), name.begin(), &KxAscii::toLower);
            }
            store();
        } else if (!isInfo) {
            failure = "Failed to parse Proxy-Authenticate SIP header";
        }
    }

    /** The list as it is written, quoted but for these names. */
    std::string written(std::initializer_list<std::string_view> bare) const {
        std::string all;
        for (const KxParameters::Pair& pair : list) {
            const auto isName = [&pair](std::string_view other) { return pair.name.equalsNoCase(other); };
            const char* const quote = std::any_of(bare.begin(), bare.end(), isName) ? "" : "\"";
            all.append(all.empty() ? "" : ",").append(pair.name.view()).append("=").append(quote);
            all.append(pair.value.view()).append(quote);
        }
        return all;
    }

    KxParameters list;
    std::size_t read = 0; ///< How much of the text.
    std::string failure;  ///< Empty for none.
    std::string buffer;   ///< All that was kept.

private:
    void take(char c, bool isInfo) {
        isEnded = isEnded || c == '\n';
        const bool separates = c == ',' || c == '\n';
        if (c == '"') {
            isQuoted = !isQuoted;
        } else if (separates && !isQuoted && isOpen) {
            store();
            isStopped = isEnded;
        } else if (c == '=' && !isOpen) {
            name = KxAscii::trim(std::string_view(buffer).substr(start));
            start = buffer.size();
            isOpen = true;
        } else if (!separates && c != '=' && !isInfo && buffer.size() >= 1024) {
            failure = "Buffer overflew !!!";
        } else if (isQuoted || c != ' ') {
            buffer += c;
        }
    }
    void store() {
        list.setValue(name, KxString(std::string_view(buffer).substr(start)));
        start = buffer.size();
        isOpen = false;
    }

    std::string name;
    std::size_t start = 0;
    bool isOpen = false;
    bool isQuoted = false;
    bool isEnded = false;
    bool isStopped = false;
};
