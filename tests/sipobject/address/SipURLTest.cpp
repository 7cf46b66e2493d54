#include "sipobject/address/KxSipURL.h"

#include "tests/sipobject/support/MessageSupport.h"

using testing::ElementsAre;
using testing::IsEmpty;

/** user|password|host|port|parameters|headers, then the printed form. */
static std::string fieldsOf(const KxSipURL& url) {
    return joined(url.getUser(), url.getUserPassword(), url.getHost(),
                  url.hasPort() ? std::to_string(url.getPort()) : "", url.getParameters(), url.getHeaders()) +
           "  " + std::string(url.getString().view());
}

/** Reads a standalone URL, or one in a header. */
template <bool Standalone>
static std::string readURL(KxInputStream& in) {
    return outcomeOf([&in] {
        const KxHandle<KxSipURL> url = KxHandleCast<KxSipURL>(KxURI::sConstructFrom(in, Standalone));
        return url.isNil() ? "no SIP URL" : fieldsOf(*url);
    });
}

static std::string readHeaders(KxInputStream& in) {
    return outcomeOf([&in] {
        KxSipURL url("sip:h;p?a=1;b=2");
        url.parseHeader(in);
        return fieldsOf(url);
    });
}

TEST(SipURLTest, ReadsStandalone) {
    expectReads<readURL<true>>({
        {"SIP:bob:pw@h:5070;lr;a=1", "bob|pw|h|5070|lr;a=1|  sip:bob:pw@h:5070;lr;a=1"},
        {"sip:h:abc", "||h|0||  sip:h:0"},
        {"sip:h:99999999999999999999", "||h|4294967295||  sip:h:4294967295"},
        {"sip:[2001:db8:1]:5", "||1]|5||  sip:1]:5"}, // IPv6 references are not known
        {"sip:a;b,c?d&e=f@h", "a;b,c?de=f||h|||  sip:a;b,c?de=f@h"},
        {"sip:a:b:c@h", "b|c|h|||  sip:b:c@h"},
        {"sip:a:@h", "a||h|||  sip:a@h"},
        {"sip:u@h:5060:7", "5060||h|7||  sip:5060@h:7"},
        {"sip:a:pw@h::", "|pw|h|||  sip:h"}, // no password without a user
        {"sip:a\"b@h", "a\"b||h|||  sip:a\"b@h"},
        {"sip:\"a b\r;c?d,e<f>:@\"@h", "\"a b;c?d,e<f>:@\"||h|||  sip:\"a b;c?d,e<f>:@\"@h"},
        {"sip:\"a\nb\"@h", "||\"a|||  sip:\"a", "b\"@h"},
        // characters that are dropped
        {"s i p : b o b @ h : 5 0 ", "bob||h|50||  sip:bob@h:50"},
        {"sip:b\rob@h\r\nVia: x", "bob||h|||  sip:bob@h", "Via: x"},
        {"si<p:&a<@h&", "a||h|||  sip:a@h"},
        // where it ends
        {"sip:a@h,x", "a||h|||  sip:a@h", ",x"},
        {"<sip:h>x", "||h|||  sip:h", "x"},
        {"<sip:h> \t\r\n ; x", "||h|||  sip:h", " x"},
        {"<sip:h>;x@y", "||h|||  sip:h", "x@y"}, // an "@" after the bracket is not part of the URL
        {"sip:h;a=1\nb", "||h||a=1|  sip:h;a=1", "b"},
        {"sip:h;a\r=1\r;\rb?c=d", "||h||a=1;b|c=d  sip:h;a=1;b?c%3Dd"},
        {"sip:h;a;A=2;b= 3 ;;c=\"d;e\"", "||h||a=2;b=3;c=\"d;e\"|  sip:h;a=2;b=3;c=\"d;e\""},
        {"sip:h;a=1,2:3@4", "h;a=1,2|3|4|||  sip:h;a=1,2:3@4"},
        {"sip:h;a=1,2:3&<4", "||h||a=1,2:3&<4|  sip:h;a=1,2:3&<4"},
        {"sip:h:5;a>;b", "||h|5|a|  sip:h:5;a", "b"},
        {"sip:h;p?a=1&b=2", "||h||p|a=1&b=2  sip:h;p?a%3D1%26b%3d2"},
        {"sip:h?a=%26%2B%2F%3A%3D%3F%40%25%41", "||h|||a=&+/:=?@%A  sip:h?a%3D%26%2b%2f%3a%3d%3f%40%A"},
        {"sip:h?a=1;b=2;A=3", "||h|||a=3;b=2  sip:h?a%3D3%3Bb%3D2"},
        {"sip:h? a = \"x y\" z\r;b=1", "||h|||a=\"x y\"z;b=1  sip:h?a%3D\"x y\"z%3Bb%3D1"},
        {"sip:h?a=\"1;b=2\"", "||h|||a=\"1;b=2\"  sip:h?a%3D\"1%3Bb%3D2\""}, // separate in quotes too
        {"sip:h?a=1\r\n b\nc", "||h|||a=1b  sip:h?a%3D1b", "c"},
        {"sip:h?a=1%3Ex", "||h|||a=1  sip:h?a%3D1", "x"},
        {"sip:h?a=1%4", "||h|||a=1%4  sip:h?a%3D1%4"},
    });
}

TEST(SipURLTest, LeavesHeaderParametersAlone) {
    expectReads<readURL<false>>({
        {"sip:h;tag=1", "||h|||  sip:h", "tag=1"},
        {"sip:&h;a=1", "||h||a=1|  sip:h;a=1"}, // an "&" counts as a bracket
        {"sip;x", "KxSipParseError: Illegal URL construct", "x"},
        {"sip:;tag=1", "KxSipParseError: Sip URL wrong format", "tag=1"},
    });
}

TEST(SipURLTest, Refuses) {
    const char* const kFormat = "KxSipParseError: Sip URL wrong format";
    expectReads<readURL<true>>({
        {"sip;x:h", "KxSipParseError: Scheme is not SIP", "h"},
        {"sip;x", kFormat},
        {"sip:,x", kFormat, ",x"},
        {"sip:;x", kFormat, "x"},
        {"sip:a@", kFormat},
        {"sip:a@b@c", kFormat, "c"},
        {"sip:a@h::\"x", "KxSipParseError: Sip URL, Double quote mismatch"},
        {"sip:h?;b=1", "KxSipParseError: SIP URL Header doesn't have Key/Value pair (2)\n", "b=1"},
        {"sip:h?a==>x", "||h|||a==  sip:h?a%3D%3d", "x"},
        {"sip:h?a=>x", "KxSipParseError: SIP URL Header key doesn't have a value (1)\n", "x"},
        {"sip:h?a=;b=1", "KxSipParseError: SIP URL Header key doesn't have a value (2)\n", "b=1"},
    });
    EXPECT_EQ(outcomeOf([] { KxSipURL("@sip:\"x"); }), "KxSipParseError: Sip URL, Double quote mismatch");
    EXPECT_EQ(outcomeOf([] { return fieldsOf(KxSipURL("@sip:h")); }), "||h|||  sip:h");
    EXPECT_EQ(outcomeOf([] { KxSipURL(nullptr); }), kFormat);
}

TEST(SipURLTest, ReadsItsKnownParameters) {
    const std::pair<const char*, std::string> rows[] = {
        {"sip:h", joined(5060, KxSocketImpl::UDP, 1, KX_USER_NONE)},
        {"sip:h;transport=tls;ttl=16x", joined(5061, KxSocketImpl::TLS, 16, KX_USER_NONE)},
        {"sip:h:5070;Transport=TLS;user=phone", joined(5070, KxSocketImpl::TLS, 1, KX_USER_PHONE)},
        {"sip:h;transport=tcp;user=Phone", joined(5060, KxSocketImpl::TCP, 1, KX_USER_NONE)},
        {"sip:h:;transport=tls;ttl", joined(5061, KxSocketImpl::TLS, 0, KX_USER_NONE)},
    };
    for (const auto& [text, known] : rows) {
        const KxSipURL url(text);
        EXPECT_EQ(joined(url.getPort(), url.getTransportParam(), url.getTTL(), url.getUserParam()), known) << text;
    }
}

TEST(SipURLTest, WarnsOfUnknownTransports) {
    LogCapture capture(log4cplus::Logger::getInstance("tandril.kx.KxSipURL.UnknownTransportInContact"));
    const KxSipURL url("sip:h;transport=Pigeon");
    EXPECT_THAT(capture.texts(), IsEmpty());
    EXPECT_EQ(url.getTransportParam(), KxSocketImpl::UDP);
    EXPECT_EQ(KxSipURL("sip:h;transport=tcp").getTransportParam(), KxSocketImpl::TCP);
    EXPECT_EQ(std::ranges::count(capture.records, log4cplus::WARN_LOG_LEVEL, &LogRecord::level), 1);
    EXPECT_THAT(capture.texts(),
                ElementsAre("Contact header contains unknown transport : Pigeon. Using default UDP transport"));
}

TEST(SipURLTest, SaysWhatItReads) {
    ClassLog capture("tandril.kx.KxSipURL");
    const KxSipURL url("<sip:h;a=1;b?x=1;y=2>");
    EXPECT_THAT(capture.texts(), ElementsAre("KxSipURL::parse(rInputStream) Found '<' setting Abracket to true",
                                             "Parsed SipURL parameters (1): a=1;b", "SipURL headers now (2): x=1",
                                             "SipURL headers now (3): x=1;y=2"));
}

/** The results of reading a URL standalone and in a header, and how many bytes each left. */
static std::string readBoth(std::string_view text) {
    KxByteArrayInputStream alone(text);
    KxByteArrayInputStream inHeader(text);
    const std::string results = readURL<true>(alone) + readURL<false>(inHeader);
    return joined(results, alone.available(), inHeader.available());
}

/** In both grammars. A URL that is logged does not take the short way of the usual ones. */
TEST(LoggedSipURLTest, ReadsTheSame) {
    std::vector<std::string> texts = {"sip", "<sip:", " sip:h", "<SIP:a@h>", "sip:a:@h", "sip::b@h", "sip:a b@h"};
    for (const char* const begin : {"sip:h", "<sip:h", "sip:a@h", "<sip:a:1@h", "sip:a:b1@[h]", "<sip:a;b@h"}) {
        for (const char* const port : {"", ":", ":1", ":65535", ":65536", ":123456", ":1:2", ":1x", ":@h"}) {
            for (const char* const end : {"", ">", ";x=y>\t;z", ";x=\"y\">", ";x @h>", "?b=c>d", ";x?b=c;d=%41@h",
                                          "?b=\n c", "?b>", "\r\n@h", "\rh", "\n", ",x", ">@h", "&>", "%41"}) {
                texts.push_back(std::string(begin) + port + end);
            }
        }
    }
    for (const std::string& text : texts) {
        const std::string quiet = readBoth(text);
        ClassLog capture("tandril.kx.KxSipURL");
        EXPECT_EQ(readBoth(text), quiet) << text;
    }
}

TEST(SipURLTest, Compares) {
    const std::tuple<const char*, const char*, bool, bool> rows[] = {
        {"sip:a:b@h:5060;x=1", "SIP:a:b@h;X=1", true, true},
        {"sip:h", "sip:H", false, false},
        {"sip:a:p@h", "sip:a:P@h", false, false},
        {"sip:h:5061", "sip:h", false, false},
        {"sip:h", "sip:h;transport=UDP", true, true},
        {"sip:h", "sip:h;transport=udp;x=1", false, false}, // both count, though transport is not compared
        {"sip:h;x=1", "sip:h;transport=udp", true, false},
        // the stored port on the left, the effective one on the right
        {"sip:h:5061;transport=tls", "sip:h;transport=tls", true, false},
        {"sip:h;transport=tls", "sip:h;transport=tls", false, false},
        {"sip:h;x=1", "sip:h;y=1", false, false},
        {"sip:h?x=1", "sip:h", false, false},
        {"sip:h;x=a;y", "sip:h;Y;x=A", true, true},
        {"sip:h;x=a", "sip:h;x=b", false, false},
        {"sip:h?x=1", "sip:h?X=1;y=2;z=3", true, true},
        {"sip:h?x=a", "sip:h?x=A", false, false},
    };
    for (const auto& [one, other, equal, swapped] : rows) {
        EXPECT_EQ(KxSipURL(one) == KxSipURL(other), equal) << one << " and " << other;
        EXPECT_EQ(KxSipURL(other) == KxSipURL(one), swapped) << other << " and " << one;
    }
}

TEST(SipURLTest, Changes) {
    KxSipURL url("sip:h;TRANSPORT=udp;lr?a=1;b=2");
    const KxSipURL copy(url);
    url.setTransportParam(KxSocketImpl::TLS);
    url.setMAddrParam("192.0.2.1");
    url.removeParameter("LR");
    url.removeHeader("A");
    EXPECT_EQ(url.getString(), "sip:h;TRANSPORT=tls;maddr=192.0.2.1?b%3D2");
    url.clearParameters();
    url.clearHeaders();
    EXPECT_EQ(url.getString(), "sip:h");
    EXPECT_EQ(copy.getString(), "sip:h;TRANSPORT=udp;lr?a%3D1%3Bb%3D2");
}

TEST(SipURLTest, HeadersAreReadByThemselves) {
    expectReads<readHeaders>({
        {"c=3;a=%40>x", "||h||p|a=@;b=2;c=3  sip:h;p?a%3D%40%3Bb%3D2%3Bc%3D3", "x"},
        {"a", "KxSipParseError: SIP URL Header doesn't have Key/Value pair (1)\n"},
    });
}

TEST(SipURLTest, ManyParametersAndHeadersCostTheirLength) {
    std::string text = "sip:h";
    for (const char* name : {";parameter", "%3Bheader"}) {
        for (int i = 0; i < 100000; ++i) {
            text.append(name).append(std::to_string(i)).append(name[0] == ';' ? "=x" : "%3Dx");
        }
    }
    text.replace(text.find("%3B"), 3, "?");
    const KxSipURL url(text.c_str());
    EXPECT_EQ(joined(url.numParameters(), url.numHeaders()), "100000|100000");
    EXPECT_EQ(url.getParameter("PARAMETER99999"), "x");
    EXPECT_EQ(KxSipURL(url).getString().view(), text);
    EXPECT_TRUE(url == KxSipURL(url));
}
