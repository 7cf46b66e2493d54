#include "sipobject/headers/KxSipUnknownHeader.h"

#include "core/TraceScope.h"
#include "util/KxOutputStream.h"
#include "util/KxScannedText.h"

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipUnknownHeader"};

} // namespace

KxSipUnknownHeader::KxSipUnknownHeader(const char* name, const char* value)
    : KxSipUnknownHeader(KxString(name == nullptr ? "" : name), KxString(value == nullptr ? "" : value)) {}

KxSipUnknownHeader::KxSipUnknownHeader(const KxString& name, const KxString& value)
    : KxSipHeader(name, KxHeaderIDs::kUnknown), m_value(value), m_name(name) {}

KxSipUnknownHeader* KxSipUnknownHeader::clone() const {
    return new KxSipUnknownHeader(*this);
}

void KxSipUnknownHeader::doParse(KxInputStream& in) {
    const Oskan::TraceScope trace(s_logger, "KxSipUnknownHeader::doParse");
    KxScannedText::skipSpace(in);
    KxScannedText scanned;
    m_value = KxString(scanned.until<'\r', '\n'>(in));
}

void KxSipUnknownHeader::doSerialize(KxOutputStream& out) const {
    const Oskan::TraceScope trace(s_logger, "KxSipUnknownHeader::doSerialize");
    out << m_value;
}
