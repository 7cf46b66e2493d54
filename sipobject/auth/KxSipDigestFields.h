#pragma once

#include "sipobject/auth/KxSipDigestAlgorithm.h"
#include "sipobject/auth/KxSipSha.h"
#include "util/KxBytes.h"
#include "util/KxException.h"
#include "util/KxHexEncoding.h"
#include "util/KxParameters.h"
#include "util/MD5.h"

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <type_traits>

/** The properties of digest credentials that are used for computing or written, found in one pass. An absent property
    has null data. */
class KxSipDigestFields {
public:
    /** The hexadecimal text of a digest. */
    template <class Raw>
    class Hex {
    public:
        explicit Hex(const Raw& digest) { KxHexEncoding::toHex(digest.view(), m_digits); }
        std::string_view view() const { return {m_digits, sizeof m_digits}; }

        /** As ==, but compares all digits even after a difference. */
        bool equalsInConstantTime(std::string_view other) const {
            if (other.size() != sizeof m_digits) {
                return false;
            }
            std::uint64_t difference = 0;
            for (std::size_t at = 0; at < sizeof m_digits; at += sizeof difference) {
                difference |=
                    KxBytes::load<std::uint64_t>(m_digits + at) ^ KxBytes::load<std::uint64_t>(other.data() + at);
            }
            return difference == 0;
        }

    private:
        char m_digits[2 * sizeof(Raw)];
    };

    explicit KxSipDigestFields(const KxParameters& properties) {
        for (const KxParameters::Pair& property : properties) {
            take(property);
        }
    }

    [[noreturn]] static void sRefuseAlgorithm() {
        KxException::sThrow("Unsupported Algorithm: Only MD5 is supported !!!");
    }
    /** The digest of the joined texts. */
    template <class Sum, class... Texts>
    [[gnu::always_inline]] static typename Sum::Raw sDigestOf(const Texts&... texts) {
        Sum sum;
        (sum.update(texts), ...);
        return sum.finish();
    }

    /** The digests of the fields, made with the class Sum. [RFC 7616 3.4] */
    template <class Sum>
    class Digests {
    public:
        using Raw = typename Sum::Raw;

        Digests(const KxSipDigestFields& fields, bool isSession) : m_fields(fields), m_isSession(isSession) {}

        Raw a1() const {
            const Raw digest = sDigestOf<Sum>(m_fields.username, ":", m_fields.realm, ":", m_fields.password);
            if (!m_isSession) [[likely]] {
                return digest;
            }
            return ofSession(digest);
        }
        Raw a2() const {
            if (!m_fields.isQop("auth-int")) {
                return sDigestOf<Sum>(m_fields.method, ":", m_fields.uri);
            }
            if (m_fields.entityBody.empty() && KxSipGrammar::sDigestsEmptyBody()) {
                return sDigestOf<Sum>(m_fields.method, ":", m_fields.uri, ":", Hex(sDigestOf<Sum>()).view());
            }
            return sDigestOf<Sum>(m_fields.method, ":", m_fields.uri, ":", m_fields.entityBody);
        }
        Raw response() const {
            const Hex first(a1());
            const Hex second(a2());
            if (m_fields.isQop("auth") || m_fields.isQop("auth-int")) {
                return sDigestOf<Sum>(first.view(), ":", m_fields.nonce, ":", m_fields.nc, ":", m_fields.cnonce, ":",
                                      m_fields.qop, ":", second.view());
            }
            return sDigestOf<Sum>(first.view(), ":", m_fields.nonce, ":", second.view());
        }
        /** The digest of a body. */
        Raw ofBody(std::string_view body) const { return sDigestOf<Sum>(body); }

    private:
        /** A1 of a session. Classic: the digest of raw bytes, which ends before the first zero byte. */
        [[gnu::cold, gnu::noinline]] Raw ofSession(const Raw& user) const {
            const bool isText = KxSipGrammar::sMakesSessionsFromDigits();
            const Hex digits(user);
            Sum sum;
            for (const std::string_view text : {isText ? digits.view() : user.view(), std::string_view(":"),
                                                m_fields.nonce, std::string_view(":"), m_fields.cnonce}) {
                const std::string_view head = isText ? text : text.substr(0, text.find('\0'));
                sum.update(head);
                if (head.size() != text.size()) {
                    break;
                }
            }
            return sum.finish();
        }

        const KxSipDigestFields& m_fields;
        const bool m_isSession;
    };

    /** Returns use(digests), where `digests` is the Digests of the algorithm. Throws KxException if it is not
        supported. */
    template <class Use>
    auto withDigests(Use use) const {
        const KxSipDigestAlgorithm named = KxSipDigestAlgorithm::sOf(algorithm);
        if (named.hash == KxSipDigestAlgorithm::Hash::MD5) [[likely]] {
            return use(Digests<MD5>(*this, named.isSession));
        }
        return withShaDigests(named, use);
    }

    std::string_view username;
    std::string_view realm;
    std::string_view password;
    std::string_view nonce;
    std::string_view algorithm;
    std::string_view opaque;
    std::string_view method;
    std::string_view uri;
    std::string_view qop;
    std::string_view cnonce;
    std::string_view nc;
    std::string_view entityBody;
    std::string_view received; ///< The received response.

private:
    /** As withDigests, for the other algorithms; apart, so that the compiler inlines MD5. */
    template <class Use>
    [[gnu::cold, gnu::noinline]] auto withShaDigests(KxSipDigestAlgorithm named, Use use) const {
        if (!named.isSupported()) {
            sRefuseAlgorithm();
        }
        return named.hash == KxSipDigestAlgorithm::Hash::SHA256 ? use(Digests<KxSipSha256>(*this, named.isSession))
                                                                : use(Digests<KxSipSha512_256>(*this, named.isSession));
    }
    bool isQop(std::string_view known) const {
        return qop == known || (KxSipGrammar::sReadsQopOptionsAsList() && KxAscii::equalsNoCase(qop, known));
    }
    [[gnu::always_inline]] void take(const KxParameters::Pair& property) {
        const std::string_view name = property.name;
        const KxBytes::Ends ends = KxBytes::Ends(name.data(), name.size()).folded();
        const auto takeAs = [&](const auto& known, std::string_view& field) {
            constexpr std::size_t kLength = sizeof known - 1;
            // Ends covers all of a name of up to eight letters, so equal ends mean an equal name
            const bool matches =
                ends == KxBytes::Ends(known, kLength).folded() &&
                (kLength <= 8 || KxBytes::equal(name.data(), known, kLength) || KxAscii::equalsNoCase(name, known));
            if (matches) {
                field = property.value;
            }
            return matches;
        };
        switch (name.size()) { // compare only with the names of that length
        case 2:
            takeAs("nc", nc);
            break;
        case 3:
            takeAs("uri", uri) || takeAs("qop", qop);
            break;
        case 5:
            takeAs("realm", realm) || takeAs("nonce", nonce);
            break;
        case 6:
            takeAs("opaque", opaque) || takeAs("cnonce", cnonce) || takeAs("method", method);
            break;
        case 8:
            takeAs("username", username) || takeAs("response", received) || takeAs("password", password);
            break;
        case 9:
            takeAs("algorithm", algorithm);
            break;
        case 11:
            takeAs("entity-body", entityBody);
            break;
        default:
            break;
        }
    }
};
