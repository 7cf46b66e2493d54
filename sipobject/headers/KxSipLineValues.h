#pragma once

#include "core/FastString.h"
#include "sipobject/KxSipFault.h"
#include "sipobject/headers/HeaderID.h"
#include "util/KxHandle.h"

#include <string_view>

class KxSipHeader;
class KxSipLine;

/** Reads a header line a second time, value by value, after a fault in it. Each value is read as if it had a line of
    its own, so that a line which is written with one value is read the same. Empty elements of a list are skipped. For
    the RFC grammar. The time is proportional to the length of the line. [RFC 3261 7.3.1] */
class KxSipLineValues {
public:
    /** Reads the text after the colon of a line that was taken. Whether values that can't be read are kept as
        KxSipUnreadHeader depends on the line; those of headers with which proxies work never are. */
    explicit KxSipLineValues(const KxSipLine& line);
    /** Reads a value without its name. Values that can't be read are not kept. */
    KxSipLineValues(std::string_view name, std::string_view text);

    /** Stores the first value in `header`, with the others chained after it. Returns the first fault. If `header` is
        not nil then, there are values that are kept as text. */
    KxSipFault read(KxHandle<KxSipHeader>& header);

private:
    std::string_view takeValue(HeaderID id);
    KxSipFault readValue(KxSipHeader& header, std::string_view text, bool isLine);
    void append(KxHandle<KxSipHeader>&& value);
    void appendUnread(const KxSipHeader& sample, const KxSipFault& fault);

    std::string_view m_key;        ///< The name that selects the class.
    std::string_view m_name;       ///< The name as received.
    std::string_view m_rest;       ///< What has not been read yet.
    std::string_view m_unread;     ///< The last values, which can't be read; empty if the last one can.
    KxHandle<KxSipHeader> m_first; ///< The values before these.
    KxSipHeader* m_last = nullptr; ///< The last one of them.
    bool m_keeps;
    KxSipFault m_kept;               ///< The first fault of a value that is kept as text.
    Oskan::FastString<256> m_single; ///< The value as a line.
};
