#include "sipobject/headers/KxSipAllowEventsHeader.h"
#include "sipobject/headers/KxSipAllowHeader.h"
#include "sipobject/headers/KxSipContentEncodingHeader.h"
#include "sipobject/headers/KxSipProxyRequireHeader.h"
#include "sipobject/headers/KxSipRequireHeader.h"
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
