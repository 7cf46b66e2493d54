#pragma once

#include "sipobject/KxSipParseErrorEmptyHeader.h"

#include <cstdint>
#include <string>

/** What is wrong with a text that was read: nothing, or the error that says so. Grammars return it, since a hostile
    message may hold thousands of bad lines and unwinding costs more than reading them did; whoever faces a caller
    throws it. It fits two registers and allocates nothing; texts must live as long as the process. */
class [[nodiscard]] KxSipFault {
public:
    /** The class of the error. */
    enum class Error : std::uint8_t { Parse, EmptyHeader, Other };
    /** Where a fault lies that is told with its place in front. */
    enum class Place : std::uint8_t { Untold, RecordRoute };

    /** None. */
    constexpr KxSipFault() = default;
    constexpr explicit KxSipFault(const char* text, Error error = Error::Parse) : m_text(text), m_error(error) {}
    /** A text in which "?" stands for the character. */
    static constexpr KxSipFault sAbout(char character, const char* text) {
        KxSipFault fault(text);
        fault.m_character = character;
        fault.m_isAbout = true;
        return fault;
    }
    /** The fault, as a KxSipParseError that tells the place. */
    constexpr KxSipFault in(Place place) const {
        KxSipFault fault = *this;
        fault.m_error = Error::Parse;
        fault.m_place = place;
        return fault;
    }

    explicit operator bool() const { return m_text != nullptr; }
    /** The text of the error. */
    KX_SIP_API std::string message() const;
    /** Throws the error: KxSipParseError, KxSipParseErrorEmptyHeader or KxException. Not for none. */
    [[noreturn]] KX_SIP_API void raise() const;
    /** Throws the error, if there is one. */
    void raiseIfAny() const {
        if (m_text != nullptr) [[unlikely]] {
            raise();
        }
    }

private:
    const char* m_text = nullptr;
    Error m_error = Error::Parse;
    Place m_place = Place::Untold;
    char m_character = '\0';
    bool m_isAbout = false;
};
