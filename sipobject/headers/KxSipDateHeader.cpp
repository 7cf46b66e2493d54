#include "sipobject/headers/KxSipDateHeader.h"

#include "sipobject/KxSipGrammar.h"
#include "util/KxOutputStream.h"

constinit const KxConstString KxSipDateHeader::sToken{"Date"};

static const KxSipDateHeader::Registration s_registration;

KxSipFault KxSipDateHeader::parseValue(KxSipLine& line) {
    line.skipSpace();
    const std::string_view text = line.until<'\r', '\n'>();
    m_date.constructKxDate(text);
    if (KxSipGrammar::sChecksDates()) {
        char written[64];
        const std::size_t length = m_date.isValid() ? m_date.getKxDate(written, sizeof written) : 0;
        if (!KxAscii::equalsNoCase(KxAscii::trimEnd(text), std::string_view(written, length))) {
            return KxSipFault("Invalid Date header");
        }
    }
    return {};
}

void KxSipDateHeader::serializeValue(KxOutputStream& out) const {
    m_date.getKxDate(out);
}
