#include "util/KxStringBuffer.h"

#include "core/NoSizeMemAllocator.h"
#include "util/KxBytes.h"
#include "util/KxException.h"
#include "util/KxInputStream.h"
#include "util/KxOutputStream.h"
#include "util/KxScannedText.h"

#include <algorithm>
#include <functional>

namespace {

constinit Oskan::MemAccount s_account{"KxString"};

std::string_view viewOf(const char* text) {
    return text == nullptr ? std::string_view() : std::string_view(text);
}

} // namespace

void KxStringBuffer::operator delete(void* block) {
    Oskan::NoSizeMemAllocator::deallocate(block, s_account);
}

/** Does what `delete this` does, without a virtual call. Apart from the block itself, only text outside the block has
    to be freed. */
void KxStringBuffer::destroySelf() {
    constexpr std::size_t kMostAtHand = Oskan::MemClasses::kMaxStep - kTextOffset - 1;
    if (m_capacity > kMostAtHand || !s_account.deallocateAtHand(this, kTextOffset + m_capacity + 1)) [[unlikely]] {
        destroySlowly();
    }
}

void KxStringBuffer::destroySlowly() {
    if ((m_capacity & kOutside) != 0) {
        freeOutside();
    }
    s_account.deallocate(this);
}

void KxStringBuffer::throwTooLong() {
    KxException::sThrow("text too long for a string");
}

inline std::size_t KxStringBuffer::checked(std::size_t length) {
    if (length > kLongest) {
        throwTooLong();
    }
    return length;
}

/** The size of the block for a text. It is a multiple of 8, so that the bytes that the pool would add are room for
    text. */
constexpr std::size_t KxStringBuffer::blockFor(std::size_t capacity) {
    static_assert(sizeof(KxStringBuffer) == 32);
    return std::max(sizeof(KxStringBuffer), (kTextOffset + capacity + 1 + 7) & ~std::size_t{7});
}

/** A new buffer with one reference; the caller has still to write the text and its NUL. */
inline KxStringBuffer* KxStringBuffer::create(void* block, std::size_t bytes, std::size_t length) {
    return ::new (block) KxStringBuffer(static_cast<std::uint32_t>(bytes - kTextOffset - 1), length);
}

inline KxStringBuffer* KxStringBuffer::create(std::size_t length, std::size_t capacity) {
    const std::size_t bytes = blockFor(capacity);
    return create(s_account.allocate(bytes), bytes, length);
}

/** A copy of a text of up to kMost characters in a block at hand, or null. */
template <std::size_t kMost>
[[gnu::always_inline]] inline KxStringBuffer* KxStringBuffer::createAtHand(std::string_view text) {
    const std::size_t bytes = blockFor(text.size());
    void* const block = s_account.allocateAtHand(bytes);
    if (block == nullptr) [[unlikely]] {
        return nullptr;
    }
    KxStringBuffer* const made = create(block, bytes, text.size());
    if constexpr (kMost == KxBytes::kShortCopy) {
        *KxBytes::copyShort(made->inlineText(), text.data(), text.size()) = '\0';
    } else {
        *KxBytes::copyMedium(made->inlineText(), text.data(), text.size()) = '\0';
    }
    return made;
}

KxStringBuffer* KxStringBuffer::createHeld(std::string_view text) {
    if (text.size() <= KxBytes::kShortCopy) [[likely]] {
        if (KxStringBuffer* const made = createAtHand<KxBytes::kShortCopy>(text)) [[likely]] {
            return made;
        }
    }
    return createHeldLong(text);
}

/** Apart, as its copy is another one. */
KxStringBuffer* KxStringBuffer::createHeldLong(std::string_view text) {
    if (text.size() <= KxBytes::kMediumCopy && text.size() > KxBytes::kShortCopy) [[likely]] {
        if (KxStringBuffer* const made = createAtHand<KxBytes::kMediumCopy>(text)) [[likely]] {
            return made;
        }
    }
    return createHeldSlowly(text);
}

KxStringBuffer* KxStringBuffer::createHeldSlowly(std::string_view text) {
    KxStringBuffer* const made = create(text.size(), checked(text.size()));
    *KxBytes::copy(made->inlineText(), text.data(), text.size()) = '\0';
    return made;
}

KxHandle<KxStringBuffer> KxStringBuffer::sCreate(const char* text, std::size_t length, std::size_t capacity) {
    KxStringBuffer* const made = create(length, checked(std::max(length, capacity)));
    if (text != nullptr && length != 0) {
        std::memcpy(made->inlineText(), text, length);
    } else {
        std::memset(made->inlineText(), 0, length);
    }
    made->setLength(length);
    return KxHandle<KxStringBuffer>(made, KxUncounted{});
}

KxStringBuffer* KxStringBuffer::clone() const {
    KxStringBuffer* const copy = createHeld(view());
    copy->Release(false);
    return copy;
}

int KxStringBuffer::compareWith(const KxObject& other) const {
    const auto* const text = dynamic_cast<const KxStringBuffer*>(&other);
    return text == nullptr ? KxObject::compareWith(other) : view().compare(text->view());
}

int KxStringBuffer::compareWith(const char* text) const {
    return view().compare(viewOf(text));
}

int KxStringBuffer::compareNoCase(const char* text) const {
    return KxAscii::compareNoCase(view(), viewOf(text));
}

std::uint32_t KxStringBuffer::hashCode() const {
    return static_cast<std::uint32_t>(std::hash<std::string_view>()(view()));
}

void KxStringBuffer::display(KxOutputStream& out, bool) const {
    out << view();
}

void KxStringBuffer::grow(std::size_t capacity) {
    OSKAN_ASSERT(!isImmortal());
    if (capacity <= this->capacity()) {
        return;
    }
    if (capacity > kLongest) {
        throwTooLong();
    }
    const std::size_t roomy = std::min(std::max(capacity, this->capacity() * 2), kLongest);
    auto* const fresh = static_cast<char*>(Oskan::NoSizeMemAllocator::allocate(roomy + 1, s_account));
    std::memcpy(fresh, c_str(), m_length + std::size_t{1});
    if ((m_capacity & kOutside) != 0) {
        freeOutside();
    }
    m_tail.outside.text = fresh;
    m_capacity = static_cast<std::uint32_t>(roomy) | kOutside;
}

void KxStringBuffer::freeOutside() {
    Oskan::NoSizeMemAllocator::deallocate(const_cast<char*>(m_tail.outside.text), s_account);
}

void KxStringBuffer::assign(const char* text) {
    const std::string_view whole = viewOf(text);
    assign(whole.data(), whole.size());
}

void KxStringBuffer::assign(const char* text, std::size_t length) {
    if (length > capacity()) {
        const KxHandle<KxStringBuffer> copy = sCreate(text, length); // `text` may lie in this buffer
        grow(length);
        std::memcpy(this->text(), copy->c_str(), length);
    } else if (length != 0) {
        std::memmove(this->text(), text, length);
    }
    setLength(length);
}

void KxStringBuffer::append(const char* text, std::size_t length) {
    if (length == 0) {
        return;
    }
    if (length > kLongest - m_length) {
        throwTooLong();
    }
    const bool own = text >= c_str() && text <= c_str() + m_length;
    const std::size_t offset = own ? static_cast<std::size_t>(text - c_str()) : 0;
    grow(m_length + length);
    std::memmove(this->text() + m_length, own ? c_str() + offset : text, length);
    setLength(m_length + length);
}

std::ptrdiff_t KxStringBuffer::indexOf(const char* text, std::size_t start) const {
    const std::size_t at = view().find(viewOf(text), start);
    return at == std::string_view::npos ? -1 : static_cast<std::ptrdiff_t>(at);
}

KxHandle<KxStringBuffer> KxStringBuffer::substr(std::size_t start, std::size_t length) const {
    const std::string_view part = view().substr(std::min(start, this->length()), length);
    return sCreate(part.data(), part.size());
}

void KxStringBuffer::trim() {
    const std::string_view kept = KxAscii::trim(view());
    std::memmove(text(), kept.data(), kept.size());
    setLength(kept.size());
}

void KxStringBuffer::toUpper() {
    std::transform(text(), text() + m_length, text(), KxAscii::toUpper);
}

void KxStringBuffer::toLower() {
    std::transform(text(), text() + m_length, text(), KxAscii::toLower);
}

char* KxStringBuffer::lockBuffer(std::size_t capacity) {
    grow(capacity);
    return text();
}

void KxStringBuffer::releaseBuffer(std::size_t finalLength) {
    setLength(std::min(finalLength, capacity()));
}

std::size_t KxStringBuffer::read(KxInputStream& in, std::size_t count) {
    setLength(0);
    while (m_length < count && in.fill()) {
        const std::string_view window = in.window().substr(0, count - m_length);
        append(window.data(), window.size());
        in.consume(window.size());
    }
    return m_length;
}

std::size_t KxStringBuffer::parse(KxInputStream& in, const KxCharSet& delimiters) {
    while (in.fill() && KxAscii::isSpace(in.window().front())) {
        in.consume(1);
    }
    KxScannedText scanned;
    const std::string_view token = scanned.until(in, delimiters);
    assign(token.data(), token.size());
    return m_length;
}

std::size_t KxStringBuffer::parse(KxInputStream& in, const char* delimiters) {
    return parse(in, KxCharSet(viewOf(delimiters)));
}
