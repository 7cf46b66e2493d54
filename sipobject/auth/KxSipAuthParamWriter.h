#pragma once

#include "sipobject/auth/KxSipAuthToken.h"
#include "sipobject/auth/KxSipPropertyWriter.h"
#include "util/KxBytes.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

/** Writes a list of properties as the RFCs define it: name=token or name="quoted string", separated by commas without
    blanks. Quotes and backslashes are escaped; a value that is no token is always quoted. [RFC 7235 2.1] */
class KxSipAuthParamWriter {
public:
    explicit KxSipAuthParamWriter(KxOutputStream& out) : m_properties(out) {}

    template <class Value>
    [[gnu::always_inline]] void bare(std::string_view name, const Value& value) {
        if (!KxSipAuthToken::sIs(value)) [[unlikely]] {
            return quoted(name, value);
        }
        m_properties.bare(name, value);
    }
    template <class Value>
    [[gnu::always_inline]] void quoted(std::string_view name, const Value& value) {
        const std::string_view text(value);
        const char* const end = text.data() + text.size();
        if (KxBytes::findAny<'"', '\\'>(text.data(), end) != end) [[unlikely]] {
            writeEscaped(name, value);
        } else {
            m_properties.quoted(name, value);
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
    [[gnu::noinline]] void writeEscaped(std::string_view name, std::string_view value) {
        std::string escaped;
        for (const char c : value) {
            if (c == '"' || c == '\\') {
                escaped += '\\';
            }
            escaped += c;
        }
        m_properties.quoted(name, std::string_view(escaped));
    }

    KxSipPropertyWriter m_properties;
};
