#include "sipobject/KxSipCSeq.h"
#include "sipobject/KxSipCallid.h"
#include "sipobject/KxSipTag.h"
#include "tests/sipobject/support/HeaderSupport.h"
#include "util/KxInetAddress.h"

#include <regex>

TEST(DialogHeaderTest, CSeq) {
    constexpr const char* kInvalid = "KxSipParseError: Invalid CSeq header";
    expectRows<KxSipCSeqHeader, &KxSipCSeqHeader::getSeqNumber, &KxSipCSeqHeader::getMethod>({
        {"CSeq: 1 invite;x", "1|invite", "CSeq: 1 invite"},
        {"CSeq: 007BYE", "7|BYE", "CSeq: 7 BYE"},
        {"CSeq: BYE", "0|BYE", "CSeq: 0 BYE"},
        {"CSeq: 1 A, 2 B", "1|A & 2|B", "CSeq: 1 A & CSeq: 2 B"},
        {"CSeq: 4711 ;x", "", kInvalid},
        {"CSeq: 1, 2 B", "", kInvalid},
    });
}

TEST(DialogHeaderTest, CallId) {
    expectRows<KxSipCallIdHeader, &KxSipCallIdHeader::getCallId>({
        {"Call-ID: a84b4c76e66710@h", "a84b4c76e66710@h"},
        {"i:a,b;\"c d\"", "a,b;\"c", "i: a,b;\"c"},
        {"Call-ID: a84b4c76e66710, x", "a84b4c76e66710,", "Call-ID: a84b4c76e66710,"},
        // a comma after white space separates values
        {"CALL-ID: a ,\tb", "a & b", "CALL-ID: a & Call-ID: b"},
        {"i: \v", "", "KxSipParseErrorEmptyHeader: SIP Header parse error : nothing after the colon"},
    });
}

TEST(DialogHeaderTest, ReliableProvisionalResponses) {
    expectRows<KxSipRAckHeader, &KxSipRAckHeader::getResponseNumber, &KxSipRAckHeader::getSeqNumber,
               &KxSipRAckHeader::getMethod>({
        {"RAck:  776\t1  INVITE (x)", "776|1|INVITE", "RAck: 776 1 INVITE"},
        {"RAck: 99999999999 1 X", "4294967295|1|X", "RAck: 4294967295 1 X"},
    });
    expectRows<KxSipRSeqHeader, &KxSipRSeqHeader::getResponseNumber>({
        {"RSeq: 988 x", "988", "RSeq: 988"},
        {"RSeq: x, 2", "0 & 2", "RSeq: 0 & RSeq: 2"},
    });
}

TEST(DialogHeaderTest, Replaces) {
    constexpr const char* kNoToTag = "KxSipParseError: SIP Replaces header must contain a to-tag";
    expectRows<KxSipReplacesHeader, &KxSipReplacesHeader::getCallID, &KxSipReplacesHeader::getToTag,
               &KxSipReplacesHeader::getFromTag>({
        {"Replaces: abc123;to-tag=1;from-tag=2;early-only", "abc123|1|2"},
        {"Replaces: a@h, b ; FROM-TAG = \"2;3\" ;;To-Tag=1,x", "a@h, b|1,x|\"2;3\"",
         "Replaces: a@h, b;FROM-TAG=\"2;3\";To-Tag=1,x"},
        {"Replaces: abc123;to-tag=1;from-tag", "", "KxSipParseError: SIP Replaces header must contain a from-tag"},
        {"Replaces: abc123;to-tag=1;from-tag=2;to-tag", "", kNoToTag},
        {"Replaces: ;to-tag=1;from-tag=2", "", "KxSipParseError: SIP Replaces header must contain a callid"},
    });
    const auto header = KxMake<KxSipReplacesHeader>("X", "F", "T");
    header->setToTag(KxString("U"));
    EXPECT_EQ(linesOf(*header), "Replaces: X;from-tag=F;to-tag=U");
}

TEST(DialogGeneratorTest, NumbersCallIdsAndTags) {
    for (int i = 0; i < 1000; ++i) {
        EXPECT_LT(KxSipCSeq(), 0xFFFFFFU);
    }
    EXPECT_EQ(KxSipCSeq(0xFFFFFFFFU), 0xFFFFFFFFU);
    const std::string host(KxInetAddress::sGetLocalHostName().view());
    const KxSipCallid here;
    EXPECT_EQ(std::string(here.getValue()).substr(36), "@" + host);
    EXPECT_EQ(std::string(KxSipCallid("").getValue()).substr(36), "@");
    const std::string longHost(1000, 'h');
    const KxSipCallid there(longHost.c_str());
    EXPECT_EQ(std::string(there).substr(36), "@" + longHost);
    EXPECT_STREQ(KxSipCallid(there).getValue(), there.getValue());

    const std::regex bare("[0-9a-f]{1,8}-[0-9a-f]{1,8}");
    EXPECT_TRUE(std::regex_match(KxSipTag(nullptr).getValue(), bare));
    const std::string tag(KxSipTag("gw-7").getValue());
    EXPECT_TRUE(tag.find("gw-7-") == 0 && std::regex_match(tag.substr(5), bare)) << tag;
    EXPECT_EQ(std::string(KxSipTag(longHost.c_str())).find(longHost + "-"), 0U);
}

TEST(DialogGeneratorThreadTest, AMillionOfEachFromTwoThreadsAndNoneTwice) {
    constexpr std::size_t kEach = 500'000 / kShrink;
    using Hashes = std::vector<std::size_t>; // of 64 bits, so that a collision is improbable
    const auto generate = [](Hashes& callIds, Hashes& tags, Hashes& branches) {
        const std::hash<std::string_view> hash;
        const auto via = KxMake<KxSipViaHeader>("h", 5060U, "UDP");
        for (std::size_t i = 0; i < kEach; ++i) {
            callIds.push_back(hash(KxSipCallid().getValue()));
            tags.push_back(hash(KxSipTag(nullptr).getValue()));
            via->setBranchRFC3261();
            branches.push_back(hash(via->getBranch()));
        }
    };
    Hashes made[2][3];
    std::thread other(generate, std::ref(made[0][0]), std::ref(made[0][1]), std::ref(made[0][2]));
    generate(made[1][0], made[1][1], made[1][2]);
    other.join();
    for (std::size_t kind = 0; kind < 3; ++kind) {
        Hashes all = made[0][kind];
        all.insert(all.end(), made[1][kind].begin(), made[1][kind].end());
        std::sort(all.begin(), all.end());
        EXPECT_EQ(std::adjacent_find(all.begin(), all.end()), all.end()) << kind;
    }
}
