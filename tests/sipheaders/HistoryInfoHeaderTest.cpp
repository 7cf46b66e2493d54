#include "sipheaders/KxSipHistoryInfoHeader.h"
#include "tests/sipobject/support/HeaderSupport.h"

namespace {

std::string reasonsOf(const KxSipHistoryInfoHeader& header) {
    const KxHandle<KxSipReasonHeader> reason = header.getReason();
    return reason.isNil() ? "none" : linesOf(*reason);
}

KxHandle<KxSipHistoryInfoHeader> sipEntry() {
    return KxSipHistoryInfoHeader::sRead("<sip:a@h>;index=1");
}

} // namespace

TEST(HistoryInfoHeaderTest, ReadsTheIndexAndWhereTheTargetCameFrom) {
    expectRows<KxSipHistoryInfoHeader>(
        [](const KxSipHistoryInfoHeader& header) {
            std::string numbers;
            for (const std::uint32_t number : header.getIndexNumbers()) {
                numbers += "/" + std::to_string(number);
            }
            return joined(numbers, header.getChildIndex(2), header.getSiblingIndex(), header.getHiTargetParam(),
                          header.getHiTargetIndex());
        },
        {
            {"History-Info: <sip:a>;index=1 ;x, <sip:b>;Index=1.09 ;MP=1;rc=2,<sip:c>;np=1.1;index=1.4294967295.0",
             "/1|1.2|2|| & /1/9|1.09.2|1.10|MP|1 & /1/4294967295/0|1.4294967295.0.2|1.4294967295.1|np|1.1",
             "History-Info: <sip:a>;index=1 ;x & History-Info: <sip:b>;Index=1.09 ;MP=1;rc=2 & "
             "History-Info: <sip:c>;np=1.1;index=1.4294967295.0"},
            {"History-Info: <sip:a>;index=1.4294967295", "/1/4294967295|1.4294967295.2|||"},
            {"History-Info: <sip:a>, <sip:b>;index=1..2, <sip:c>;index=1., <sip:d>;index=4294967296, <sip:e>;index=-1",
             "|||| & |||| & |||| & |||| & ||||",
             "History-Info: <sip:a> & History-Info: <sip:b>;index=1..2 & History-Info: <sip:c>;index=1. & "
             "History-Info: <sip:d>;index=4294967296 & History-Info: <sip:e>;index=-1"},
        });
}

TEST(HistoryInfoHeaderTest, ReadsTheHeadersOfTheURL) {
    expectRows<KxSipHistoryInfoHeader>(
        [](const KxSipHistoryInfoHeader& header) {
            const KxHandle<KxSipReasonHeader> reason = header.getReason();
            return joined(reasonsOf(header), reason.isNil() ? 0 : reason->getCause().value_or(99), header.getPrivacy(),
                          header.isPrivate());
        },
        {
            {"History-Info: <sip:a?%52eason=SIP%3bcause%3D302%3Btext%3D%22a%2Cb%22&privacy=id%3B%20History>;index=1",
             "Reason: SIP;cause=302;text=\"a,b\"|302|id; History|1"},
            {"History-Info: <sip:a?Reason=SIP%3Bcause%3D486&Privacy=nohistory&Reason=Q.850%3Bcause%3D17>",
             "Reason: SIP;cause=486 & Reason: Q.850;cause=17|486|nohistory|0"},
            {"History-Info: <sip:a?Reason=%3B&Privacy=history%0D%0A>, <sip:b?Reason=>, "
             "<sip:c?Reason=SIP%0D%0AVia:%20x>, <tel:+1>, <sip:d?Reason=SIP%00>",
             "none|0|history\r\n|1 & none|0||0 & none|0||0 & none|0||0 & none|0||0",
             "History-Info: <sip:a?Reason=%3B&Privacy=history%0D%0A> & History-Info: <sip:b?Reason=> & "
             "History-Info: <sip:c?Reason=SIP%0D%0AVia:%20x> & History-Info: <tel:+1> & "
             "History-Info: <sip:d?Reason=SIP%00>"},
        });
}

TEST(HistoryInfoHeaderTest, IsBuiltFromItsParts) {
    const auto entry = KxMake<KxSipHistoryInfoHeader>(KxMake<KxSipURL>("sip:a@h?x=y"), "1.2");
    entry->setReason(*KxMake<KxSipReasonHeader>("SIP", 302U));
    entry->setPrivacy("history");
    entry->setHiTargetParam("rc", "1.1");
    EXPECT_EQ(linesOf(*entry), "History-Info: <sip:a@h?x=y&Reason=SIP%3Bcause%3D302&Privacy=history>;index=1.2;rc=1.1");
    entry->setPrivacy({});
    entry->setIndex("2");
    entry->setHiTargetParam("np", "1");
    entry->removeReason();
    EXPECT_EQ(linesOf(*entry), "History-Info: <sip:a@h?x=y>;index=2;np=1");
    entry->removeHiTargetParam();
    EXPECT_EQ(linesOf(*entry), "History-Info: <sip:a@h?x=y>;index=2");
}

TEST(HistoryInfoHeaderTest, ReasonsAreReplacedAndReadBack) {
    const auto entry = KxSipHistoryInfoHeader::sRead("<sip:a@h?%52eason=SIP&Subject=s&reason=Q.850>;index=1");
    const auto reasons = readHeader("Reason: SIP ;text=\"50%25, \303\251&?\", Q.850;cause=16");
    entry->setReason(*KxHandleCast<KxSipReasonHeader>(reasons));
    EXPECT_EQ(linesOf(*entry), "History-Info: <sip:a@h?Subject=s&Reason=SIP%20%3Btext%3D%2250%2525%2C%20%C3%A9%26%3F%22"
                               "%2CQ.850%3Bcause%3D16>;index=1");
    EXPECT_EQ(reasonsOf(*entry), "Reason: SIP ;text=\"50%25, \303\251&?\" & Reason: Q.850;cause=16");
}

TEST(HistoryInfoHeaderTest, RefusesWhatCannotBeWritten) {
    const auto failure = [](auto change) { return outcomeOf([&] { change(*sipEntry()); }); };
    using Entry = KxSipHistoryInfoHeader;
    for (const char* const index : {"", "1.", ".1", "1..2", "x", "1 "}) {
        EXPECT_EQ(failure([index](Entry& entry) { entry.setIndex(index); }),
                  "KxSipParseError: Invalid History-Info index");
    }
    EXPECT_EQ(failure([](Entry& entry) { entry.setHiTargetParam("xp", "1"); }),
              "KxSipParseError: Invalid History-Info target parameter");
    EXPECT_NE(failure([](Entry& entry) { entry.setPrivacy("history\r\n"); }), "");
    const auto tel = KxSipHistoryInfoHeader::sRead("<tel:+1>;index=1");
    EXPECT_EQ(outcomeOf([&] { tel->setPrivacy("history"); }), "KxSipParseError: A header of a URL needs a SIP URL");
}
