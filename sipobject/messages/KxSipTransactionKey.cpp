#include "sipobject/messages/KxSipTransactionKey.h"

#include "core/FastString.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipCallIdHeader.h"
#include "sipobject/headers/KxSipFromHeader.h"
#include "sipobject/headers/KxSipToHeader.h"
#include "sipobject/headers/KxSipViaHeader.h"
#include "sipobject/messages/KxSipHeaderSlots.h"

#include <charconv>

namespace {

constexpr std::size_t kRoom = 96; // the initial capacity of the key's text
using Text = Oskan::FastString<2 * kRoom>;

void append(Text& text, std::uint32_t number) {
    char digits[10];
    text.append(std::string_view(digits, std::to_chars(std::begin(digits), std::end(digits), number).ptr));
}

/** Brackets part an IPv6 address from the port. */
void appendHost(Text& text, std::string_view host, bool isIPv6) {
    if (isIPv6) {
        text.append("[", 1);
    }
    text.append(host);
    if (isIPv6) {
        text.append("]", 1);
    }
}

void append(Text& text, const KxSipNameAddress* address) {
    if (address == nullptr || address->getURI().isNil()) {
        return;
    }
    const KxURI& uri = *address->getURI();
    const auto* const url = dynamic_cast<const KxSipURL*>(&uri);
    if (url == nullptr) {
        text.append(uri.getString().view());
        return;
    }
    text.append(url->getUser().view());
    appendHost(text, url->getHost(), url->isHostIPv6());
    append(text, url->getPort());
}

} // namespace

KxSipTransactionKey::KxSipTransactionKey(const KxSipHeaderSlots& headers)
    : m_to(headers.typed<KxSipToHeader>()),
      m_from(headers.typed<KxSipFromHeader>()),
      m_via(headers.typed<KxSipViaHeader>()),
      m_callId(headers.typed<KxSipCallIdHeader>()),
      m_cseq(headers.typed<KxSipCSeqHeader>()) {}

KxString KxSipTransactionKey::text() const {
    Text text;
    if (!m_to.isNil()) {
        append(text, m_to->getNameAddress().get());
    }
    if (!m_from.isNil()) {
        append(text, m_from->getNameAddress().get());
        text.append(m_from->getTag().view());
    }
    if (!m_via.isNil()) {
        appendHost(text, m_via->getHost(), m_via->isHostIPv6());
        append(text, m_via->isPortPresent() ? m_via->getPort() : 0U);
        text.append(m_via->getBranch().view());
    }
    if (!m_callId.isNil()) {
        text.append(m_callId->getCallId().view());
    }
    if (!m_cseq.isNil()) {
        append(text, m_cseq->getSeqNumber());
    }
    return KxString(KxStringBuffer::sCreate(text.data(), text.length(), kRoom));
}
