#include "sipobject/headers/KxSipUnreadHeader.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/KxSipLine.h"
#include "util/KxOutputStream.h"

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipUnreadHeader"};

} // namespace

KxSipUnreadHeader::KxSipUnreadHeader(const KxSipHeader& meant, std::string_view text)
    : KxSipHeader(meant.getToken(), meant.getHeaderID()), m_text(text), m_name(meant.getExpandedToken()) {}

KxSipUnreadHeader* KxSipUnreadHeader::clone() const {
    return new KxSipUnreadHeader(*this);
}

void KxSipUnreadHeader::doParse(KxInputStream& in) {
    KxSipLine line(in);
    readValue(line).raiseIfAny();
}

KxSipFault KxSipUnreadHeader::readValue(KxSipLine& line) {
    const Oskan::TraceScope trace(s_logger, "KxSipUnreadHeader::doParse");
    line.skipSpace();
    m_text = KxString(KxAscii::trim(line.until<'\r', '\n'>()));
    return {};
}

void KxSipUnreadHeader::doSerialize(KxOutputStream& out) const {
    const Oskan::TraceScope trace(s_logger, "KxSipUnreadHeader::doSerialize");
    out.writeAll(m_text);
}
