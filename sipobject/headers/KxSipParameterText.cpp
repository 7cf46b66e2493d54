#include "sipobject/headers/KxSipParameterText.h"

#include "util/KxStreamTokenizer.h"

namespace {

constexpr KxSipFault kInvalid{"Invalid text after the value of a header"};

} // namespace

KxSipFault KxSipParameterText::sRead(KxSipLine& line, KxSharedParameters& parameters) {
    if (!parameters.empty()) [[unlikely]] {
        KxSharedParameters read;
        const KxSipFault fault = sRead(line, read);
        if (!fault) {
            parameters.write() = read.write();
        }
        return fault;
    }
    const int c = KxStreamTokenizer::sDiscardWhite(line);
    if (c != ';') {
        return c < 0 || c == ',' || c == '\r' || c == '\n' ? KxSipFault() : kInvalid;
    }
    line.read();
    KxParameters& list = parameters.write();
    if (!list.parseExactly(line)) {
        list.clear();
        return kInvalid;
    }
    return {};
}
