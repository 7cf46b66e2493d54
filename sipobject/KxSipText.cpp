#include "sipobject/KxSipText.h"

#include "sipobject/KxSipParseError.h"

#include <string>

void KxSipText::sRaiseMissing(std::string_view what) {
    KxSipParseError::sThrow(std::string("Text is missing: ").append(what));
}

void KxSipText::raiseLineEnd() {
    KxSipParseError::sThrow("Text contains CR, LF or NUL");
}
