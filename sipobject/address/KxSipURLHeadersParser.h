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
    /** Reads from `at`, which is moved; the bytes up to `readable` may be loaded. The headers of a bare URL, one in a
        header of a message without brackets, end at "," and ";" if kStrict. */
    KxSipURLHeadersParser(KxSipURL& url, const char*& at, const char* end, const char* readable, bool isBare)
        : m_url(url), m_at(at), m_end(end), m_readable(readable), m_isBare(isBare) {}

    KxSipFault parse();

private:
    int nextCharacter();
    KxSipFault store(std::string_view name, std::string_view value, bool inValue, bool last);

    KxSipURL& m_url;
    const char*& m_at;
    const char* const m_end;
    const char* const m_readable;
    const bool m_isBare;
};
