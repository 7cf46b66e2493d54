#include "sipobject/address/KxTelURL.h"

#include "core/FastString.h"
#include "sipobject/KxSipGrammar.h"
#include "sipobject/KxSipLine.h"
#include "sipobject/address/KxURIEquivalence.h"
#include "util/KxByteArrayOutputStream.h"

#include <algorithm>

namespace {

constexpr std::size_t kLongest = 1023;

/** Whether there are "tel:" and a number, with a "+" only at its start and without a colon, and no character up to the
    ">" or the line end is white space, a control character or one of <". [RFC 3966 3] */
bool isTelURL(std::string_view text) {
    std::string_view url = text.substr(0, text.find_first_of(">\n"));
    url = url.substr(0, url.size() - (url.ends_with('\r') ? 1 : 0));
    url.remove_prefix(std::min(url.find_first_not_of(' '), url.size())); // as before a Request-URI
    url.remove_prefix(url.starts_with('<') ? 1 : 0);
    const std::string_view start = url.substr(0, url.find(';'));
    return start.size() > 4 && KxAscii::equalsNoCase(start.substr(0, 4), "tel:") && start[4] != ':' &&
           start.find_first_of(":+", 5) == std::string_view::npos && std::all_of(url.begin(), url.end(), [](char c) {
               return static_cast<unsigned char>(c) > ' ' && c != 0x7f && c != '<' && c != '"';
           });
}

KxURI* makeTelURL() {
    return new KxTelURL;
}

const struct Registration {
    Registration() { KxURI::sAddConstructor(KxTelURL::sToken.c_str(), &makeTelURL); }
} s_registration;

} // namespace

constinit const KxConstString KxTelURL::sToken{"tel"};

KxTelURL::KxTelURL() : KxURI(sToken, false) {}

KxTelURL::KxTelURL(const char* text) : KxURI(nullptr) {
    KxURI::parse(text);
}

KxTelURL::KxTelURL(KxSipText text) : KxURI(nullptr) {
    KxURI::parse(text);
}

KxTelURL::KxTelURL(const KxTelURL& other) = default;

KxTelURL* KxTelURL::clone() const {
    return new KxTelURL(*this);
}

bool KxTelURL::hasParameters() const {
    return !m_parameters.empty();
}

bool KxTelURL::operator==(const KxTelURL& other) const {
    if (!KxSipGrammar::sComparesURLsByMeaning()) {
        return getString() == other.getString();
    }
    return m_isGlobal == other.m_isGlobal && KxURIEquivalence::sOfNumbers(m_number, other.m_number) &&
           KxURIEquivalence::sOfTelParameters(m_parameters, other.m_parameters);
}

KxString KxTelURL::getString() const {
    KxByteArrayOutputStream out(80);
    display(out, false);
    return KxString(out.view());
}

void KxTelURL::display(KxOutputStream& out, bool) const {
    out << "tel:" << m_number;
    m_parameters.serializeWithSemicolon(out);
}

void KxTelURL::parse(KxInputStream& in) {
    KxSipLine line(in);
    parse(line).raiseIfAny();
}

KxSipFault KxTelURL::parse(KxSipLine& line) {
    constexpr KxSipFault kInvalid("Invalid TelURL");
    const bool isStrict = KxSipGrammar::sReadsURLsStrictly();
    if (isStrict && !isTelURL(line.window())) {
        return kInvalid;
    }
    Oskan::FastString<256> text;
    std::size_t begin = 0; // of the current token
    char previous = '\0';
    bool own = false; // a colon or "<" was seen: parameters belong to the URL
    const auto token = [&] { return text.view().substr(begin); };
    for (int c = line.read(); c >= 0 && c != '\n' && c != '>'; c = line.read()) {
        bool keep = false;
        switch (c) {
        case '\r':
            break;
        case '<':
            previous = '<';
            own = true;
            break;
        case ':':
            if (previous == '<' || previous == '\0') {
                begin = text.length();
                own = true;
                previous = ':';
            }
            keep = isStrict && previous == ';'; // of a parameter
            break;
        case '+':
            keep = previous == ':' || previous == '<' || previous == ';';
            previous = keep && previous != ';' ? '+' : previous;
            break;
        case ';':
            keep = previous == ';';
            if (previous == '+' || previous == ':') {
                setNumber(token(), previous);
                begin = text.length();
                previous = ';';
            }
            break;
        default:
            keep = true;
        }
        if (keep) {
            if (text.length() == kLongest) {
                return kInvalid;
            }
            text.append(static_cast<char>(c));
        }
        if (c == ';' && !own) {
            break;
        }
    }
    if (previous == ';') {
        m_parameters.write().parse(KxAscii::trim(token()));
    } else {
        setNumber(token(), previous);
    }
    return {};
}

/** Stores the token as the number if the delimiter before it is "+" or ":". */
void KxTelURL::setNumber(std::string_view token, char delimiter) {
    if (delimiter == '+' || delimiter == ':') {
        m_number = KxString(KxAscii::trim(token));
        m_isGlobal = delimiter == '+';
    }
}

KxOutputStream& operator<<(KxOutputStream& out, const KxHandle<KxTelURL>& url) {
    if (!url.isNil()) {
        url->serialize(out);
    }
    return out;
}
