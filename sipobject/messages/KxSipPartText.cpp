#include "sipobject/messages/KxSipPartText.h"

#include "sipobject/KxSipLine.h"
#include "sipobject/KxSipParseError.h"

#include <string>

KxHandle<KxURI> KxSipPartText::sURI(std::string_view text) {
    text = KxAscii::trim(text);
    if (text.find_first_of(" \t") != std::string_view::npos) {
        KxSipParseError::sThrow(std::string("Blank in the URI: ").append(text));
    }
    KxSipLine line(text);
    KxHandle<KxURI> uri;
    KxURI::sConstructFrom(line, true, uri).raiseIfAny();
    if (!KxAscii::trim(line.window()).empty()) {
        KxSipParseError::sThrow(std::string("Text after the URI: ").append(line.window()));
    }
    return uri;
}

KxHandle<KxSipHeader> KxSipPartText::sHeader(const KxString& name, std::string_view text) {
    KxHandle<KxSipHeader> header = KxSipHeader::sConstructFrom(name.view(), text);
    if (!header->getNext().isNil()) {
        KxSipParseError::sThrow(std::string("More than one value: ").append(name.view()));
    }
    return header;
}
