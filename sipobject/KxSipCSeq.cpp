#include "sipobject/KxSipCSeq.h"

#include "sipobject/KxSipGrammar.h"
#include "util/UUID.h"

#include <charconv>
#include <cstdlib>

/** A number of 24 bits from the system's random source. */
static std::uint32_t randomNumber() {
    char text[UUID::kTextLength + 1];
    UUID::uuid_create_string(text);
    std::uint32_t number = 0;
    std::from_chars(text, text + 6, number, 16);
    return number;
}

KxSipCSeq::KxSipCSeq() {
    const std::uint32_t number =
        KxSipGrammar::sMakesUnpredictableNumbers() ? randomNumber() : static_cast<std::uint32_t>(std::rand());
    setValue(number % 0xFFFFFF);
}
