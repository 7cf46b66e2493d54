#pragma once

#include "fuzz/FuzzSupport.h"
#include "sipobject/address/KxSipURL.h"
#include "sipobject/address/KxTelURL.h"

#include <algorithm>
#include <string>
#include <string_view>

// What follows are the ways in which a URI is laid down to be printed so that it reads as another.

/** A quote left open in a value that took an earlier value's place takes in the parameters behind it now. */
inline bool hasOddQuotes(const KxParameters& list) {
    return list.size() > 1 && std::any_of(list.begin(), list.end(), [](const KxParameters::Pair& pair) {
               const std::string text = std::string(pair.name.view()) + '=' + std::string(pair.value.view());
               return hasOddQuotes(text) || hasAnyOf(text, "\\");
           });
}

/** A quote that was in front of an "@" and is not printed (it was in a port, which is printed as a number) hid it. */
inline bool showsUserPart(std::string_view printed) {
    bool quoted = false;
    const auto* const at = std::find_if(printed.begin(), printed.end(), [&quoted](char c) {
        quoted ^= c == '"';
        return c == '@' && !quoted;
    });
    return at != printed.end();
}

/** A value that was replaced took its quotes along, and a blank that one of them kept stands alone now. */
inline bool showsBlank(const KxParameters& headers) {
    bool quoted = false;
    const auto shows = [&quoted](char c) {
        quoted ^= c == '"';
        return c == ' ' && !quoted;
    };
    return std::any_of(headers.begin(), headers.end(), [&shows](const KxParameters::Pair& pair) {
        const std::string text = std::string(pair.name.view()) + std::string(pair.value.view());
        return std::any_of(text.begin(), text.end(), shows);
    });
}

inline bool changes(const KxSipURL& url, std::string_view printed) {
    if (url.getUser().empty() && showsUserPart(printed)) {
        return true;
    }
    // Header values are decoded when read; of what is not escaped again, "%" is decoded once more, and names are not
    // escaped at all, so that an "@" in one makes a user part of what stands before it.
    for (const KxParameters::Pair& header : *url.getHeaders()) {
        if (hasAnyOf(header.name, "%@;=") || hasAnyOf(header.value, "%")) {
            return true;
        }
    }
    // Quotes pair only in the user, but hide an "@" wherever they stand in front of it.
    if (hasOddQuotes(url.getUser().view()) || hasOddQuotes(url.getUserPassword().view())) {
        return true;
    }
    // An "@" in front of the scheme is dropped, but what delimits URLs is text as long as a user is expected; so it is
    // where a colon behind the host has emptied the user, and there quotes go on behind a line end.
    return hasAnyOf(url.getHost(), ";,?\"") || hasAnyOf(url.getUser(), "\n") || hasOddQuotes(*url.getParameters()) ||
           showsBlank(*url.getHeaders());
}

inline bool changes(const KxTelURL& url, std::string_view printed) {
    // A "<" begins the number anew but keeps the parameters' "+" and ";" in it; a scheme of fewer letters than "tel"
    // leaves room for a number that is too long behind "tel:".
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
    // Two brackets in front lose one a round; a scheme behind a tab is not looked at, but printed without the tab it is.
    std::string letters(printed.substr(0, 64));
    std::erase_if(letters, [](char c) { return c == ' ' || c == '<'; });
    const std::string_view scheme = std::string_view(letters).substr(0, 3);
    return printed[0] == '<' || KxAscii::equalsNoCase(scheme, "sip") || KxAscii::equalsNoCase(scheme, "tel");
}

inline bool changes(const KxURI& uri) {
    return changes(uri, uri.getString().view());
}
