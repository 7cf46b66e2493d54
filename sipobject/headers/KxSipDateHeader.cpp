#include "sipobject/headers/KxSipDateHeader.h"

#include "util/KxOutputStream.h"
#include "util/KxScannedText.h"

constinit const KxConstString KxSipDateHeader::sToken{"Date"};

static const KxSipDateHeader::Registration s_registration;

KxSipFault KxSipDateHeader::parseValue(KxInputStream& in) {
    KxScannedText scanned;
    KxScannedText::skipSpace(in);
    m_date.constructKxDate(scanned.until<'\r', '\n'>(in));
    return {};
}

void KxSipDateHeader::serializeValue(KxOutputStream& out) const {
    m_date.getKxDate(out);
}
