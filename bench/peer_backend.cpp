// This library as a backend of the comparison of SIP libraries. Every header is typed when it is read, so parse and
// parse-lazy are the same. The bytes are not kept, so a message cannot be written from cached bytes. With KX_BENCH_RFC
// it is "kx-rfc", which reads by the RFC grammar. Compiled by the comparison's own script, not by this build; see
// scripts/bench.
#include "bench.h"

#include "bench/DigestExample.h"
#include "sipobject/KxSipGrammar.h"
#include "sipobject/address/KxSipURL.h"
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
#include "util/KxOutputStream.h"

#include <string_view>

namespace {

constexpr std::size_t kFirstBuffer = 4096;

/** Writes into the caller's buffer, and fails if it is too small. */
class BufferStream final : public KxOutputStream {
public:
    BufferStream(char* buffer, std::size_t size) : m_begin(buffer) { setWindow(buffer, buffer + size); }
    std::size_t size() const { return m_full ? 0 : static_cast<std::size_t>(cursor() - m_begin); }

protected:
    void writeBeyondWindow(const char*, std::size_t) override { m_full = true; }

private:
    const char* const m_begin;
    bool m_full = false;
};

int count(const KxSipMessage& message, HeaderID id) {
    int n = 0;
    for (const KxSipHeader* h = message.getHeaderByID(id).get(); h != nullptr; h = h->getNext().get()) {
        ++n;
    }
    return n;
}

class Kx : public Backend {
public:
#ifdef KX_BENCH_RFC
    Kx() {
        KxSipGrammar::sChoose(KxSipGrammar::Choice::RFC);
    }
    const char* name() const override {
        return "kx-rfc";
    }
#else
    const char* name() const override {
        return "kx";
    }
#endif
    unsigned caps() const override {
        unsigned can = kSerialise | kSerialiseInto | kRespond | kRespondBytes;
#ifdef KX_BENCH_HAS_DIGEST
        can |= kDigest;
#endif
        return can;
    }

    void* parse(const char* data, std::size_t length, bool) override {
        try {
            KxByteArrayInputStream in(std::string_view(data, length));
            KxHandle<KxSipMessage> message = KxSipMessage::sConstructFrom(in);
            return message->isValid() ? message.detach() : nullptr;
        } catch (const KxHandle<KxException>&) {
            return nullptr;
        }
    }
    void release(void* message) override {
        static_cast<KxSipMessage*>(message)->Release(true);
    }

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
        return write(sMessage(message), keep);
    }
    std::size_t serialise_into(void* message, char* buffer, std::size_t size) override {
        BufferStream out(buffer, size);
        sMessage(message).serialize(out);
        return out.size();
    }

    std::size_t respond(void* message) override {
        return makeResponse(message)->getStatusCode();
    }
    std::size_t respond_bytes(void* message, std::string* keep) override {
        return write(*makeResponse(message), keep);
    }

    unsigned parse_uri(const char* uri, std::size_t) override {
        try {
            const KxHandle<KxSipURL> url = KxMake<KxSipURL>(uri);
            return url->getPort();
        } catch (const KxHandle<KxException>&) {
            return 0;
        }
    }

#ifdef KX_BENCH_HAS_DIGEST
    bool digest(char out[33]) override {
        m_digest.respond(out);
        return true;
    }
#endif

private:
    static const KxSipMessage& sMessage(void* message) {
        return *static_cast<const KxSipMessage*>(message);
    }

    static std::size_t write(const KxSipMessage& message, std::string* keep) {
        KxByteArrayOutputStream out(kFirstBuffer);
        message.serialize(out);
        if (keep != nullptr) {
            keep->assign(out.view());
        }
        return out.size();
    }

    static KxHandle<KxSipResponse> makeResponse(void* message) {
        const KxHandle<KxSipRequest> request(static_cast<KxSipRequest*>(static_cast<KxSipMessage*>(message)));
        KxHandle<KxSipResponse> response = KxMake<KxSipResponse>(200, request, nullptr, nullptr, 0U);
        const KxHandle<KxSipToHeader> to = response->getToHeader();
        if (!to->isTagPresent()) {
            to->setTag("5f3e9a1c");
        }
        return response;
    }

#ifdef KX_BENCH_HAS_DIGEST
    const DigestExample m_digest;
#endif
};

} // namespace

Backend* make_backend() {
    return new Kx;
}
