#pragma once

#include "sipobject/headers/KxSipHeaderOf.h"
#include "util/KxOutputStream.h"
#include "util/KxScannedText.h"

/** The family of headers whose every value is one token, and parameters behind it where Base is KxSipParameterHeader. A
    class H says how the token ends and what an empty one means:

        static constexpr const KxCharSet& kTokenEnd = ...;      // the first of these stays unread
        static constexpr const char* kEmptyError = "...";       // the fault of an empty token; null accepts it
        static constexpr bool kIsTrimmed = true;                // optional: no form feed or the like at its end

    What stands between the token and the next comma and is no parameter is skipped by the header framework. */
template <class H, class Base = KxSipHeaderOf<H>>
class KxSipTokenHeader : public Base {
protected:
    KxSipTokenHeader() = default;
    /** Stored as given, unchecked. */
    explicit KxSipTokenHeader(const char* token) : m_value(token == nullptr ? "" : token) {}
    KxSipTokenHeader(const KxSipTokenHeader&) = default;

    /** Where option tags end: only a comma, a blank or the line's end ends one. [RFC 3261 25.1, leniently] */
    static constexpr KxCharSet kOptionTagEnd{", \t\r\n"};

    KxString m_value;

private:
    friend class KxSipHeaderOf<H>;

    KxSipFault parseValue(KxInputStream& in) {
        KxScannedText scanned;
        std::string_view token = scanned.token(in, H::kTokenEnd);
        if constexpr (requires { H::kIsTrimmed; }) {
            token = KxAscii::trimEnd(token);
        }
        if constexpr (H::kEmptyError != nullptr) {
            if (token.empty()) {
                return KxSipFault(H::kEmptyError);
            }
        }
        m_value = KxString(token);
        this->parseParameters(in);
        return {};
    }
    void serializeValue(KxOutputStream& out) const {
        out.write(m_value.view());
        this->serializeParameters(out);
    }
};
