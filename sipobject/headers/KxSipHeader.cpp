#include "sipobject/headers/KxSipHeader.h"

#include "core/AceCleanupLogger.h"
#include "core/FastString.h"
#include "core/TraceScope.h"
#include "sipobject/KxNameRegistry.h"
#include "sipobject/KxSipParseErrorEmptyHeader.h"
#include "sipobject/headers/KxSipUnknownHeader.h"
#include "util/KxByteArrayInputStream.h"
#include "util/KxBytes.h"
#include "util/KxOutputStream.h"
#include "util/KxScannedText.h"
#include "util/KxStreamTokenizer.h"
#include "util/KxWholeWindow.h"

#include <utility>

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipHeader"};
constinit KxNameRegistry<KxSipHeader::Creator> s_registry;

/** Names of this length and more are never registered ones. */
constexpr std::size_t kNameLimit = 48;

/** Whether a line that breaks at `at` ends there with CR LF and is not continued. */
bool endsPlainly(const char* at, const char* end) {
    return end - at >= 2 && at[0] == '\r' && at[1] == '\n' && (end - at == 2 || (at[2] != ' ' && at[2] != '\t'));
}

/** The first line of a text, if it is of the plain kind: a name, the colon at once behind it, CR LF, not continued.
    Else its length is 0. */
struct PlainLine {
    explicit PlainLine(std::string_view text) {
        const char* const begin = text.data();
        const char* const end = begin + text.size();
        const char* const colon = KxBytes::findAny<':', '\r', '\n'>(begin, end);
        if (colon == end || *colon != ':' || colon == begin || *begin <= ' ' || colon[-1] <= ' ') {
            return;
        }
        const char* const stop = KxBytes::findAny<'\r', '\n'>(colon, end);
        if (endsPlainly(stop, end)) {
            length = static_cast<std::size_t>(stop - begin) + 2;
            name = std::string_view(begin, static_cast<std::size_t>(colon - begin));
            value = std::string_view(colon + 1, static_cast<std::size_t>(stop - colon) + 1);
        }
    }
    std::size_t length = 0;
    std::string_view name;
    std::string_view value;
};

/** One logical line, ending in CR LF: in place when that is how it lies, else unfolded into `copy`. */
std::string_view takeLine(KxInputStream& in, Oskan::FastString<256>& copy) {
    const std::string_view window = in.window();
    const char* const stop = KxBytes::findAny<'\r', '\n'>(window.data(), window.data() + window.size());
    if (endsPlainly(stop, window.data() + window.size())) {
        const auto length = static_cast<std::size_t>(stop - window.data()) + 2;
        in.consume(length);
        return window.substr(0, length);
    }
    for (int c = in.read(); c >= 0; c = in.read()) {
        if (c == '\n') {
            const int next = in.peek();
            if (next != ' ' && next != '\t') {
                break;
            }
            in.consume(1);
        } else if (c != '\r') {
            copy.append(static_cast<char>(c));
        }
    }
    copy.append("\r\n", 2);
    return copy.view();
}

std::string_view trimEnd(std::string_view name) {
    while (!name.empty() && (name.back() == ' ' || (name.back() >= '\t' && name.back() <= '\r' && name.back() != '\v' &&
                                                    name.back() != '\f'))) {
        name.remove_suffix(1);
    }
    return name;
}

/** The name in front of the first colon of the bytes as they stand, so a name that is folded is not a registered one. */
std::string_view nameIn(const char* begin, const char* end) {
    const char* const colon = KxBytes::findAny<':'>(begin, end);
    return trimEnd(std::string_view(begin, static_cast<std::size_t>(colon - begin)));
}

} // namespace

constinit Oskan::MemAccount KxSipHeader::s_account{"KxSipHeader"};

/** In a loop: a chain may be longer than the stack is deep. */
void KxSipHeader::releaseChain() {
    KxHandle<KxSipHeader> next = std::move(m_next);
    while (!next.isNil() && next->isUnshared()) {
        next = KxHandle<KxSipHeader>(std::move(next->m_next));
    }
}

const KxString& KxSipHeader::getCompactToken() const {
    return getExpandedToken();
}

void KxSipHeader::sAddConstructor(const char* name, Creator creator) {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipHeader::sAddConstructor");
    if (s_logger.isEnabled(Oskan::LogLevel::Debug)) {
        s_logger.log(Oskan::LogLevel::Debug, "pToken = \"" + std::string(name) + "\"");
    }
    s_registry.add(name, creator);
}

KxSipHeader* KxSipHeader::sConstruct(std::string_view name) {
    const Oskan::TraceScope trace(s_logger, "KxSipHeader::sConstruct");
    const Creator creator = name.size() < kNameLimit ? s_registry.find(name) : nullptr;
    if (creator != nullptr) {
        return creator();
    }
    return new KxSipUnknownHeader(KxString(name), KxString());
}

const char* KxSipHeader::sTextOf(KxSipLineFault fault) {
    switch (fault) {
    case KxSipLineFault::NoToken:
        return "Header token expected";
    case KxSipLineFault::NoColon:
        return "SIP Header parse error : no colon found";
    default:
        return "SIP Header parse error : nothing after the colon";
    }
}

void KxSipHeader::sThrow(KxSipLineFault fault) {
    if (fault == KxSipLineFault::NothingBehindColon) {
        KxSipParseErrorEmptyHeader::sThrow(sTextOf(fault));
    }
    KxSipParseError::sThrow(sTextOf(fault));
}

KxHandle<KxSipHeader> KxSipHeader::sConstructFrom(KxInputStream& in) {
    KxSipLineFault fault = KxSipLineFault::None;
    KxHandle<KxSipHeader> header = sReadFrom(in, fault);
    if (fault != KxSipLineFault::None) {
        sThrow(fault);
    }
    return header;
}

KxHandle<KxSipHeader> KxSipHeader::sReadFrom(KxInputStream& in, KxSipLineFault& fault) {
    if (!in.isWhole()) {
        KxHandle<KxSipHeader> header;
        KxWithWholeWindow(in, [&](KxInputStream& line) { header = sReadFrom(line, fault); });
        return header;
    }
    const Oskan::EntryTraceScope trace(s_logger, "KxSipHeader::sConstructFrom");
    const PlainLine line(in.window());
    if (line.length == 0) {
        return sReadUnplain(in, fault);
    }
    in.consume(line.length);
    return sMake(line.name, line.name, line.value, fault);
}

/** A line that is folded, ends otherwise than in CR LF, has blanks about its name or a fault in it. */
KxHandle<KxSipHeader> KxSipHeader::sReadUnplain(KxInputStream& in, KxSipLineFault& fault) {
    const int first = KxStreamTokenizer::sDiscardWhite(in);
    if (first < 0 || first == ':') {
        KxStreamTokenizer::sDiscardLine(in);
        fault = KxSipLineFault::NoToken;
        return {};
    }
    Oskan::FastString<256> unfolded;
    const char* const raw = in.window().data();
    const std::string_view line = takeLine(in, unfolded);
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) {
        fault = KxSipLineFault::NoColon;
        return {};
    }
    const std::string_view name = KxAscii::trim(line.substr(0, colon));
    // the class goes by the name as it stood, folds and all
    const std::string_view key = nameIn(raw, in.window().data());
    if (name.empty() || key.empty()) {
        fault = KxSipLineFault::NoToken;
        return {};
    }
    return sMake(key, name, line.substr(colon + 1), fault);
}

/** A header of the class that `key` names, under its name as it stood, read from what stands behind the colon. */
KxHandle<KxSipHeader> KxSipHeader::sMake(std::string_view key, std::string_view name, std::string_view value,
                                         KxSipLineFault& fault) {
    KxHandle<KxSipHeader> header(sConstruct(key));
    fault = header->parseLine(name, value);
    if (fault != KxSipLineFault::None) {
        header = nullptr;
    }
    return header;
}

void KxSipHeader::parse(KxInputStream& in) {
    const Oskan::EntryTraceScope entry(s_logger, "KxSipHeader::parse");
    KxWithWholeWindow(in, [this](KxInputStream& line) { parseWhole(line); });
}

void KxSipHeader::parseWhole(KxInputStream& in) {
    Oskan::FastString<256> unfolded;
    const std::string_view line = takeLine(in, unfolded);
    const std::size_t colon = line.find(':');
    const std::string_view name = KxAscii::trim(line.substr(0, colon));
    if (colon == std::string_view::npos) {
        setToken(name);
        sThrow(KxSipLineFault::NoColon);
    }
    const KxSipLineFault fault = parseLine(name, line.substr(colon + 1));
    if (fault != KxSipLineFault::None) {
        sThrow(fault);
    }
}

/** The name as it stood and what stands behind the colon, CR LF included. */
inline KxSipLineFault KxSipHeader::parseLine(std::string_view name, std::string_view value) {
    const Oskan::TraceScope trace(s_logger, "KxSipHeader::parse");
    if (m_token.length() != name.size() || !KxBytes::equal(m_token.c_str(), name.data(), name.size())) {
        setToken(name);
    }
    KxByteArrayInputStream in(value);
    return parseValues(in);
}

void KxSipHeader::setToken(std::string_view name) {
    const KxString& compact = getCompactToken();
    m_token = compact.view() == name ? compact : KxString(name);
}

void KxSipHeader::parseRest(KxInputStream& in) {
    const KxSipLineFault fault = parseValues(in);
    if (fault != KxSipLineFault::None) {
        sThrow(fault);
    }
}

KxSipLineFault KxSipHeader::parseValues(KxInputStream& in) {
    const Oskan::TraceScope trace(s_logger, "KxSipHeader::parseRest");
    const char* const end = in.window().data() + in.window().size(); // a line: whole
    KxHandle<KxSipHeader> further;
    KxSipHeader* last = this;
    Creator creator = nullptr;
    while (true) {
        if (KxAscii::skipSpace(in.window().data(), end) == end) {
            return KxSipLineFault::NothingBehindColon;
        }
        last->doParse(in);
        const char* comma = in.window().data();
        while (comma != end && *comma != ',') {
            ++comma;
        }
        if (comma == end) {
            break;
        }
        in.consume(static_cast<std::size_t>(comma + 1 - in.window().data()));
        if (creator == nullptr) {
            creator = s_registry.find(getExpandedToken());
        }
        KxHandle<KxSipHeader> next(creator != nullptr ? creator() : sConstruct(getExpandedToken()));
        KxHandle<KxSipHeader>& link = last == this ? further : last->m_next;
        last = next.get();
        link = std::move(next);
    }
    if (!further.isNil()) {
        addNext(std::move(further));
    }
    return KxSipLineFault::None;
}

void KxSipHeader::addNext(KxHandle<KxSipHeader> header) {
    KxSipHeader* last = this;
    while (!last->m_next.isNil()) {
        last = last->m_next.get();
    }
    last->m_next = std::move(header);
}

void KxSipHeader::serialize(KxOutputStream& out) const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipHeader::serialize");
    for (const KxSipHeader* value = this; value != nullptr; value = value->m_next.get()) {
        out.write(value->m_token.view());
        out.write(std::string_view(": ", 2));
        value->doSerialize(out);
        out.write(std::string_view("\r\n", 2));
    }
}

void KxSipHeader::display(KxOutputStream& out, bool) const {
    serialize(out);
}
