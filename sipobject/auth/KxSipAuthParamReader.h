#pragma once

#include "sipobject/KxSipFault.h"
#include "util/KxParameters.h"

#include <string>
#include <string_view>

class KxInputStream;

/** Reads a list of properties as the RFCs define it into a parameter list.
    list       = [ auth-param ] *( OWS "," OWS [ auth-param ] )
    auth-param = token BWS "=" BWS ( token / quoted-string )                  [RFC 7235 2.1, 7; RFC 3261 25.1]
    Values are kept without quotes and escapes, and may be empty. A value without quotes may contain all but commas,
    quotes and line ends; these are not escaped, and blanks around it are dropped.
    `realm = "a, \"b\"" ,nonce=YWJj==, opaque=""` -> realm: `a, "b"`; nonce: `YWJj==`; opaque: `` */
class KxSipAuthParamReader {
public:
    /** Tells whether a property of this name is skipped. */
    using IsHidden = bool (*)(std::string_view name);

    /** Adds the properties; a null `isHidden` hides none. */
    KxSipAuthParamReader(KxParameters& properties, IsHidden isHidden)
        : m_properties(properties), m_isHidden(isHidden) {}

    /** Reads to the end. If a property can't be read, none is added. The fault is "Failed to parse Proxy-Authenticate
        SIP header", also for an empty list if `isNeeded`. */
    KxSipFault read(KxInputStream& in, bool isNeeded);

private:
    KxSipFault readInto(KxParameters& properties, KxInputStream& in, bool isNeeded) const;
    const char* readOne(KxParameters& properties, const char* at, const char* end, const char* readable) const;

    KxParameters& m_properties;
    const IsHidden m_isHidden;
};
