#pragma once

#include "sipobject/messages/KxSipReading.h"
#include "util/KxInputStream.h"

#include <typeinfo>

/** The bytes of one message as a stream that notes what its reader can't read. */
class KxSipReportedBytes final : public KxInputStream {
public:
    /** The step of reading that failed. */
    enum class Stage { None, StartLine, Body };

    /** Both arguments must outlive this object. */
    KxSipReportedBytes(std::string_view bytes, std::vector<KxSipReading::DroppedLine>& dropped)
        : KxInputStream(bytes.data(), bytes.data() + bytes.size(), bytes.data() + bytes.size()),
          m_dropped(dropped),
          m_noted(bytes.data()) {}

    Stage failure() const { return m_failure; }

    /** The stream as one of this class; null if it is another one. The class is not exported, so only one object
        describes its type, and comparing addresses is enough. */
    static KxSipReportedBytes* sOf(KxInputStream& in) {
        return &typeid(in) == &typeid(KxSipReportedBytes) ? static_cast<KxSipReportedBytes*>(&in) : nullptr;
    }
    /** If the stream is a KxSipReportedBytes, notes that this step failed. */
    static void sNoteFailure(KxInputStream& in, Stage stage);
    /** Notes that the header line from `start` up to here was dropped. */
    void noteDropped(const char* start, const KxSipFault& why);
    void noteDropped(const char* start, const KxHandle<KxException>& why);

protected:
    std::size_t readSome(char* buffer, std::size_t capacity) override;

private:
    template <class Why>
    void add(const char* start, const Why& why);

    std::vector<KxSipReading::DroppedLine>& m_dropped;
    const char* m_noted; ///< End of the line that was noted last.
    Stage m_failure = Stage::None;
};
