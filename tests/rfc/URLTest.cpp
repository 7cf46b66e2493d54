#include "sipobject/KxSipLine.h"
#include "sipobject/address/KxSipNameAddress.h"
#include "sipobject/address/KxSipURL.h"
#include "sipobject/address/KxTelURL.h"
#include "tests/sipobject/support/HeaderSupport.h"

/** user|password|host|port|parameters|headers and the written form, which must read as the same. */
static std::string partsOf(const KxSipURL& url) {
    return joined(url.getUser(), url.getUserPassword(), url.getHost(),
                  url.hasPort() ? std::to_string(url.getPort()) : "", url.getParameters(), url.getHeaders()) +
           "  " + url.getString().c_str();
}

template <bool Standalone>
static std::string readURL(KxInputStream& in) {
    return outcomeOf([&in] {
        const KxHandle<KxSipURL> url = KxHandleCast<KxSipURL>(KxURI::sConstructFrom(in, Standalone));
        EXPECT_EQ(KxSipURL(url->getString()).getString(), url->getString());
        EXPECT_EQ(KxHandle<KxSipURL>(url->clone())->getString(), url->getString());
        return partsOf(*url);
    });
}

static const std::string kWrong = "KxSipParseError: Sip URL wrong format";

TEST(URLTest, ReadsStandalone) {
    expectReads<readURL<true>>({
        // RFC 5118 4.1 to 4.4, 4.9
        {"sip:[2001:db8::10]", "||2001:db8::10|||  sip:[2001:db8::10]"},
        {"sip:2001:db8::10", kWrong, "db8::10"},
        {"sip:[2001:db8::10:5070]", "||2001:db8::10:5070|||  sip:[2001:db8::10:5070]"},
        {"sip:[2001:db8::10]:5070", "||2001:db8::10|5070||  sip:[2001:db8::10]:5070"},
        {"<sip:user@[::ffff:192.0.2.10]:5060;lr>",
         "user||::ffff:192.0.2.10|5060|lr|  sip:user@[::ffff:192.0.2.10]:5060;lr"},
        {"sip:a:p@[2001:DB8::A];maddr=[::1]?x=y",
         "a|p|2001:DB8::A||maddr=[::1]|x=y  sip:a:p@[2001:DB8::A];maddr=[::1]?x=y"},
        {"sip:[::1", kWrong},
        {"sip:[::1]x:5", kWrong},
        {"sip:[fe80::1%25eth0]", kWrong},
        {"sip:[2001:db8:::192.0.2.1]", "||2001:db8:::192.0.2.1|||  sip:[2001:db8:::192.0.2.1]"},
        {"sip:[2001:db8:::1]", kWrong},
        {"sip:[192.0.2.1]", kWrong},
        // ports and hosts
        {"sip:h:65535", "||h|65535||  sip:h:65535"},
        {"sip:h:65536", kWrong},
        {"sip:h:;lr", kWrong, ";lr"},
        {"sip:h:5a", kWrong},
        {"sip:h:5:6", kWrong, "6"},
        {"sip:a&b", kWrong},
        {"sip:h{}", kWrong},
        // schemes
        {"SIPS:a@h;transport=tcp", "a||h||transport=tcp|  sips:a@h;transport=tcp"},
        // users: RFC 4475 3.1.1.2, 3.1.1.3, 3.1.1.9
        {"sip:1_unusual.URI~(to-be!sure)&isn't+it$/crazy?,/;;*:&it+has=1,weird!*pas$wo~d_too.(doesn't-it)@example.com",
         "1_unusual.URI~(to-be!sure)&isn't+it$/crazy?,/;;*|&it+has=1,weird!*pas$wo~d_too.(doesn't-it)|example.com||| "
         " sip:1_unusual.URI~(to-be!sure)&isn't+it$/crazy?,/"
         ";;*:&it+has=1,weird!*pas$wo~d_too.(doesn't-it)@example.com"},
        {"sip:sips%3Auser%40example.com@example.net", "sips%3Auser%40example.com||example.net|||  "
                                                      "sip:sips%3Auser%40example.com@example.net"},
        {"<sip:user;par=u%40h@h2>", "user;par=u%40h||h2|||  sip:user;par=u%40h@h2"},
        {"sip:a:@h", "a||h|||  sip:a:@h"},
        {"sip:a:b:c@h", kWrong, "c@h"},
        {"sip::b@h", kWrong, "b@h"},
        {"sip:a@b@c", kWrong, "c"},
        {"sip:a<b@h", kWrong, "b@h"},
        {"sip:\"a\"@h", kWrong, "a\"@h"},
        // parameters and headers
        {"sip:h;a=[/:&+$];B?c=d&e=&%46=%3d", "||h||a=[/:&+$];B|c=d;e;%46=%3d  sip:h;a=[/:&+$];B?c=d&e=&%46=%3d"},
        {"<sip:h?to=a%40b;c,d>x", "||h|||to=a%40b;c,d  sip:h?to=a%40b%3Bc%2Cd", "x"},
        {"sip:h;a=\"b;c\"", kWrong, "\"b;c\""},
        {"sip:h?a=\"b", kWrong, "b"},
        {"sip:h?a=1&b=2&A=&a=%33", "||h|||a=1%2C%2C%33;b=2  sip:h?a=1%2C%2C%33&b=2"},
        {"sip:h?", "KxSipParseError: SIP URL Header doesn't have Key/Value pair (1)\n"},
        {"sip:h?a&b=1", "KxSipParseError: SIP URL Header doesn't have Key/Value pair (2)\n", "b=1"},
    });
}

TEST(URLTest, EndsInAHeaderWithoutBrackets) {
    expectReads<readURL<false>>({
        {"sip:h, <sip:a@b>", "||h|||  sip:h", ", <sip:a@b>"},
        {"sip:h;x=\"@\"", "||h|||  sip:h", "x=\"@\""},
        {"sip:h?a=1;tag=2", "||h|||a=1  sip:h?a=1", "tag=2"},
        {"sip:h?a=1,sip:b", "||h|||a=1  sip:h?a=1", ",sip:b"},
        {"SIPS:a&b@[::1]:5 ;tag=2", "a&b||::1|5||  sips:a&b@[::1]:5", "tag=2"},
        {" <SIP:a;b@h;c>;tag=2", "a;b||h||c|  sip:a;b@h;c", ";tag=2"},
        {"<sip:h,x>", kWrong, "x>"},
    });
    EXPECT_EQ(linesOf(*readHeader("Contact: sip:a, sips:b@[::1];expires=5,<sip:c;lr?x=y&z=>;q=1")),
              "Contact: <sip:a> & Contact: <sips:b@[::1]>;expires=5 & Contact: <sip:c;lr?x=y&z=>;q=1");
}

TEST(URLTest, TransportAndPortFollowTheScheme) {
    const std::pair<const char*, std::string> rows[] = {
        {"sip:h", joined(false, KxSocketImpl::UDP, 5060)},
        {"sip:h;transport=tls", joined(false, KxSocketImpl::TLS, 5061)},
        {"sips:h", joined(true, KxSocketImpl::TLS, 5061)},
        {"sips:h:5060;transport=tcp", joined(true, KxSocketImpl::TLS, 5060)},
        {"sips:h;transport=ws", joined(true, KxSocketImpl::WSS, 5061)},
        {"sips:h;transport=sctp", joined(true, KxSocketImpl::SCTP, 5061)},
        {"sips:h;transport=pigeon", joined(true, KxSocketImpl::TLS, 5061)},
    };
    for (const auto& [text, known] : rows) {
        const KxSipURL url(text);
        EXPECT_EQ(joined(url.isSecure(), url.getTransportParam(), url.getPort()), known) << text;
        EXPECT_EQ(url.getString(), text);
    }
}

TEST(URLTest, EqualIfTheyMeanTheSame) {
    const std::tuple<const char*, const char*, bool> rows[] = {
        // RFC 3261 19.1.4
        {"sip:%61lice@atlanta.com;transport=TCP", "sip:alice@AtLanTa.CoM;Transport=tcp", true},
        {"sip:carol@chicago.com", "sip:carol@chicago.com;newparam=5", true},
        {"sip:carol@chicago.com", "sip:carol@chicago.com;security=on", true},
        {"sip:carol@chicago.com;security=on", "sip:carol@chicago.com;newparam=5", true},
        {"sip:carol@chicago.com;security=on", "sip:carol@chicago.com;security=off", false},
        {"sip:biloxi.com;transport=tcp;method=REGISTER?to=sip:bob%40biloxi.com",
         "sip:biloxi.com;method=REGISTER;transport=tcp?to=sip:bob%40biloxi.com", true},
        {"sip:alice@atlanta.com?subject=project%20x&priority=urgent",
         "sip:alice@atlanta.com?priority=urgent&subject=project%20x", true},
        {"SIP:ALICE@AtLanTa.CoM;Transport=udp", "sip:alice@AtLanTa.CoM;Transport=UDP", false},
        {"sip:bob@biloxi.com", "sip:bob@biloxi.com:5060", false},
        {"sip:bob@biloxi.com", "sip:bob@biloxi.com;transport=udp", false},
        {"sip:bob@biloxi.com", "sip:bob@biloxi.com:6000;transport=tcp", false},
        {"sip:carol@chicago.com", "sip:carol@chicago.com?Subject=next%20meeting", false},
        {"sip:bob@phone21.boxesbybob.com", "sip:bob@192.0.2.4", false},
        // the rules that its lists do not show
        {"sip:a@h", "sips:a@h", false},
        {"sip:a%3bb@h", "sip:a%3Bb@h", true},
        {"sip:a%3Bb@h", "sip:a;b@h", false},
        {"sip:%253B@h", "sip:%3B@h", false},
        {"sip:a:p@h", "sip:a:P@h", false},
        {"sip:h;ttl=1", "sip:h", false},
        {"sip:h;%6Cr=%41", "sip:h;LR=a", true},
        {"sip:h?a=1", "sip:h?a=1&b=2", false},
        {"sip:h?%41=%31", "sip:h?a=1", true},
        {"sip:[2001:db8::1];maddr=[::1]", "sip:[2001:DB8:0::0:1];maddr=[0::1]", true},
        {"sip:[2001:db8::1]", "sip:[2001:db8::2]", false},
    };
    for (const auto& [one, other, equal] : rows) {
        EXPECT_EQ(KxSipURL(one) == KxSipURL(other), equal) << one << " and " << other;
        EXPECT_EQ(KxSipURL(other) == KxSipURL(one), equal) << other << " and " << one;
    }
}

TEST(URLTest, TelEqualIfTheyMeanTheSame) {
    const std::tuple<const char*, const char*, bool> rows[] = {
        {"tel:+1-(201).555", "tel:+1201555", true},
        {"tel:+1201555", "tel:1201555", false},
        {"tel:7A;phone-context=+1-9;ext=1-2", "tel:7a;EXT=12;phone-context=+19", true},
        {"tel:7;phone-context=a-b.example", "tel:7;phone-context=A-B.example", true},
        {"tel:7;phone-context=a-b.example", "tel:7;phone-context=ab.example", false},
        {"tel:+1;a=b", "tel:+1", false},
    };
    for (const auto& [one, other, equal] : rows) {
        EXPECT_EQ(KxTelURL(one) == KxTelURL(other), equal) << one << " and " << other;
        EXPECT_EQ(KxTelURL(other) == KxTelURL(one), equal) << other << " and " << one;
    }
}

TEST(URLTest, OfAnyClass) {
    const auto read = [](std::string_view text) {
        KxByteArrayInputStream in(text);
        return KxURI::sConstructFrom(in, true);
    };
    EXPECT_TRUE(*read("sip:b@H") == *read("sip:b@h"));
    EXPECT_FALSE(*read("sip:a@h") == *read("sip:b@h"));
    EXPECT_TRUE(*read("TEL:+1-2") == *read("tel:+12"));
    EXPECT_TRUE(*read("Urn:A") == *read("urn:A"));
    EXPECT_FALSE(*read("tel:5") == *read("telex:5"));
    EXPECT_EQ(read("telex:5")->getString(), "telex:5");
    EXPECT_EQ(read("sipt:x@y")->getString(), "sipt:x@y");
}

TEST(URLTest, PartsThatAreSetReadBack) {
    KxSipURL url("sip:a:@h");
    url.setUser("");
    url.setUser("a");
    EXPECT_EQ(url.getString(), "sip:a@h") << "the empty password is gone, too";
    url.setUser("a&b,c;d?");
    url.setUserPassword("p&,");
    url.setHost("[2001:db8::1]");
    EXPECT_EQ(url.getString(), "sip:a&b,c;d?:p&,@[2001:db8::1]");
    EXPECT_EQ(partsOf(KxSipURL(url.getString())), partsOf(url));
    url.setHost("::1");
    url.setUserPassword({});
    EXPECT_EQ(url.getString(), "sip:a&b,c;d?@[::1]");
    for (const char* host : {"[::1", "::1]", "1::2::3", "a:5", "a b", "", "[h]", "::1%0"}) {
        EXPECT_EQ(outcomeOf([&] { url.setHost(host); }), "KxSipParseError: Invalid host in SIP URL") << host;
    }
    EXPECT_EQ(outcomeOf([&] { url.setUser("\"a\""); }), "KxSipParseError: Invalid user in SIP URL");
    url.setHost("h");
    url.getHeaders()->setValue("x y", KxString("100% &=é%41"));
    EXPECT_EQ(url.getString(), "sip:a&b,c;d?@h?x%20y=100%25%20%26%3D%C3%A9%41");
    EXPECT_EQ(KxSipURL(url.getString()).getHeader("X Y"), "100% &=éA");
}

TEST(URLTest, RequestsReadSips) {
    const auto read = [](const std::string& uri) {
        const auto request = readMessage("OPTIONS " + uri + " SIP/2.0\r\n" + requiredHeaders("OPTIONS") + "\r\n");
        const auto& typed = static_cast<const KxSipRequest&>(*request);
        return joined(startLineOf(*request), request->getStatus(), typed.getRequestURIHost(),
                      typed.getRequestURIPort());
    };
    EXPECT_EQ(read("sips:a@[2001:db8::1]"), "OPTIONS sips:a@[2001:db8::1] SIP/2.0|0|2001:db8::1|5061");
    EXPECT_EQ(read("SIPS:h;transport=tcp"), "OPTIONS sips:h;transport=tcp SIP/2.0|0|h|5061");
    EXPECT_EQ(outcomeOf([&] { return read("sipt:h"); }), "KxSipParseError: Unsupported Uri Scheme");
}

TEST(URLTest, WhatIsReadIsWrittenStably) {
    forEveryText("a1:@;?&=%[]<>, \"", 4, [](const std::string& text) {
        for (const bool standalone : {false, true}) {
            const std::string all = "sip:" + text;
            KxByteArrayInputStream in{std::string_view(all)};
            KxSipLine line(in);
            KxHandle<KxURI> url;
            if (KxURI::sConstructFrom(line, standalone, url)) {
                continue;
            }
            const std::string once(url->getString().view());
            EXPECT_EQ(outcomeOf([&] { return std::string(KxSipURL(once).getString().view()); }), once) << all;
            const std::string inside = outcomeOf(
                [&] { return std::string(KxSipNameAddress(("<" + once + ">").c_str()).getURLString().view()); });
            EXPECT_EQ(inside, once) << all;
        }
    });
}
