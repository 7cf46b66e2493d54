#include "sipobject/messages/KxSipRequestLine.h"

#include "sipobject/KxSipGrammar.h"
#include "sipobject/KxSipLine.h"
#include "sipobject/address/KxSipURL.h"
#include "sipobject/address/KxTelURL.h"
#include "util/KxBytes.h"
#include "util/KxScannedText.h"

#include <algorithm>

namespace {

constexpr KxCharSet kLineFeed("\n");
constexpr const char* kWrongScheme = "Unsupported Uri Scheme";
constexpr char kUsualEnd[] = " SIP/2.0";

/** The place of the first blank from `start` on, or npos. */
std::size_t findBlank(std::string_view line, std::size_t start) {
    const char* const end = line.data() + line.size();
    const char* const at = KxBytes::findAny<' '>(line.data() + start, end);
    return at == end ? std::string_view::npos : static_cast<std::size_t>(at - line.data());
}

/** Whether the scheme begins with "sip" but is longer, and is not known. The parser of SIP URLs would report it as a
    syntax error. */
bool onlyBeginsLikeSip(std::string_view uri) {
    if (KxBytes::startsWith(uri, " sip:")) {
        return false;
    }
    const std::size_t begin = std::min(uri.find_first_not_of(" <\t"), uri.size());
    const std::string_view scheme = KxAscii::trim(uri.substr(begin, uri.find(':') - begin));
    return uri.find(':') != std::string_view::npos && scheme.size() > 3 &&
           KxAscii::equalsNoCase(scheme.substr(0, 3), KxSipURL::sToken) &&
           !(KxSipGrammar::sReadsURLsStrictly() && KxSipURL::sSecureToken.equalsNoCase(scheme));
}

bool isNoPlainURI(std::string_view text) {
    const char* const end = text.data() + text.size();
    return KxBytes::findAny<'<', '>', '"', '\t'>(text.data(), end) != end;
}

KxSipRequestLine readURI(std::string_view text) {
    if (onlyBeginsLikeSip(text)) {
        return {nullptr, kWrongScheme, KX_STATUS_UNSUPPORTED_URI_SCHEME};
    }
    KxSipLine line(text);
    KxHandle<KxURI> uri;
    KxURI::sConstructFrom(line, true, uri).raiseIfAny();
    if (uri.isNil()) {
        return {nullptr, "Invalid SIP URI"};
    }
    if (KxSipGrammar::sHasExactStartLines() && (isNoPlainURI(text) || uri->hasHeaders())) {
        return {nullptr, "Invalid SIP URI"};
    }
    const KxString& scheme = uri->getScheme();
    if (!uri->isSipURL() && !scheme.equalsNoCase(KxSipURL::sToken) && !scheme.equalsNoCase(KxTelURL::sToken)) {
        return {uri, kWrongScheme, KX_STATUS_UNSUPPORTED_URI_SCHEME};
    }
    return {uri};
}

} // namespace

KxSipRequestLine KxSipRequestLine::sRead(KxInputStream& in) {
    KxScannedText scanned;
    std::string_view line = scanned.until(in, kLineFeed);
    if (in.read() < 0) {
        return {nullptr, "Invalid Start-Line for SIP request: reached end of message looking for end-of-line",
                KX_STATUS_UNUSABLE};
    }
    if (line.empty() || line.back() != '\r') {
        return {nullptr, "Invalid Start-Line for SIP request: no CR before LF", KX_STATUS_UNUSABLE};
    }
    line.remove_suffix(1);
    const bool isUsual = KxBytes::endsWith(line, kUsualEnd);
    const std::size_t first = findBlank(line, 0);
    const std::size_t last = isUsual ? line.size() - (sizeof kUsualEnd - 1) : line.rfind(' ');
    const bool one = first != std::string_view::npos && first == last;
    const bool two = first == 0 && findBlank(line, 1) == last;
    if (!two && (!one || KxSipGrammar::sHasExactStartLines())) {
        return {nullptr, "Invalid Start-Line for SIP request: does not contain 1 or 2 spaces", KX_STATUS_UNUSABLE};
    }
    if (last == 0) {
        return {nullptr, "Invalid Start-Line for SIP request"};
    }
    if (!isUsual) {
        const std::string_view version = line.substr(last + 1);
        const bool isCaseless = KxSipGrammar::sIgnoresCaseOfVersion();
        const auto is = [isCaseless](std::string_view text, std::string_view expected) {
            return isCaseless ? KxAscii::equalsNoCase(text, expected) : text == expected;
        };
        if (!is(version, "SIP/2.0")) {
            const bool isOther = version.size() == 7 && is(version.substr(0, 4), "SIP/");
            return {nullptr, "Invalid SIP Version", isOther ? KX_STATUS_VERSION_NOT_SUPPORTED : KX_STATUS_VALID};
        }
    }
    return readURI(line.substr(0, last));
}
