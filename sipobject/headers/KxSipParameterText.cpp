#include "sipobject/headers/KxSipParameterText.h"

KxSipFault KxSipParameterText::sReadMore(KxSipLine& line, KxSharedParameters& parameters) {
    if (!parameters.empty()) {
        KxSharedParameters read;
        const KxSipFault fault = sRead(line, read);
        if (!fault) {
            parameters.write() = read.write();
        }
        return fault;
    }
    if (line.peek() != ';') {
        return KxSipFault(kInvalid);
    }
    line.read();
    KxParameters& list = parameters.write();
    if (!list.parseExactly(line)) {
        list.clear();
        return KxSipFault(kInvalid);
    }
    return {};
}
