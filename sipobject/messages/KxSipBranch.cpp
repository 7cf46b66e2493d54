#include "sipobject/messages/KxSipBranch.h"

#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipCallIdHeader.h"
#include "sipobject/headers/KxSipViaHeader.h"
#include "sipobject/messages/KxSipRequest.h"
#include "util/KxHexEncoding.h"
#include "util/MD5.h"

#include <array>
#include <string>

namespace {

/** The digest of texts, each with its length before it, so that no two lists of texts are hashed alike. */
class Hash {
public:
    void add(std::string_view text) {
        m_sum.update(std::to_string(text.size()));
        m_sum.update(":");
        m_sum.update(text);
    }
    KxString branch() {
        std::string text(KxSipViaHeader::kMagicCookie);
        std::array<char, 2 * sizeof(MD5::Raw)> digits{};
        KxHexEncoding::toHex(m_sum.finish().view(), digits.data());
        return KxString(text.append(digits.data(), digits.size()));
    }

private:
    MD5 m_sum;
};

/** What tells the transactions of a sender that does not follow RFC 3261 apart. */
void addOldKey(Hash& hash, const KxSipRequest& received) {
    if (const auto* const to = received.first<KxSipToHeader>()) {
        hash.add(to->getTag());
    }
    if (const auto* const from = received.first<KxSipFromHeader>()) {
        hash.add(from->getTag());
    }
    if (const auto* const callId = received.first<KxSipCallIdHeader>()) {
        hash.add(callId->getCallId());
    }
    if (const auto* const cseq = received.first<KxSipCSeqHeader>()) {
        hash.add(std::to_string(cseq->getSeqNumber()));
    }
    if (!received.getURI().isNil()) {
        hash.add(received.getURI()->getString());
    }
}

} // namespace

KxString KxSipBranch::sStateless(const KxSipRequest& received) {
    const auto* const via = received.first<KxSipViaHeader>();
    if (via == nullptr) {
        KxSipParseError::sThrow("A request without Via can't be forwarded");
    }
    Hash hash;
    hash.add(via->getHost()); // with the port: two senders may choose the same branch
    hash.add(std::to_string(via->getPort()));
    hash.add(via->getBranch());
    if (!via->getBranch().view().starts_with(KxSipViaHeader::kMagicCookie)) {
        addOldKey(hash, received);
    }
    return hash.branch();
}
