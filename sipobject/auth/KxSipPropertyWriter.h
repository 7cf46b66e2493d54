#pragma once

#include "util/KxOutputStream.h"

#include <string_view>

/** Writes a property list: name=value or name="value", separated by commas without blanks. Nothing is escaped. */
class KxSipPropertyWriter {
public:
    explicit KxSipPropertyWriter(KxOutputStream& out) : m_out(out) {}

    void bare(std::string_view name, std::string_view value) {
        writeName(name);
        m_out.write('=');
        m_out.write(value);
    }
    void quoted(std::string_view name, std::string_view value) {
        writeName(name);
        m_out.write(std::string_view("=\"", 2));
        m_out.write(value);
        m_out.write('"');
    }

private:
    void writeName(std::string_view name) {
        if (!m_first) {
            m_out.write(',');
        }
        m_first = false;
        m_out.write(name);
    }

    KxOutputStream& m_out;
    bool m_first = true;
};
