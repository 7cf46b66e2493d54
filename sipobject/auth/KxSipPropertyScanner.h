#pragma once

#include "core/FastString.h"
#include "sipobject/KxSipFault.h"
#include "util/KxParameters.h"

#include <cstddef>
#include <limits>
#include <string_view>

class KxInputStream;

/** Reads the property list of a challenge, of credentials or of an Authentication-Info into a parameter list, leniently
    and in one pass.
    auth-param = token EQUAL ( token / quoted-string ), separated by commas   [RFC 2617 1.2]
    Differs from the RFC on purpose: quotes are dropped everywhere; they protect commas and blanks, but not the "="
    before the value; a backslash is ordinary text; blanks outside quotes are dropped, tabs are not; a comma or line
    feed before the "=" of a property is part of its name; every "=" after the first one belongs to the value.
    `realm = "a, b",nonce=YWJj==` -> realm: `a, b`; nonce: `YWJj==`
    Where the RFC grammar is chosen, KxSipAuthParamReader reads the list instead, without a limit. */
class KxSipPropertyScanner {
public:
    /** The differences between the kinds of list. */
    struct Options {
        /// For the characters kept from the whole text. Kept commas, line feeds and "=" count, but are never refused.
        std::size_t limit;
        bool isLastRequired; ///< If true, a last property without name or value is refused; else it is dropped.
        bool lowersLastName; ///< If true, the name of the last property is made lower case; other names never are.
        /// Where the RFC grammar is chosen, whether a property of this name is skipped; null for none.
        bool (*isHidden)(std::string_view name);
    };
    static constexpr Options kStrict{1024, true, true, nullptr};
    static constexpr Options kLenient{std::numeric_limits<std::size_t>::max(), false, false, nullptr};

    /** Each property is added to the list when it is read, even if a later one is refused. */
    KxSipPropertyScanner(KxParameters& properties, const Options& options)
        : m_properties(properties), m_options(options) {}

    /** Reads the list as the chosen grammar says; the classic one reads to the end, or to a line feed that ends a
        value, which is consumed. The faults are "Buffer overflew !!!" and "Failed to parse Proxy-Authenticate SIP
        header". */
    KxSipFault scan(KxInputStream& in);
    /** Whether the whole text was read without a fault. */
    bool reachedEnd() const { return m_reachedEnd; }

private:
    KxSipFault scanLeniently(KxInputStream& in);
    const char* takePlain(const char* at, const char* end);
    bool takeSpecial(char c);
    void keep(std::string_view run);
    void keepUnlimited(char c);
    bool exceedsLimit(std::size_t more);
    void store(std::string_view name, std::string_view value);
    void endName();
    void endValue();
    void finish();
    std::string_view name() const;
    std::string_view value() const { return m_text.view().substr(m_nameLength); }

    KxParameters& m_properties;
    const Options m_options;
    std::size_t m_kept = 0;       // characters of the whole text; never decreases
    std::size_t m_nameLength = 0; // length of the name in m_text, once m_isOpen
    bool m_isOpen = false;        // the name is complete and its value is being read
    bool m_isQuoted = false;
    bool m_isLineEnded = false;
    bool m_reachedEnd = false;
    KxSipFault m_fault;
    Oskan::FastString<1024> m_text; // the current property: its name, then its value
};
