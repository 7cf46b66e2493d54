#include "util/KxWords.h"

#include "util/KxBytes.h"
#include "util/KxString.h"

#include <algorithm>
#include <array>

namespace {

/** The words, each followed by a blank. The first is the empty one. */
constexpr std::string_view kWords =
    // methods
    " INVITE ACK BYE CANCEL OPTIONS REGISTER PRACK UPDATE INFO REFER NOTIFY SUBSCRIBE MESSAGE PUBLISH "
    // protocol, transports, schemes
    "SIP 2.0 UDP TCP TLS SCTP WS WSS udp tcp tls sctp ws wss sip sips tel "
    // parameter names
    "branch rport received maddr ttl tag lr transport user method expires q ob gr refresher handling charset "
    "boundary id reason retry-after duration to-tag from-tag early-only keep ftag purpose action hidden "
    "+sip.instance reg-id privacy counter level "
    // parameter values
    "phone ip uac uas on yes no full off true false required optional proxy redirect 0 1 "
    // digest
    "realm nonce opaque stale algorithm qop domain username uri response cnonce nc nextnonce rspauth MD5 MD5-sess "
    "auth auth-int FALSE TRUE 00000001 "
    // option tags and event packages
    "100rel timer replaces precondition histinfo path gruu outbound eventlist norefersub tdialog join from-change "
    "sec-agree pref answermode ice 199 talk hold conference dialog presence reg check-sync kpml "
    // media types and codings
    "application sdp text plain html multipart mixed message sipfrag dtmf-relay pidf+xml gzip identity en utf-8 "
    "session none "
    // phrases and hosts
    "OK Ok Trying Ringing localhost anonymous ";

constexpr std::size_t kLongestWord = 13; // longer texts are rarely words, and are not looked up
constexpr int kBucketBits = 9;
constexpr std::size_t kWays = 2;
constexpr std::uint64_t kSpread = 0xCB71FB3D7EEBD501ULL; // hashes these words so that no bucket gets a third one

/** The words by their KxBytes::Ends; a bucket holds up to two. Filled when the library is loaded; a string made before
    that is copied like any other text. */
class Table {
public:
    struct Way {
        KxBytes::Ends ends{"", 0};
        KxStringBuffer* word = nullptr;
    };

    Table() {
        std::replace_copy(kWords.begin(), kWords.end(), m_texts.begin(), ' ', '\0');
        for (const char* at = m_texts.begin(); at != m_texts.end(); at += std::strlen(at) + 1) {
            add(at, std::strlen(at));
        }
    }

    std::array<Way, kWays>& bucket(const KxBytes::Ends& ends) {
        return m_buckets[ends.both * kSpread >> (64 - kBucketBits)];
    }

private:
    void add(const char* text, std::size_t length) {
        const KxBytes::Ends ends(text, length);
        for (Way& way : bucket(ends)) {
            if (way.word == nullptr) {
                way = {ends, (new KxConstString(text, length))->constant()};
                return;
            }
        } // a third word of a bucket is left out: it is copied like any other text
    }

    std::array<char, kWords.size()> m_texts;
    std::array<std::array<Way, kWays>, std::size_t{1} << kBucketBits> m_buckets{};
};

Table s_table;

/** The constant with these ends, or null. */
[[gnu::always_inline]] inline KxStringBuffer* find(const KxBytes::Ends& ends) {
#pragma GCC unroll 2
    for (const Table::Way& way : s_table.bucket(ends)) {
        if (way.ends == ends) {
            return way.word;
        }
    }
    return nullptr;
}

} // namespace

KxStringBuffer* KxWords::findOrCopy(std::string_view text) {
    const std::size_t size = text.size();
    KxStringBuffer* known = nullptr;
    if (size >= 4 && size <= 8) { // Ends has no other branch then; see KxBytes
        known = find(KxBytes::Ends(text.data(), size));
    } else if (size >= 1 && size <= 3) {
        known = find(KxBytes::Ends(text.data(), size));
    } else if (size <= kLongestWord) {
        known = find(KxBytes::Ends(text.data(), size));
        if (known != nullptr && !KxBytes::equal(known->c_str(), text.data(), size)) {
            known = nullptr;
        }
    }
    return known != nullptr ? known : KxStringBuffer::createHeld(text);
}
