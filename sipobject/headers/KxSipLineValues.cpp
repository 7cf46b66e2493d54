#include "sipobject/headers/KxSipLineValues.h"

#include "sipobject/KxSipLine.h"
#include "sipobject/headers/KxSipHeader.h"
#include "sipobject/headers/KxSipHeaderKinds.h"
#include "sipobject/headers/KxSipUnreadHeader.h"
#include "util/KxException.h"

#include <algorithm>
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
std::string_view KxSipLineValues::takeValue(HeaderID id) {
    const std::size_t end = KxSipHeaderKinds::sIsTokenList(id) ? std::min(m_rest.find(','), m_rest.size())
                            : KxSipHeaderKinds::sIsList(id)    ? findComma(m_rest)
                                                               : m_rest.size();
    const std::string_view value = KxAscii::trim(m_rest.substr(0, end));
    m_rest.remove_prefix(end == m_rest.size() ? end : end + 1);
    return value;
}

/** Reads a value, or in a line as usual also further ones. */
KxSipFault KxSipLineValues::readValue(KxSipHeader& header, std::string_view text, bool isLine) {
    m_single.clear();
    m_single.append(text);
    m_single.append("\r\n", 2);
    KxSipLine line(m_single.view());
    try {
        if (const KxSipFault fault = isLine ? header.parseValues(line) : header.readValue(line)) {
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

void KxSipLineValues::append(KxHandle<KxSipHeader>&& value) {
    (m_last == nullptr ? m_first : m_last->m_next) = std::move(value);
    m_last = &(m_last == nullptr ? m_first : m_last->m_next)->lastOfChain();
}

/** Appends the text of values that can't be read, for the first of which `fault` is the reason; or the values, if it
    can be read as a line: then it will be read so when it is written. */
void KxSipLineValues::appendUnread(const KxSipHeader& sample, const KxSipFault& fault) {
    if (m_unread.empty()) {
        return;
    }
    const KxString& name = m_last == nullptr ? sample.getToken() : sample.getExpandedToken();
    KxHandle<KxSipHeader> values = KxSipHeader::sMake(m_last == nullptr ? m_key : name.view());
    if (readValue(*values, m_unread, true)) {
        values = KxHandle<KxSipHeader>::sOfNew(new KxSipUnreadHeader(sample, m_unread));
        m_kept = m_kept ? m_kept : fault;
    }
    values->m_token = name;
    append(std::move(values));
    m_unread = {};
}

KxSipFault KxSipLineValues::read(KxHandle<KxSipHeader>& header) {
    const KxHandle<KxSipHeader> sample = KxSipHeader::sMake(m_key);
    sample->setToken(m_name);
    const HeaderID id = sample->getHeaderID();
    const bool keeps = m_keeps && !KxSipHeaderKinds::sIsNeededByProxies(id);
    const std::string_view whole = KxAscii::trim(m_rest);
    KxSipFault unreadFault;
    while (!m_rest.empty()) {
        const std::string_view text = takeValue(id);
        if (text.empty()) {
            continue;
        }
        const bool isFirst = m_last == nullptr && m_unread.empty();
        KxHandle<KxSipHeader> value = KxSipHeader::sMake(isFirst ? m_key : sample->getExpandedToken().view());
        const KxSipFault fault = readValue(*value, text, false);
        if (!fault) {
            appendUnread(*sample, unreadFault);
            if (m_last == nullptr) {
                value->m_token = sample->getToken();
            }
            append(std::move(value));
        } else if (!keeps) {
            return fault;
        } else {
            unreadFault = m_unread.empty() ? fault : unreadFault;
            const char* const begin = m_unread.empty() ? text.data() : m_unread.data();
            m_unread = std::string_view(begin, static_cast<std::size_t>(text.data() + text.size() - begin));
        }
    }
    appendUnread(*sample, unreadFault);
    if (m_first.isNil()) {
        const bool isText = KxSipHeaderKinds::sMayBeEmptyText(id) && !readValue(*sample, {}, false);
        const bool mayBeEmpty = isText || KxSipHeaderKinds::sMayBeEmptyList(id);
        if (!mayBeEmpty && !keeps) {
            return KxSipHeader::kNothingAfterColon;
        }
        m_kept = mayBeEmpty ? KxSipFault() : KxSipHeader::kNothingAfterColon;
        m_first = isText ? sample : KxHandle<KxSipHeader>::sOfNew(new KxSipUnreadHeader(*sample, whole));
    }
    header = std::move(m_first);
    return m_keeps ? m_kept : KxSipFault();
}
