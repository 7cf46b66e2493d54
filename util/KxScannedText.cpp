#include "util/KxScannedText.h"

std::string_view KxScannedText::copyUntil(KxInputStream& in, const KxCharSet& delimiters) {
    m_copy = std::make_unique<std::string>();
    while (in.fill()) {
        const std::string_view window = in.window();
        const char* const end = delimiters.find(window.data(), window.data() + window.size());
        const auto taken = static_cast<std::size_t>(end - window.data());
        m_copy->append(window.data(), taken);
        in.consume(taken);
        if (taken != window.size()) {
            break;
        }
    }
    return *m_copy;
}
