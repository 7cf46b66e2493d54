#include "sipobject/headers/KxSipHeader.h"

#include "core/AceCleanupLogger.h"
#include "core/FastString.h"
#include "core/TraceScope.h"
#include "sipobject/KxNameRegistry.h"
#include "sipobject/headers/KxSipUnknownHeader.h"
#include "util/KxBytes.h"
#include "util/KxOutputStream.h"
#include "util/KxScannedText.h"
#include "util/KxStreamTokenizer.h"
#include "util/KxViewInputStream.h"
#include "util/KxWholeWindow.h"

#include <utility>

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipHeader"};
constinit KxNameRegistry<KxSipHeader::Creator> s_registry;

/** Used instead of a trace scope when tracing is off. */
struct NoScope {
    NoScope(const Oskan::AceCleanupLogger&, const char*) {}
};
template <bool kTraced>
using Scope = std::conditional_t<kTraced, const Oskan::TraceScope, const NoScope>;

constexpr KxSipFault kNoToken{"Header token expected"};
constexpr KxSipFault kNoColon{"SIP Header parse error : no colon found"};
constexpr KxSipFault kNothingBehindColon{"SIP Header parse error : nothing after the colon",
                                         KxSipFault::Error::EmptyHeader};

/** A name of this length or longer is treated as unregistered. */
constexpr std::size_t kNameLimit = 48;

/** Whether the line break at `at` is CR LF and the line is not continued. */
bool endsPlainly(const char* at, const char* end) {
    return end - at >= 2 && at[0] == '\r' && at[1] == '\n' && (end - at == 2 || (at[2] != ' ' && at[2] != '\t'));
}

/** Reads one logical line, which ends in CR LF: in place if it ends plainly, else unfolded into `copy`. */
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

/** The name before the first colon of the raw bytes. A folded name therefore matches no registered name. */
std::string_view nameIn(const char* begin, const char* end) {
    const char* const colon = KxBytes::findAny<':'>(begin, end);
    return trimEnd(std::string_view(begin, static_cast<std::size_t>(colon - begin)));
}

/** Skips blanks; returns false if only white space follows. */
[[gnu::always_inline]] inline bool skipToText(KxInputStream& in, const char* end) {
    const char* const begin = in.window().data();
    const char* at = begin;
    while (at != end && (*at == ' ' || *at == '\t')) {
        ++at;
    }
    in.consume(static_cast<std::size_t>(at - begin));
    return at != end && (*at > ' ' || KxAscii::skipSpace(at, end) != end);
}

/** The comma that ends a value, or `end` if there is none. */
const char* findComma(const char* at, const char* end) {
    while (at != end && *at != ',') {
        ++at;
    }
    return at;
}

} // namespace

/** A logical line. */
struct KxSipHeader::Line {
    std::string_view key;   ///< The name that selects the class.
    std::string_view name;  ///< The name as received.
    std::string_view value; ///< The text after the colon, including CR LF.
    const char* readable;   ///< The end of the readable bytes after the value.
};

constinit Oskan::MemAccount KxSipHeader::s_account{"KxSipHeader"};
constinit std::atomic<std::uint32_t> KxSipHeader::s_changes{0};

/** A loop, not recursion, since a long chain would overflow the stack. */
void KxSipHeader::releaseChain() {
    KxHandle<KxSipHeader> next = std::move(m_next);
    while (!next.isNil() && next->isUnshared()) {
        next = KxHandle<KxSipHeader>(std::move(next->m_next));
    }
    if (isInMessage() && !next.isNil()) { // an application still holds one of them, which outlives the message
        next->leaveMessage();
    }
}

void KxSipHeader::joinChain() {
    const KxSipHeader* value = m_next.get();
    while (value != nullptr && !value->isInMessage()) {
        value = value->m_next.get();
    }
    if (value != nullptr) {
        m_next = nullptr;
        return;
    }
    for (KxSipHeader* next = m_next.get(); next != nullptr; next = next->m_next.get()) {
        next->setInMessage(true);
    }
}

KxSipHeader& KxSipHeader::lastOfChain() {
    KxSipHeader* last = this;
    while (!last->m_next.isNil()) {
        last = last->m_next.get();
    }
    return *last;
}

void KxSipHeader::leaveMessage() {
    for (KxSipHeader* value = this; value != nullptr; value = value->m_next.get()) {
        value->setInMessage(false);
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

std::vector<std::string_view> KxSipHeader::sNames() {
    std::vector<std::string_view> names;
    s_registry.forEachName([&names](std::string_view name) { names.push_back(name); });
    return names;
}

KxSipFault KxSipHeader::readValue(KxInputStream& in) {
    doParse(in);
    return {};
}

KxHandle<KxSipHeader> KxSipHeader::sConstructFrom(KxInputStream& in) {
    const Oskan::EntryDepth entry;
    KxHandle<KxSipHeader> header;
    sReadFrom(in, header).raiseIfAny();
    header->leaveMessage();
    return header;
}

/** Creates an object of the class registered for the key. Sets `named` if its name already is the line's name. */
template <bool kTraced>
[[gnu::always_inline]] inline KxHandle<KxSipHeader> KxSipHeader::sConstruct(const Line& line, bool& named) {
    const Scope<kTraced> trace(s_logger, "KxSipHeader::sConstruct");
    bool exact = false;
    const auto* const entry = line.key.size() < kNameLimit ? s_registry.findEntry(line.key, exact) : nullptr;
    if (entry == nullptr) {
        return sMakeUnknown(line.key);
    }
    KxHandle<KxSipHeader> header = KxHandle<KxSipHeader>::sOfNew(entry->creator());
    named = exact && header.get()->m_token.c_str() == entry->name.data() && line.key.data() == line.name.data();
    return header;
}

KxHandle<KxSipHeader> KxSipHeader::sConstruct(std::string_view name) {
    bool named = false;
    return sConstruct<true>({name, name, {}, nullptr}, named);
}

[[gnu::noinline]] KxHandle<KxSipHeader> KxSipHeader::sMakeUnknown(std::string_view name) {
    return KxHandle<KxSipHeader>::sOfNew(new KxSipUnknownHeader(KxString(name), KxString()));
}

[[gnu::noinline]] void KxSipHeader::setToken(std::string_view name) {
    if (m_token.view() != name) {
        const KxString& compact = getCompactToken();
        m_token = compact.view() == name ? compact : KxString(name);
    }
}

template <bool kTraced>
[[gnu::always_inline]] inline KxSipFault KxSipHeader::parseValues(KxInputStream& in) {
    const Scope<kTraced> trace(s_logger, "KxSipHeader::parseRest");
    const char* const end = in.window().data() + in.window().size(); // the stream is one whole line
    if (!skipToText(in, end)) {
        return kNothingBehindColon;
    }
    const KxSipFault fault = readValue(in);
    if (fault) [[unlikely]] {
        return fault;
    }
    const char* const comma = findComma(in.window().data(), end);
    return comma == end ? fault : parseFurther<kTraced>(in, comma);
}

/** Reads the values after the first one, each into an object of its own. */
template <bool kTraced>
[[gnu::noinline]] KxSipFault KxSipHeader::parseFurther(KxInputStream& in, const char* comma) {
    const char* const end = in.window().data() + in.window().size();
    const std::string_view name = getExpandedToken();
    const Creator creator = s_registry.find(name);
    KxHandle<KxSipHeader> further;
    KxHandle<KxSipHeader>* link = &further;
    for (; comma != end; comma = findComma(in.window().data(), end)) {
        in.consume(static_cast<std::size_t>(comma + 1 - in.window().data()));
        {
            const Scope<kTraced> trace(s_logger, "KxSipHeader::sConstruct");
            *link = creator != nullptr ? KxHandle<KxSipHeader>::sOfNew(creator()) : sMakeUnknown(name);
        }
        const Scope<kTraced> trace(s_logger, "KxSipHeader::parseRest");
        if (!skipToText(in, end)) {
            return kNothingBehindColon;
        }
        KxSipHeader* const last = link->get();
        last->setInMessage(isInMessage());
        if (const KxSipFault fault = last->readValue(in)) {
            return fault;
        }
        link = &last->m_next;
    }
    lastOfChain().m_next = std::move(further);
    return {};
}

template <bool kTraced>
[[gnu::always_inline]] inline KxSipFault KxSipHeader::parseLine(const Line& line, bool named) {
    const Scope<kTraced> trace(s_logger, "KxSipHeader::parse");
    if (!named) {
        setToken(line.name);
    }
    KxViewInputStream in(line.value, line.readable);
    return parseValues<kTraced>(in);
}

/** Reads the values in the stream, the first one into this object. */
void KxSipHeader::parseRest(KxInputStream& in) {
    parseValues<true>(in).raiseIfAny();
}

template <bool kTraced>
[[gnu::always_inline]] inline KxSipFault KxSipHeader::sMake(const Line& line, KxHandle<KxSipHeader>& header) {
    bool named = false;
    KxHandle<KxSipHeader> made = sConstruct<kTraced>(line, named);
    made.get()->setInMessage(true);
    const KxSipFault fault = made.get()->parseLine<kTraced>(line, named);
    if (!fault) [[likely]] {
        header.swap(made);
    }
    return fault;
}

/** Reads a plain line in place: a name directly followed by the colon, CR LF at the end, not continued. */
template <bool kTraced>
[[gnu::always_inline]] inline KxSipFault KxSipHeader::sRead(KxInputStream& in, KxHandle<KxSipHeader>& header) {
    const std::string_view window = in.window();
    const char* const begin = window.data();
    const char* const end = begin + window.size();
    const char* const colon = KxBytes::findAny<':', '\r', '\n'>(begin, end, in.readableEnd());
    if (!in.isWhole() || colon == end || *colon != ':' || colon == begin || *begin <= ' ' || colon[-1] <= ' ') {
        return sReadUnplain<kTraced>(in, header);
    }
    const char* const stop = KxBytes::findAny<'\r', '\n'>(colon, end, in.readableEnd());
    if (!endsPlainly(stop, end)) {
        return sReadUnplain<kTraced>(in, header);
    }
    in.consume(static_cast<std::size_t>(stop - begin) + 2);
    const std::string_view name(begin, static_cast<std::size_t>(colon - begin));
    const std::string_view value(colon + 1, static_cast<std::size_t>(stop - colon) + 1);
    return sMake<kTraced>({name, name, value, in.readableEnd()}, header);
}

/** Reads any other line: folded, without CR LF at its end, with blanks around its name, faulty or not whole. */
template <bool kTraced>
[[gnu::noinline]] KxSipFault KxSipHeader::sReadUnplain(KxInputStream& in, KxHandle<KxSipHeader>& header) {
    if (!in.isWhole()) {
        return KxWithWholeWindow(in, [&](KxInputStream& line) { return sRead<kTraced>(line, header); });
    }
    const int first = KxStreamTokenizer::sDiscardWhite(in);
    if (first < 0 || first == ':') {
        KxStreamTokenizer::sDiscardLine(in);
        return kNoToken;
    }
    Oskan::FastString<256> unfolded;
    const char* const raw = in.window().data();
    const std::string_view line = takeLine(in, unfolded);
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) {
        return kNoColon;
    }
    const std::string_view name = KxAscii::trim(line.substr(0, colon));
    // the raw name, with its folds, selects the class
    const std::string_view key = nameIn(raw, in.window().data());
    if (name.empty() || key.empty()) {
        return kNoToken;
    }
    return sMake<kTraced>({key, name, line.substr(colon + 1), line.data() + line.size()}, header);
}

KxSipFault KxSipHeader::sReadFrom(KxInputStream& in, KxHandle<KxSipHeader>& header) {
    if (s_logger.isEnabled(Oskan::LogLevel::Trace)) [[unlikely]] {
        return sReadTraced(in, header);
    }
    return sRead<false>(in, header);
}

[[gnu::cold]] KxSipFault KxSipHeader::sReadTraced(KxInputStream& in, KxHandle<KxSipHeader>& header) {
    const Oskan::TraceScope trace(s_logger, "KxSipHeader::sConstructFrom");
    return sRead<true>(in, header);
}

void KxSipHeader::parse(KxInputStream& in) {
    const Oskan::EntryTraceScope entry(s_logger, "KxSipHeader::parse");
    struct Change { // Also for a log appender that asks the message while the header is read, and for a failure.
        explicit Change(const KxSipHeader& header) : changed(header) { changed.noteChange(); }
        ~Change() { changed.noteChange(); }
        const KxSipHeader& changed;
    } const change(*this);
    KxWithWholeWindow(in, [this](KxInputStream& line) { parseWhole(line); });
}

void KxSipHeader::parseWhole(KxInputStream& in) {
    Oskan::FastString<256> unfolded;
    const std::string_view line = takeLine(in, unfolded);
    const std::size_t colon = line.find(':');
    const std::string_view name = KxAscii::trim(line.substr(0, colon));
    setToken(name);
    if (colon == std::string_view::npos) {
        kNoColon.raise();
    }
    KxViewInputStream value(line.substr(colon + 1), line.data() + line.size());
    parseRest(value);
}

void KxSipHeader::addNext(KxHandle<KxSipHeader> header) {
    if (!header.isNil() && header->isInMessage()) {
        header = KxHandle<KxSipHeader>(static_cast<KxSipHeader*>(header->clone()));
    }
    if (!header.isNil() && isInMessage()) {
        header->joinMessage();
        noteChange();
    }
    lastOfChain().m_next = std::move(header);
}

void KxSipHeader::serialize(KxOutputStream& out) const {
    const Oskan::EntryDepth entry;
    serializeLines(out);
}

void KxSipHeader::serializeLines(KxOutputStream& out) const {
    const Oskan::TraceScope trace(s_logger, "KxSipHeader::serialize");
    for (const KxSipHeader* value = this; value != nullptr; value = value->m_next.get()) {
        out.writeAll(value->m_token.view(), std::string_view(": ", 2));
        value->doSerialize(out);
        out.write(std::string_view("\r\n", 2));
    }
}

void KxSipHeader::display(KxOutputStream& out, bool) const {
    serialize(out);
}
