#pragma once

#include "tests/tools/CaptureBytes.h"
#include "tests/tools/ToolRun.h"

inline Tins::IP datagram(const std::string& payload, const char* from = "192.0.2.1", const char* to = "192.0.2.2") {
    return Tins::IP(to, from) / Tins::UDP(5060, 40000) / Tins::RawPDU(payload);
}

/** The shortest message that the library accepts. */
inline std::string sipMessage(const std::string& start, const std::string& more, const std::string& body = "") {
    return start + "\r\n" + kDialog + more + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

inline std::string sipOptions(int number) {
    const std::string text = std::to_string(number);
    return sipMessage("OPTIONS sip:" + text + "@d SIP/2.0", "CSeq: " + text + " OPTIONS\r\n");
}

/** The Request-URIs of the messages that the tool finds, "!" for one that is refused. */
inline std::string found(const ToolRun& run) {
    std::string text;
    for (const nlohmann::json& message : run.json()) {
        text += (text.empty() ? "" : " ") + (message["uri"].is_string() ? message["uri"].get<std::string>() : "!");
    }
    return text;
}
