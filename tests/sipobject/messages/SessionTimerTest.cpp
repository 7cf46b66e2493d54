#include "sipobject/headers/KxSipMinSEHeader.h"
#include "sipobject/headers/KxSipSessionExpiresHeader.h"
#include "sipobject/messages/KxSipRequest.h"
#include "sipobject/messages/KxSipResponse.h"
#include "tests/sipobject/support/Derivation.h"

#include <algorithm>

namespace {

/** What a host that keeps session timers does with an INVITE: refuses what has come too far or asks for too short an
    interval, else agrees and names who refreshes. [RFC 4028 9] */
std::string answer(const std::string& headers) {
    const auto request = as<KxSipRequest>(
        readMessage("INVITE sip:b@example.com SIP/2.0\r\n" + requiredHeaders("INVITE") + headers + "\r\n"));
    if (request->getStatus() != KX_STATUS_VALID) {
        return "status " + std::to_string(request->getStatus());
    }
    if (request->tooManyHops()) {
        return "483";
    }
    const KxHandle<KxSipSessionExpiresHeader> asked = request->getSessionExpiresHeader();
    const auto minimum = KxHandleCast<KxSipMinSEHeader>(request->getHeaderByID(KxHeaderIDs::kMinSE));
    if (asked.isNil() || !request->isSupported("timer")) {
        return "200 without timer";
    }
    const std::uint32_t shortest = std::max(90U, minimum.isNil() ? 0 : minimum->getDeltaSeconds());
    const bool isShort = asked->getDeltaSeconds() < shortest;
    const KxHandle<KxSipResponse> response = KxMake<KxSipResponse>(isShort ? 422 : 200, request, nullptr, nullptr, 0U);
    if (isShort) {
        response->addHeader(KxMake<KxSipMinSEHeader>(shortest), false);
    } else {
        const auto agreed = KxMake<KxSipSessionExpiresHeader>(*asked);
        if (!agreed->isRefresherUAC() && !agreed->isRefresherUAS()) {
            agreed->setRefresher(KxSipSessionExpiresHeader::sUAS);
        }
        response->addHeader(agreed, false);
    }
    return written(*response);
}

std::string lastLine(const std::string& text) {
    const std::size_t end = text.rfind("\r\n\r\n");
    const std::size_t begin = end == std::string::npos ? 0 : text.rfind('\n', end) + 1;
    return text.substr(begin, end - begin);
}

} // namespace

TEST(SessionTimerTest, AHostAgreesOrRefuses) {
    const std::pair<const char*, const char*> rows[] = {
        {"Supported: timer\r\nSession-Expires: 1800;refresher=UAC\r\n", "Session-Expires: 1800;refresher=UAC"},
        {"Supported: 100rel, timer\r\nx: 1800 ;a=b\r\n", "x: 1800;a=b;refresher=uas"},
        {"Supported: timer\r\nx: 60\r\n", "Min-SE: 90"},
        {"Supported: timer\r\nx: 100\r\nMin-SE: 120;a\r\n", "Min-SE: 120"},
        {"Supported: timer\r\nMax-Forwards: 0\r\nx: 100\r\n", "483"},
        {"x: 1800\r\n", "200 without timer"},
        {"Supported: timer\r\nx: soon\r\n", "status 1"},
        {"Supported: timer\r\nx: 1800\r\nMin-SE: x\r\n", "status 1"},
        {"x: 1800\r\nAccept: text/plain;q=1, application/sdp;level=1\r\nContent-Type: application/sdp\r\n",
         "200 without timer"},
        {"x: 1800\r\nAccept: text/plain, application/*\r\nContent-Type: application/sdp\r\n", "status 2"},
    };
    for (const auto& [headers, expected] : rows) {
        EXPECT_EQ(lastLine(answer(headers)), expected) << headers;
    }
}
