#pragma once

#include <cstddef>
#include <cstdint>

/** Identifies a kind of header. Below KxHeaderIDs::kCount it is also the number of its slot in a message; the others
    are a host's own, which KxSipHeader::sNewHeaderID hands out. */
using HeaderID = std::uint32_t;

/** What a message may have of a kind of header, in the RFC grammar. A second header of a kind that may be there once
    makes the message incomplete. [RFC 3261 7.3.1] */
enum class KxSipHeaderUse : std::uint8_t {
    List,      ///< Any number of lines, with commas between values that are not in quotes or "<>".
    EmptyList, ///< The same, also without a value.
    Alone,     ///< Any number of lines, with one value each.
    Once       ///< One line, with one value.
};

/** All identifiers of the library. Numbers not listed are unused. */
namespace KxHeaderIDs {

inline constexpr HeaderID kNone = 0;
inline constexpr HeaderID kVia = 1;
inline constexpr HeaderID kFrom = 2;
inline constexpr HeaderID kTo = 3;
inline constexpr HeaderID kCSeq = 4;
inline constexpr HeaderID kCallId = 5;
inline constexpr HeaderID kContentLength = 6;
inline constexpr HeaderID kAccept = 7;
inline constexpr HeaderID kAcceptEncoding = 8;
inline constexpr HeaderID kAcceptLanguage = 9;
inline constexpr HeaderID kAlertInfo = 10;
inline constexpr HeaderID kAllow = 11;
inline constexpr HeaderID kAllowEvents = 12;
inline constexpr HeaderID kCCDiversion = 13;
inline constexpr HeaderID kAuthenticationInfo = 14;
inline constexpr HeaderID kAuthorization = 15;
inline constexpr HeaderID kCallInfo = 16;
inline constexpr HeaderID kContentDisposition = 17;
inline constexpr HeaderID kContact = 18;
inline constexpr HeaderID kDate = 19;
inline constexpr HeaderID kContentEncoding = 20;
inline constexpr HeaderID kContentType = 21;
inline constexpr HeaderID kErrorInfo = 22;
inline constexpr HeaderID kEvent = 23;
inline constexpr HeaderID kInReplyTo = 24;
inline constexpr HeaderID kMIMEVersion = 25;
inline constexpr HeaderID kExpires = 26;
inline constexpr HeaderID kOrganization = 27;
inline constexpr HeaderID kPriority = 28;
inline constexpr HeaderID kMaxForwards = 29;
inline constexpr HeaderID kRecordRoute = 30;
inline constexpr HeaderID kMinExpires = 31;
inline constexpr HeaderID kMinSE = 32;
inline constexpr HeaderID kReferTo = 33;
inline constexpr HeaderID kReferredBy = 34;
inline constexpr HeaderID kProxyAuthenticate = 35;
inline constexpr HeaderID kProxyAuthorization = 36;
inline constexpr HeaderID kProxyRequire = 37;
inline constexpr HeaderID kRAck = 38;
inline constexpr HeaderID kRSeq = 39;
inline constexpr HeaderID kResponseKey = 40;
inline constexpr HeaderID kRetryAfter = 41;
inline constexpr HeaderID kRoute = 42;
inline constexpr HeaderID kReplaces = 43;
inline constexpr HeaderID kRequire = 44;
inline constexpr HeaderID kServer = 45;
inline constexpr HeaderID kSession = 46;
inline constexpr HeaderID kTimestamp = 47;
inline constexpr HeaderID kUserAgent = 48;
inline constexpr HeaderID kSessionExpires = 49;
inline constexpr HeaderID kWarning = 50;
inline constexpr HeaderID kSubject = 51;
inline constexpr HeaderID kSupported = 53;
inline constexpr HeaderID kUnknown = 55;
inline constexpr HeaderID kUnsupported = 56;
inline constexpr HeaderID kWWWAuthenticate = 58;

/** The number of slots of a message. */
inline constexpr std::size_t kCount = 60;
/** The largest identifier of a host's own kinds, which begin at kCount. */
inline constexpr HeaderID kLast = 255;
static_assert(kWWWAuthenticate < kCount && kUnknown < kCount);

} // namespace KxHeaderIDs
