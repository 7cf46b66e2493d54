#include "tools/kxsip/HeaderValue.h"

#include "tools/kxsip/ObjectText.h"

namespace {

/** A copy of a header is not part of a chain, so it is written as one line: name, ": ", value, CR LF. */
std::string valueOf(const KxSipHeader& header) {
    const KxHandle<KxSipHeader> single(static_cast<KxSipHeader*>(header.clone()));
    const std::string line = serialized(*single);
    const std::size_t begin = single->getToken().length() + 2;
    return line.substr(begin, line.size() - begin - 2);
}

} // namespace

std::vector<HeaderValue> HeaderValue::sAllOf(const KxSipMessage& message) {
    std::vector<HeaderValue> values;
    for (const HeaderID id : message.getHeaderOrder()) {
        for (const KxSipHeader* header = message.getHeaderByID(id).get(); header != nullptr;
             header = header->getNext().get()) {
            values.push_back({id, std::string(header->getToken().view()), classNameOf(*header), valueOf(*header)});
        }
    }
    return values;
}
