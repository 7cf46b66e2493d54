#include "tools/kxsip/TextView.h"

#include "sipobject/messages/KxSipRequest.h"
#include "sipobject/messages/KxSipResponse.h"
#include "tools/kxsip/ObjectText.h"
#include "tools/kxsip/Printable.h"

#include <algorithm>
#include <iomanip>

namespace {

constexpr std::size_t kWidestColumn = 32;

std::size_t widthOf(const std::vector<HeaderValue>& headers, std::string HeaderValue::*column) {
    std::size_t width = 0;
    for (const HeaderValue& header : headers) {
        width = std::max(width, (header.*column).size());
    }
    return std::min(width, kWidestColumn);
}

} // namespace

void TextView::show(const ReadMessage& read) {
    m_out << (m_first ? "" : "\n") << printable(read.file) << ", message " << read.index << '\n';
    m_first = false;
    if (read.isRefused()) {
        m_out << "  verdict   refused, " << classNameOf(*read.error) << ": "
              << printable(read.error->getExceptionMessage()) << '\n';
        return;
    }
    showStartLine(*read.message);
    showVerdict(*read.message);
    showHeaders(HeaderValue::sAllOf(*read.message));
    m_out << "  body      " << read.message->getStoredBodyLength() << " bytes\n";
}

void TextView::showStartLine(const KxSipMessage& message) {
    if (const auto* const request = dynamic_cast<const KxSipRequest*>(&message)) {
        const std::string uri = request->getURI().isNil() ? "" : serialized(*request->getURI());
        m_out << "  request   " << printable(request->getMethod()) << ' ' << printable(uri) << '\n';
    } else if (const auto* const response = dynamic_cast<const KxSipResponse*>(&message)) {
        m_out << "  response  " << response->getStatusCode() << ' ' << printable(response->getReasonPhrase()) << '\n';
    }
}

void TextView::showVerdict(const KxSipMessage& message) {
    m_out << "  verdict   " << (message.isValid() ? "valid" : "not valid") << ", status " << message.getStatus()
          << (message.getStatus() == KX_STATUS_INCOMPLETE ? " (a header line was dropped)" : "") << '\n';
}

void TextView::showHeaders(const std::vector<HeaderValue>& headers) {
    const auto nameWidth = static_cast<int>(widthOf(headers, &HeaderValue::name));
    const auto classWidth = static_cast<int>(widthOf(headers, &HeaderValue::className));
    const HeaderValue* previous = nullptr;
    m_out << "  headers\n" << std::left;
    for (const HeaderValue& header : headers) {
        const bool further = previous != nullptr && previous->id == header.id && previous->name == header.name;
        m_out << "    " << std::setw(nameWidth) << (further ? "" : printable(header.name)) << "  "
              << std::setw(classWidth) << (further ? "" : header.className) << "  " << printable(header.value) << '\n';
        previous = &header;
    }
}
