#pragma once

#include "util/KxOutputStream.h"

#include <string_view>

/** Writes a property list: name=value or name="value", separated by commas without blanks. Nothing is escaped. Names and
    values are std::string_view or KxString. */
class KxSipPropertyWriter {
public:
    explicit KxSipPropertyWriter(KxOutputStream& out) : m_out(out) {}

    template <class Name, class Value>
    [[gnu::always_inline]] void bare(const Name& name, const Value& value) {
        write(name, std::string_view("=", 1), value, std::string_view());
    }
    template <class Name, class Value>
    [[gnu::always_inline]] void quoted(const Name& name, const Value& value) {
        write(name, std::string_view("=\"", 2), value, std::string_view("\"", 1));
    }

private:
    template <class Name, class Value>
    [[gnu::always_inline]] void write(const Name& name, std::string_view equals, const Value& value,
                                      std::string_view end) {
        if (m_first) {
            m_out.writeAll(name, equals, value, end);
        } else {
            m_out.writeAll(',', name, equals, value, end);
        }
        m_first = false;
    }

    KxOutputStream& m_out;
    bool m_first = true;
};
