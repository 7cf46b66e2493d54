#include "sipobject/headers/KxSipReplacesHeader.h"

#include "sipobject/KxSipGrammar.h"
#include "sipobject/headers/KxSipParameterText.h"
#include "util/KxOutputStream.h"

constinit const KxConstString KxSipReplacesHeader::sToken{"Replaces"};

static const KxSipReplacesHeader::Registration s_registration;

KxSipReplacesHeader::KxSipReplacesHeader(const KxString& callId, const KxString& fromTag, const KxString& toTag)
    : m_callId(callId) {
    setFromTag(fromTag);
    setToTag(toTag);
}

KxSipFault KxSipReplacesHeader::parseValue(KxSipLine& line) {
    m_callId = KxString(KxAscii::trim(line.until<';'>()));
    if (m_callId.empty()) {
        return KxSipFault("SIP Replaces header must contain a callid");
    }
    if (!KxSipGrammar::sReadsParametersStrictly()) {
        line.read();
        m_parameters.write().parse(KxAscii::trim(line.until<'\r', '\n'>()));
    } else if (const KxSipFault fault = KxSipParameterText::sRead(line, m_parameters)) {
        return fault;
    }
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
