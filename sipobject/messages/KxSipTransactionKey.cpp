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
    text.append(url->getHost().view());
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
        text.append(std::string_view(m_via->getHost()));
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
