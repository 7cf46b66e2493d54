#include "sipobject/KxSipTag.h"

#include "sipobject/KxSipGrammar.h"
#include "util/KxTime.h"
#include "util/UUID.h"

#include <cstdio>
#include <cstdlib>

KxSipTag::KxSipTag(const char* prefix) {
    reGenerate(prefix);
}

KxSipTag* KxSipTag::clone() const {
    return new KxSipTag(*this);
}

KxString KxSipTag::sRandom() {
    char text[UUID::kTextLength + 1];
    UUID::uuid_create_string(text);
    return KxString(text, UUID::kTextLength);
}

void KxSipTag::reGenerate(const char* prefix) {
    if (KxSipGrammar::sMakesUnpredictableNumbers()) {
        const KxString random = sRandom();
        m_value = prefix == nullptr ? random : KxString(std::string_view(prefix)).append("-").append(random);
        return;
    }
    const auto number = static_cast<unsigned>(std::rand());
    const auto time = static_cast<unsigned>(KxTime::sGetCurrentTime().m_microseconds);
    char numbers[2 * 8 + 2];
    const int length = std::snprintf(numbers, sizeof numbers, "%x-%x", number, time);
    const std::string_view tail(numbers, static_cast<std::size_t>(length));
    if (prefix == nullptr) {
        m_value = KxString(tail);
    } else {
        m_value = KxString(std::string_view(prefix)).append("-").append(tail);
    }
}
