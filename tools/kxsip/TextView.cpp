#include "tools/kxsip/TextView.h"

#include "sipobject/messages/KxSipRequest.h"
#include "sipobject/messages/KxSipResponse.h"
#include "tools/kxsip/ObjectText.h"
#include "tools/kxsip/Printable.h"

#include <algorithm>

namespace {

constexpr std::size_t kWidestColumn = 32;

std::size_t widthOf(const std::vector<HeaderValue>& headers, std::string HeaderValue::*column) {
    std::size_t width = 0;
    for (const HeaderValue& header : headers) {
        width = std::max(width, (header.*column).size());
    }
    return std::min(width, kWidestColumn);
}

/** Columns count visible characters, so the blanks must be added before the colours. */
std::string padded(std::string_view text, std::size_t width) {
    return std::string(text).append(width - std::min(width, text.size()), ' ');
}

} // namespace

void TextView::show(const ReadMessage& read) {
    m_out << (m_first ? "" : "\n") << m_colour(Ink::Place, read.place()) << '\n';
    m_first = false;
    if (read.origin) {
        showOrigin(*read.origin);
    }
    if (read.isRefused()) {
        m_out << "  verdict   " << m_colour(Ink::Failure, "refused") << ", " << classNameOf(*read.error) << ": "
              << printable(read.error->getExceptionMessage()) << '\n';
        return;
    }
    showStartLine(*read.message);
    showVerdict(read);
    showHeaders(HeaderValue::sAllOf(*read.message));
    m_out << "  body      " << read.message->getStoredBodyLength() << " bytes\n";
}

void TextView::showOrigin(const Origin& origin) {
    m_out << "  captured  " << utcText(origin.time) << "  " << origin.transport << "  " << origin.source.text() << " > "
          << origin.destination.text() << '\n';
}

void TextView::showStartLine(const KxSipMessage& message) {
    if (const auto* const request = message.as<KxSipRequest>()) {
        const std::string uri = request->getURI().isNil() ? "" : serialized(*request->getURI());
        m_out << "  request   " << m_colour(Ink::Request, printable(request->getMethod())) << ' '
              << m_colour(Ink::Uri, printable(uri)) << '\n';
    } else if (const auto* const response = message.as<KxSipResponse>()) {
        const auto code = static_cast<int>(response->getStatusCode());
        const std::string text = std::to_string(code) + " " + printable(response->getReasonPhrase());
        m_out << "  response  " << m_colour(Colour::sInkOf(code), text) << '\n';
    }
}

void TextView::showVerdict(const ReadMessage& read) {
    const KxSipMessage& message = *read.message;
    m_out << "  verdict   "
          << m_colour(message.isValid() ? Ink::Success : Ink::Failure, message.isValid() ? "valid" : "not valid")
          << ", status " << message.getStatus();
    if (message.getStatus() == KX_STATUS_INCOMPLETE) {
        m_out << " (a header line was dropped)";
        if (!read.dropped.empty()) {
            const DroppedLine& first = read.dropped.front();
            m_out << "\n  dropped   line " << first.line << ", \"" << m_colour(Ink::Failure, first.shown())
                  << "\": " << printable(first.why);
        }
    }
    m_out << '\n';
}

std::string TextView::shown(const HeaderText& value) const {
    if (value.error.isNil()) {
        return m_colour.value(printable(value.text));
    }
    const std::string why = classNameOf(*value.error) + ": " + printable(value.error->getExceptionMessage());
    return m_colour(Ink::Failure, "can't be written") + ", " + why;
}

void TextView::showHeaders(const std::vector<HeaderValue>& headers) {
    const std::size_t nameWidth = widthOf(headers, &HeaderValue::name);
    const std::size_t classWidth = widthOf(headers, &HeaderValue::className);
    const HeaderValue* previous = nullptr;
    m_out << "  headers\n";
    for (const HeaderValue& header : headers) {
        const bool further = previous != nullptr && previous->id == header.id && previous->name == header.name;
        const std::string name = further ? "" : printable(header.name);
        const std::string className = further ? "" : header.className;
        m_out << "    " << m_colour(Ink::Name, padded(name, nameWidth)) << "  "
              << m_colour(Ink::Class, padded(className, classWidth)) << "  " << shown(header.value) << '\n';
        previous = &header;
    }
}
