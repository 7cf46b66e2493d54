#include "sipobject/messages/KxSipTokenText.h"

#include "sipobject/KxSipParseError.h"

#include <algorithm>
#include <string>

KxString KxSipTokenText::sChecked(const KxSipText& text, std::string_view what) {
    static constexpr KxCharSet kMarks("-.!%*_+`'~");
    const auto isTokenCharacter = [](char c) {
        return KxAscii::isAlpha(c) || KxAscii::isDigit(c) || kMarks.contains(c);
    };
    KxString token = text.needed(what);
    if (!std::all_of(token.view().begin(), token.view().end(), isTokenCharacter)) {
        KxSipParseError::sThrow(std::string("Not a token: ").append(what));
    }
    return token;
}
