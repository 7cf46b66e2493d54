#include "sipobject/messages/KxSipReportedBytes.h"

void KxSipReportedBytes::sNoteFailure(KxInputStream& in, Stage stage) {
    if (KxSipReportedBytes* const bytes = sOf(in)) {
        bytes->m_failure = stage;
    }
}

/** Adds the line, unless a message class of the host has reset the stream and reads lines a second time. */
template <class Why>
void KxSipReportedBytes::add(const char* start, const Why& why) {
    if (start >= m_noted) {
        m_noted = window().data();
        m_dropped.emplace_back(std::string_view(start, static_cast<std::size_t>(m_noted - start)), why);
    }
}

void KxSipReportedBytes::noteDropped(const char* start, const KxSipFault& why) {
    add(start, why);
}

void KxSipReportedBytes::noteDropped(const char* start, const KxHandle<KxException>& why) {
    add(start, why);
}

std::size_t KxSipReportedBytes::readSome(char*, std::size_t) {
    return 0;
}
