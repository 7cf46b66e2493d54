#include "sipobject/headers/KxSipHeader.h"

#include "core/AceCleanupLogger.h"
#include "core/TraceScope.h"
#include "sipobject/KxNameRegistry.h"
#include "sipobject/KxSipGrammar.h"
#include "sipobject/KxSipLine.h"
#include "sipobject/headers/KxSipCompactNames.h"
#include "sipobject/headers/KxSipHeaderKinds.h"
#include "sipobject/headers/KxSipLineValues.h"
#include "sipobject/headers/KxSipUnknownHeader.h"
#include "util/KxByteArrayOutputStream.h"
#include "util/KxBytes.h"
#include "util/KxException.h"
#include "util/KxOutputStream.h"

#include <utility>

namespace {

constinit Oskan::AceCleanupLogger s_logger{"KxSipHeader"};
constinit KxNameRegistry<KxSipHeader::Creator> s_registry;
/** The names that only the RFC grammar knows. */
constinit KxNameRegistry<KxSipHeader::Creator> s_rfcRegistry;

/** The identifier that sNewHeaderID returns next. */
constinit std::atomic<HeaderID> s_nextID{KxHeaderIDs::kCount};

/** A name of this length or longer is treated as unregistered. */
constexpr std::size_t kNameLimit = 48;

/** As findClass, for a name that the classic grammar does not know. */
[[gnu::noinline]] KxSipHeader::Creator findRFCCreator(std::string_view name) {
    const KxSipHeader::Creator creator = s_rfcRegistry.find(name).creator;
    return creator != nullptr || name.size() != 1 ? creator : s_registry.find(KxSipCompactNames::sFull(name)).creator;
}

/** The class registered for the name, if there is one. */
[[gnu::always_inline]] inline KxNameRegistry<KxSipHeader::Creator>::Found findClass(std::string_view name) {
    if (name.size() >= kNameLimit) {
        return {};
    }
    const auto found = s_registry.find(name);
    if (found.creator == nullptr && KxSipGrammar::sKnowsAllCompactNames()) [[unlikely]] {
        return {findRFCCreator(name)};
    }
    return found;
}

} // namespace

constinit Oskan::MemAccount KxSipHeader::s_account{"KxSipHeader"};
constinit std::atomic<std::uint32_t> KxSipHeader::s_changes{0};

/** A loop, not recursion, since a long chain would overflow the stack. */
void KxSipHeader::releaseChain() {
    KxSipHeader* next = m_next.detach();
    while (next != nullptr && next->isUnshared()) {
        KxSipHeader* const after = next->m_next.detach();
        next->Release(true);
        next = after;
    }
    if (next != nullptr) { // an application still holds it, so that it outlives the message
        if (isInMessage()) {
            next->leaveMessage();
        }
        next->Release(true);
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

void KxSipHeader::sAddRFCConstructor(const char* name, Creator creator) {
    s_rfcRegistry.add(name, creator);
}

std::vector<std::string_view> KxSipHeader::sNames() {
    std::vector<std::string_view> names;
    const auto add = [&names](std::string_view name) { names.push_back(name); };
    s_registry.forEachName(add);
    if (KxSipGrammar::sKnowsAllCompactNames()) {
        s_rfcRegistry.forEachName(add);
    }
    return names;
}

HeaderID KxSipHeader::sNewHeaderID(KxSipHeaderUse use) {
    HeaderID id = s_nextID.load(std::memory_order_relaxed);
    do {
        if (id > KxHeaderIDs::kLast) {
            KxException::sThrow("No header identifier is left");
        }
    } while (!s_nextID.compare_exchange_weak(id, id + 1, std::memory_order_relaxed));
    KxSipHeaderKinds::sNoteOwn(id, use);
    return id;
}

bool KxSipHeader::sIsHeaderID(HeaderID id) {
    return id < s_nextID.load(std::memory_order_relaxed);
}

KxHandle<KxSipHeader> KxSipHeader::sSample(std::string_view name) {
    const Creator creator = findClass(name).creator;
    return creator == nullptr ? KxHandle<KxSipHeader>() : KxHandle<KxSipHeader>::sOfNew(creator());
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

// ---- reading ----

template <class Scope>
[[gnu::always_inline]] inline KxSipHeader& KxSipHeader::sConstruct(std::string_view name, Creator creator) {
    const Scope trace(s_logger, "KxSipHeader::sConstruct");
    KxSipHeader& made = creator != nullptr ? *creator() : sConstructUnknown(name);
    KxHandle<KxSipHeader>::sOfNew(made).detach();
    return made;
}

template <class Scope>
[[gnu::always_inline]] inline KxSipFault KxSipHeader::parseRest(KxSipLine& line) {
    const Scope trace(s_logger, "KxSipHeader::parseRest");
    if (!line.skipToText()) {
        return kNothingAfterColon;
    }
    const KxSipFault fault = readValue(line);
    if (fault || line.isAtEnd()) {
        return fault;
    }
    return KxSipGrammar::sReadsLinesByValue() ? parseFurther<true, Scope>(line) : parseFurther<false, Scope>(line);
}

template <class Scope>
[[gnu::always_inline]] inline KxSipFault KxSipHeader::parse(KxSipLine& line, const char* known) {
    const Scope trace(s_logger, "KxSipHeader::parse");
    if (m_token.c_str() != known) {
        setToken(line.name());
    }
    return parseRest<Scope>(line);
}

template <class Scope>
[[gnu::always_inline]] inline KxSipFault KxSipHeader::sReadLine(KxInputStream& in, KxSipLine& line,
                                                                KxHandle<KxSipHeader>& header) {
    const Scope trace(s_logger, "KxSipHeader::sConstructFrom");
    if (const KxSipFault fault = line.take(in)) [[unlikely]] {
        return fault;
    }
    const auto found = findClass(line.key());
    KxSipHeader& read = sConstruct<Scope>(line.key(), found.creator);
    KxHandle<KxSipHeader> made(&read, KxUncounted{});
    read.setInMessage(true);
    const bool hasName = found.creator == nullptr && line.isPlain(); // an unknown header was given the key
    const KxSipFault fault = read.parse<Scope>(line, hasName ? read.m_token.c_str() : found.registered);
    if (!fault) [[likely]] {
        header.swap(made);
    } else if (KxSipGrammar::sReadsLinesByValue() && !line.isLost()) {
        return sReadByValue(line, header);
    }
    return fault;
}

KxHandle<KxSipHeader> KxSipHeader::sConstructFrom(KxInputStream& in) {
    const Oskan::EntryDepth entry;
    KxSipLine line;
    KxHandle<KxSipHeader> header;
    sConstructFrom(in, line, header).raiseIfAny();
    header->leaveMessage();
    return header;
}

KxSipFault KxSipHeader::sConstructFrom(KxInputStream& in, KxSipLine& line, KxHandle<KxSipHeader>& header) {
    return s_logger.isEnabled(Oskan::LogLevel::Trace) ? sReadLineTraced(in, line, header)
                                                      : sReadLine<Oskan::NoTraceScope>(in, line, header);
}

[[gnu::cold, gnu::noinline]] KxSipFault KxSipHeader::sReadLineTraced(KxInputStream& in, KxSipLine& line,
                                                                     KxHandle<KxSipHeader>& header) {
    return sReadLine<Oskan::TraceScope>(in, line, header);
}

[[gnu::noinline]] KxSipFault KxSipHeader::sReadByValue(const KxSipLine& line, KxHandle<KxSipHeader>& header) {
    const KxSipFault fault = KxSipLineValues(line).read(header);
    if (!header.isNil()) {
        header->joinMessage();
    }
    return fault;
}

[[gnu::noinline]] KxSipHeader& KxSipHeader::sConstructUnknown(std::string_view name) {
    return *new KxSipUnknownHeader(KxString(name), KxString());
}

KxHandle<KxSipHeader> KxSipHeader::sConstructFrom(std::string_view name, std::string_view value) {
    KxHandle<KxSipHeader> header = sMake(name);
    KxSipLine line(value);
    KxSipFault fault = header->parseValues(line);
    if (fault && KxSipGrammar::sReadsLinesByValue()) {
        fault = KxSipLineValues(name, value).read(header);
    }
    fault.raiseIfAny();
    return header;
}

KxHandle<KxSipHeader> KxSipHeader::sMake(std::string_view name) {
    return KxHandle<KxSipHeader>(&sConstruct<Oskan::TraceScope>(name, findClass(name).creator), KxUncounted{});
}

[[gnu::noinline]] void KxSipHeader::setToken(std::string_view name) {
    const KxString& compact = getCompactToken();
    m_token = compact.view() == name ? compact : KxString(name);
}

void KxSipHeader::parse(KxInputStream& in) {
    const Oskan::EntryTraceScope entry(s_logger, "KxSipHeader::parse");
    struct Change { // Also for a log appender that asks the message while the header is read, and for a failure.
        explicit Change(const KxSipHeader& header) : changed(header) { changed.noteChange(); }
        ~Change() { changed.noteChange(); }
        const KxSipHeader& changed;
    } const change(*this);
    KxSipLine line;
    line.takeUnnamed(in).raiseIfAny();
    const KxHandle<KxSipHeader> trial(static_cast<KxSipHeader*>(clone())); // it is refused before anything has changed
    KxSipLine again(line.window());
    trial->parseValues(again).raiseIfAny();
    setToken(line.name());
    parseValues(line).raiseIfAny();
}

/** As parseRest, for what is not part of reading a line of a message. */
KxSipFault KxSipHeader::parseValues(KxSipLine& line) {
    return parseRest<Oskan::TraceScope>(line);
}

/** Reads the values after the first comma, each into an object of its own. A loop, not recursion: a line may have
    thousands of values. */
template <bool kIsExact, class Scope>
[[gnu::noinline]] KxSipFault KxSipHeader::parseFurther(KxSipLine& line) {
    if (kIsExact && !KxSipHeaderKinds::sIsList(m_headerID)) {
        return line.skipToText() ? kTextAfterValue : KxSipFault();
    }
    const std::string_view name = getExpandedToken();
    const Creator creator = findClass(name).creator;
    KxHandle<KxSipHeader> further;
    KxHandle<KxSipHeader>* link = &further;
    while (kIsExact ? line.skipComma() : line.skipToNextValue()) {
        KxSipHeader& value = sConstruct<Scope>(name, creator);
        *link = KxHandle<KxSipHeader>(&value, KxUncounted{});
        const Scope trace(s_logger, "KxSipHeader::parseRest");
        if (!line.skipToText() || (kIsExact && line.peek() == ',')) {
            return kNothingAfterColon;
        }
        value.setInMessage(isInMessage());
        if (const KxSipFault fault = value.readValue(line)) {
            return fault;
        }
        link = &value.m_next;
    }
    if (kIsExact && line.skipToText()) {
        return kTextAfterValue;
    }
    lastOfChain().m_next = std::move(further);
    return {};
}

KxSipFault KxSipHeader::readValue(KxSipLine& line) {
    doParse(line);
    return {};
}

// ---- writing ----

void KxSipHeader::serialize(KxOutputStream& out) const {
    const Oskan::EntryDepth entry;
    serializeLines(out);
}

KxString KxSipHeader::getValueText() const {
    const Oskan::EntryTraceScope trace(s_logger, "KxSipHeader::getValueText");
    KxByteArrayOutputStream out;
    doSerialize(out);
    return KxString(out.view());
}

void KxSipHeader::serializeLines(KxOutputStream& out) const {
    const Oskan::TraceScope trace(s_logger, "KxSipHeader::serialize");
    bool isFirst = true;
    writeLines(out, isFirst);
    out.write(std::string_view("\r\n", 2));
}

bool KxSipHeader::sTracesLines() {
    return s_logger.isEnabled(Oskan::LogLevel::Trace);
}

void KxSipHeader::display(KxOutputStream& out, bool) const {
    serialize(out);
}
