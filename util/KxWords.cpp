#include "util/KxWords.h"

#include "util/KxString.h"

#include <array>
#include <cstring>
#include <iterator>

namespace {

class Word : private KxConstStringStorage {
public:
    template <std::size_t N>
    constexpr Word(const char (&literal)[N]) : KxConstStringStorage(literal, N - 1) {}
    KxStringBuffer& buffer() { return m_room.constant; }
};

constinit Word s_words[] = {
    // methods
    "INVITE",
    "ACK",
    "BYE",
    "CANCEL",
    "OPTIONS",
    "REGISTER",
    "PRACK",
    "UPDATE",
    "INFO",
    "REFER",
    "NOTIFY",
    "SUBSCRIBE",
    "MESSAGE",
    "PUBLISH",
    // protocol, transports, schemes
    "SIP",
    "2.0",
    "UDP",
    "TCP",
    "TLS",
    "SCTP",
    "WS",
    "WSS",
    "udp",
    "tcp",
    "tls",
    "sctp",
    "ws",
    "wss",
    "sip",
    "sips",
    "tel",
    // parameter names
    "branch",
    "rport",
    "received",
    "maddr",
    "ttl",
    "tag",
    "lr",
    "transport",
    "user",
    "method",
    "expires",
    "q",
    "ob",
    "gr",
    "refresher",
    "handling",
    "charset",
    "boundary",
    "id",
    "reason",
    "retry-after",
    "duration",
    "to-tag",
    "from-tag",
    "early-only",
    "keep",
    "ftag",
    "purpose",
    "action",
    "hidden",
    "+sip.instance",
    "reg-id",
    "privacy",
    "counter",
    "level",
    // parameter values
    "phone",
    "ip",
    "uac",
    "uas",
    "on",
    "yes",
    "no",
    "full",
    "off",
    "true",
    "false",
    "required",
    "optional",
    "proxy",
    "redirect",
    "0",
    "1",
    // digest
    "realm",
    "nonce",
    "opaque",
    "stale",
    "algorithm",
    "qop",
    "domain",
    "username",
    "uri",
    "response",
    "cnonce",
    "nc",
    "nextnonce",
    "rspauth",
    "MD5",
    "MD5-sess",
    "auth",
    "auth-int",
    "FALSE",
    "TRUE",
    "00000001",
    // option tags and event packages
    "100rel",
    "timer",
    "replaces",
    "precondition",
    "histinfo",
    "path",
    "gruu",
    "outbound",
    "eventlist",
    "norefersub",
    "tdialog",
    "join",
    "from-change",
    "sec-agree",
    "pref",
    "answermode",
    "ice",
    "resource-priority",
    "199",
    "talk",
    "hold",
    "conference",
    "dialog",
    "presence",
    "reg",
    "message-summary",
    "check-sync",
    "kpml",
    // media types and codings
    "application",
    "sdp",
    "text",
    "plain",
    "html",
    "multipart",
    "mixed",
    "message",
    "sipfrag",
    "dtmf-relay",
    "pidf+xml",
    "dialog-info+xml",
    "simple-message-summary",
    "gzip",
    "identity",
    "en",
    "utf-8",
    "session",
    "none",
    // phrases and hosts
    "OK",
    "Ok",
    "Trying",
    "Ringing",
    "localhost",
    "anonymous",
    "anonymous.invalid",
};

constexpr std::size_t kWordCount = std::size(s_words);
constexpr std::size_t kLongestWord = 24;
constexpr std::size_t kBuckets = 1024;
constexpr std::size_t kWays = 2;
static_assert(kWordCount < 255);

std::size_t bucketOf(const char* text, std::size_t n) {
    const auto at = [&](std::size_t i) { return static_cast<std::uint32_t>(static_cast<unsigned char>(text[i])); };
    const std::uint32_t mixed =
        at(0) + (at(n / 2) << 5) + (at(n - 1) << 10) + (at(n / 4) << 15) + (static_cast<std::uint32_t>(n) << 22);
    return (mixed * 0x9E3779B1U) >> 22;
}

/** Two ways a bucket: the word's index plus one, or 0. */
struct Table {
    Table() {
        for (std::size_t i = 0; i < kWordCount; ++i) {
            auto& ways = m_ways[bucketOf(s_words[i].buffer().c_str(), s_words[i].buffer().length())];
            for (auto& way : ways) {
                if (way == 0) {
                    way = static_cast<std::uint8_t>(i + 1);
                    break;
                }
            } // a third word of a bucket is left out: it is copied like any other text
        }
    }
    std::array<std::array<std::uint8_t, kWays>, kBuckets> m_ways{};
};

const Table s_table;

} // namespace

KxStringBuffer* KxWords::find(std::string_view text) {
    const std::size_t n = text.size();
    if (n == 0 || n > kLongestWord) {
        return nullptr;
    }
    for (const std::uint8_t way : s_table.m_ways[bucketOf(text.data(), n)]) {
        if (way == 0) {
            return nullptr;
        }
        KxStringBuffer& word = s_words[way - 1].buffer();
        if (word.length() == n && std::memcmp(word.c_str(), text.data(), n) == 0) {
            return &word;
        }
    }
    return nullptr;
}
