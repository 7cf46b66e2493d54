#pragma once

#include "sipobject/headers/HeaderID.h"

#include <array>
#include <initializer_list>

/** What the RFCs say about kinds of header, for the RFC grammar. A kind of which nothing is known here is a list that
    must not be empty and may be repeated. A host says it of kinds of its own. */
class KxSipHeaderKinds {
public:
    KxSipHeaderKinds() = delete;

    /** Whether a comma ends a value. */
    static bool sIsList(HeaderID id) { return sIsOwn(id) ? sUse(id) <= Use::EmptyList : !sHas(kOnce | kAlone, id); }
    /** Whether every comma ends a value, as in a list of tokens; else not one in quotes or "<>". */
    static constexpr bool sIsTokenList(HeaderID id) { return sHas(kTokenLists, id); }
    /** Whether a list may have no element, or a text no character. [RFC 3261 20.1, 20.2, 20.3, 20.5, 20.25, 20.36,
        20.37; 25.1 extension-header] */
    static bool sMayBeEmptyList(HeaderID id) { return sIsOwn(id) ? sUse(id) == Use::EmptyList : sHas(kEmptyLists, id); }
    static constexpr bool sMayBeEmptyText(HeaderID id) { return sHas(kEmptyTexts, id); }
    /** Whether proxies work with it, so that a message in which it can't be read is refused. [RFC 3261 16.3] */
    static constexpr bool sIsNeededByProxies(HeaderID id) { return sHas(kNeeded, id); }
    /** Whether a message has at most one, which proxies do not need. [RFC 3261 7.3.1, 20] */
    static bool sIsOnce(HeaderID id) { return sIsOwn(id) ? sUse(id) == Use::Once : sHas(kOnce, id); }

    /** Notes what a host says about a kind of its own, before a header of that kind is read. */
    static void sNoteOwn(HeaderID id, KxSipHeaderUse use) { s_uses[id - KxHeaderIDs::kCount] = use; }

private:
    using Use = KxSipHeaderUse;

    static constexpr bool sIsOwn(HeaderID id) { return id >= KxHeaderIDs::kCount; }
    static Use sUse(HeaderID id) { return id <= KxHeaderIDs::kLast ? s_uses[id - KxHeaderIDs::kCount] : Use::List; }
    static constexpr std::uint64_t sSet(std::initializer_list<HeaderID> ids) {
        std::uint64_t set = 0;
        for (const HeaderID id : ids) {
            set |= std::uint64_t{1} << id;
        }
        return set;
    }
    static constexpr bool sHas(std::uint64_t set, HeaderID id) {
        return id < KxHeaderIDs::kCount && (set >> id & 1) != 0;
    }

    static std::array<Use, KxHeaderIDs::kLast + 1 - KxHeaderIDs::kCount> s_uses; ///< Of own kinds.

    static const std::uint64_t kOnce, kAlone, kTokenLists, kEmptyLists, kEmptyTexts, kNeeded;
};

inline constexpr std::uint64_t KxSipHeaderKinds::kOnce = sSet({KxHeaderIDs::kContentDisposition,
                                                               KxHeaderIDs::kContentType,
                                                               KxHeaderIDs::kDate,
                                                               KxHeaderIDs::kEvent,
                                                               KxHeaderIDs::kExpires,
                                                               KxHeaderIDs::kMIMEVersion,
                                                               KxHeaderIDs::kMinExpires,
                                                               KxHeaderIDs::kMinSE,
                                                               KxHeaderIDs::kOrganization,
                                                               KxHeaderIDs::kPriority,
                                                               KxHeaderIDs::kRAck,
                                                               KxHeaderIDs::kReferTo,
                                                               KxHeaderIDs::kReferredBy,
                                                               KxHeaderIDs::kReplaces,
                                                               KxHeaderIDs::kRetryAfter,
                                                               KxHeaderIDs::kRSeq,
                                                               KxHeaderIDs::kServer,
                                                               KxHeaderIDs::kSubject,
                                                               KxHeaderIDs::kTimestamp,
                                                               KxHeaderIDs::kUserAgent,
                                                               KxHeaderIDs::kSessionExpires});
/** The other kinds of which a line has one value. */
inline constexpr std::uint64_t KxSipHeaderKinds::kAlone =
    sSet({KxHeaderIDs::kFrom, KxHeaderIDs::kTo, KxHeaderIDs::kCallId, KxHeaderIDs::kCSeq, KxHeaderIDs::kContentLength,
          KxHeaderIDs::kMaxForwards, KxHeaderIDs::kAuthorization, KxHeaderIDs::kProxyAuthorization,
          KxHeaderIDs::kWWWAuthenticate, KxHeaderIDs::kProxyAuthenticate, KxHeaderIDs::kAuthenticationInfo,
          KxHeaderIDs::kResponseKey});
inline constexpr std::uint64_t KxSipHeaderKinds::kTokenLists =
    sSet({KxHeaderIDs::kAllow, KxHeaderIDs::kAllowEvents, KxHeaderIDs::kContentEncoding, KxHeaderIDs::kInReplyTo,
          KxHeaderIDs::kProxyRequire, KxHeaderIDs::kRequire, KxHeaderIDs::kSession, KxHeaderIDs::kSupported,
          KxHeaderIDs::kUnsupported});
inline constexpr std::uint64_t KxSipHeaderKinds::kEmptyLists =
    sSet({KxHeaderIDs::kAccept, KxHeaderIDs::kAcceptEncoding, KxHeaderIDs::kAcceptLanguage, KxHeaderIDs::kAllow,
          KxHeaderIDs::kSupported});
inline constexpr std::uint64_t KxSipHeaderKinds::kEmptyTexts =
    sSet({KxHeaderIDs::kOrganization, KxHeaderIDs::kSubject, KxHeaderIDs::kUnknown});
inline constexpr std::uint64_t KxSipHeaderKinds::kNeeded =
    sSet({KxHeaderIDs::kVia, KxHeaderIDs::kFrom, KxHeaderIDs::kTo, KxHeaderIDs::kCallId, KxHeaderIDs::kCSeq,
          KxHeaderIDs::kMaxForwards, KxHeaderIDs::kContentLength, KxHeaderIDs::kRoute, KxHeaderIDs::kRequire,
          KxHeaderIDs::kProxyRequire});
