#pragma once

#include "util/KxByteArrayInputStream.h"

#include "sipobject/messages/KxSipMessage.h"

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>

/** The bytes of a file under samples/. */
inline std::string readSample(const std::string& name) {
    std::ifstream file(std::string(KX_SOURCE_DIR) + "/samples/" + name, std::ios::binary);
    if (!file) {
        throw std::runtime_error("no sample " + name);
    }
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

inline KxHandle<KxSipMessage> parseMessage(const std::string& bytes) {
    KxByteArrayInputStream in{std::string_view(bytes)};
    return KxSipMessage::sConstructFrom(in);
}

constexpr std::string_view kPlainVia = "Via: SIP/2.0/UDP h.example.com;branch=z9hG4bK1\r\n";
constexpr std::string_view kPlainFrom = "From: <sip:a@example.com>;tag=1\r\n";

/** A valid request that contains the given lines as well. Another Via or From may replace the usual ones. */
inline std::string requestWith(std::string_view lines, std::string_view via = kPlainVia,
                               std::string_view from = kPlainFrom) {
    std::string text("OPTIONS sip:b@example.net SIP/2.0\r\n");
    text.append(via).append(from).append(
        "To: <sip:b@example.net>\r\nCall-ID: bench@example.com\r\nCSeq: 1 OPTIONS\r\n");
    return text.append(lines).append("Content-Length: 0\r\n\r\n");
}
