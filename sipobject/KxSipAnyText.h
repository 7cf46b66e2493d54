#pragma once

#include "sipobject/KxSipStdText.h"

/** A KxSipText that is also made from objects that convert to const char*, such as KxSipCallid. For functions with
    several texts: each may then be of another type. */
class KxSipAnyText : public KxSipText {
public:
    constexpr KxSipAnyText() = default;
    KxSipAnyText(const KxSipText& text) : KxSipText(text) {}
    template <class T>
    requires(std::convertible_to<const T&, KxSipText> && !std::derived_from<T, KxSipText>) KxSipAnyText(const T& text)
        : KxSipText(text) {}
    template <class T>
    requires(std::is_class_v<T> && !std::derived_from<T, KxString> && !std::derived_from<T, KxSipText> &&
             !std::convertible_to<const T&, std::string_view> && std::convertible_to<const T&, const char*>)
        KxSipAnyText(const T& text)
        : KxSipText(static_cast<const char*>(text)) {}
};

/** Texts of which at least one is not taken by a parameter of type KxString. A template so constrained is no rival of a
    function that takes several strings. */
template <class... T>
concept KxSipHasStdText = (std::convertible_to<const T&, KxSipStdText> || ...) &&
                          (std::convertible_to<const T&, KxSipAnyText> && ...);
