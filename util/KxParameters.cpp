#include "util/KxParameters.h"

#include "core/DefaultStaticMemAllocator.h"
#include "util/KxByteArrayOutputStream.h"
#include "util/KxByteScan.h"
#include "util/KxInputStream.h"
#include "util/KxNameHash.h"
#include "util/KxPairIndex.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace {

constinit Oskan::MemAccount s_account{"KxParameters"};

constinit KxConstString s_nothing("");

/** Finds all characters at which a part of a pair may end, white space and characters that need quotes. What else it
    finds is rare. */
using Marks = KxByteScan<',', ';', '>'>;

/** Returns where the quoted text that begins at `at` ends: at its closing quote or, in a stream, at the line end. */
template <bool kInStream>
const char* findQuoteEnd(const char* at, const char* end) {
    const auto next = [end](const char* from) {
        return kInStream ? KxBytes::findAny<'"', '\\', '\r', '\n'>(from, end) : KxBytes::findAny<'"', '\\'>(from, end);
    };
    const auto afterEscape = [end](const char* backslash) { // in a stream, a line end cannot be quoted
        const char* const quoted = backslash + 1;
        return quoted == end || (kInStream && (*quoted == '\r' || *quoted == '\n')) ? quoted : quoted + 1;
    };
    for (at = next(at); at != end && *at == '\\'; at = next(afterEscape(at))) {
    }
    return at;
}

constexpr std::string_view textOf(const char* begin, const char* end) {
    return {begin, static_cast<std::size_t>(end - begin)};
}

/** Whether no character of the text needs quotes. */
bool isPlain(std::string_view text) {
    return std::none_of(text.begin(), text.end(), [](char c) {
        return static_cast<unsigned char>(c) <= ' ' || c == '"' || c == '<' || c == '>';
    });
}

/** Whether the text is a name, or a name and a value that is a quoted text or has no characters that need quotes.
    `equals` is null if there is no value. */
bool isExact(const char* begin, const char* equals, const char* end) {
    const std::string_view name = KxAscii::trim(textOf(begin, equals == nullptr ? end : equals));
    const std::string_view value = equals == nullptr ? std::string_view() : KxAscii::trim(textOf(equals + 1, end));
    if (name.empty() || !isPlain(name)) {
        return false;
    }
    if (value.empty() || value.front() != '"') {
        return isPlain(value);
    }
    const char* const last = &value.back(); // every quoted text is known to be closed
    return last != value.data() && findQuoteEnd<true>(value.data() + 1, last) == last;
}

} // namespace

/** Storage for the pairs of a list that are too many for the object. The pairs follow it in the same allocation. */
struct KxParameters::Block {
    static constexpr std::uint32_t kIndexFrom = 32;

    std::uint32_t capacity;
    std::unique_ptr<KxPairIndex> index; // from kIndexFrom on

    Pair* pairs() { return reinterpret_cast<Pair*>(this + 1); }

    static Block* make(std::uint32_t capacity) {
        void* const memory = Oskan::NoSizeMemAllocator::allocate(sizeof(Block) + capacity * sizeof(Pair), s_account);
        return new (memory) Block{capacity, nullptr};
    }
    static void free(Block* block) {
        block->~Block();
        Oskan::NoSizeMemAllocator::deallocate(block, s_account);
    }
    /** Builds an index of these pairs, which have no gaps, if the capacity is large enough to need one. Allocates only
        the first time. */
    void buildIndex(const Pair* all, std::uint32_t size) {
        if (capacity < kIndexFrom) {
            return;
        }
        if (index == nullptr) {
            index = std::make_unique<KxPairIndex>(capacity);
        } else {
            index->clear();
        }
        for (std::uint32_t i = 0; i < size; ++i) {
            index->append(KxNameHash::noCase(all[i].name));
        }
    }
};

void* KxParameters::operator new(std::size_t size) {
    return Oskan::NoSizeMemAllocator::allocate(size, s_account);
}

void KxParameters::operator delete(void* block, std::size_t size) {
    Oskan::DefaultStaticMemAllocator::deallocate(block, size, s_account);
}

KxParameters::KxParameters(const KxParameters& other) : KxParameters() {
    if (other.m_size > kInline) {
        std::uint32_t capacity = kInline;
        while (capacity < other.m_size) {
            capacity *= 2;
        }
        m_block = Block::make(capacity);
    }
    m_size = other.m_size;
    std::uninitialized_copy(other.begin(), other.end(), pairs());
    if (m_block != nullptr) {
        m_block->buildIndex(m_block->pairs(), m_size);
    }
}

KxParameters& KxParameters::operator=(const KxParameters& other) {
    if (this != &other) {
        KxParameters copy(other);
        releaseAll();
        m_size = copy.m_size;
        m_block = std::exchange(copy.m_block, nullptr);
        if (m_block == nullptr) {
            std::uninitialized_move_n(copy.m_inline, m_size, m_inline);
        } else {
            copy.m_size = 0;
        }
    }
    return *this;
}

inline void KxParameters::releaseAll() {
    if (m_block != nullptr) [[unlikely]] {
        releaseBlock();
    } else {
        std::destroy_n(m_inline, m_size);
    }
}

void KxParameters::releaseBlock() {
    std::destroy_n(m_block->pairs(), places());
    Block::free(m_block);
}

KxParameters::~KxParameters() {
    releaseAll();
}

KxParameters* KxParameters::sCreateHeld() {
    void* const block = s_account.allocateAtHand(sizeof(KxParameters));
    if (block == nullptr) [[unlikely]] {
        return KxMake<KxParameters>().detach();
    }
    return ::new (block) KxParameters(Held::Tag);
}

/** Does what `delete this` does, without a virtual call. */
void KxParameters::destroySelf() {
    releaseAll();
    s_account.deallocate(this, sizeof *this);
}

int KxParameters::compareWith(const KxObject& other) const {
    const auto* const list = dynamic_cast<const KxParameters*>(&other);
    return list == nullptr ? KxObject::compareWith(other) : getString().compareWith(list->getString());
}

std::uint32_t KxParameters::hashCode() const {
    return static_cast<std::uint32_t>(std::hash<std::string_view>()(getString()));
}

void KxParameters::display(KxOutputStream& out, bool) const {
    serialize(out);
}

KxParameters::Pair* KxParameters::pairs() {
    return m_block != nullptr ? m_block->pairs() : m_inline;
}

inline bool KxParameters::hasIndex() const {
    return m_block != nullptr && m_block->index != nullptr;
}

/** The number of places that hold or held a pair. Only a list with an index has empty places. */
inline std::uint32_t KxParameters::places() const {
    return hasIndex() ? m_block->index->places() : m_size;
}

KxParameters::Iterator KxParameters::begin() const {
    if (!hasIndex()) {
        return {pairs(), nullptr};
    }
    const std::uint32_t* const gaps = m_block->index->gaps();
    return {pairs() + *gaps, gaps + *gaps};
}

KxParameters::Iterator KxParameters::end() const {
    const std::uint32_t last = places();
    return {pairs() + last, hasIndex() ? m_block->index->gaps() + last : nullptr};
}

inline KxParameters::Pair* KxParameters::find(std::string_view name) {
    if (hasIndex()) [[unlikely]] {
        return findIndexed(name);
    }
    Pair* const end = pairs() + m_size;
    for (Pair* pair = pairs(); pair != end; ++pair) {
        if (pair->name.length() == name.size()) {
            return findFrom(pair, end, name);
        }
    }
    return nullptr;
}

/** Apart, so that the usual search calls nothing. */
KxParameters::Pair* KxParameters::findFrom(Pair* begin, Pair* end, std::string_view name) {
    Pair* const found = std::find_if(begin, end, [name](const Pair& pair) { return pair.name.equalsNoCase(name); });
    return found == end ? nullptr : found;
}

KxParameters::Pair* KxParameters::findIndexed(std::string_view name) {
    Pair* const all = pairs();
    const std::uint32_t found =
        m_block->index->find(KxNameHash::noCase(name), [&](std::uint32_t i) { return all[i].name.equalsNoCase(name); });
    return found == 0 ? nullptr : all + (found - 1);
}

inline std::uint32_t KxParameters::capacity() const {
    return m_block == nullptr ? kInline : m_block->capacity;
}

/** Makes room for one more pair at least. If half of the list is gaps, closing them is enough: it needs no memory, and
    its cost is covered by the removals that left the gaps. */
void KxParameters::makeRoom() {
    if (places() != m_size) {
        closeGaps();
        if (m_size <= capacity() / 2) {
            return;
        }
    }
    grow();
}

void KxParameters::closeGaps() {
    Pair* const all = pairs();
    Pair* const end = all + places();
    std::destroy(std::remove_if(all, end, [](const Pair& pair) { return pair.value.isNil(); }), end);
    m_block->buildIndex(all, m_size);
}

/** Doubles the capacity of a list without gaps. */
void KxParameters::grow() {
    if (m_block == nullptr) {
        Block* const first = Block::make(2 * kInline);
        std::uninitialized_move_n(m_inline, m_size, first->pairs()); // leaves nothing to destroy
        m_block = first;
        return;
    }
    const std::uint32_t capacity = m_block->capacity;
    if (capacity > std::numeric_limits<std::uint32_t>::max() / 4) {
        throw std::bad_alloc();
    }
    Block* const larger = Block::make(capacity * 2);
    try {
        larger->buildIndex(pairs(), m_size);
    } catch (...) {
        Block::free(larger);
        throw;
    }
    std::uninitialized_move_n(pairs(), m_size, larger->pairs());
    Block::free(m_block);
    m_block = larger;
}

inline void KxParameters::append(KxString&& name, KxString&& value) {
    if (m_block != nullptr || m_size == kInline) {
        appendToLong(std::move(name), std::move(value));
        return;
    }
    new (m_inline + m_size) Pair{std::move(name), std::move(value)};
    ++m_size;
}

void KxParameters::appendToLong(KxString&& name, KxString&& value) {
    if (places() == capacity()) {
        makeRoom();
    }
    Pair* const added = new (pairs() + places()) Pair{std::move(name), std::move(value)};
    if (hasIndex()) {
        m_block->index->append(KxNameHash::noCase(added->name));
    }
    ++m_size;
}

[[gnu::always_inline]] inline void KxParameters::store(std::string_view name, std::string_view value) {
    if (name.empty() && value.empty()) {
        return;
    }
    KxString held =
        value.empty() ? KxString(KxHandle<KxStringBuffer>(s_nothing.constant(), KxUncounted{})) : KxString(value);
    Pair* const present = m_size == 0 ? nullptr : find(name);
    if (present != nullptr) {
        present->value = std::move(held);
    } else {
        append(KxString(name), std::move(held));
    }
}

/** Reads the pairs in one pass; returns where it stopped, or null for a pair that is not exact. A usual pair is a name,
    or a name, "=" and a value, with nothing else in it that Marks finds. */
template <KxParameters::Reading kReading>
const char* KxParameters::parsePairs(const char* begin, const char* const end, const char* readable) {
    Marks marks(begin, end, readable);
    while (true) {
        const char* at = marks.next();
        const char* const nameEnd = at;
        if (at != end && *at == '=') {
            at = marks.next();
        }
        if ((at == end || endsPair<kReading>(*at)) && (kReading != Reading::Exact || nameEnd != begin)) [[likely]] {
            store(textOf(begin, nameEnd), textOf(at == nameEnd ? at : nameEnd + 1, at));
        } else {
            at = parseUnusualPair<kReading>(begin, end, readable);
            if (kReading == Reading::Exact && at == nullptr) {
                return nullptr;
            }
            marks.skipTo(at == end ? at : at + 1);
        }
        if (at == end || *at != ';') {
            return at;
        }
        begin = at + 1;
    }
}

/** Reads one pair of any kind; returns where it ends, or null if it is not exact. */
template <KxParameters::Reading kReading>
[[gnu::noinline]] const char* KxParameters::parseUnusualPair(const char* begin, const char* const end,
                                                             const char* readable) {
    constexpr bool kInStream = kReading != Reading::Text;
    constexpr bool kExact = kReading == Reading::Exact;
    Marks marks(begin, end, readable);
    const char* equals = nullptr;
    const char* at = marks.next();
    for (; at != end && !endsPair<kReading>(*at); at = marks.next()) {
        if (*at == '=') {
            equals = equals == nullptr ? at : equals;
        } else if (*at == '"') {
            at = findQuoteEnd<kInStream>(at + 1, end);
            const bool isClosed = at != end && *at == '"';
            if (kExact && !isClosed) {
                return nullptr;
            }
            at = isClosed ? at + 1 : at;
            marks.skipTo(at);
        }
    }
    if (kExact && !isExact(begin, equals, at)) {
        return nullptr;
    }
    store(KxAscii::trim(textOf(begin, equals == nullptr ? at : equals)),
          KxAscii::trim(textOf(equals == nullptr ? at : equals + 1, at)));
    return at;
}

void KxParameters::parse(std::string_view text, const char* readable) {
    parsePairs<Reading::Text>(text.data(), text.data() + text.size(), readable);
}

void KxParameters::parse(KxInputStream& in) {
    const std::size_t length = in.isWhole() ? in.window().size() : in.fillLine();
    const char* const begin = in.window().data();
    const char* const end = parsePairs<Reading::Stream>(begin, begin + length, in.readableEnd());
    in.consume(static_cast<std::size_t>(end - begin));
}

bool KxParameters::parseExactly(KxInputStream& in) {
    const std::size_t length = in.fillLine();
    const char* const begin = in.window().data();
    const char* const end = parsePairs<Reading::Exact>(begin, begin + length, in.readableEnd());
    in.consume(end == nullptr ? 0 : static_cast<std::size_t>(end - begin));
    return end != nullptr;
}

void KxParameters::serialize(KxOutputStream& out) const {
    const Iterator last = end();
    for (Iterator pair = begin(); pair != last;) {
        if (pair->value.empty()) {
            out.write(pair->name.view());
        } else {
            out.writeAll(pair->name.view(), std::string_view("=", 1), pair->value.view());
        }
        if (++pair != last) {
            out.write(';');
        }
    }
}

KxString KxParameters::getString() const {
    KxByteArrayOutputStream out(128);
    serialize(out);
    return KxString(out.view());
}

KxString KxParameters::getValue(std::string_view name) const {
    const KxString* const value = findValue(name);
    return value == nullptr ? KxString() : *value;
}

const KxString* KxParameters::findValue(std::string_view name) const {
    const Pair* const pair = const_cast<KxParameters*>(this)->find(name);
    return pair == nullptr ? nullptr : &pair->value;
}

void KxParameters::setValue(std::string_view name, const KxString& value) {
    if (value.isNil()) {
        return;
    }
    if (Pair* const present = find(name)) {
        present->value = value;
    } else {
        append(KxString(name), KxString(value));
    }
}

void KxParameters::setValues(std::initializer_list<Pair> values) {
    while (capacity() - places() < values.size()) {
        makeRoom();
    }
    for (const Pair& pair : values) { // nothing here allocates
        if (pair.value.isNil()) {
            continue;
        }
        if (Pair* const present = find(pair.name)) {
            present->value = pair.value;
        } else {
            append(KxString(pair.name), KxString(pair.value));
        }
    }
}

bool KxParameters::appendToValue(std::string_view name, std::string_view text) {
    Pair* const present = find(name);
    if (present != nullptr) {
        present->value.append(text);
    }
    return present != nullptr;
}

bool KxParameters::removeValue(std::string_view name) {
    Pair* const found = find(name);
    if (found == nullptr) {
        return false;
    }
    if (hasIndex()) {
        m_block->index->remove(KxNameHash::noCase(name), static_cast<std::uint32_t>(found - pairs()));
        *found = Pair(); // a gap, which is closed when the room is needed
        --m_size;
    } else {
        std::move(found + 1, pairs() + m_size, found);
        std::destroy_at(pairs() + --m_size);
    }
    return true;
}

void KxParameters::clear() {
    releaseAll();
    m_block = nullptr;
    m_size = 0;
}
