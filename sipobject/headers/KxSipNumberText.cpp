#include "sipobject/headers/KxSipNumberText.h"

#include "util/KxStreamTokenizer.h"

KxSipFault KxSipNumberText::sRead(KxSipLine& line, std::uint32_t most, std::uint32_t& number, const char* otherwise) {
    const bool isNumber = KxAscii::isDigit(static_cast<char>(KxStreamTokenizer::sDiscardWhite(line)));
    const std::uint32_t read = KxStreamTokenizer::sGetUnsigned(line); // 4294967295 if it is larger
    const int next = line.peek();
    if (!isNumber || read > most || (next >= 0 && !KxAscii::isSpace(static_cast<char>(next)))) {
        return KxSipFault(otherwise);
    }
    number = read;
    return {};
}
