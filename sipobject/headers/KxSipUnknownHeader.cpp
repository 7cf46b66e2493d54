#include "sipobject/headers/KxSipUnknownHeader.h"

#include "core/TraceScope.h"
#include "sipobject/KxSipLine.h"
#include "util/KxOutputStream.h"

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
    KxSipLine line(in);
    readValue(line).raiseIfAny();
}

KxSipFault KxSipUnknownHeader::readValue(KxSipLine& line) {
    const Oskan::TraceScope trace(s_logger, "KxSipUnknownHeader::doParse");
    line.skipSpace();
    m_value = KxString(line.untilBreak());
    return {};
}

void KxSipUnknownHeader::doSerialize(KxOutputStream& out) const {
    if (s_logger.isEnabled(Oskan::LogLevel::Trace)) [[unlikely]] {
        const Oskan::TraceScope trace(s_logger, "KxSipUnknownHeader::doSerialize");
        out << m_value;
    } else {
        out.writeAll(m_value);
    }
}
