#include "sipobject/headers/KxSipReplacesHeader.h"

#include "util/KxOutputStream.h"
#include "util/KxScannedText.h"

constinit const KxConstString KxSipReplacesHeader::sToken{"Replaces"};

static const KxSipReplacesHeader::Registration s_registration;

KxSipReplacesHeader::KxSipReplacesHeader(const KxString& callId, const KxString& fromTag, const KxString& toTag)
    : m_callId(callId) {
    setFromTag(fromTag);
    setToTag(toTag);
}

KxSipFault KxSipReplacesHeader::parseValue(KxInputStream& in) {
    KxScannedText scanned;
    m_callId = KxString(KxAscii::trim(scanned.until<';'>(in)));
    if (m_callId.empty()) {
        return KxSipFault("SIP Replaces header must contain a callid");
    }
    in.read();
    m_parameters.write().parse(KxAscii::trim(scanned.until<'\r', '\n'>(in)));
    if (getToTag().empty()) {
        return KxSipFault("SIP Replaces header must contain a to-tag");
    }
    if (getFromTag().empty()) {
        return KxSipFault("SIP Replaces header must contain a from-tag");
    }
    return {};
}

void KxSipReplacesHeader::serializeValue(KxOutputStream& out) const {
    out << m_callId;
    m_parameters.serializeWithSemicolon(out);
}
