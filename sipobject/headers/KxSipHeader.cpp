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

/** As findCreator, for a name that the classic grammar does not know. */
[[gnu::noinline]] KxSipHeader::Creator findRFCCreator(std::string_view name) {
    const KxSipHeader::Creator creator = s_rfcRegistry.find(name);
    return creator != nullptr || name.size() != 1 ? creator : s_registry.find(KxSipCompactNames::sFull(name));
}

/** The creator of the class registered for the name; null if there is none. */
[[gnu::always_inline]] inline KxSipHeader::Creator findCreator(std::string_view name) {
    if (name.size() >= kNameLimit) {
        return nullptr;
    }
    const KxSipHeader::Creator creator = s_registry.find(name);
    return creator == nullptr && KxSipGrammar::sKnowsAllCompactNames() ? findRFCCreator(name) : creator;
}

} // namespace

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

HeaderID KxSipHeader::sNewHeaderID() {
    HeaderID id = s_nextID.load(std::memory_order_relaxed);
    do {
        if (id > KxHeaderIDs::kLast) {
            KxException::sThrow("No header identifier is left");
        }
    } while (!s_nextID.compare_exchange_weak(id, id + 1, std::memory_order_relaxed));
    return id;
}

bool KxSipHeader::sIsHeaderID(HeaderID id) {
    return id < s_nextID.load(std::memory_order_relaxed);
}

KxHandle<KxSipHeader> KxSipHeader::sSample(std::string_view name) {
    const Creator creator = findCreator(name);
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

KxHandle<KxSipHeader> KxSipHeader::sConstructFrom(KxInputStream& in) {
    const Oskan::EntryDepth entry;
    KxSipLine line;
    KxHandle<KxSipHeader> header;
    sConstructFrom(in, line, header).raiseIfAny();
    header->leaveMessage();
    return header;
}

KxSipFault KxSipHeader::sConstructFrom(KxInputStream& in, KxSipLine& line, KxHandle<KxSipHeader>& header) {
    const Oskan::TraceScope trace(s_logger, "KxSipHeader::sConstructFrom");
    if (const KxSipFault fault = line.take(in)) [[unlikely]] {
        return fault;
    }
    KxHandle<KxSipHeader> made = sConstruct(line.key(), findCreator(line.key()));
    made.get()->setInMessage(true);
    const KxSipFault fault = made.get()->parse(line);
    if (!fault) [[likely]] {
        header.swap(made);
    } else if (KxSipGrammar::sReadsLinesByValue() && !line.isLost()) {
        return sReadByValue(line, header);
    }
    return fault;
}

[[gnu::noinline]] KxSipFault KxSipHeader::sReadByValue(const KxSipLine& line, KxHandle<KxSipHeader>& header) {
    const KxSipFault fault = KxSipLineValues(line).read(header);
    if (!header.isNil()) {
        header->joinMessage();
    }
    return fault;
}

[[gnu::always_inline]] inline KxHandle<KxSipHeader> KxSipHeader::sConstruct(std::string_view name, Creator creator) {
    const Oskan::TraceScope trace(s_logger, "KxSipHeader::sConstruct");
    return creator != nullptr ? KxHandle<KxSipHeader>::sOfNew(creator()) : sConstructUnknown(name);
}

[[gnu::noinline]] KxHandle<KxSipHeader> KxSipHeader::sConstructUnknown(std::string_view name) {
    return KxHandle<KxSipHeader>::sOfNew(new KxSipUnknownHeader(KxString(name), KxString()));
}

KxHandle<KxSipHeader> KxSipHeader::sConstructFrom(std::string_view name, std::string_view value) {
    KxHandle<KxSipHeader> header = sMake(name);
    KxSipLine line(value);
    KxSipFault fault = header->parseRest(line);
    if (fault && KxSipGrammar::sReadsLinesByValue()) {
        fault = KxSipLineValues(name, value).read(header);
    }
    fault.raiseIfAny();
    return header;
}

KxHandle<KxSipHeader> KxSipHeader::sMake(std::string_view name) {
    return sConstruct(name, findCreator(name));
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
    const KxSipFault fault = line.takeUnnamed(in);
    setToken(line.name());
    fault.raiseIfAny();
    parseRest(line).raiseIfAny();
}

[[gnu::always_inline]] inline KxSipFault KxSipHeader::parse(KxSipLine& line) {
    const Oskan::TraceScope trace(s_logger, "KxSipHeader::parse");
    const std::string_view name = line.name();
    if (m_token.length() != name.size() || !KxBytes::equal(m_token.c_str(), name.data(), name.size())) {
        setToken(line.name());
    }
    return parseRest(line);
}

[[gnu::always_inline]] inline KxSipFault KxSipHeader::parseRest(KxSipLine& line) {
    const Oskan::TraceScope trace(s_logger, "KxSipHeader::parseRest");
    if (!line.skipToText()) {
        return kNothingAfterColon;
    }
    const KxSipFault fault = readValue(line);
    if (fault || line.isAtEnd()) {
        return fault;
    }
    return KxSipGrammar::sReadsLinesByValue() ? parseFurther<true>(line) : parseFurther<false>(line);
}

/** As parseRest, for other files. */
KxSipFault KxSipHeader::parseValues(KxSipLine& line) {
    return parseRest(line);
}

/** Reads the values after the first comma, each into an object of its own. A loop, not recursion: a line may have
    thousands of values. */
template <bool kIsExact>
[[gnu::noinline]] KxSipFault KxSipHeader::parseFurther(KxSipLine& line) {
    if (kIsExact && !KxSipHeaderKinds::sIsList(m_headerID)) {
        return line.skipToText() ? kTextAfterValue : KxSipFault();
    }
    const std::string_view name = getExpandedToken();
    const Creator creator = findCreator(name);
    KxHandle<KxSipHeader> further;
    KxHandle<KxSipHeader>* link = &further;
    while (kIsExact ? line.skipComma() : line.skipToNextValue()) {
        *link = sConstruct(name, creator);
        const Oskan::TraceScope trace(s_logger, "KxSipHeader::parseRest");
        if (!line.skipToText() || (kIsExact && line.peek() == ',')) {
            return kNothingAfterColon;
        }
        KxSipHeader* const last = link->get();
        last->setInMessage(isInMessage());
        if (const KxSipFault fault = last->readValue(line)) {
            return fault;
        }
        link = &last->m_next;
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
    std::string_view lineEnd;
    writeLines(out, lineEnd);
    out.write(lineEnd);
}

bool KxSipHeader::sTracesLines() {
    return s_logger.isEnabled(Oskan::LogLevel::Trace);
}

void KxSipHeader::display(KxOutputStream& out, bool) const {
    serialize(out);
}
