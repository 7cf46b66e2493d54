#include "util/KxWords.h"

#include "util/KxBytes.h"
#include "util/KxString.h"

#include <algorithm>
#include <array>
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
    return s_word<kLiteral>.constant();
}

/** Filled when the library is loaded; a string made before that is copied like any other text. */
KxStringBuffer* const s_words[] = {
    // methods
    word<"">(),
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
    word<"199">(),
    word<"talk">(),
    word<"hold">(),
    word<"conference">(),
    word<"dialog">(),
    word<"presence">(),
    word<"reg">(),
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
};

constexpr std::size_t kWordCount = std::size(s_words);
constexpr std::size_t kLongestWord = 13; // longer texts are rarely words, and are not looked up
constexpr int kBucketBits = 9;
constexpr std::size_t kWays = 2;

/** The words by their KxBytes::Ends; a bucket holds up to two. */
struct Table {
    struct Way {
        KxBytes::Ends ends{"", 0};
        KxStringBuffer* word = nullptr;
    };

    Table() {
        for (std::size_t i = 0; i < kWordCount; ++i) {
            const KxBytes::Ends ends(s_words[i]->c_str(), s_words[i]->length());
            for (Way& way : bucket(ends)) {
                if (way.word == nullptr) {
                    way = {ends, s_words[i]};
                    break;
                }
            } // a third word of a bucket is left out: it is copied like any other text
        }
    }
    std::array<Way, kWays>& bucket(const KxBytes::Ends& ends) { return m_buckets[ends.hash(kBucketBits)]; }

    std::array<std::array<Way, kWays>, std::size_t{1} << kBucketBits> m_buckets{};
};

Table s_table;

} // namespace

namespace {

[[gnu::always_inline]] inline KxStringBuffer* lookUp(std::string_view text) {
    if (text.size() > kLongestWord) {
        return nullptr;
    }
    const KxBytes::Ends ends(text.data(), text.size());
    for (const Table::Way& way : s_table.bucket(ends)) {
        if (way.ends == ends && way.word != nullptr &&
            (text.size() <= 8 || KxBytes::equal(way.word->c_str(), text.data(), text.size()))) {
            return way.word;
        }
    }
    return nullptr;
}

} // namespace

KxStringBuffer* KxWords::find(std::string_view text) {
    return lookUp(text);
}

KxStringBuffer* KxWords::findOrCopy(std::string_view text) {
    KxStringBuffer* const known = lookUp(text);
    return known != nullptr ? known : KxStringBuffer::createHeld(text);
}
