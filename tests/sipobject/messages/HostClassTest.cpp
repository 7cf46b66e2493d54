#include "tests/sipobject/support/HeaderSupport.h"
#include "util/KxOutputStream.h"

namespace {

/** A request class of the host that does not derive from KxSipRequest. */
class HostRequest final : public KxSipMessage {
public:
    KxObject* clone() const override { return new HostRequest(*this); }
    bool isRequest() const override { return true; }
    using KxSipMessage::checkValidity;

protected:
    void serializeStartLine(KxOutputStream& out) const override { out << "HOST" << endl; }
    void parseStartLine(KxInputStream&) override {}
};

using HostClassDeathTest = DeathTest;

} // namespace

TEST(HostClassTest, MessagesAndHeadersAreAskedForTheirClass) {
    const auto request = KxMake<HostRequest>();
    for (const char* const line :
         {"Via: SIP/2.0/UDP h", "From: <sip:a>", "To: <sip:b>", "CSeq: 7 ANY", "Call-ID: c", "Content-Length: 0"}) {
        request->addHeader(readHeader(line), false);
    }
    EXPECT_EQ(outcomeOf([&] { request->checkValidity(); }), "");
    EXPECT_EQ(request->createKey(), "b5060a5060h0c7");

    KxSipHeader::sAddConstructor("X-Kx-Accept", []() -> KxSipHeader* {
        auto* const header = new KxSipUnknownHeader("X-Kx-Accept", "");
        header->setHeaderID(KxHeaderIDs::kAccept);
        return header;
    });
    const std::string text = "INVITE sip:h SIP/2.0\r\n" + requiredHeaders("INVITE") + "Content-Type: a/b\r\n";
    for (const auto& [accept, status] : {std::pair("", 2), std::pair("Accept: a/b\r\n", 0)}) {
        EXPECT_EQ(readMessage(text + "X-Kx-Accept: a/b\r\n" + accept + "\r\n")->getStatus(), status) << accept;
    }
}

TEST_F(HostClassDeathTest, IdentifiersMustHaveBeenGivenOut) {
    const auto request = KxMake<HostRequest>();
    EXPECT_TRUE(request->getHeaderByID(KxHeaderIDs::kCount - 1).isNil());
    EXPECT_TRUE(request->getHeaderByID(readHeader("X-Kx-Account: a")->getHeaderID()).isNil());
    EXPECT_DEATH(static_cast<void>(request->getHeaderByID(KxHeaderIDs::kLast)), "sIsHeaderID\\(id\\)");
    const KxHandle<KxSipHeader> header = readHeader("X-A: 1");
    header->setHeaderID(KxHeaderIDs::kLast);
    EXPECT_DEATH(request->addHeader(header, false), "sIsHeaderID\\(id\\)");
    const auto takeAll = [&request] {
        HeaderID last = 0;
        const std::string outcome = outcomeOf([&last] {
            for (;;) {
                last = KxSipHeader::sNewHeaderID();
            }
        });
        std::cerr << outcome << ", last " << last << request->getHeaderByID(last).isNil();
        std::exit(0);
    };
    EXPECT_EXIT(takeAll(), testing::ExitedWithCode(0), "KxException: No header identifier is left, last 2551");
}
