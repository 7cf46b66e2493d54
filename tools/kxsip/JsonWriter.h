#pragma once

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "util/KxByteArrayOutputStream.h"

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

/** Writes JSON objects, one a line, without building them first. Bytes of texts that are not UTF-8 become U+FFFD. */
class JsonWriter {
public:
    /** The stream must outlive the writer. */
    explicit JsonWriter(std::ostream& out) : m_out(out), m_writer(m_buffer) {}
    JsonWriter(const JsonWriter&) = delete;
    JsonWriter& operator=(const JsonWriter&) = delete;

    void begin() { m_writer.StartObject(); }
    void end() { m_writer.EndObject(); }
    void beginArray() { m_writer.StartArray(); }
    void endArray() { m_writer.EndArray(); }
    /** The name of the next value; for begin and beginArray, too. */
    JsonWriter& key(std::string_view name) {
        text(name);
        return *this;
    }
    /** As above, for a name that needs no escapes. */
    template <std::size_t N>
    JsonWriter& key(const char (&name)[N]) {
        m_writer.plain(std::string_view(name, N - 1));
        return *this;
    }

    void text(std::string_view text) { sIsPlain(text) ? m_writer.plain(text) : otherText(text); }
    void number(std::uint64_t number) { m_writer.Uint64(number); }
    void seconds(double seconds) { m_writer.Double(seconds); }
    void truth(bool value) { m_writer.Bool(value); }
    void null() { m_writer.Null(); }
    /** The text that the object's display writes. */
    template <class T>
    void serialized(const T& object) {
        m_scratch.clear();
        object.display(m_scratch, false);
        text(m_scratch.view());
    }

    /** Writes the object and a line end to the stream. */
    void endLine();
    /** Drops what was written since the last line; for an object that can't be finished. */
    void drop();

    /** Whether the text is UTF-8. [RFC 3629 4] */
    static bool sIsUtf8(std::string_view text);

private:
    class Writer : public rapidjson::Writer<rapidjson::StringBuffer> {
    public:
        using rapidjson::Writer<rapidjson::StringBuffer>::Writer;

        /** Writes a text without looking for characters that need escapes. */
        void plain(std::string_view text) {
            Prefix(rapidjson::kStringType);
            char* const to = os_->Push(text.size() + 2);
            *to = '"';
            text.copy(to + 1, text.size());
            to[text.size() + 1] = '"';
        }
    };

    /** Whether all characters are of ASCII, and none needs an escape. Most texts are so: with this and `plain`, writing
        takes half the time. */
    static bool sIsPlain(std::string_view text);
    static bool sIsAscii(std::string_view text);
    void otherText(std::string_view text);

    std::ostream& m_out;
    rapidjson::StringBuffer m_buffer;
    Writer m_writer;
    KxByteArrayOutputStream m_scratch;
};
