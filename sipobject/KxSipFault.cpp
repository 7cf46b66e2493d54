#include "sipobject/KxSipFault.h"

std::string KxSipFault::message() const {
    std::string text(m_text);
    if (has(kAboutCharacter)) {
        text[text.find('?')] = static_cast<char>(m_details / kCharacter);
    }
    if (has(static_cast<std::uint32_t>(Place::RecordRoute))) {
        text.insert(0, "Exception when parsing Name-Address in KxSipRecordRouteHeader: ");
    }
    return text;
}

void KxSipFault::raise() const {
    switch (static_cast<Error>(m_details & kError)) {
    case Error::EmptyHeader:
        KxSipParseErrorEmptyHeader::sThrow(message());
    case Error::Other:
        KxException::sThrow(message());
    default:
        KxSipParseError::sThrow(message());
    }
}
