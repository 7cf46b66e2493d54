#include "util/KxParameters.h"

#include "core/DefaultStaticMemAllocator.h"
#include "util/KxByteArrayOutputStream.h"
#include "util/KxNameHash.h"
#include "util/KxPairIndex.h"
#include "util/KxParametersStore.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace {

constinit Oskan::MemAccount s_account{"KxParameters"};

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

/** Apart, so that the usual search calls nothing. */
KxParameters::Pair* KxParameters::findFrom(Pair* begin, Pair* end, std::string_view name) {
    Pair* const found = std::find_if(begin, end, [name](const Pair& pair) {
        return pair.name.length() == name.size() && pair.name.equalsNoCase(name);
    });
    return found == end ? nullptr : found;
}

/** Finds a name in a block; only a long list has an index. */
KxParameters::Pair* KxParameters::findIndexed(std::string_view name) {
    Pair* const all = pairs();
    if (!hasIndex()) {
        return findFrom(all, all + m_size, name);
    }
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

void KxParameters::serialize(KxOutputStream& out) const {
    if (m_size != 0) {
        Iterator first = begin();
        write(out, *first);
        serializeFrom(out, ++first);
    }
}

/** A pair without the ";" before it. */
void KxParameters::write(KxOutputStream& out, const Pair& pair) {
    if (pair.value.empty()) {
        out.writeAll(pair.name);
    } else {
        out.writeAll(pair.name, '=', pair.value);
    }
}

void KxParameters::serializeFrom(KxOutputStream& out, Iterator pair) const {
    for (const Iterator last = end(); pair != last; ++pair) {
        out.write(';');
        write(out, *pair);
    }
}

void KxParameters::serializeEach(KxOutputStream& out) const {
    if (hasIndex()) [[unlikely]] {
        return serializeFrom(out, begin());
    }
    const Pair* pair = pairs();
    for (const Pair* const last = pair + m_size; pair != last; ++pair) {
        const bool isWritten =
            pair->value.empty() ? out.writeIfRoom(';', pair->name) : out.writeIfRoom(';', pair->name, '=', pair->value);
        if (!isWritten) [[unlikely]] {
            return serializeFrom(out, Iterator(pair, nullptr)); // in the tail, so that the loop needs no frame
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
