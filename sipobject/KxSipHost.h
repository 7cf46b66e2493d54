#pragma once

#include <string_view>

/** The host of a SIP URL or of a Via, in the RFC grammar.
    host = hostname / IPv4address / IPv6reference                  [RFC 3261 25.1]
    IPv6reference = "[" IPv6address "]"                            [RFC 5954 4.1]
    "_" is taken for a letter, since it occurs in real names. The object refers to the text.
    "[2001:db8::1]" -> IPv6, "2001:db8::1" */
class KxSipHost {
public:
    /** A host as it is written. */
    explicit KxSipHost(std::string_view written);
    /** A host as an application gives it: an IPv6 address may lack its brackets. */
    static KxSipHost sGiven(std::string_view text);

    [[nodiscard]] bool isValid() const { return m_kind != Kind::Invalid; }
    [[nodiscard]] bool isIPv6() const { return m_kind == Kind::IPv6; }
    /** Without brackets. */
    std::string_view text() const { return m_text; }

    /** Whether the text is a host name or an IPv4 address. */
    static bool sIsName(std::string_view text);
    /** Addresses compare by value, names without regard to letter case. Brackets do not matter. */
    static bool sAreEqual(std::string_view one, std::string_view other);

private:
    enum class Kind : unsigned char { Invalid, Name, IPv6 };
    KxSipHost(Kind kind, std::string_view text) : m_kind(kind), m_text(text) {}

    Kind m_kind = Kind::Invalid;
    std::string_view m_text;
};
