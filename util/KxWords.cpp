#include "util/KxWords.h"

#include "util/KxString.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

namespace {

template <std::size_t N>
struct Literal {
    constexpr Literal(const char (&text)[N]) { std::copy_n(text, N, characters); }
    char characters[N];
};

template <Literal kLiteral>
constinit KxConstString s_word{kLiteral.characters};

template <Literal kLiteral>
KxStringBuffer* word() {
    return s_word<kLiteral>.getBuffer().get();
}

/** Made when the library is loaded; strings made before that are copied like any other text. */
KxStringBuffer* const s_words[] = {
    // methods
    word<"INVITE">(),
    word<"ACK">(),
    word<"BYE">(),
    word<"CANCEL">(),
    word<"OPTIONS">(),
    word<"REGISTER">(),
    word<"PRACK">(),
    word<"UPDATE">(),
    word<"INFO">(),
    word<"REFER">(),
    word<"NOTIFY">(),
    word<"SUBSCRIBE">(),
    word<"MESSAGE">(),
    word<"PUBLISH">(),
    // protocol, transports, schemes
    word<"SIP">(),
    word<"2.0">(),
    word<"UDP">(),
    word<"TCP">(),
    word<"TLS">(),
    word<"SCTP">(),
    word<"WS">(),
    word<"WSS">(),
    word<"udp">(),
    word<"tcp">(),
    word<"tls">(),
    word<"sctp">(),
    word<"ws">(),
    word<"wss">(),
    word<"sip">(),
    word<"sips">(),
    word<"tel">(),
    // parameter names
    word<"branch">(),
    word<"rport">(),
    word<"received">(),
    word<"maddr">(),
    word<"ttl">(),
    word<"tag">(),
    word<"lr">(),
    word<"transport">(),
    word<"user">(),
    word<"method">(),
    word<"expires">(),
    word<"q">(),
    word<"ob">(),
    word<"gr">(),
    word<"refresher">(),
    word<"handling">(),
    word<"charset">(),
    word<"boundary">(),
    word<"id">(),
    word<"reason">(),
    word<"retry-after">(),
    word<"duration">(),
    word<"to-tag">(),
    word<"from-tag">(),
    word<"early-only">(),
    word<"keep">(),
    word<"ftag">(),
    word<"purpose">(),
    word<"action">(),
    word<"hidden">(),
    word<"+sip.instance">(),
    word<"reg-id">(),
    word<"privacy">(),
    word<"counter">(),
    word<"level">(),
    // parameter values
    word<"phone">(),
    word<"ip">(),
    word<"uac">(),
    word<"uas">(),
    word<"on">(),
    word<"yes">(),
    word<"no">(),
    word<"full">(),
    word<"off">(),
    word<"true">(),
    word<"false">(),
    word<"required">(),
    word<"optional">(),
    word<"proxy">(),
    word<"redirect">(),
    word<"0">(),
    word<"1">(),
    // digest
    word<"realm">(),
    word<"nonce">(),
    word<"opaque">(),
    word<"stale">(),
    word<"algorithm">(),
    word<"qop">(),
    word<"domain">(),
    word<"username">(),
    word<"uri">(),
    word<"response">(),
    word<"cnonce">(),
    word<"nc">(),
    word<"nextnonce">(),
    word<"rspauth">(),
    word<"MD5">(),
    word<"MD5-sess">(),
    word<"auth">(),
    word<"auth-int">(),
    word<"FALSE">(),
    word<"TRUE">(),
    word<"00000001">(),
    // option tags and event packages
    word<"100rel">(),
    word<"timer">(),
    word<"replaces">(),
    word<"precondition">(),
    word<"histinfo">(),
    word<"path">(),
    word<"gruu">(),
    word<"outbound">(),
    word<"eventlist">(),
    word<"norefersub">(),
    word<"tdialog">(),
    word<"join">(),
    word<"from-change">(),
    word<"sec-agree">(),
    word<"pref">(),
    word<"answermode">(),
    word<"ice">(),
    word<"resource-priority">(),
    word<"199">(),
    word<"talk">(),
    word<"hold">(),
    word<"conference">(),
    word<"dialog">(),
    word<"presence">(),
    word<"reg">(),
    word<"message-summary">(),
    word<"check-sync">(),
    word<"kpml">(),
    // media types and codings
    word<"application">(),
    word<"sdp">(),
    word<"text">(),
    word<"plain">(),
    word<"html">(),
    word<"multipart">(),
    word<"mixed">(),
    word<"message">(),
    word<"sipfrag">(),
    word<"dtmf-relay">(),
    word<"pidf+xml">(),
    word<"dialog-info+xml">(),
    word<"simple-message-summary">(),
    word<"gzip">(),
    word<"identity">(),
    word<"en">(),
    word<"utf-8">(),
    word<"session">(),
    word<"none">(),
    // phrases and hosts
    word<"OK">(),
    word<"Ok">(),
    word<"Trying">(),
    word<"Ringing">(),
    word<"localhost">(),
    word<"anonymous">(),
    word<"anonymous.invalid">(),
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
            auto& ways = m_ways[bucketOf(s_words[i]->c_str(), s_words[i]->length())];
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
        KxStringBuffer* const word = s_words[way - 1];
        if (word->length() == n && std::memcmp(word->c_str(), text.data(), n) == 0) {
            return word;
        }
    }
    return nullptr;
}
