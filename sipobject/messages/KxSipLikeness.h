#pragma once

#include "sipobject/headers/KxSipCompactNames.h"
#include "sipobject/headers/KxSipUnknownHeader.h"
#include "sipobject/headers/KxSipUnreadHeader.h"

#include <typeinfo>

/** Which headers of a chain belong together. */
class KxSipLikeness {
public:
    KxSipLikeness() = delete;

    static bool sIsUnread(const KxSipHeader& header) { return typeid(header) == typeid(KxSipUnreadHeader); }
    static bool sIsUnknown(const KxSipHeader& header) {
        return header.getHeaderID() == KxHeaderIDs::kUnknown && typeid(header) == typeid(KxSipUnknownHeader);
    }
    /** Whether the header is written under that full name, or under a compact name for it, ignoring letter case. */
    static bool sIsNamed(const KxSipHeader& header, std::string_view full) {
        return KxAscii::equalsNoCase(KxSipCompactNames::sFull(header.getToken()), full);
    }
    /** Whether the two headers, of one kind, are of the same class, or one is kept as text of the class of the other.
        Unknown headers must have the same name. */
    static bool sAreLike(const KxSipHeader& header, const KxSipHeader& other) {
        if (typeid(header) == typeid(other) && !sIsUnread(header)) {
            return typeid(header) != typeid(KxSipUnknownHeader) ||
                   sIsNamed(header, KxSipCompactNames::sFull(other.getToken()));
        }
        return (sIsUnread(header) || sIsUnread(other)) && header.getExpandedToken() == other.getExpandedToken();
    }
};
