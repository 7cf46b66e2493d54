#pragma once

#include "fuzz/FuzzSupport.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

/** One operation on the messages of a program. */
struct LivesStep {
    unsigned operation; ///< 0 to 15
    unsigned message;   ///< 0 to 2
    unsigned flags;
    unsigned argument;
};

/** What the bytes of an input say. The first byte gives the number of steps, modulo 9. Each step has three bytes: the
    operation with the message, flags, and an argument. The rest are texts, which the byte 0xFF separates: a message,
    and what is written into messages. */
class LivesProgram {
public:
    explicit LivesProgram(std::string_view bytes) {
        const std::size_t count = bytes.empty() ? 0 : byteAt(bytes, 0) % kMost;
        if (bytes.size() < 1 + 3 * count) {
            return;
        }
        for (std::size_t at = 1; at != 1 + 3 * count; at += 3) {
            const unsigned first = byteAt(bytes, at);
            m_steps.push_back({first % 16, first / 16 % 3, byteAt(bytes, at + 1), byteAt(bytes, at + 2)});
        }
        bytes.remove_prefix(std::min(1 + 3 * count, bytes.size()));
        for (std::size_t end = bytes.find(kSeparator); end != bytes.npos; end = bytes.find(kSeparator)) {
            m_texts.push_back(bytes.substr(0, end));
            bytes.remove_prefix(end + 1);
        }
        m_texts.push_back(bytes);
    }

    const std::vector<LivesStep>& steps() const { return m_steps; }
    std::string_view message() const { return m_texts.empty() ? std::string_view() : m_texts[0]; }
    /** A text of the input for an argument of 128 or more, if there is one, else one of the usual ones. */
    std::string text(unsigned argument) const {
        if (argument >= 128 && m_texts.size() > 1) {
            return std::string(m_texts[1 + argument % (m_texts.size() - 1)]);
        }
        return std::string(kUsual[argument % kUsual.size()]);
    }

private:
    static constexpr unsigned kMost = 9;
    static constexpr char kSeparator = '\xFF';
    static constexpr std::array<std::string_view, 32> kUsual = {"",
                                                                "a",
                                                                "a-1.b",
                                                                "1",
                                                                "4294967296",
                                                                "a\r\nX-Evil: 1",
                                                                "a\n",
                                                                "\r\n\r\n",
                                                                std::string_view("a\0b", 3),
                                                                "\"",
                                                                "a\"b",
                                                                "\"a, b\"",
                                                                "a;b=c",
                                                                "a, b",
                                                                "a b",
                                                                " a ",
                                                                "<sip:a@h;lr>;tag=1",
                                                                "sip:a@h:5070;transport=tcp",
                                                                "\"A\" <sip:a@h>",
                                                                "tel:+1",
                                                                "*",
                                                                "[::1]",
                                                                "192.0.2.1",
                                                                "h.example.com",
                                                                "UDP",
                                                                "INVITE",
                                                                "BYE",
                                                                "z9hG4bKx",
                                                                "a/b",
                                                                "sip:h?X=%0D%0AY",
                                                                "\xE4(a)<b>",
                                                                "0.5"};

    static unsigned byteAt(std::string_view bytes, std::size_t at) { return static_cast<unsigned char>(bytes[at]); }

    std::vector<LivesStep> m_steps;
    std::vector<std::string_view> m_texts;
};
