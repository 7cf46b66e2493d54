#pragma once

#include "sipobject/KxSipAnyText.h"
#include "sipobject/messages/KxSipPartText.h"
#include "util/KxHandle.h"

#include <concepts>

/** A part of a message to be built, given as text or as an object: a header, or a URI. Not given by default. An object
    is copied when the message is built, so that it stays the caller's; the text must live until then. */
template <class T>
class KxSipPart {
public:
    KxSipPart() = default;
    template <class Text>
    requires(std::convertible_to<const Text&, KxSipAnyText>) KxSipPart(const Text& text) : m_text(text) {}
    template <class U>
    requires(std::derived_from<U, T>) KxSipPart(const KxHandle<U>& object) : m_object(object) {}

    bool isNone() const { return m_object.isNil() && m_text.isNone(); }
    /** A new object: a copy of the one given, or what the text says; nil if the part is not given. Throws
        KxSipParseError for text with CR, LF or NUL, and for text that is not one value. */
    KxHandle<T> make() const {
        m_text.check();
        if (!m_object.isNil() || m_text.isNone()) {
            return KxCopy(m_object);
        } else if constexpr (std::same_as<T, KxURI>) {
            return KxSipPartText::sURI(m_text.view());
        } else {
            return KxHandleCast<T>(KxSipPartText::sHeader(T::sToken, m_text.view()));
        }
    }
    /** As make. Throws KxSipParseError if the part is not given, with `what` in the error text. */
    KxHandle<T> needed(std::string_view what) const {
        KxHandle<T> made = make();
        if (made.isNil()) {
            KxSipText::sRaiseMissing(what);
        }
        return made;
    }

private:
    KxSipAnyText m_text;
    KxHandle<T> m_object;
};
