#include "sipobject/headers/KxSipHeader.h"

#include "core/AceCleanupLogger.h"
#include "core/FastString.h"
#include "core/TraceScope.h"
#include "sipobject/KxNameRegistry.h"
#include "sipobject/KxSipParseErrorEmptyHeader.h"
#include "sipobject/headers/KxSipUnknownHeader.h"
#include "util/KxByteArrayInputStream.h"
#include "util/KxLineEnd.h"
#include "util/KxOutputStream.h"
#include "util/KxScannedText.h"
#include "util/KxStreamTokenizer.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipHeader"};
constinit KxNameRegistry<KxSipHeader::Creator> s_registry;

/** Names of this length and more are never registered ones. */
constexpr std::size_t kNameLimit = 48;

/** One logical line, ending in CR LF: in place when that is how it lies, else unfolded into `copy`. */
std::string_view takeLine(KxInputStream& in, Oskan::FastString<256>& copy) {
    std::string_view window = in.window();
    const char* end = KxFindLineBreak(window.data(), window.data() + window.size());
    while (!in.isWhole() && window.data() + window.size() - end < 3 && in.extendWindow()) {
        window = in.window();
        end = KxFindLineBreak(window.data(), window.data() + window.size());
    }
    const auto length = static_cast<std::size_t>(end - window.data());
    const std::string_view rest = window.substr(length);
    if (rest.size() >= 2 && rest[0] == '\r' && rest[1] == '\n' &&
        (rest.size() == 2 || (rest[2] != ' ' && rest[2] != '\t'))) {
        in.consume(length + 2);
        return window.substr(0, length + 2);
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

/** The name in front of the colon as the registry looks it up: from the bytes as they stand, so a name that is folded
    is not a registered one. Empty when there is none. */
std::string_view nameIn(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) {
        text.remove_prefix(1);
    }
    std::string_view name = text.substr(0, text.find(':'));
    while (!name.empty() && std::strchr("\t\n\r ", name.back()) != nullptr && name.back() != '\0') {
        name.remove_suffix(1);
    }
    return name;
}

} // namespace

constinit Oskan::MemAccount KxSipHeader::s_account{"KxSipHeader"};

KxSipHeader::~KxSipHeader() {
    // in a loop: a chain may be longer than the stack is deep
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
    const Oskan::EntryTraceScope trace(s_logger, "KxSipHeader::sConstructFrom");
    const int first = KxStreamTokenizer::sDiscardWhite(in);
    if (first < 0 || first == ':') {
        KxStreamTokenizer::sDiscardLine(in);
        fault = KxSipLineFault::NoToken;
        return {};
    }
    Oskan::FastString<256> unfolded;
    const char* const raw = in.isWhole() ? in.window().data() : nullptr;
    const std::string_view line = takeLine(in, unfolded);
    if (line.find(':') == std::string_view::npos) {
        fault = KxSipLineFault::NoColon;
        return {};
    }
    // where the line lay whole in memory, the name is what stood there, folds and all
    const std::string_view name =
        raw == nullptr ? nameIn(line)
                       : nameIn(std::string_view(raw, static_cast<std::size_t>(in.window().data() - raw)));
    if (KxAscii::trim(name).empty()) {
        fault = KxSipLineFault::NoToken;
        return {};
    }
    KxHandle<KxSipHeader> header(sConstruct(name));
    fault = header->parseLine(line);
    return fault == KxSipLineFault::None ? std::move(header) : KxHandle<KxSipHeader>();
}

void KxSipHeader::parse(KxInputStream& in) {
    const Oskan::EntryTraceScope entry(s_logger, "KxSipHeader::parse");
    Oskan::FastString<256> unfolded;
    const KxSipLineFault fault = parseLine(takeLine(in, unfolded));
    if (fault != KxSipLineFault::None) {
        sThrow(fault);
    }
}

KxSipLineFault KxSipHeader::parseLine(std::string_view line) {
    const Oskan::TraceScope trace(s_logger, "KxSipHeader::parse");
    const std::size_t colon = line.find(':');
    setToken(KxAscii::trim(line.substr(0, colon)));
    if (colon == std::string_view::npos) {
        return KxSipLineFault::NoColon;
    }
    KxByteArrayInputStream value(line.substr(colon + 1));
    return parseValues(value);
}

void KxSipHeader::setToken(std::string_view name) {
    if (m_token.view() != name) {
        const KxString& compact = getCompactToken();
        m_token = compact.view() == name ? compact : KxString(name);
    }
}

void KxSipHeader::parseRest(KxInputStream& in) {
    const KxSipLineFault fault = parseValues(in);
    if (fault != KxSipLineFault::None) {
        sThrow(fault);
    }
}

KxSipLineFault KxSipHeader::parseValues(KxInputStream& in) {
    const Oskan::TraceScope trace(s_logger, "KxSipHeader::parseRest");
    KxHandle<KxSipHeader> further;
    KxSipHeader* last = this;
    while (true) {
        const std::string_view rest = in.window(); // a line: whole
        const auto blank =
            static_cast<std::size_t>(std::find_if_not(rest.begin(), rest.end(), KxAscii::isSpace) - rest.begin());
        if (blank == rest.size()) {
            return KxSipLineFault::NothingBehindColon;
        }
        last->doParse(in);
        const std::string_view left = in.window();
        const auto* const comma = static_cast<const char*>(std::memchr(left.data(), ',', left.size()));
        if (comma == nullptr) {
            break;
        }
        in.consume(static_cast<std::size_t>(comma - left.data()) + 1);
        KxHandle<KxSipHeader> next(sConstruct(getExpandedToken()));
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
