#include "sipobject/headers/KxSipParameterText.h"

#include "util/KxStreamTokenizer.h"

namespace {

constexpr KxSipFault kInvalid{"Invalid text after the value of a header"};

/** Reads another list first, since the old one has to stay if there is a fault. */
[[gnu::noinline]] KxSipFault replace(KxSipLine& line, KxSharedParameters& parameters) {
    KxSharedParameters read;
    const KxSipFault fault = KxSipParameterText::sRead(line, read);
    if (!fault) {
        parameters.write() = read.write();
    }
    return fault;
}

} // namespace

KxSipFault KxSipParameterText::sRead(KxSipLine& line, KxSharedParameters& parameters) {
    if (!parameters.empty()) [[unlikely]] {
        return replace(line, parameters);
    }
    const int c = KxStreamTokenizer::sDiscardWhite(line);
    if (c != ';') {
        return c < 0 || c == ',' || c == '\r' || c == '\n' ? KxSipFault() : kInvalid;
    }
    line.consume(1);
    KxParameters& list = parameters.write();
    if (!list.parseExactly(line)) [[unlikely]] {
        list.clear();
        return kInvalid;
    }
    return {};
}
