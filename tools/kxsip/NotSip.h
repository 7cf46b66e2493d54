#pragma once

#include "tools/kxsip/MessageSource.h"

/** A file that is neither a capture nor text: it has no messages, but a note that says so. */
class NotSip final : public MessageSource {
public:
    /** Whether the bytes at the beginning of a file show that it is no text: of a packer, or with control characters in
        the first lines. */
    static bool sIs(std::string_view bytes);

    /** `bytes` are those at the beginning of the file. */
    explicit NotSip(std::string_view bytes);

    std::optional<ReadMessage> next() override { return std::nullopt; }
    std::vector<std::string> notes() const override { return {m_note}; }
    Outcome outcome() const override { return Outcome::Refused; }

private:
    std::string m_note;
};
