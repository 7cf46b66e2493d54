#pragma once

#include "sipobject/KxSipGrammar.h"
#include "sipobject/headers/KxSipHeaderOf.h"
#include "sipobject/headers/KxSipNumberText.h"
#include "util/KxOutputStream.h"

#include <limits>

/** The headers whose value is one unsigned number, with parameters after it if Base is KxSipParameterHeader. A class H
    that requires a digit defines the error text for other values (kNoDigitError); in other classes a missing number
    reads as 0. A number that is too large reads as 4294967295. In the RFC grammar, all classes refuse values that are
    no number up to the largest one (kMost, or else 4294967295), with the error text kRangeError, or else kNoDigitError,
    if the class has one. */
template <class H, class Base = KxSipHeaderOf<H>>
class KxSipNumberHeader : public Base {
protected:
    KxSipNumberHeader() = default;
    explicit KxSipNumberHeader(std::uint32_t number) : m_number(number) {}
    KxSipNumberHeader(const KxSipNumberHeader&) = default;

    KxSipFault parseNumber(KxSipLine& line) {
        if constexpr (requires { H::kNoDigitError; }) {
            if (const KxSipFault fault = this->expectDigit(line, H::kNoDigitError)) {
                return fault;
            }
        }
        if (KxSipGrammar::sChecksNumbers()) {
            return KxSipNumberText::sRead(line, sMost(), m_number, sRangeError());
        }
        m_number = KxStreamTokenizer::sGetUnsigned(line);
        return {};
    }

    std::uint32_t m_number = 0;

private:
    friend class KxSipHeaderOf<H>;

    static constexpr std::uint32_t sMost() {
        if constexpr (requires { H::kMost; }) {
            return H::kMost;
        } else {
            return std::numeric_limits<std::uint32_t>::max();
        }
    }
    static constexpr const char* sRangeError() {
        if constexpr (requires { H::kRangeError; }) {
            return H::kRangeError;
        } else if constexpr (requires { H::kNoDigitError; }) {
            return H::kNoDigitError;
        } else {
            return "SIP Header parse error : not a number in its range";
        }
    }

    [[gnu::always_inline]] KxSipFault parseValue(KxSipLine& line) {
        if (const KxSipFault fault = parseNumber(line)) {
            return fault;
        }
        return this->parseParameters(line);
    }
    void serializeValue(KxOutputStream& out) const {
        out.writeAll(m_number);
        this->serializeParameters(out);
    }
};
