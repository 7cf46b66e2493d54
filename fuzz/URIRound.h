#pragma once

#include "fuzz/FuzzSupport.h"
#include "sipobject/address/KxSipURL.h"
#include "sipobject/address/KxTelURL.h"

#include <algorithm>
#include <string>
#include <string_view>

// The following functions detect URIs whose printed form, by design, reads as another URI.

/** When a repeated parameter replaces the value of an earlier one and leaves a quote open, the quote now includes the
    parameters after it. */
inline bool hasOddQuotes(const KxParameters& list) {
    return list.size() > 1 && std::any_of(list.begin(), list.end(), [](const KxParameters::Pair& pair) {
               const std::string text = std::string(pair.name.view()) + '=' + std::string(pair.value.view());
               return hasOddQuotes(text) || hasAnyOf(text, "\\");
           });
}

/** A quote before an "@" hides the "@". A quote in a port is not printed, because the port is printed as a number; then
    the "@" is visible. */
inline bool showsUserPart(std::string_view printed) {
    bool quoted = false;
    const auto* const at = std::find_if(printed.begin(), printed.end(), [&quoted](char c) {
        quoted ^= c == '"';
        return c == '@' && !quoted;
    });
    return at != printed.end();
}

/** Whether one of the characters is outside quotes: when a value is replaced, or text before it is dropped, the quotes
    that protected it are gone, and others pair. */
inline bool showsAnyOf(std::string_view characters, const KxParameters& list) {
    bool quoted = false;
    const auto shows = [&](char c) {
        quoted ^= c == '"';
        return !quoted && characters.find(c) != std::string_view::npos;
    };
    return std::any_of(list.begin(), list.end(), [&shows](const KxParameters::Pair& pair) {
        const std::string text = std::string(pair.name.view()) + std::string(pair.value.view());
        return std::any_of(text.begin(), text.end(), shows);
    });
}

inline bool changes(const KxSipURL& url, std::string_view printed) {
    if (url.getUser().empty() && showsUserPart(printed)) {
        return true;
    }
    // Header values are decoded when they are read, and not all of them is escaped again; a "%" that is left is decoded
    // once more. Names are not escaped at all, so that an "@" in a name makes a user part of the text before it.
    for (const KxParameters::Pair& header : *url.getHeaders()) {
        if (hasAnyOf(header.name, "%@;=") || hasAnyOf(header.value, "%")) {
            return true;
        }
    }
    // Quotes are paired only in the user, but hide an "@" after them wherever they are.
    if (hasOddQuotes(url.getUser().view()) || hasOddQuotes(url.getUserPassword().view())) {
        return true;
    }
    // An "@" before the scheme is dropped, but the delimiters of URLs are ordinary text as long as a user is expected.
    // They are so, too, when a colon after the host has emptied the user; quotes then continue after a line end.
    // A quote in a user that a further colon drops changes which quotes in the parameters pair.
    const bool hasQuotes = hasAnyOf(url.getParameters()->getString(), "\"");
    return hasAnyOf(url.getHost(), ";,?\"") || hasAnyOf(url.getUser(), "\n") || hasOddQuotes(*url.getParameters()) ||
           (hasQuotes && showsAnyOf(" ,<>", *url.getParameters())) || showsAnyOf(" ", *url.getHeaders());
}

inline bool changes(const KxTelURL& url, std::string_view printed) {
    // A "<" restarts the number but keeps the "+" and ";" of the parameters in it. A scheme of fewer letters than "tel"
    // leaves room for a number that is too long after "tel:".
    const std::size_t parameters = url.hasParameters() ? url.getParameters()->getString().length() + 1 : 0;
    const std::string_view number = printed.substr(4, printed.size() - 4 - parameters);
    return printed.size() > 1023 || number.find('+', 1) != std::string_view::npos || hasAnyOf(number, ";") ||
           hasOddQuotes(*url.getParameters());
}

inline bool changes(const KxURI& uri, std::string_view printed) {
    if (uri.isSipURL()) {
        return changes(static_cast<const KxSipURL&>(uri), printed);
    }
    if (const auto* const tel = dynamic_cast<const KxTelURL*>(&uri)) {
        return changes(*tel, printed);
    }
    // Of two leading brackets, each round drops one. A scheme after a tab is not recognised, but is printed without the
    // tab and recognised then.
    std::string letters(printed.substr(0, 64));
    std::erase_if(letters, [](char c) { return c == ' ' || c == '<'; });
    const std::string_view scheme = std::string_view(letters).substr(0, 3);
    return printed[0] == '<' || KxAscii::equalsNoCase(scheme, "sip") || KxAscii::equalsNoCase(scheme, "tel");
}

inline bool changes(const KxURI& uri) {
    return changes(uri, uri.getString().view());
}
