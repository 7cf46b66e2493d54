#pragma once

#include "sipobject/SipApi.h"
#include "util/KxHandle.h"

#include <iosfwd>

class KxByteArray;
class KxException;
class KxInetAddress;
class KxSipMessage;

/** The readable form of a message, for logs. */
class KxSipMessageFormat {
public:
    /** Writes what KxSipMessage::formatMessage describes. */
    static void sWrite(std::ostream& out, const KxSipMessage& message, bool received, const unsigned* port,
                       const KxInetAddress* address);
};

/** Writes the message as it would be sent, but with LF instead of CR LF. A CR without LF is kept. */
KX_SIP_API std::ostream& operator<<(std::ostream& out, const KxSipMessage& message);
/** As above; nothing for nil. */
KX_SIP_API std::ostream& operator<<(std::ostream& out, const KxHandle<KxSipMessage>& message);
/** Writes the bytes unchanged; nothing for nil. */
KX_SIP_API std::ostream& operator<<(std::ostream& out, const KxHandle<KxByteArray>& bytes);
/** Writes the exception as its display function does, which is its message; nothing for nil. */
KX_SIP_API std::ostream& operator<<(std::ostream& out, const KxHandle<KxException>& failure);
