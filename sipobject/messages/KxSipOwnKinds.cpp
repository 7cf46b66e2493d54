#include "sipobject/messages/KxSipOwnKinds.h"

constinit Oskan::MemAccount KxSipOwnKinds::s_account{"KxSipOwnKinds"};

KxSipOwnKinds::Kind& KxSipOwnKinds::findOrAppend(HeaderID id, std::uint8_t after) {
    OSKAN_ASSERT(KxSipHeader::sIsHeaderID(id));
    auto last = m_kinds.before_begin();
    auto beforeFound = m_kinds.end();
    for (auto kind = m_kinds.begin(); kind != m_kinds.end(); last = kind++) {
        if (kind->id == id) {
            if (!kind->first.isNil()) {
                return *kind;
            }
            beforeFound = last;
        }
    }
    if (beforeFound == m_kinds.end()) {
        return *m_kinds.insert_after(last, {id, after});
    }
    m_kinds.splice_after(last, m_kinds, beforeFound); // does nothing if it is the last one
    Kind& found = std::next(last) == m_kinds.end() ? *last : *std::next(last);
    found.after = after;
    return found;
}
