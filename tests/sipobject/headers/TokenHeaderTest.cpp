#include "sipobject/headers/KxSipAcceptEncodingHeader.h"
#include "sipobject/headers/KxSipAcceptLanguageHeader.h"
#include "sipobject/headers/KxSipAllowEventsHeader.h"
#include "sipobject/headers/KxSipAllowHeader.h"
#include "sipobject/headers/KxSipContentDispositionHeader.h"
#include "sipobject/headers/KxSipContentEncodingHeader.h"
#include "sipobject/headers/KxSipEventHeader.h"
#include "sipobject/headers/KxSipInReplyToHeader.h"
#include "sipobject/headers/KxSipPriorityHeader.h"
#include "sipobject/headers/KxSipProxyRequireHeader.h"
#include "sipobject/headers/KxSipRequireHeader.h"
#include "sipobject/headers/KxSipSessionHeader.h"
#include "sipobject/headers/KxSipSupportedHeader.h"
#include "sipobject/headers/KxSipUnsupportedHeader.h"
#include "tests/sipobject/support/HeaderSupport.h"

namespace {

constexpr auto kToken = [](const auto& header) {
    if constexpr (requires { header.getMethod(); }) {
        return std::string(header.getMethod().view());
    } else if constexpr (requires { header.getEvent(); }) {
        return std::string(header.getEvent().view());
    } else if constexpr (requires { header.getContentEncoding(); }) {
        return std::string(header.getContentEncoding().view());
    } else {
        return std::string(header.getOptionTag().view());
    }
};

constexpr const char* kEmpty = "KxSipParseErrorEmptyHeader: SIP Header parse error : nothing after the colon";

} // namespace

TEST(TokenHeaderTest, TokensEndAtSeparatorsAndMustNotBeEmpty) {
    constexpr const char* kNoMethod = "KxSipParseError: Empty method in Allow header";
    expectRows<KxSipAllowHeader>(
        kToken, {
                    {"Allow: INVITE, ACK ,BYE", "INVITE & ACK & BYE", "Allow: INVITE & Allow: ACK & Allow: BYE"},
                    {"allow:INVITE;x=\"1\" (c)", "INVITE", "allow: INVITE"},
                    {"Allow: A\"b,c\" d", "A & c", "Allow: A & Allow: c"},
                    {"Allow: \v\xe4\f", "\xe4", "Allow: \xe4"},
                    {"Allow: ;x", "", kNoMethod},
                    {"Allow: ,A", "", kNoMethod},
                    {"Allow: A, ,B", "", kNoMethod},
                    {"Allow: A,", "", kEmpty},
                });
    constexpr const char* kNoEvent = "KxSipParseError: Empty event-type in Allow-Events header";
    expectRows<KxSipAllowEventsHeader>(kToken, {
                                                   {"Allow-Events: presence.winfo;q, dialog", "presence.winfo & dialog",
                                                    "Allow-Events: presence.winfo & Allow-Events: dialog"},
                                                   {"Allow-Events: ;x", "", kNoEvent},
                                                   {"Allow-Events: a,\"b\"", "", kNoEvent},
                                               });
    constexpr const char* kNoCoding = "KxSipParseError: Invalid Content-Encoding header";
    expectRows<KxSipContentEncodingHeader>(kToken,
                                           {
                                               {"e: gzip, br\f", "gzip & br\f", "e: gzip & Content-Encoding: br\f"},
                                               {"Content-Encoding: =gzip", "", kNoCoding},
                                               {"e: gzip, {}", "", kNoCoding},
                                           });
}

TEST(TokenHeaderTest, OptionTagsEndAtBlanksAndCommasAndMayBeEmpty) {
    expectRows<KxSipSupportedHeader>(
        kToken, {
                    {"k: 100rel", "100rel", "k: 100rel"},
                    {"Supported: ,timer", " & timer", "Supported:  & Supported: timer",
                     std::string(kEmpty) + " & Supported: timer"},
                    {"Supported: \"a,b\" c\t,d", "\"a & b\" & d", "Supported: \"a & Supported: b\" & Supported: d"},
                    {"Supported:  \t ", "", kEmpty},
                    {"k: a, , b,", "", kEmpty},
                });
    expectRows<KxSipRequireHeader>(kToken, {{"Require: a;b c,\fd\v", "a;b & d\v", "Require: a;b & Require: d\v"}});
    expectRows<KxSipProxyRequireHeader>(kToken, {{"Proxy-Require: <a>:/?", "<a>:/?", "Proxy-Require: <a>:/?"}});
    expectRows<KxSipUnsupportedHeader>(kToken, {{"Unsupported: a=(b)", "a=(b)", "Unsupported: a=(b)"}});
}

TEST(TokenHeaderTest, CallIdsAndPriorities) {
    expectRows<KxSipInReplyToHeader>([](const auto& header) { return std::string(header.getCallId().view()); },
                                     {
                                         {"In-Reply-To: 70710@h, <1;7=\\>@[::1] x", "70710@h & <1;7=\\>@[::1]",
                                          "In-Reply-To: 70710@h & In-Reply-To: <1;7=\\>@[::1]"},
                                         {"In-Reply-To: ,a", "", "KxSipParseError: Invalid In-Reply-To header"},
                                     });
    expectRows<KxSipPriorityHeader>([](const auto& header) { return std::string(header.getPriority().view()); },
                                    {
                                        {"Priority: non-urgent;x", "non-urgent", "Priority: non-urgent"},
                                        {"Priority: \"urgent\"", "", "KxSipParseError: Invalid Priority header"},
                                    });
}

TEST(TokenHeaderTest, TokensWithAPreference) {
    constexpr auto kPreference = [](const KxString& token, const auto& header) {
        return joined({token, header.getQValue(), header.getParameters()->getString()});
    };
    expectRows<KxSipAcceptEncodingHeader>(
        [&](const auto& header) { return kPreference(header.getContentEncoding(), header); },
        {
            {"Accept-Encoding: gzip;q=1.0, identity; Q = 0.5, *;q=0", "gzip|1.0|q=1.0 & identity|0.5|Q=0.5 & *|0|q=0",
             "Accept-Encoding: gzip;q=1.0 & Accept-Encoding: identity;Q=0.5 & Accept-Encoding: *;q=0"},
            {"Accept-Encoding: gzip, ;q=1", "", "KxSipParseError: Invalid Accept-Encoding header"},
        });
    expectRows<KxSipAcceptLanguageHeader>(
        [&](const auto& header) { return kPreference(header.getLanguage(), header); },
        {
            {"Accept-Language: da, en-gb \t;x=\"a,b;c\";q=0.8;;", "da|| & en-gb|0.8|x=\"a,b;c\";q=0.8",
             "Accept-Language: da & Accept-Language: en-gb;x=\"a,b;c\";q=0.8"},
            {"Accept-Language: da (x);q=1, en=2", "da|| & en||", "Accept-Language: da & Accept-Language: en"},
            {"Accept-Language: =", "", "KxSipParseError: Invalid Accept-Language header"},
        });
}

TEST(TokenHeaderTest, TokensWithParameters) {
    expectRows<KxSipContentDispositionHeader>(
        [](const auto& header) {
            return joined({header.getType(), header.getHandling(), header.getParameter("filename")});
        },
        {
            {"Content-Disposition: attachment ; filename=\"a,b;\\\"c\";Handling=optional",
             "attachment|optional|\"a,b;\\\"c\"",
             "Content-Disposition: attachment;filename=\"a,b;\\\"c\";Handling=optional"},
            {"Content-Disposition: session", "session||", "Content-Disposition: session"},
            {"Content-Disposition: a;filename=\"b, c", "a||\"b, c", "Content-Disposition: a;filename=\"b, c"},
            {"Content-Disposition: ;handling=required", "", "KxSipParseError: Invalid Content-Disposition header"},
        });
    expectRows<KxSipEventHeader>(
        [](const auto& header) {
            return joined({header.getEvent(), header.getId(), header.getParameters()->getString()});
        },
        {
            {"Event: presence.winfo;x ;ID=93;y=", "presence.winfo|93|x;ID=93;y", "Event: presence.winfo;x;ID=93;y"},
            {"Event: refer;id=1;id=2", "refer|2|id=2", "Event: refer;id=2"},
            {"Event: ;id=93", "", "KxSipParseError: Invalid Event header"},
        });
    expectRows<KxSipSessionHeader>(
        [](const auto& header) {
            return joined({header.getType(), header.getParameters()->getString()});
        },
        {
            {"Session: Media;x=1, QoS/b (c)", "Media|x=1 & QoS/b|", "Session: Media;x=1 & Session: QoS/b"},
            {"Session: ;x", "", "KxSipParseError: Invalid Session header"},
        });
    const KxHandle<KxSipEventHeader> event(new KxSipEventHeader("refer"));
    const KxHandle<KxSipEventHeader> other(new KxSipEventHeader(*event));
    other->setId("7");
    EXPECT_EQ(linesOf(*event) + linesOf(*other), "Event: referEvent: refer;id=7");
}
