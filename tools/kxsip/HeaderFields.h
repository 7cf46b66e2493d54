#pragma once

#include <string>

class JsonWriter;
class KxSipHeader;

/** What the tool knows of a class of headers. */
struct HeaderFields {
    using Write = void (*)(const KxSipHeader& header, const char* key, JsonWriter& json);

    std::string className;     ///< For example "KxSipViaHeader".
    Write writeThem = nullptr; ///< Null for a class whose value has no parts.
    const char* key = nullptr; ///< The name of the first part.

    /** Returns the entry of the header's class, which lives as long as the process. */
    static const HeaderFields& sOf(const KxSipHeader& header);

    bool hasAny() const { return writeThem != nullptr; }
    /** Writes the parts of a header of this class into the JSON object that is open. Nothing for a value that was kept
        as text. */
    void write(const KxSipHeader& header, JsonWriter& json) const { writeThem(header, key, json); }
};
