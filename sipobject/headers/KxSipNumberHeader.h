#pragma once

#include "sipobject/KxSipParseError.h"
#include "sipobject/headers/KxSipHeaderOf.h"
#include "util/KxOutputStream.h"
#include "util/KxStreamTokenizer.h"

/** The family of headers whose value is one unsigned number. A class H that insists on a digit says what it throws
    otherwise (kNoDigitError); for the others a missing number is 0. Too large a number is 4294967295. */
template <class H>
class KxSipNumberHeader : public KxSipHeaderOf<H> {
protected:
    KxSipNumberHeader() = default;
    explicit KxSipNumberHeader(std::uint32_t number) : m_number(number) {}
    KxSipNumberHeader(const KxSipNumberHeader&) = default;

    std::uint32_t m_number = 0;

private:
    friend class KxSipHeaderOf<H>;

    void parseValue(KxInputStream& in) {
        if constexpr (requires { H::kNoDigitError; }) {
            if (!KxAscii::isDigit(static_cast<char>(KxStreamTokenizer::sDiscardWhite(in)))) {
                KxSipParseError::sThrow(H::kNoDigitError);
            }
        }
        m_number = KxStreamTokenizer::sGetUnsigned(in);
    }
    void serializeValue(KxOutputStream& out) const { out << m_number; }
};
