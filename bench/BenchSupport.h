#pragma once

#include "util/KxByteArrayInputStream.h"

#include "sipobject/messages/KxSipMessage.h"

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

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
