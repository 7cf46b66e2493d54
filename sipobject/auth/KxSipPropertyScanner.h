#pragma once

#include "core/FastString.h"
#include "sipobject/KxSipFault.h"
#include "util/KxParameters.h"

#include <cstddef>
#include <limits>
#include <string_view>

class KxInputStream;

/** Reads the property list of a challenge, of credentials or of an authentication info into a parameter list: tolerant,
    in one pass, whatever stands there.
    auth-param = token EQUAL ( token / quoted-string ), separated by commas   [RFC 2617 1.2]
    Deliberately otherwise than the RFC: quotes are dropped wherever they stand and hide commas and blanks, but not "=",
    when no value is open; a backslash is text; blanks outside quotes are dropped, tabs are not; a comma or line feed
    where no value is open is part of the next name; every "=" behind the first belongs to the value.
    `realm = "a, b",nonce=YWJj==` -> realm: `a, b`; nonce: `YWJj==` */
class KxSipPropertyScanner {
public:
    /** In what the readers differ. */
    struct Options {
        /// Of the characters kept of the whole text. Commas, line feeds and "=" in it count, but are never too much.
        std::size_t limit;
        bool isLastRequired; ///< A last property without name or value is refused, else it is dropped.
        bool lowersLastName; ///< The last property's name is made lower case; those in front of it never are.
    };
    static constexpr Options kStrict{1024, true, true};
    static constexpr Options kLenient{std::numeric_limits<std::size_t>::max(), false, false};

    /** Properties go into the list as they are read, also in front of one that is refused. */
    KxSipPropertyScanner(KxParameters& properties, const Options& options)
        : m_properties(properties), m_options(options) {}

    /** Reads up to the line feed that ends a value, which is consumed, or to the end. Faults are "Buffer overflew !!!"
        and "Failed to parse Proxy-Authenticate SIP header". */
    KxSipFault scan(KxInputStream& in);
    /** Whether all was read and nothing found wrong. */
    bool reachedEnd() const { return m_reachedEnd; }

private:
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
    std::size_t m_kept = 0;       // of the whole text, and never less
    std::size_t m_nameLength = 0; // of m_text, once the value is open
    bool m_isOpen = false;        // a name is known and its value is read
    bool m_isQuoted = false;
    bool m_isLineEnded = false;
    bool m_reachedEnd = false;
    KxSipFault m_fault;
    Oskan::FastString<1024> m_text; // of the property that is read: its name, then its value
};
