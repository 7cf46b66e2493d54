#include "util/KxParameters.h"

#include "core/MemAccount.h"
#include "core/MemAllocator.h"
#include "util/KxByteArrayOutputStream.h"
#include "util/KxByteScan.h"
#include "util/KxWholeWindow.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <random>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

constinit Oskan::MemAccount s_account{"KxParameters"};

/** What a pair is made of ends at one of these; a line's end and commas end the list only in a stream. */
template <bool kInStream>
using Specials = std::conditional_t<kInStream, KxByteScan<'=', ';', '"', ',', '\r', '\n'>, KxByteScan<'=', ';', '"'>>;

/** Where the quoted text that begins at `at` ends: at its quote, or, in a stream, at the line's end. */
template <bool kInStream>
const char* findQuoteEnd(const char* at, const char* end) {
    const auto next = [end](const char* from) {
        return kInStream ? KxBytes::findAny<'"', '\\', '\r', '\n'>(from, end) : KxBytes::findAny<'"', '\\'>(from, end);
    };
    const auto behindPair = [end](const char* backslash) { // in a stream, nothing quotes a line's end
        const char* const quoted = backslash + 1;
        return quoted == end || (kInStream && (*quoted == '\r' || *quoted == '\n')) ? quoted : quoted + 1;
    };
    for (at = next(at); at != end && *at == '\\'; at = next(behindPair(at))) {
    }
    return at;
}

const std::uint64_t s_hashKey = std::random_device()() * 0x9E3779B97F4A7C15ULL;

/** Where the names of a long list stand: open addressing over the pairs' numbers. The bits that no number needs hold
    some of its name's hash, so that names are looked at only where they are likely to be the one. */
class NameIndex {
public:
    /** For up to `capacity` pairs, a power of two. */
    explicit NameIndex(std::uint32_t capacity) : m_numberBits(capacity * 2 - 1), m_cells(capacity * 2, 0) {}

    void clear() { std::fill(m_cells.begin(), m_cells.end(), 0); }

    /** The number plus one, or 0. */
    template <class Matches>
    std::uint32_t find(std::uint32_t hash, Matches matches) const {
        for (std::uint32_t at = hash & m_numberBits;; at = (at + 1) & m_numberBits) {
            const std::uint32_t cell = m_cells[at];
            const std::uint32_t number = cell & m_numberBits; // plus one
            if (cell == 0 || (((cell ^ hash) & ~m_numberBits) == 0 && matches(number - 1))) {
                return number;
            }
        }
    }
    void insert(std::uint32_t hash, std::uint32_t number) {
        std::uint32_t at = hash & m_numberBits;
        while (m_cells[at] != 0) {
            at = (at + 1) & m_numberBits;
        }
        m_cells[at] = (hash & ~m_numberBits) | (number + 1);
    }

    /** Keyed by chance, and every character counts: strangers choose the names. */
    static std::uint32_t hash(std::string_view name) {
        std::uint64_t value = s_hashKey ^ name.size();
        for (std::size_t at = 0; at < name.size(); at += 8) {
            std::uint64_t word = 0;
            for (const char c : name.substr(at, 8)) {
                word = word << 8 | static_cast<unsigned char>(KxAscii::toLower(c));
            }
            value = mix(value ^ word, 0xA0761D6478BD642FULL);
            value = mix(value ^ s_hashKey, 0xE7037ED1A0B428DBULL);
        }
        return static_cast<std::uint32_t>(value);
    }

private:
    static std::uint64_t mix(std::uint64_t a, std::uint64_t b) {
        __extension__ using Wide = unsigned __int128;
        const Wide product = static_cast<Wide>(a) * b;
        return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
    }

    std::uint32_t m_numberBits;         // also where a hash's first cell is
    std::vector<std::uint32_t> m_cells; // at most half full; 0 for an empty one
};

} // namespace

/** Room for the pairs of a list that has outgrown its object, which follow it in the same allocation. */
struct KxParameters::Block {
    static constexpr std::uint32_t kIndexFrom = 32;

    std::uint32_t capacity;
    std::unique_ptr<NameIndex> index;

    Pair* pairs() { return reinterpret_cast<Pair*>(this + 1); }

    static Block* make(std::uint32_t capacity) {
        void* const memory = Oskan::NoSizeMemAllocator::allocate(sizeof(Block) + capacity * sizeof(Pair), s_account);
        return new (memory) Block{capacity, nullptr};
    }
    static void free(Block* block) {
        block->~Block();
        Oskan::NoSizeMemAllocator::deallocate(block, s_account);
    }
    /** An index of these pairs, where there is room for enough to want one. Allocates only the first time. */
    void buildIndex(const Pair* all, std::uint32_t size) {
        if (capacity < kIndexFrom) {
            return;
        }
        if (index == nullptr) {
            index = std::make_unique<NameIndex>(capacity);
        } else {
            index->clear();
        }
        for (std::uint32_t i = 0; i < size; ++i) {
            index->insert(NameIndex::hash(all[i].name), i);
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

KxParameters::~KxParameters() {
    releaseAll();
}

void KxParameters::releaseAll() {
    std::destroy_n(pairs(), m_size);
    if (m_block != nullptr) {
        Block::free(m_block);
    }
}

int KxParameters::compareWith(const KxObject& other) const {
    const auto* const list = dynamic_cast<const KxParameters*>(&other);
    return list == nullptr ? KxObject::compareWith(other) : getString().compareWith(list->getString());
}

std::uint32_t KxParameters::hashCode() const {
    return getString().isNil() ? 0 : getString().getBuffer()->hashCode();
}

void KxParameters::display(KxOutputStream& out, bool) const {
    serialize(out);
}

KxParameters::Pair* KxParameters::pairs() {
    return m_block != nullptr ? m_block->pairs() : m_inline;
}

inline KxParameters::Pair* KxParameters::find(std::string_view name) {
    if (m_block != nullptr && m_block->index != nullptr) {
        return findIndexed(name);
    }
    Pair* const end = pairs() + m_size;
    for (Pair* pair = pairs(); pair != end; ++pair) {
        if (pair->name.length() == name.size() && pair->name.equalsNoCase(name)) {
            return pair;
        }
    }
    return nullptr;
}

KxParameters::Pair* KxParameters::findIndexed(std::string_view name) {
    Pair* const all = pairs();
    const std::uint32_t found =
        m_block->index->find(NameIndex::hash(name), [&](std::uint32_t i) { return all[i].name.equalsNoCase(name); });
    return found == 0 ? nullptr : all + (found - 1);
}

inline std::uint32_t KxParameters::capacity() const {
    return m_block == nullptr ? kInline : m_block->capacity;
}

void KxParameters::grow() {
    const std::uint32_t capacity = this->capacity();
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
    const std::uint32_t size = m_size;
    releaseAll();
    m_block = larger;
    m_size = size;
}

inline void KxParameters::append(KxString&& name, KxString&& value) {
    if (m_size == capacity()) {
        grow();
    }
    Pair* const added = new (pairs() + m_size) Pair{std::move(name), std::move(value)};
    if (m_block != nullptr && m_block->index != nullptr) {
        m_block->index->insert(NameIndex::hash(added->name), m_size);
    }
    ++m_size;
}

[[gnu::always_inline]] inline void KxParameters::parsePair(const char* begin, const char* equals, const char* end) {
    const auto text = [](const char* from, const char* to) {
        return KxAscii::trim(std::string_view(from, static_cast<std::size_t>(to - from)));
    };
    const std::string_view name = text(begin, equals == nullptr ? end : equals);
    const std::string_view value = equals == nullptr ? std::string_view() : text(equals + 1, end);
    if (name.empty() && value.empty()) {
        return;
    }
    static constinit const KxConstString kNothing("");
    KxString held = value.empty() ? KxString(kNothing) : KxString(value);
    if (Pair* const present = find(name)) {
        present->value = std::move(held);
    } else {
        append(KxString(name), std::move(held));
    }
}

/** One pass over the pairs; returns where it stopped. */
template <bool kInStream>
const char* KxParameters::parsePairs(const char* begin, const char* const end, const char* readable) {
    Specials<kInStream> specials(begin, end, readable);
    while (true) {
        const char* equals = nullptr;
        const char* at = specials.next();
        for (; at != end && (*at == '=' || *at == '"'); at = specials.next()) {
            if (*at == '=') {
                equals = equals == nullptr ? at : equals;
            } else {
                at = findQuoteEnd<kInStream>(at + 1, end);
                specials.skipTo(at != end && *at == '"' ? at + 1 : at);
            }
        }
        parsePair(begin, equals, at);
        if (at == end || *at != ';') {
            return at;
        }
        begin = at + 1;
    }
}

void KxParameters::parse(std::string_view text, const char* readable) {
    parsePairs<false>(text.data(), text.data() + text.size(), readable);
}

void KxParameters::parse(KxInputStream& in) {
    KxWithWholeWindow(in, [this](KxInputStream& line) {
        const std::string_view window = line.window();
        const char* const end = parsePairs<true>(window.data(), window.data() + window.size(), line.readableEnd());
        line.consume(static_cast<std::size_t>(end - window.data()));
    });
}

void KxParameters::serialize(KxOutputStream& out) const {
    for (const Pair* pair = begin(); pair != end(); ++pair) {
        if (pair != begin()) {
            out.write(';');
        }
        if (pair->value.empty()) {
            out.write(pair->name.view());
        } else {
            out.writeAll(pair->name.view(), std::string_view("=", 1), pair->value.view());
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
    while (capacity() - m_size < values.size()) {
        grow();
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

bool KxParameters::removeValue(std::string_view name) {
    Pair* const found = find(name);
    if (found == nullptr) {
        return false;
    }
    std::move(found + 1, pairs() + m_size, found);
    std::destroy_at(pairs() + --m_size);
    if (m_block != nullptr) {
        m_block->buildIndex(m_block->pairs(), m_size);
    }
    return true;
}

void KxParameters::clear() {
    releaseAll();
    m_block = nullptr;
    m_size = 0;
}
