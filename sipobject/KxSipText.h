#pragma once

#include "sipobject/SipApi.h"
#include "util/KxString.h"

#include <concepts>
#include <cstddef>
#include <string_view>
#include <type_traits>

/** A text as a parameter: a string literal, a std::string, a std::string_view or a KxString. It refers to the text,
    which must outlive the call; a KxString is shared, not copied.

    The text of a part of a message cannot contain CR, LF or NUL, which would end the part: line() and needed() check
    this. Null, the empty text and a default-made object mean that there is no text. As an overload beside a function
    that takes const char*, it takes what that one does not. */
class KxSipText {
public:
    constexpr KxSipText() = default;
    constexpr KxSipText(std::nullptr_t) {}
    constexpr KxSipText(const char* text) : m_view(text == nullptr ? std::string_view() : std::string_view(text)) {}
    KxSipText(const KxString& text) : m_view(text.view()), m_shared(&text) {}
    template <class T>
    requires(std::is_class_v<T> && !std::derived_from<T, KxString> && std::convertible_to<const T&, std::string_view> &&
             !std::convertible_to<const T&, const char*>) KxSipText(const T& text)
        : m_view(text) {}

    [[nodiscard]] bool isNone() const { return m_view.empty(); }
    std::string_view view() const { return m_view; }
    /** The text as a string, nil if there is none. Throws KxSipParseError if it contains CR, LF or NUL. */
    [[nodiscard]] KxString line() const {
        check();
        return isNone() ? KxString() : m_shared != nullptr ? *m_shared : KxString(m_view);
    }
    /** As line. Throws KxSipParseError if there is no text, with `what`, such as "From", in the error text. */
    [[nodiscard]] KxString needed(std::string_view what) const {
        if (isNone()) {
            sRaiseMissing(what);
        }
        return line();
    }
    /** As needed if `isNeeded`, else as line. */
    [[nodiscard]] KxString neededIf(bool isNeeded, std::string_view what) const {
        return isNeeded ? needed(what) : line();
    }
    /** The same text, for a function that reads its view. Throws KxSipParseError if it contains CR, LF or NUL. */
    [[nodiscard]] const KxSipText& checked() const {
        check();
        return *this;
    }
    /** Throws KxSipParseError if the text contains CR, LF or NUL. */
    void check() const {
        if (m_view.find_first_of(std::string_view("\r\n\0", 3)) != std::string_view::npos) {
            raiseLineEnd();
        }
    }

    /** Throws KxSipParseError, with `what` in the error text. */
    [[noreturn]] KX_SIP_API static void sRaiseMissing(std::string_view what);

private:
    [[noreturn]] KX_SIP_API static void raiseLineEnd();

    std::string_view m_view;
    const KxString* m_shared = nullptr;
};
