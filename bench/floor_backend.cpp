// The floor of the comparison: finds every line of a message and its colon, and copies the bytes once. Nothing is typed
// and nothing is freed, so that no library that makes objects can come near. Compiled by the comparison's own script,
// not by this build; see scripts/bench.
#include "bench.h"

#include "util/KxBytes.h"

#include <array>
#include <cstring>

namespace {

struct Line {
    const char* begin;
    const char* colon; // or the end of the line
    const char* end;
};

class Floor : public Backend {
public:
    const char* name() const override { return "floor"; }
    unsigned caps() const override { return 0; }

    void* parse(const char* data, std::size_t length, bool) override {
        if (length > m_bytes.size()) {
            return nullptr;
        }
        std::memcpy(m_bytes.data(), data, length);
        const char* at = m_bytes.data();
        const char* const end = at + length;
        for (Line& line : m_lines) {
            const auto* const stop =
                static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at)));
            if (stop == nullptr || stop - at < 2) { // the empty line
                break;
            }
            line = {at, KxBytes::findAny<':'>(at, stop, end), stop};
            at = stop + 1;
        }
        return m_lines.data();
    }
    void release(void*) override {}
    bool summary(void*, Summary&) override { return false; }
    std::size_t serialise(void*, std::string*) override { return 0; }
    unsigned parse_uri(const char* uri, std::size_t) override { return uri != nullptr ? 1 : 0; }

private:
    std::array<char, 65536> m_bytes;
    std::array<Line, 1024> m_lines;
};

} // namespace

Backend* make_backend() {
    return new Floor;
}
