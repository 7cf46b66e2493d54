// Header lines. Laws: a header that was read can be written, and the written text is read and written as itself. A copy
// is written as its original. A stream that delivers one byte at a time reads as memory does. What is read of a header
// of sipheaders/ is written as it was received.

#include "fuzz/URIRound.h"
#include "sipobject/auth/KxSipDigestCredentialsInfo.h"
#include "sipobject/headers/KxSipAcceptEncodingHeader.h"
#include "sipobject/headers/KxSipAcceptHeader.h"
#include "sipobject/headers/KxSipAcceptLanguageHeader.h"
#include "sipobject/headers/KxSipAlertInfoHeader.h"
#include "sipobject/headers/KxSipAuthorizationHeader.h"
#include "sipobject/headers/KxSipCCDiversionHeader.h"
#include "sipobject/headers/KxSipContactHeader.h"
#include "sipobject/headers/KxSipContentDispositionHeader.h"
#include "sipobject/headers/KxSipContentTypeHeader.h"
#include "sipobject/headers/KxSipErrorInfoHeader.h"
#include "sipobject/headers/KxSipEventHeader.h"
#include "sipobject/headers/KxSipFromHeader.h"
#include "sipobject/headers/KxSipMinSEHeader.h"
#include "sipobject/headers/KxSipRecordRouteHeader.h"
#include "sipobject/headers/KxSipReferredByHeader.h"
#include "sipobject/headers/KxSipResponseKeyHeader.h"
#include "sipobject/headers/KxSipRetryAfterHeader.h"
#include "sipobject/headers/KxSipRouteHeader.h"
#include "sipobject/headers/KxSipSessionExpiresHeader.h"
#include "sipobject/headers/KxSipSessionHeader.h"
#include "sipobject/headers/KxSipToHeader.h"
#include "sipobject/headers/KxSipViaHeader.h"
#include "tests/sipobject/support/PlainPropertyList.h"

namespace {

constexpr std::string_view kNames =
    "Accept Accept-Encoding Accept-Language Alert-Info Allow Allow-Events Authentication-Info Authorization "
    "CC-Diversion CSeq Call-ID Contact Content-Disposition Content-Encoding Content-Length Content-Type Date "
    "Error-Info Event Expires From In-Reply-To MIME-Version Max-Forwards Min-Expires Min-SE Organization "
    "Priority Proxy-Authenticate Proxy-Authorization Proxy-Require RAck RSeq Record-Route Refer-To "
    "Referred-By Replaces Require Response-Key Retry-After Route Server Session Session-Expires Subject "
    "Supported Timestamp To Unsupported User-Agent Via WWW-Authenticate Warning c e f i k l m s t v x "
    // of sipheaders/
    "Accept-Contact Accept-Resource-Priority Diversion Geolocation History-Info Identity Max-Breadth "
    "P-Access-Network-Info P-Asserted-Identity P-Associated-URI P-Called-Party-ID P-Charging-Vector P-Early-Media "
    "P-Preferred-Identity Path Privacy Reason Refer-Sub Reject-Contact Remote-Party-ID Reply-To Request-Disposition "
    "Resource-Priority SIP-ETag SIP-If-Match Security-Client Security-Server Security-Verify Service-Route Session-ID "
    "Subscription-State User-to-User ";
static_assert(std::count(kNames.begin(), kNames.end(), ' ') == 53 + 11 + 32);

/** Returns a name for every number. */
std::string nameOf(std::size_t number) {
    std::size_t begin = 0;
    for (; number != 0; --number) {
        begin = (kNames.find(' ', begin) + 1) % kNames.size();
    }
    return std::string(kNames.substr(begin, kNames.find(' ', begin) - begin));
}

void checkCopies(const KxHandle<KxSipHeader>& header, std::string_view text) {
    std::string copies;
    for (const KxSipHeader* value = header.get(); value != nullptr; value = value->getNext().get()) {
        const KxHandle<KxSipHeader> copy(static_cast<KxSipHeader*>(value->clone()));
        copies += written(*copy);
    }
    same("a copy is written as its original", text, copies);
    const KxHandle<KxSipHeader> alone(static_cast<KxSipHeader*>(header->clone()));
    checkWriting(*alone, written(*alone));
    same("a header from which was copied is written as before", text, written(*header));
}

/** Reads and writes all headers of a text; returns what was written, and the failure that ended it. */
std::string readAll(std::string_view text) {
    const Block block(text);
    KxByteArrayInputStream in(block.view());
    std::string all;
    try {
        while (in.peek() >= 0) {
            all += written(*KxSipHeader::sConstructFrom(in));
        }
    } catch (const KxHandle<KxException>& failure) {
        all.append("! ").append(failure->getExceptionMessage().view());
    }
    return all;
}

bool hasOpenQuote(std::string_view text) {
    bool open = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        open ^= text[i] == '"';
        i += open && text[i] == '\\' ? 1 : 0;
    }
    return open;
}

// The following functions detect values whose written form, by design, reads as another value.

/** An open quote includes the parameters after it when the list is read again: a repeated parameter takes the place of
    the earlier one with its name, and may be before others now. */
bool losesParameters(const KxParameters& list) {
    return list.size() > 1 &&
           std::any_of(list.begin(), std::next(list.begin(), static_cast<std::ptrdiff_t>(list.size()) - 1),
                       [](const auto& pair) {
                           return hasOpenQuote(std::string(pair.name.view()).append("=").append(pair.value.view()));
                       });
}

/** If the URL consumed the ";" after a ">", the parameter list is read only if its first character is text. */
bool isOverlooked(const KxParameters& list) {
    const std::string first = list.getString().c_str();
    return !list.empty() && (static_cast<signed char>(first[0]) <= '\r');
}

/** A display name that was directly before the "<" is one character longer when it is written. */
template <class H>
bool changesAddress(const KxSipHeader& header) {
    const auto* const address = dynamic_cast<const H*>(&header);
    if (address == nullptr || address->getNameAddress().isNil()) {
        return false;
    }
    if constexpr (requires { address->getParameters(); }) {
        if (losesParameters(*address->getParameters()) || isOverlooked(*address->getParameters())) {
            return true;
        }
    }
    const KxSipNameAddress& value = *address->getNameAddress();
    return value.getDisplayName().length() >= 1023 || changes(*value.getURI());
}

template <class... H>
bool changesAnyAddress(const KxSipHeader& header) {
    return (changesAddress<H>(header) || ...);
}

template <class... H>
bool losesAnyParameters(const KxSipHeader& header) {
    const auto loses = [](const auto* typed) { return typed != nullptr && losesParameters(*typed->getParameters()); };
    return (loses(dynamic_cast<const H*>(&header)) || ...);
}

template <class... H>
bool changesAnyURI(const KxSipHeader& header) {
    const auto changesURI = [](const auto* typed) {
        return typed != nullptr && !typed->getURI().isNil() && changes(*typed->getURI());
    };
    return (changesURI(dynamic_cast<const H*>(&header)) || ...);
}

/** A property list reads as another if names, or values that are written without quotes, contain what only quotes
    protect, or if the last property has no value; fuzz_digest checks this in detail. */
bool changesList(std::string_view list, bool isInfo, std::initializer_list<std::string_view> bare) {
    return PlainPropertyList(list, isInfo).written(bare) != list;
}

/** A value that was quoted in the credentials, but is written without quotes, may end at a comma when it is read
    again. */
bool writesBareComma(const KxSipAuthorizationHeader& header) {
    const auto credentials = KxHandleCast<KxSipDigestCredentialsInfo>(header.getCredentials());
    return credentials->getProperty("algorithm").indexOf(",") >= 0 || credentials->getProperty("nc").indexOf(",") >= 0;
}

bool changes(const KxSipHeader& header, std::string_view value) {
    constexpr std::size_t kScheme = 7; // "Digest "
    switch (header.getHeaderID()) {
    case KxHeaderIDs::kWWWAuthenticate:
    case KxHeaderIDs::kProxyAuthenticate:
        return changesList(value.substr(kScheme), false, {"algorithm", "stale", "uri"});
    case KxHeaderIDs::kAuthorization:
    case KxHeaderIDs::kProxyAuthorization:
        return writesBareComma(static_cast<const KxSipAuthorizationHeader&>(header)) ||
               changesList(value.substr(kScheme), false, {"algorithm", "nc"});
    case KxHeaderIDs::kAuthenticationInfo:
        return changesList(value, true, {"qop", "nc"});
    case KxHeaderIDs::kUnknown: // A name that is folded or has control characters around it is unknown, but is
                                // written without them.
        return header.getExpandedToken() != header.getToken();
    case KxHeaderIDs::kSupported:
    case KxHeaderIDs::kRequire:
    case KxHeaderIDs::kProxyRequire:
    case KxHeaderIDs::kUnsupported: // An empty option tag is kept, but a line with nothing on it is refused.
        return value.empty();
    case KxHeaderIDs::kReferTo: // Written without brackets, so that the parts within them are separated.
        return hasAnyOf(value, ";,<>\"%") || !KxAscii::equalsNoCase(value.substr(0, 4), "sip:");
    case KxHeaderIDs::kExpires: // A number after a form feed is read as a date.
        return !value.empty() && KxAscii::isDigit(value[0]);
    case KxHeaderIDs::kVia: { // A comment is written after the parameters and read as part of the last one.
        const auto& via = static_cast<const KxSipViaHeader&>(header);
        return losesParameters(*via.getParameters()) || (value.ends_with(')') && !via.getParameters()->empty());
    }
    case KxHeaderIDs::kReplaces:
        return hasOpenQuote(value);
    default:
        return losesAnyParameters<KxSipContentTypeHeader, KxSipAcceptHeader, KxSipAcceptEncodingHeader,
                                  KxSipAcceptLanguageHeader, KxSipContentDispositionHeader, KxSipEventHeader,
                                  KxSipSessionHeader, KxSipSessionExpiresHeader, KxSipMinSEHeader,
                                  KxSipRetryAfterHeader, KxSipResponseKeyHeader, KxSipAlertInfoHeader,
                                  KxSipErrorInfoHeader>(header) ||
               changesAnyURI<KxSipAlertInfoHeader, KxSipErrorInfoHeader>(header) ||
               changesAnyAddress<KxSipFromHeader, KxSipToHeader, KxSipContactHeader, KxSipRouteHeader,
                                 KxSipRecordRouteHeader, KxSipReferredByHeader, KxSipCCDiversionHeader>(header);
    }
}

void checkSecondRound(const KxSipHeader& chain, const std::string& text) {
    for (const KxSipHeader* value = &chain; value != nullptr && !isRFC(); value = value->getNext().get()) {
        const KxHandle<KxSipHeader> alone(static_cast<KxSipHeader*>(value->clone()));
        const std::string line = written(*alone);
        const std::size_t before = alone->getToken().length() + 2;
        if (changes(*value, std::string_view(line).substr(before, line.size() - before - 2))) {
            return;
        }
    }
    const std::string again = readAll(text);
    if (again != text) {
        fail("what was written is written again", text, again);
    }
}

/** A header of sipheaders/ with one value is written as it was received. */
void checkReceived(const KxSipHeader& header, std::string_view line) {
    const std::string_view value = line.substr(std::min(line.find(':'), line.size() - 1) + 1);
    std::string_view text = value.substr(0, value.find_first_of("\r\n"));
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    text = text.substr(0, text.find_last_not_of(" \t") + 1);
    const bool hasEmpty = text.starts_with(',') || text.ends_with(','); // elements of the list
    const bool isFolded = value.substr(value.find_first_of("\r\n") + 1).find_first_not_of("\r\n") != value.npos;
    if (header.getHeaderID() >= KxHeaderIDs::kCount && header.getNext().isNil() && !hasEmpty && !isFolded) {
        const KxString kept = header.getValueText();
        // Form feeds around a value are part of it, or white space: a line that can't be read with them is without.
        same("a value that nobody changed is written as received", kept == KxAscii::trim(text) ? kept : text, kept);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    if (size != 0 && data[0] >= 0x80) { // the name is given by number, otherwise it is in the text
        text.replace(0, 1, nameOf(data[0] - 0x80U) + ": ");
    }
    const Block block(text);
    KxByteArrayInputStream in(block.view());
    Dribble dribble(text);
    while (in.peek() >= 0) {
        const std::string_view line = in.window();
        std::string first;
        std::string second;
        KxHandle<KxSipHeader> header;
        try {
            header = KxSipHeader::sConstructFrom(in);
            first = written(*header);
        } catch (const KxHandle<KxException>& failure) {
            first = failure->getExceptionMessage().view();
            header = nullptr; // it may have been read: without a response, credentials need an MD5 to be written
        }
        try {
            second = written(*KxSipHeader::sConstructFrom(dribble));
        } catch (const KxHandle<KxException>& failure) {
            second = failure->getExceptionMessage().view();
        }
        if (in.window().size() >= line.size()) {
            fail("a line is consumed", line, in.window());
        }
        if (first != second) {
            fail("a stream that dribbles reads as memory", first, second);
        }
        if (!header.isNil()) {
            checkReceived(*header, line.substr(0, line.size() - in.window().size()));
            checkCopies(header, first);
            checkSecondRound(*header, first);
        }
    }
    return 0;
}
