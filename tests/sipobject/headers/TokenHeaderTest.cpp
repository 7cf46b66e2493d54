#include "tests/sipobject/support/HeaderSupport.h"

constexpr const char* kEmpty = "KxSipParseErrorEmptyHeader: SIP Header parse error : nothing after the colon";

TEST(TokenHeaderTest, TokensEndAtSeparatorsAndMustNotBeEmpty) {
    constexpr const char* kNoMethod = "KxSipParseError: Empty method in Allow header";
    expectRows<KxSipAllowHeader, &KxSipAllowHeader::getMethod>({
        {"allow:INVITE;x=\"1\" (c)", "INVITE", "allow: INVITE"},
        {"Allow: A\"b,c\" d", "A & c", "Allow: A & Allow: c"},
        {"Allow: \v\xe4\f", "\xe4", "Allow: \xe4"},
        {"Allow: ;x", "", kNoMethod},
        {"Allow: A, ,B", "", kNoMethod},
        {"Allow: A,", "", kEmpty},
    });
    expectRows<KxSipAllowEventsHeader, &KxSipAllowEventsHeader::getEvent>({
        {"Allow-Events: presence.winfo;q, dialog", "presence.winfo & dialog",
         "Allow-Events: presence.winfo & Allow-Events: dialog"},
        {"Allow-Events: ;x", "", "KxSipParseError: Empty event-type in Allow-Events header"},
    });
    expectRows<KxSipContentEncodingHeader, &KxSipContentEncodingHeader::getContentEncoding>({
        {"e: gzip, br\f", "gzip & br\f", "e: gzip & Content-Encoding: br\f"},
        {"e: gzip, {}", "", "KxSipParseError: Invalid Content-Encoding header"},
    });
}

TEST(TokenHeaderTest, OptionTagsEndAtBlanksAndCommasAndMayBeEmpty) {
    expectRows<KxSipSupportedHeader, &KxSipSupportedHeader::getOptionTag>({
        {"Supported: ,timer", " & timer", "Supported:  & Supported: timer",
         std::string(kEmpty) + " & Supported: timer"},
        {"Supported: \"a,b\" c\t,d", "\"a & b\" & d", "Supported: \"a & Supported: b\" & Supported: d"},
        {"k: a, , b,", "", kEmpty},
    });
    expectRows<KxSipRequireHeader, &KxSipRequireHeader::getOptionTag>(
        {{"Require: a;b c,\fd\v", "a;b & d\v", "Require: a;b & Require: d\v"}});
    expectRows<KxSipProxyRequireHeader, &KxSipProxyRequireHeader::getOptionTag>({{"Proxy-Require: <a>:/?", "<a>:/?"}});
    expectRows<KxSipUnsupportedHeader, &KxSipUnsupportedHeader::getOptionTag>({{"Unsupported: a=(b)", "a=(b)"}});
}

TEST(TokenHeaderTest, CallIdsAndPriorities) {
    expectRows<KxSipInReplyToHeader, &KxSipInReplyToHeader::getCallId>({
        {"In-Reply-To: 70710@h, <1;7=\\>@[::1] x", "70710@h & <1;7=\\>@[::1]",
         "In-Reply-To: 70710@h & In-Reply-To: <1;7=\\>@[::1]"},
        {"In-Reply-To: ,a", "", "KxSipParseError: Invalid In-Reply-To header"},
    });
    expectRows<KxSipPriorityHeader, &KxSipPriorityHeader::getPriority, &KxSipPriorityHeader::getText>({
        {"Priority: non-urgent;x", "non-urgent|", "Priority: non-urgent"},
        {"Priority:\t \"urgent\", x\t", "|\"urgent\", x\t", "Priority: \"urgent\", x\t"},
    });
}

TEST(TokenHeaderTest, TokensWithAPreference) {
    expectRows<KxSipAcceptEncodingHeader, &KxSipAcceptEncodingHeader::getContentEncoding,
               &KxSipAcceptEncodingHeader::getQValue, &KxSipAcceptEncodingHeader::getParameters>({
        {"Accept-Encoding: gzip;q=1.0, identity; Q = 0.5, *;q=0", "gzip|1.0|q=1.0 & identity|0.5|Q=0.5 & *|0|q=0",
         "Accept-Encoding: gzip;q=1.0 & Accept-Encoding: identity;Q=0.5 & Accept-Encoding: *;q=0"},
        {"Accept-Encoding: gzip, ;q=1", "", "KxSipParseError: Invalid Accept-Encoding header"},
    });
    expectRows<KxSipAcceptLanguageHeader, &KxSipAcceptLanguageHeader::getLanguage,
               &KxSipAcceptLanguageHeader::getQValue, &KxSipAcceptLanguageHeader::getParameters>({
        {"Accept-Language: da, en-gb \t;x=\"a,b;c\";q=0.8;;", "da|| & en-gb|0.8|x=\"a,b;c\";q=0.8",
         "Accept-Language: da & Accept-Language: en-gb;x=\"a,b;c\";q=0.8"},
        {"Accept-Language: da (x);q=1, en=2", "da|| & en||", "Accept-Language: da & Accept-Language: en"},
    });
}

TEST(TokenHeaderTest, TokensWithParameters) {
    using Disposition = KxSipContentDispositionHeader;
    expectRows<Disposition, &Disposition::getType, &Disposition::getHandling, &Disposition::getParameters>({
        {"Content-Disposition: attachment ; filename=\"a,b;\\\"c\";Handling=optional",
         "attachment|optional|filename=\"a,b;\\\"c\";Handling=optional",
         "Content-Disposition: attachment;filename=\"a,b;\\\"c\";Handling=optional"},
        {"Content-Disposition: a;filename=\"b, c", "a||filename=\"b, c"},
        {"Content-Disposition: ;handling=required", "", "KxSipParseError: Invalid Content-Disposition header"},
    });
    expectRows<KxSipEventHeader, &KxSipEventHeader::getEvent, &KxSipEventHeader::getId,
               &KxSipEventHeader::getParameters>({
        {"Event: presence.winfo;x ;ID=93;y=", "presence.winfo|93|x;ID=93;y", "Event: presence.winfo;x;ID=93;y"},
        {"Event: refer;id=1;id=2", "refer|2|id=2", "Event: refer;id=2"},
        {"Event: ;id=93", "", "KxSipParseError: Invalid Event header"},
    });
    expectRows<KxSipSessionHeader, &KxSipSessionHeader::getType, &KxSipSessionHeader::getParameters>({
        {"Session: Media;x=1, QoS/b (c)", "Media|x=1 & QoS/b|", "Session: Media;x=1 & Session: QoS/b"},
        {"Session: ;x", "", "KxSipParseError: Invalid Session header"},
    });
    const auto event = KxMake<KxSipEventHeader>("refer");
    const auto other = KxMake<KxSipEventHeader>(*event);
    other->setId("7");
    EXPECT_EQ(linesOf(*event) + linesOf(*other), "Event: referEvent: refer;id=7");
}
