#pragma once

#include "sipobject/KxSipFault.h"

#include <string_view>

class KxSipURL;

/** Reads the headers of a KxSipURL, after its "?".
    headers = "?" header *( "&" header )                           [RFC 3261 25.1]
    If kStrict, they are that, and kept as they are written. Otherwise they are separated by ";", and decoded before
    anything else is looked at. */
template <bool kStrict>
class KxSipURLHeadersParser {
public:
    /** Reads the text; the bytes up to `readable` may be loaded, too. The headers of a bare URL, one in a header of a
        message without brackets, end at "," and ";" if kStrict. */
    KxSipURLHeadersParser(KxSipURL& url, std::string_view text, const char* readable, bool isBare)
        : m_url(url), m_at(text.data()), m_end(text.data() + text.size()), m_readable(readable), m_isBare(isBare) {}

    KxSipFault parse();
    /** Where reading stopped. */
    const char* end() const { return m_at; }

private:
    KxSipFault parseSeveral();
    int nextCharacter();
    /** Refuses an empty name, which a pair without "=" has, too. */
    KxSipFault store(std::string_view name, std::string_view value, bool last);
    void add(std::string_view name, std::string_view value);

    KxSipURL& m_url;
    const char* m_at;
    const char* const m_end;
    const char* const m_readable;
    const bool m_isBare;
};
