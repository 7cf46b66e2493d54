// This library as a backend of the comparison of SIP libraries: every header is typed when it is read, so parse and
// parse-lazy are one. The digest is computed of credentials that are ready. Compiled by the comparison's own script, not by this build; see scripts/bench.
#include "bench.h"

#include "sipobject/address/KxSipURL.h"
#include "sipobject/auth/KxSipDigestCredentialsInfo.h"
#include "sipobject/headers/KxSipCSeqHeader.h"
#include "sipobject/headers/KxSipCallIdHeader.h"
#include "sipobject/headers/KxSipFromHeader.h"
#include "sipobject/headers/KxSipRecordRouteHeader.h"
#include "sipobject/headers/KxSipRouteHeader.h"
#include "sipobject/headers/KxSipToHeader.h"
#include "sipobject/headers/KxSipViaHeader.h"
#include "sipobject/messages/KxSipRequest.h"
#include "sipobject/messages/KxSipResponse.h"
#include "util/KxByteArrayInputStream.h"
#include "util/KxByteArrayOutputStream.h"
#include "util/KxException.h"
#include "util/KxHexEncoding.h"

#include <string>
#include <string_view>

namespace {

constexpr std::size_t kFirstBuffer = 4096;

int count(const KxSipMessage& message, HeaderID id) {
    int n = 0;
    for (const KxSipHeader* h = message.getHeaderByID(id).get(); h != nullptr; h = h->getNext().get()) {
        ++n;
    }
    return n;
}

class Kx : public Backend {
public:
    const char* name() const override { return "kx"; }
    unsigned caps() const override { return kSerialise | kDigest; }

    void* parse(const char* data, std::size_t length, bool) override {
        try {
            KxByteArrayInputStream in(std::string_view(data, length));
            KxHandle<KxSipMessage> message = KxSipMessage::sConstructFrom(in);
            return message->isValid() ? message.detach() : nullptr;
        } catch (const KxHandle<KxException>&) {
            return nullptr;
        }
    }
    void release(void* message) override { static_cast<KxSipMessage*>(message)->Release(true); }

    bool summary(void* parsed, Summary& out) override {
        const auto& message = *static_cast<KxSipMessage*>(parsed);
        const auto cseq = message.getCSeqHeader();
        const auto callId = message.getCallIdHeader();
        const auto from = message.getFromHeader();
        const auto to = message.getToHeader();
        const auto via = message.getViaHeader();
        if (cseq.isNil() || callId.isNil() || from.isNil() || to.isNil() || via.isNil()) {
            return false;
        }
        out.request = message.isRequest();
        out.method = cseq->getMethod().view();
        if (out.request) {
            const auto& request = static_cast<const KxSipRequest&>(message);
            out.method = request.getMethod();
            const auto url = KxHandleCast<KxSipURL>(request.getURI());
            out.ruri_host = url.isNil() ? "" : url->getHost().view();
        } else {
            out.status = static_cast<int>(static_cast<const KxSipResponse&>(message).getStatusCode());
        }
        out.cseq = cseq->getSeqNumber();
        out.call_id = callId->getCallId().view();
        out.branch = via->getBranch().view();
        out.from_tag = from->getTag().view();
        out.to_tag = to->getTag().view();
        out.vias = count(message, KxSipViaHeader::kHeaderID);
        out.routes = count(message, KxSipRouteHeader::kHeaderID);
        out.record_routes = count(message, KxSipRecordRouteHeader::kHeaderID);
        out.body_len = message.getStoredBodyLength();
        return true;
    }

    std::size_t serialise(void* message, std::string* keep) override {
        KxByteArrayOutputStream out(kFirstBuffer);
        static_cast<KxSipMessage*>(message)->serialize(out);
        if (keep != nullptr) {
            keep->assign(out.view());
        }
        return out.size();
    }

    unsigned parse_uri(const char* uri, std::size_t) override {
        try {
            const KxHandle<KxSipURL> url = KxMake<KxSipURL>(uri);
            return url->getPort();
        } catch (const KxHandle<KxException>&) {
            return 0;
        }
    }

    bool digest(char out[33]) override {
        const KxHandle<KxByteArray> digest = m_credentials->getRequestDigest();
        *KxHexEncoding::toHex(digest->view(), out) = '\0';
        return true;
    }

private:
    static KxHandle<KxSipDigestCredentialsInfo> makeCredentials() {
        const KxHandle<KxSipDigestChallengeInfo> challenge = KxMake<KxSipDigestChallengeInfo>(DigestInput::realm);
        challenge->setProperty("nonce", DigestInput::nonce);
        challenge->setProperty("algorithm", "MD5");
        challenge->setQopOptions("auth");
        KxHandle<KxSipDigestCredentialsInfo> credentials =
            KxMake<KxSipDigestCredentialsInfo>(challenge, DigestInput::user, DigestInput::password);
        credentials->setMethod(DigestInput::method);
        credentials->setQop("auth", DigestInput::cnonce, 1);
        const std::string uri = std::string("uri=\"") + DigestInput::uri + '"'; // the example's is no whole URI
        KxByteArrayInputStream in{std::string_view(uri)};
        credentials->parse(in);
        return credentials;
    }

    const KxHandle<KxSipDigestCredentialsInfo> m_credentials = makeCredentials();
};

} // namespace

Backend* make_backend() {
    return new Kx;
}
