#pragma once

#include "tools/kxsip/JsonWriter.h"
#include "tools/kxsip/flow/CallSummary.h"

#include <optional>
#include <ostream>
#include <string>
#include <vector>

/** Writes a line for each call: aligned columns for a terminal, else columns separated by tabs, or JSON objects. */
class CallTable {
public:
    enum class Format { Aligned, Tabs, Json };

    /** `width` is that of the terminal, if it is known. */
    CallTable(std::ostream& out, Format format, std::optional<std::size_t> width);

    /** Writes the lines of these calls. With the first ones come the names of the columns, except in JSON. */
    void write(const std::vector<CallSummary>& calls);

    /** Sorts the calls by a column, in descending order if the name begins with "-". Calls that are equal in it keep their
        order; calls without a value come last. */
    static void sSort(std::vector<CallSummary>& calls, std::string name);
    /** Returns the error for what is not the name of a column with or without "-", else an empty text. */
    static std::string sFault(const std::string& name);
    /** Returns the names, with ", " between them. */
    static std::string sNames();

private:
    using Row = std::vector<std::string>;

    void measure(const std::vector<Row>& rows);
    void writeRow(const Row& row);
    void writeJson(const CallSummary& call);

    std::ostream& m_out;
    Format m_format;
    std::optional<std::size_t> m_width;
    std::vector<std::size_t> m_widths; ///< Of the columns; empty before the first line.
    JsonWriter m_json;
};
