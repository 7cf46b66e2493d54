#include "sipheaders/KxSipIdentityHeader.h"

#include "sipheaders/KxSipBase64Url.h"

#include <algorithm>
#include <array>

constinit const KxConstString KxSipIdentityHeader::sToken{"Identity"};
constinit const KxConstString KxSipIdentityHeader::sRFCCompactToken{"y"};

const HeaderID KxSipIdentityHeader::kHeaderID = KxSipHeader::sNewHeaderID();

namespace {

constexpr std::string_view kInfoEnd(" \t\r\n\"<>\0", 8); ///< What can't be in brackets.
constexpr KxSipFault kInvalidIdentity{"Invalid Identity header"};

bool isPassport(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return KxAscii::isAlpha(c) || KxAscii::isDigit(c) ||
               std::string_view("-_+/=.").find(c) != std::string_view::npos;
    });
}

/** Takes a value in brackets, with these; empty if there is none. */
std::string_view takeInfoURI(KxSipLine& line) {
    const std::string_view text = line.window();
    const std::size_t end = text.find_first_of(kInfoEnd, 1);
    if (end == std::string_view::npos || end == 1 || text[end] != '>') {
        return {};
    }
    line.consume(end + 1);
    return text.substr(0, end + 1);
}

} // namespace

void KxSipIdentityHeader::setPassport(KxSipText passport) {
    if (!isPassport(passport.view())) {
        kInvalidIdentity.raise();
    }
    m_passport = passport.line();
}

/** The part of a token of three; empty for another token. */
std::string_view KxSipIdentityHeader::part(std::size_t index) const {
    const std::string_view text = m_passport.view();
    const std::size_t first = text.find('.');
    const std::size_t last = text.rfind('.');
    if (first == last || text.find('.', first + 1) != last) {
        return {};
    }
    const std::array parts{text.substr(0, first), text.substr(first + 1, last - first - 1), text.substr(last + 1)};
    return parts[index];
}

std::optional<std::string> KxSipIdentityHeader::decoded(std::size_t index) const {
    return std::count(m_passport.view().begin(), m_passport.view().end(), '.') == 2
               ? KxSipBase64Url::sDecode(part(index))
               : std::nullopt;
}

KxString KxSipIdentityHeader::getInfo() const {
    const KxString info = getParameter("info");
    const bool hasBrackets = info.view().starts_with('<') && info.view().ends_with('>');
    return hasBrackets ? info.substr(1, info.length() - 2) : KxSipParameterValue::sText(info);
}

void KxSipIdentityHeader::setInfo(KxSipText uri) {
    if (uri.isNone() || uri.view().find_first_of(kInfoEnd) != std::string_view::npos) {
        kInvalidIdentity.raise();
    }
    setParameter("info", KxString(std::string("<").append(uri.view()).append(">")));
}

/** generic-param, or a name with a value in brackets, which KxSipParameterText refuses. */
bool KxSipIdentityHeader::sReadParameter(KxSipLine& line, KxParameters& parameters) {
    const std::string_view name = line.token(sDelimeters);
    if (!KxSipParameterValue::sIsToken(name)) {
        return false;
    }
    std::string_view value;
    if (KxStreamTokenizer::sDiscardWhite(line) == '=') {
        line.consume(1);
        const int first = KxStreamTokenizer::sDiscardWhite(line);
        value = first == '<' ? takeInfoURI(line) : KxSipParameterValue::sTake(line);
        if (value.empty() && (first == '<' || first == '"')) {
            return false;
        }
    }
    parameters.setValue(name, value.empty() ? KxString("") : KxString(value));
    return true;
}

KxSipFault KxSipIdentityHeader::parseValue(KxSipLine& line) {
    static constexpr KxCharSet kEnd{" \t\r\n,;"};
    const std::string_view passport = line.token(kEnd);
    bool isValid = isPassport(passport);
    KxSharedParameters read;
    KxParameters& parameters = read.write();
    while (isValid && KxStreamTokenizer::sDiscardWhite(line) == ';') {
        line.consume(1);
        isValid = sReadParameter(line, parameters);
    }
    if (!isValid) {
        return kInvalidIdentity;
    }
    KxString text(passport);
    m_parameters.write() = parameters;
    m_passport = std::move(text);
    return {};
}

void KxSipIdentityHeader::serializeValue(KxOutputStream& out) const {
    out.writeAll(m_passport);
    serializeParameters(out);
}
