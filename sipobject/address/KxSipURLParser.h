#pragma once

#include "sipobject/KxSipLine.h"
#include "sipobject/address/KxSipURLParts.h"
#include "sipobject/address/KxSipURLToken.h"

#include <string_view>

class KxSipURL;

/** The state machine that reads a KxSipURL, in one pass over its characters. The text between two
    delimiters is a token, and the delimiter before a token determines its meaning.

    If kStrict, the parts are those of RFC 3261 25.1 and RFC 5954 4.1, and what does not fit is refused. Which of the
    two machines reads is decided once for each URL, by KxSipGrammar::sReadsURLsStrictly. */
template <bool kStrict>
class KxSipURLParser {
public:
    KxSipURLParser(KxSipURL& url, KxSipLine& line)
        : m_url(url), m_line(line), m_at(line.window().data()), m_end(m_at + line.window().size()) {}
    /** Consumes the text that was read, even if it was refused. */
    ~KxSipURLParser() { m_line.consume(static_cast<std::size_t>(m_at - m_line.window().data())); }
    KxSipURLParser(const KxSipURLParser&) = delete;
    KxSipURLParser& operator=(const KxSipURLParser&) = delete;

    /** Reads the URL. */
    KxSipFault parse();
    /** Reads the headers after the "?". */
    KxSipFault parseHeaders();

private:
    using Parts = KxSipURLParts<kStrict>;
    enum class Next { More, Done, Refused };

    const char* findDelimiter(const char* from) const;
    bool isBare() const;
    bool findUserPart();
    std::string_view textTo(const char* end) const { return {m_at, static_cast<std::size_t>(end - m_at)}; }
    Next take(const char* stop);
    bool userIsOpen() const;
    Next takeScheme(std::string_view token);
    bool isInReference(std::string_view token) const;
    Next addQuoted();
    Next colon();
    Next at();
    Next semicolon();
    bool parameters();
    void parseWithoutReturns(std::string_view parameters);
    Next comma();
    Next end(int c);
    Next bracket(char c);
    bool closeToken();
    Next doneWithHost();
    Next refuse(const char* text);

    KxSipURL& m_url;
    KxSipLine& m_line;
    const char* m_at;
    const char* const m_end;
    KxSipURLToken m_token; ///< The text since the last delimiter.
    KxSipFault m_fault;
    char m_previous = '\0';     ///< The delimiter before the token; NUL for none.
    bool m_hasUserPart = false; ///< An "@" ends a user; if kStrict, only until it was read.
    bool m_hostSeen = false;
    bool m_bracket = false;
};
