#include "tools/kxsip/CallTable.h"

#include "tools/kxsip/Printable.h"
#include "tools/kxsip/flow/Call.h"
#include "tools/kxsip/flow/TextLadder.h"
#include "tools/kxsip/flow/Utf8.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <variant>

namespace {

struct Moment {
    std::chrono::microseconds time;
    auto operator<=>(const Moment&) const = default;
};

/** The value of a call in a column; the first one means that there is none. */
using Value = std::variant<std::monostate, std::size_t, std::chrono::microseconds, Moment, std::string>;

struct CallColumn {
    std::string_view name;
    Value (*valueOf)(const CallSummary& call);
    std::size_t least;  ///< The width that a terminal has for it at least.
    bool isUri = false; ///< Such a column takes what width is left.
};

Value seconds(const std::optional<std::chrono::microseconds>& time) {
    return time ? Value(*time) : Value();
}

Value text(const std::string& text) {
    return text.empty() ? Value() : Value(text);
}

constexpr std::array<CallColumn, 12> kColumns = {{
    {"number", [](const CallSummary& call) { return Value(call.number); }, 6},
    {"begin", [](const CallSummary& call) { return Value(Moment{call.begin}); }, 19},
    {"from", [](const CallSummary& call) { return text(call.from); }, 12, true},
    {"to", [](const CallSummary& call) { return text(call.to); }, 12, true},
    {"method", [](const CallSummary& call) { return text(call.method); }, 6},
    {"code",
     [](const CallSummary& call) { return call.code == 0 ? Value() : Value(static_cast<std::size_t>(call.code)); }, 4},
    {"ring", [](const CallSummary& call) { return seconds(call.timeToRing()); }, 6},
    {"answer", [](const CallSummary& call) { return seconds(call.timeToAnswer()); }, 6},
    {"duration", [](const CallSummary& call) { return seconds(call.duration()); }, 8},
    {"repeats", [](const CallSummary& call) { return Value(call.repeats); }, 7},
    {"messages", [](const CallSummary& call) { return Value(call.messages); }, 8},
    {"call_id", [](const CallSummary& call) { return text(call.id); }, 7},
}};

const CallColumn* columnOf(std::string_view name) {
    const auto found = std::find_if(kColumns.begin(), kColumns.end(),
                                    [name](const CallColumn& column) { return column.name == name; });
    return found == kColumns.end() ? nullptr : &*found;
}

bool isText(const Value& value) {
    return std::holds_alternative<std::string>(value) || std::holds_alternative<Moment>(value);
}

/** Writes a value as text: "-" for none. */
struct Shown {
    bool isAligned;

    std::string operator()(std::monostate) const { return "-"; }
    std::string operator()(std::size_t number) const { return std::to_string(number); }
    std::string operator()(std::chrono::microseconds time) const { return secondsText(time); }
    std::string operator()(const Moment& moment) const {
        std::string text = utcText(moment.time);
        return isAligned ? text.replace(10, 1, " ").substr(0, 19) : text;
    }
    std::string operator()(const std::string& text) const { return printable(text); }
};

struct AsJson {
    JsonWriter& json;

    void operator()(std::monostate) const { json.null(); }
    void operator()(std::size_t number) const { json.number(number); }
    void operator()(std::chrono::microseconds time) const { json.seconds(std::chrono::duration<double>(time).count()); }
    void operator()(const Moment& moment) const { json.text(utcText(moment.time)); }
    void operator()(const std::string& text) const { json.text(text); }
};

std::string padded(const std::string& text, std::size_t width, bool isRight) {
    const std::string blanks(width - std::min(width, Utf8::width(text)), ' ');
    return isRight ? blanks + text : text + blanks;
}

std::string shortened(const std::string& text, std::size_t width) {
    static const bool s_isUtf8 = canDrawLines();
    return Utf8::shortened(text, width, s_isUtf8 ? "\u2026" : "...");
}

bool isRight(std::size_t column) {
    static const CallSummary s_call = [] {
        CallSummary call;
        call.from = call.to = call.method = call.id = "x";
        return call;
    }();
    return !isText(kColumns.at(column).valueOf(s_call));
}

} // namespace

CallTable::CallTable(std::ostream& out, Format format, std::optional<std::size_t> width)
    : m_out(out), m_format(format), m_width(width), m_json(out) {}

void CallTable::write(const std::vector<CallSummary>& calls) {
    if (m_format == Format::Json) {
        std::for_each(calls.begin(), calls.end(), [this](const CallSummary& call) { writeJson(call); });
        return;
    }
    std::vector<Row> rows;
    if (m_widths.empty() && !calls.empty()) {
        Row& names = rows.emplace_back();
        std::transform(kColumns.begin(), kColumns.end(), std::back_inserter(names),
                       [](const CallColumn& column) { return std::string(column.name); });
    }
    for (const CallSummary& call : calls) {
        Row& row = rows.emplace_back();
        for (const CallColumn& column : kColumns) {
            row.push_back(std::visit(Shown{m_format == Format::Aligned}, column.valueOf(call)));
        }
    }
    measure(rows);
    std::for_each(rows.begin(), rows.end(), [this](const Row& row) { writeRow(row); });
}

/** Widens the columns for the rows. If the terminal is too narrow, the URIs share what the other columns leave. */
void CallTable::measure(const std::vector<Row>& rows) {
    if (rows.empty()) {
        return;
    }
    if (m_widths.empty()) {
        std::transform(kColumns.begin(), kColumns.end(), std::back_inserter(m_widths),
                       [](const CallColumn& column) { return column.least; });
    }
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            m_widths[i] = std::max(m_widths[i], Utf8::width(row[i]));
        }
    }
    if (!m_width) {
        return;
    }
    std::size_t others = 2 * (kColumns.size() - 2); // blanks between the columns, without those before the Call-ID
    std::size_t uris = 0;
    for (std::size_t i = 0; i + 1 < kColumns.size(); ++i) {
        (kColumns.at(i).isUri ? uris : others) += m_widths[i];
    }
    const std::size_t room = *m_width - std::min(*m_width, others);
    for (std::size_t i = 0; i < kColumns.size(); ++i) {
        if (kColumns.at(i).isUri && uris > room) {
            m_widths[i] = std::max(kColumns.at(i).least, m_widths[i] * room / uris);
        }
    }
}

void CallTable::writeRow(const Row& row) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
        const bool isAligned = m_format == Format::Aligned;
        line += i == 0 ? "" : isAligned ? "  " : "\t";
        line += isAligned ? padded(shortened(row[i], m_widths[i]), m_widths[i], isRight(i)) : row[i];
    }
    if (m_format == Format::Aligned) {
        line.erase(line.find_last_not_of(' ') + 1);
        line = m_width ? shortened(line, *m_width) : line;
    }
    m_out << line << '\n';
}

void CallTable::writeJson(const CallSummary& call) {
    m_json.begin();
    for (const CallColumn& column : kColumns) {
        m_json.key(column.name);
        std::visit(AsJson{m_json}, column.valueOf(call));
    }
    m_json.end();
    m_json.endLine();
}

void CallTable::sSort(std::vector<CallSummary>& calls, std::string name) {
    const bool isDescending = name.starts_with('-');
    const CallColumn* const column = columnOf(name.erase(0, isDescending ? 1 : 0));
    if (column == nullptr) {
        return;
    }
    std::vector<std::pair<Value, std::size_t>> order;
    for (const CallSummary& call : calls) {
        order.emplace_back(column->valueOf(call), order.size());
    }
    std::stable_sort(order.begin(), order.end(), [isDescending](const auto& a, const auto& b) {
        const bool hasNone = a.first.index() == 0 || b.first.index() == 0;
        return hasNone ? a.first.index() > b.first.index() : isDescending ? b.first < a.first : a.first < b.first;
    });
    std::vector<CallSummary> sorted;
    sorted.reserve(calls.size());
    for (const auto& [value, index] : order) {
        sorted.push_back(std::move(calls[index]));
    }
    calls = std::move(sorted);
}

std::string CallTable::sFault(const std::string& name) {
    const bool isKnown = columnOf(std::string_view(name).substr(name.starts_with('-') ? 1 : 0)) != nullptr;
    return isKnown ? "" : "\"" + printable(name) + "\" is no column; the columns are " + sNames();
}

std::string CallTable::sNames() {
    return std::accumulate(
        kColumns.begin() + 1, kColumns.end(), std::string(kColumns.front().name),
        [](std::string all, const CallColumn& column) { return std::move(all) + ", " + std::string(column.name); });
}
