#pragma once

#include "sipobject/KxSipGrammar.h"
#include "sipobject/headers/KxSipHeaderOf.h"
#include "util/KxOutputStream.h"

/** The headers whose value is one token, with parameters after it if Base is KxSipParameterHeader. A class H defines
    where the token ends and whether it may be empty:

        static constexpr const KxCharSet& kTokenEnd = ...;      // ends the token and stays unread
        static constexpr const char* kEmptyError = "...";       // the error for an empty token; null accepts it, except
        in the RFC grammar static constexpr bool kIsTrimmed = true;                // optional: white space at its end
        is dropped

    KxSipHeader skips any other text between the token and the next comma. */
template <class H, class Base = KxSipHeaderOf<H>>
class KxSipTokenHeader : public Base {
protected:
    KxSipTokenHeader() = default;
    /** Stored as given, unchecked. */
    explicit KxSipTokenHeader(const char* token) : m_value(token == nullptr ? "" : token) {}
    explicit KxSipTokenHeader(KxSipText token) : m_value(token.neededIf(H::kEmptyError != nullptr, H::sToken)) {}
    KxSipTokenHeader(const KxSipTokenHeader&) = default;

    /** Replaces the token, and a value that was kept as text. Classes make it public under the name of their getter.
        Throws KxSipParseError for a text with CR, LF or NUL and, if the class refuses empty tokens, for an empty one. */
    void setTokenText(KxSipText token) {
        m_value = token.neededIf(H::kEmptyError != nullptr, H::sToken);
        if constexpr (requires { this->forgetText(); }) {
            this->forgetText();
        }
    }
    /** Whether the token is this one, ignoring letter case; never if it is empty. [RFC 3261 7.3.1] */
    bool isTokenText(KxSipText token) const { return !m_value.empty() && m_value.equalsNoCase(token.view()); }

    /** The characters that end an option tag: comma, blank, tab and line end. More lenient than RFC 3261 25.1. */
    static constexpr KxCharSet kOptionTagEnd{", \t\r\n"};

    KxString m_value;

private:
    friend class KxSipHeaderOf<H>;

    KxSipFault parseValue(KxSipLine& line) {
        std::string_view token = line.token(H::kTokenEnd);
        if constexpr (requires { H::kIsTrimmed; }) {
            token = KxAscii::trimEnd(token);
        }
        if (token.empty()) [[unlikely]] {
            if constexpr (H::kEmptyError != nullptr) {
                return KxSipFault(H::kEmptyError);
            } else if (KxSipGrammar::sReadsLinesByValue()) {
                return KxSipFault("Empty option tag");
            }
        }
        m_value = KxString(token);
        return this->parseParameters(line);
    }
    void serializeValue(KxOutputStream& out) const {
        out.writeAll(m_value);
        this->serializeParameters(out);
    }
};
