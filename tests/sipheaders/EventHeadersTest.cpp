#include "sipheaders/KxSipReferSubHeader.h"
#include "sipheaders/KxSipSIPETagHeader.h"
#include "sipheaders/KxSipSIPIfMatchHeader.h"
#include "sipheaders/KxSipSubscriptionStateHeader.h"
#include "tests/sipobject/support/HeaderSupport.h"

namespace {

constexpr const char* kTextAfterValue = "KxSipParseError: SIP Header parse error : text after the value";

} // namespace

TEST(SubscriptionStateHeaderTest, Reads) {
    expectRows<KxSipSubscriptionStateHeader>(
        [](const KxSipSubscriptionStateHeader& header) {
            return joined(header.getState(), header.isActive(), header.isPending(), header.isTerminated(),
                          header.getReason(), header.getExpires().value_or(99), header.getRetryAfter().value_or(99));
        },
        {
            {"subscription-state: Active ;EXPIRES = 0600", "Active|1|0|0||600|99"},
            {"Subscription-State: terminated;reason=\"no resource\";Retry-After=60;expires=6x",
             "terminated|0|0|1|no resource|99|60"},
            {"Subscription-State: pending;expires=4294967295", "pending|0|1|0||4294967295|99"},
            {"Subscription-State: ;reason=x", "", "KxSipParseError: Invalid Subscription-State header"},
            {"Subscription-State: active, pending", "", kTextAfterValue},
        });
}

TEST(SubscriptionStateHeaderTest, IsBuiltFromItsParts) {
    const auto header = KxMake<KxSipSubscriptionStateHeader>("active");
    header->setExpires(60);
    EXPECT_EQ(linesOf(*header), "Subscription-State: active;expires=60");
    header->setState("terminated");
    header->removeParameter("expires");
    header->setReason("noresource");
    header->setRetryAfter(5);
    EXPECT_EQ(linesOf(*header), "Subscription-State: terminated;reason=noresource;retry-after=5");
    EXPECT_TRUE(header->isReason("NoResource"));
    EXPECT_NE(outcomeOf([&] { header->setState(""); }), "");
}

TEST(EntityTagHeadersTest, ReadAToken) {
    expectRows<KxSipSIPETagHeader, &KxSipSIPETagHeader::getEntityTag>({
        {"SIP-ETag:dx.200_xyz \r\n ", "dx.200_xyz", "SIP-ETag: dx.200_xyz"},
        {"SIP-ETag: a, b", "", kTextAfterValue},
        {"SIP-ETag: \"a\"", "", "KxSipParseError: Invalid SIP-ETag header"},
    });
    expectRows<KxSipSIPIfMatchHeader, &KxSipSIPIfMatchHeader::getEntityTag>({
        {"SIP-If-Match: 12a", "12a"},
        {"SIP-If-Match: 12a, b", "", kTextAfterValue},
    });
    const auto tag = KxMake<KxSipSIPETagHeader>("a");
    tag->setEntityTag("b");
    const auto match = KxMake<KxSipSIPIfMatchHeader>("a");
    match->setEntityTag(tag->getEntityTag());
    EXPECT_EQ(linesOf(*tag) + linesOf(*match), "SIP-ETag: bSIP-If-Match: b");
}

TEST(ReferSubHeaderTest, ReadsAndWritesABoolean) {
    expectRows<KxSipReferSubHeader>(
        [](const KxSipReferSubHeader& header) {
            return joined(header.getValue(), header.isTrue(), header.isFalse(), header.getParameter("x"));
        },
        {
            {"Refer-Sub: FALSE ;x=y", "FALSE|0|1|y"},
            {"Refer-Sub: true", "true|1|0|"},
            {"Refer-Sub: maybe", "maybe|0|0|"},
            {"Refer-Sub: true, false", "", kTextAfterValue},
            {"Refer-Sub: ;x", "", "KxSipParseError: Invalid Refer-Sub header"},
        });
    const auto header = KxMake<KxSipReferSubHeader>(false);
    EXPECT_EQ(linesOf(*header), "Refer-Sub: false");
    header->setValue(true);
    EXPECT_EQ(linesOf(*header), "Refer-Sub: true");
    static_assert(!std::is_constructible_v<KxSipReferSubHeader, const char*>);
}
