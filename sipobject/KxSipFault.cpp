#include "sipobject/KxSipFault.h"

std::string KxSipFault::message() const {
    std::string text(m_text);
    if (m_isAbout) {
        text[text.find('?')] = m_character;
    }
    if (m_place == Place::RecordRoute) {
        text.insert(0, "Exception when parsing Name-Address in KxSipRecordRouteHeader: ");
    }
    return text;
}

void KxSipFault::raise() const {
    switch (m_error) {
    case Error::EmptyHeader:
        KxSipParseErrorEmptyHeader::sThrow(message());
    case Error::Other:
        KxException::sThrow(message());
    default:
        KxSipParseError::sThrow(message());
    }
}
