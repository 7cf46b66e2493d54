#pragma once

#include "sipobject/auth/KxSipAuthToken.h"
#include "util/KxBytes.h"
#include "util/KxOutputStream.h"

#include <algorithm>
#include <iterator>
#include <string_view>

/** Writes a list of properties as the RFCs define it: name=token or name="quoted string", separated by commas without
    blanks. Quotes and backslashes are escaped; a value that is no token is always quoted. [RFC 7235 2.1] */
class KxSipAuthParamWriter {
public:
    explicit KxSipAuthParamWriter(KxOutputStream& out) : m_out(out) {}

    void bare(std::string_view name, std::string_view value) {
        if (!KxSipAuthToken::sIs(value)) {
            return quoted(name, value);
        }
        writeName(name);
        m_out.write('=');
        m_out.write(value);
    }
    void quoted(std::string_view name, std::string_view value) {
        writeName(name);
        m_out.write(std::string_view("=\"", 2));
        const char* at = value.data();
        const char* const end = at + value.size();
        for (const char* stop; (stop = KxBytes::findAny<'"', '\\'>(at, end)) != end; at = stop + 1) {
            m_out.write(std::string_view(at, static_cast<std::size_t>(stop - at)));
            m_out.write('\\');
            m_out.write(*stop);
        }
        m_out.write(std::string_view(at, static_cast<std::size_t>(end - at)));
        m_out.write('"');
    }
    /** Writes a property as the RFCs say for its name: algorithm, stale, nc, userhash, charset and names that end in "*"
        bare, all others quoted. [RFC 7616 3.3, 3.4] */
    void byName(std::string_view name, std::string_view value) {
        constexpr std::string_view kBare[] = {"algorithm", "stale", "nc", "userhash", "charset"};
        const bool isBare = name.ends_with('*') || std::any_of(std::begin(kBare), std::end(kBare), [&](auto known) {
                                return KxAscii::equalsNoCase(name, known);
                            });
        isBare ? bare(name, value) : quoted(name, value);
    }

private:
    void writeName(std::string_view name) {
        if (!m_first) {
            m_out.write(',');
        }
        m_first = false;
        m_out.write(name);
    }

    KxOutputStream& m_out;
    bool m_first = true;
};
