#include "sipobject/headers/KxSipDateHeader.h"

#include "util/KxOutputStream.h"

constinit const KxConstString KxSipDateHeader::sToken{"Date"};

static const KxSipDateHeader::Registration s_registration;

KxSipFault KxSipDateHeader::parseValue(KxSipLine& line) {
    line.skipSpace();
    m_date.constructKxDate(line.until<'\r', '\n'>());
    return {};
}

void KxSipDateHeader::serializeValue(KxOutputStream& out) const {
    m_date.getKxDate(out);
}
