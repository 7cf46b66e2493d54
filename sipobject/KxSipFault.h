#pragma once

#include "sipobject/KxSipParseErrorEmptyHeader.h"

#include <cstdint>
#include <string>

/** The result of reading a text: no fault, or an error. Parsing functions return it instead of throwing, since a
    hostile message may contain thousands of bad lines, and throwing costs more than reading them. The functions that
    face a caller throw it. It fits into two registers and allocates nothing; texts must live as long as the process. */
class [[nodiscard]] KxSipFault {
public:
    /** The class of the error. */
    enum class Error : std::uint32_t { Parse = 0, EmptyHeader = 1, Other = 2 };
    /** The place of a fault whose message starts with its place. */
    enum class Place : std::uint32_t { RecordRoute = 4 };

    /** No fault. */
    constexpr KxSipFault() = default;
    constexpr explicit KxSipFault(const char* text, Error error = Error::Parse)
        : m_text(text), m_details(static_cast<std::uint64_t>(error)) {}
    /** A fault with a text in which the first "?" is replaced by the character. */
    static constexpr KxSipFault sAbout(char character, const char* text) {
        KxSipFault fault(text);
        fault.m_details = kAboutCharacter | static_cast<unsigned char>(character) * kCharacter;
        return fault;
    }
    /** The same fault as a KxSipParseError whose message names the place. */
    constexpr KxSipFault in(Place place) const {
        KxSipFault fault = *this;
        fault.m_details = (m_details & ~kError) | static_cast<std::uint32_t>(place);
        return fault;
    }

    explicit operator bool() const { return m_text != nullptr; }
    /** The error message. */
    KX_SIP_API std::string message() const;
    /** Throws the error: KxSipParseError, KxSipParseErrorEmptyHeader or KxException. There must be a fault. */
    [[noreturn]] KX_SIP_API void raise() const;
    /** Throws the error if there is one. */
    void raiseIfAny() const {
        if (m_text != nullptr) [[unlikely]] {
            raise();
        }
    }

private:
    // The details are an Error, a Place and, in the second byte, a character. They are one number, since separate
    // members would be packed and unpacked wherever a fault is returned.
    static constexpr std::uint32_t kError = 3;
    static constexpr std::uint32_t kAboutCharacter = 8;
    static constexpr std::uint32_t kCharacter = 256;

    bool has(std::uint32_t detail) const { return (m_details & detail) != 0; }

    const char* m_text = nullptr;
    std::uint64_t m_details = 0; ///< As wide as a register, so that a fault is returned without masks.
};
