#pragma once

#include "sipobject/KxSipText.h"

/** A KxSipText made from a std::string, a std::string_view, or an object that converts to const char*, such as
    KxSipCallid, but from no const char* and no KxString. As an overload beside a function that takes a KxString, it
    takes what that one does not. */
class KxSipStdText : public KxSipText {
public:
    template <class T>
    requires(std::is_class_v<T> && !std::derived_from<T, KxString> && !std::derived_from<T, KxSipText> &&
             std::convertible_to<const T&, std::string_view>) KxSipStdText(const T& text)
        : KxSipText(std::string_view(text)) {}
    template <class T>
    requires(std::is_class_v<T> && !std::convertible_to<const T&, std::string_view> &&
             std::convertible_to<const T&, const char*>) KxSipStdText(const T& text)
        : KxSipText(static_cast<const char*>(text)) {}
};
