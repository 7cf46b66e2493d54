#include "tools/kxsip/Verdict.h"

#include "tools/kxsip/Printable.h"

namespace {

std::string whyIncomplete(const ReadMessage& read) {
    const std::string why = "a header line could not be read";
    if (read.dropped.empty()) {
        return why;
    }
    const DroppedLine& first = read.dropped.front();
    return why + ": line " + std::to_string(first.line) + ", \"" + first.shown() + "\": " + printable(first.why);
}

} // namespace

Verdict Verdict::sOf(const ReadMessage& read) {
    if (read.isRefused()) {
        return {Refused, printable(read.error->getExceptionMessage())};
    }
    if (read.message->isValid()) {
        return {};
    }
    switch (read.message->getStatus()) {
    case KX_STATUS_INCOMPLETE:
        return {Incomplete, whyIncomplete(read)};
    case KX_STATUS_VALID:
        return {Unusable, "the CSeq method is not spelled as the request's"};
    default:
        return {Unusable, "the Accept header does not list the body's type"};
    }
}
