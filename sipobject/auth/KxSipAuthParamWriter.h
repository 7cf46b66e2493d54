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

    template <class Value>
    [[gnu::always_inline]] void bare(std::string_view name, const Value& value) {
        if (!KxSipAuthToken::sIs(value)) [[unlikely]] {
            return quoted(name, value);
        }
        write(name, kEquals, value, std::string_view());
    }
    template <class Value>
    [[gnu::always_inline]] void quoted(std::string_view name, const Value& value) {
        const std::string_view text(value);
        const char* const end = text.data() + text.size();
        if (KxBytes::findAny<'"', '\\'>(text.data(), end) != end) [[unlikely]] {
            writeEscaped(name, value);
        } else {
            write(name, kQuote, value, kQuote.substr(1));
        }
    }
    /** Writes a property as the RFCs say for its name: algorithm, stale, nc, userhash, charset and names that end in
        "*" bare, all others quoted. [RFC 7616 3.3, 3.4] */
    void byName(std::string_view name, std::string_view value) {
        constexpr std::string_view kBare[] = {"algorithm", "stale", "nc", "userhash", "charset"};
        const bool isBare = name.ends_with('*') || std::any_of(std::begin(kBare), std::end(kBare), [&](auto known) {
                                return KxAscii::equalsNoCase(name, known);
                            });
        if (isBare) {
            bare(name, value);
        } else {
            quoted(name, value);
        }
    }

private:
    static constexpr std::string_view kEquals{"="};
    static constexpr std::string_view kQuote{"=\""};

    template <class Value>
    [[gnu::always_inline]] void write(std::string_view name, std::string_view equals, const Value& value,
                                      std::string_view end) {
        if (m_first) {
            m_out.writeAll(name, equals, value, end);
        } else {
            m_out.writeAll(',', name, equals, value, end);
        }
        m_first = false;
    }
    [[gnu::noinline]] void writeEscaped(std::string_view name, std::string_view value) {
        separate();
        m_out.writeAll(name, kQuote);
        for (const char c : value) {
            if (c == '"' || c == '\\') {
                m_out.write('\\');
            }
            m_out.write(c);
        }
        m_out.write('"');
    }
    /** Writes the comma before every property but the first. */
    void separate() {
        if (!m_first) {
            m_out.write(',');
        }
        m_first = false;
    }

    KxOutputStream& m_out;
    bool m_first = true;
};
