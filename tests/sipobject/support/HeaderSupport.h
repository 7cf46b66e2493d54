#pragma once

#include "EveryHeader.h"
#include "tests/sipobject/support/MessageSupport.h"

/** The header of a line; its end is added. */
inline KxHandle<KxSipHeader> readHeader(const std::string& line) {
    const HeapText bytes(line + "\r\n");
    KxByteArrayInputStream in(bytes.view());
    return KxSipHeader::sConstructFrom(in);
}

/** The one header of a line, which must be of the class. */
template <class H>
KxHandle<H> readAs(const std::string& line) {
    const KxHandle<H> header = KxHandleCast<H>(readHeader(line));
    EXPECT_FALSE(header.isNil()) << line;
    return header;
}

/** What a chain is written as: its lines with " & " between them. Copies of its values must be written alike. */
inline std::string linesOf(const KxSipHeader& header) {
    std::string copies;
    std::string lines;
    for (const KxSipHeader* value = &header; value != nullptr; value = value->getNext().get()) {
        const std::string line = lineOf(*value);
        copies += line + "\r\n";
        lines.append(lines.empty() ? "" : " & ").append(line);
    }
    EXPECT_EQ(copies, written(header));
    return lines;
}

/** A line (its end is added), the fields of its values, and what they are written as (empty: the line), or the failure.
    `secondRound`, for a written form that reads as another value, is what that value is written as. */
struct HeaderRow {
    std::string line;
    std::string fields;
    std::string written = {};
    std::string secondRound = {};
};

/** Expects that the line reads as the row says, over memory and slow streams, that no memory leaks, and that what is
    written reads and is written unchanged. `fields` returns the text for one value; values are joined by " & ". */
template <class H, class Fields>
void expectRow(const HeaderRow& row, Fields fields) {
    const Balance balance;
    const std::string& lines = row.written.empty() ? row.line : row.written;
    const auto read = [&](KxInputStream& in) {
        return outcomeOf([&] {
            const KxHandle<KxSipHeader> header = KxSipHeader::sConstructFrom(in);
            std::string all;
            for (const KxSipHeader* value = header.get(); value != nullptr; value = value->getNext().get()) {
                const auto* const typed = dynamic_cast<const H*>(value);
                all.append(value == header.get() ? "" : " & ");
                all += typed == nullptr ? className(*value) : fields(*typed);
            }
            return all + " -> " + linesOf(*header);
        });
    };
    const bool fails = lines.find("Kx") == 0;
    EXPECT_EQ(readEveryWay(row.line + "\r\n", read), (fails ? "" : row.fields + " -> ") + lines + "@") << row.line;
    if (fails) {
        return;
    }
    std::string again;
    for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 3) {
        end = lines.find(" & ", begin);
        const std::string line = lines.substr(begin, end - begin);
        again.append(begin == 0 ? "" : " & ").append(outcomeOf([&] { return linesOf(*readHeader(line)); }));
    }
    EXPECT_EQ(again, row.secondRound.empty() ? lines : row.secondRound);
}

template <class H, class Fields>
void expectRows(Fields fields, std::initializer_list<HeaderRow> rows) {
    for (const HeaderRow& row : rows) {
        expectRow<H>(row, fields);
    }
}

/** The same, where the fields are the results of these getters or functions of the header. */
template <class H, auto... getters>
void expectRows(std::initializer_list<HeaderRow> rows) {
    expectRows<H>([](const H& header) { return joined(std::invoke(getters, header)...); }, rows);
}
