#include "util/KxString.h"

#include "util/KxWords.h"

#include <algorithm>
#include <ostream>

KxString::KxString(const char* text) {
    if (text != nullptr) {
        m_buffer = KxHandle<KxStringBuffer>(KxWords::findOrCopy(text), KxUncounted{});
    }
}

std::ptrdiff_t KxString::indexOf(std::string_view text, std::size_t start) const {
    const std::size_t at = view().find(text, start);
    return at == std::string_view::npos ? -1 : static_cast<std::ptrdiff_t>(at);
}

KxString KxString::substr(std::size_t start, std::size_t length) const {
    return KxString(view().substr(std::min(start, this->length()), length));
}

namespace {

template <char (*Change)(char)>
KxString changed(const KxString& text) {
    const std::string_view old = text.view();
    std::size_t same = 0;
    while (same != old.size() && Change(old[same]) == old[same]) {
        ++same;
    }
    if (same == old.size()) {
        return text;
    }
    const KxHandle<KxStringBuffer> copy = KxStringBuffer::sCreate(text.c_str(), text.length());
    char* const to = copy->lockBuffer(text.length());
    std::transform(to, to + text.length(), to, Change);
    return KxString(std::string_view(to, text.length()));
}

} // namespace

KxString KxString::upper() const {
    return changed<KxAscii::toUpper>(*this);
}

KxString KxString::lower() const {
    return changed<KxAscii::toLower>(*this);
}

KxStringBuffer& KxString::own(std::size_t capacity) {
    if (isNil() || !m_buffer->isUnshared()) {
        m_buffer = KxStringBuffer::sCreate(c_str(), length(), capacity);
    }
    return *m_buffer;
}

KxHandle<KxStringBuffer> KxString::getBuffer() {
    if (!isNil() && m_buffer.get()->isImmortal()) {
        own(length());
    }
    return m_buffer;
}

KxString& KxString::append(std::string_view text) {
    own(length() + text.size()).append(text.data(), text.size());
    return *this;
}

std::ostream& operator<<(std::ostream& out, const KxString& text) {
    return out << text.view();
}
