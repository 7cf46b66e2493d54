#include "sipobject/headers/KxSipLineValues.h"

#include "sipobject/KxSipLine.h"
#include "sipobject/headers/KxSipHeader.h"
#include "sipobject/headers/KxSipHeaderKinds.h"
#include "sipobject/headers/KxSipUnreadHeader.h"
#include "util/KxException.h"

#include <utility>

namespace {

/** The end of the value at the start of the text: a comma that is neither quoted nor in "<>", or the end. */
std::size_t findComma(std::string_view text) {
    char closing = '\0';
    std::size_t at = 0;
    for (; at < text.size() && (closing != '\0' || text[at] != ','); ++at) {
        const char c = text[at];
        if (closing != '\0') {
            at += closing == '"' && c == '\\' ? 1 : 0;
            closing = c == closing ? '\0' : closing;
        } else if (c == '"' || c == '<') {
            closing = c == '<' ? '>' : c;
        }
    }
    return at < text.size() ? at : text.size();
}

} // namespace

KxSipLineValues::KxSipLineValues(const KxSipLine& line)
    : m_key(line.key()), m_name(line.name()), m_rest(line.values()), m_keeps(line.isReadTwice()) {}

KxSipLineValues::KxSipLineValues(std::string_view name, std::string_view text)
    : m_key(name), m_name(name), m_rest(text), m_keeps(false) {}

/** The next value, without white space around it; empty for an empty element of a list. */
std::string_view KxSipLineValues::takeValue(bool isList) {
    const std::size_t end = isList ? findComma(m_rest) : m_rest.size();
    const std::string_view value = KxAscii::trim(m_rest.substr(0, end));
    m_rest.remove_prefix(end == m_rest.size() ? end : end + 1);
    return value;
}

KxSipFault KxSipLineValues::readValue(KxSipHeader& header, std::string_view value) {
    m_single.clear();
    m_single.append(value);
    m_single.append("\r\n", 2);
    KxSipLine line(m_single.view());
    try {
        if (const KxSipFault fault = header.readValue(line)) {
            return fault;
        }
    } catch (const KxHandle<KxException>&) {
        return KxSipFault("SIP Header parse error : value refused by the class of the header");
    }
    line.skipSpace();
    if (line.peek() >= 0) {
        return KxSipHeader::kTextAfterValue;
    }
    if (!m_kept) {
        m_kept = line.kept();
    }
    return {};
}

KxSipFault KxSipLineValues::read(KxHandle<KxSipHeader>& header) {
    const KxHandle<KxSipHeader> sample = KxSipHeader::sMake(m_key);
    sample->setToken(m_name);
    const HeaderID id = sample->getHeaderID();
    const bool isList = KxSipHeaderKinds::sIsList(id);
    const bool keeps = m_keeps && !KxSipHeaderKinds::sIsNeededByProxies(id);
    const std::string_view whole = KxAscii::trim(m_rest);

    KxHandle<KxSipHeader> first;
    KxHandle<KxSipHeader>* link = &first;
    const auto append = [&](KxHandle<KxSipHeader>&& value) {
        if (link == &first) {
            value->m_token = sample->getToken();
        }
        *link = std::move(value);
        link = &(*link)->m_next;
    };
    std::string_view unread;
    const auto appendUnread = [&] {
        if (!unread.empty()) {
            auto value = KxHandle<KxSipHeader>::sOfNew(new KxSipUnreadHeader(*sample, unread));
            value->m_token = sample->getExpandedToken();
            append(std::move(value));
            unread = {};
        }
    };
    while (!m_rest.empty()) {
        const std::string_view text = takeValue(isList);
        if (text.empty()) {
            continue;
        }
        KxHandle<KxSipHeader> value = KxSipHeader::sMake(link == &first ? m_key : sample->getExpandedToken().view());
        const KxSipFault fault = readValue(*value, text);
        if (!fault) {
            appendUnread();
            append(std::move(value));
        } else if (!keeps) {
            return fault;
        } else {
            m_kept = m_kept ? m_kept : fault;
            const char* const begin = unread.empty() ? text.data() : unread.data();
            unread = std::string_view(begin, static_cast<std::size_t>(text.data() + text.size() - begin));
        }
    }
    appendUnread();
    if (first.isNil()) {
        const bool isText = KxSipHeaderKinds::sMayBeEmptyText(id) && !readValue(*sample, {});
        const bool mayBeEmpty = isText || KxSipHeaderKinds::sMayBeEmptyList(id);
        if (!mayBeEmpty && !keeps) {
            return KxSipHeader::kNothingAfterColon;
        }
        m_kept = mayBeEmpty ? KxSipFault() : KxSipHeader::kNothingAfterColon;
        first = isText ? sample : KxHandle<KxSipHeader>::sOfNew(new KxSipUnreadHeader(*sample, whole));
    }
    header = std::move(first);
    return m_keeps ? m_kept : KxSipFault();
}
